#pragma once

#include <cstddef>
#include <cstdio>

#include "util/String.h"

namespace util {

// Owns an open C file for the span of a scope; every failure becomes an exception.
class FILEWrapper {
public:
    FILEWrapper(const String& path, const char* mode);
    ~FILEWrapper();
    FILEWrapper(const FILEWrapper&) = delete;
    FILEWrapper& operator=(const FILEWrapper&) = delete;

    void Read(void* buffer, size_t size);
    // Reads up to size bytes; returns how many came.
    size_t ReadSome(void* buffer, size_t size);
    void Write(const void* buffer, size_t size);
    void Seek(int offset, int origin);
    long Tell() const;

    std::FILE* Get() const { return m_file; }

private:
    std::FILE* m_file;
};

}  // namespace util
