#include "util/FILEWrapper.h"

#include <stdexcept>

#include "util/Exception.h"

namespace util {

FILEWrapper::FILEWrapper(const String& path, const char* mode)
    : m_file(std::fopen(path.c_str(), mode)) {
    if (!m_file) {
        VORRA_THROW(FileReadException, "Failed to open file \"" + path);
    }
}

FILEWrapper::~FILEWrapper() {
    std::fclose(m_file);
}

void FILEWrapper::Read(void* buffer, size_t size) {
    if (std::fread(buffer, 1, size, m_file) != size) {
        VORRA_THROW(FileReadException, "Failed to read " + std::to_string(size) + " bytes");
    }
}

size_t FILEWrapper::ReadSome(void* buffer, size_t size) {
    return std::fread(buffer, 1, size, m_file);
}

void FILEWrapper::Write(const void* buffer, size_t size) {
    if (std::fwrite(buffer, 1, size, m_file) != size) {
        VORRA_THROW(Exception, "Failed to write " + std::to_string(size) + " bytes");
    }
}

void FILEWrapper::Seek(int offset, int origin) {
    if (std::fseek(m_file, offset, origin) != 0) {
        VORRA_THROW(FileReadException, "Failed to seek in FILE");
    }
}

long FILEWrapper::Tell() const {
    return std::ftell(m_file);
}

}  // namespace util
