#include "util/TypeName.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

namespace util {

String TypeName(const std::type_info& info) {
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> demangled(
        abi::__cxa_demangle(info.name(), nullptr, nullptr, &status), &std::free);
    return status == 0 && demangled ? String(demangled.get()) : String(info.name());
}

}  // namespace util
