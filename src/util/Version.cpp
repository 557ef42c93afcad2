#include "util/Version.h"

namespace util {

const String& GetVersionString() {
    static const String version = "Vorra beta 4.13";
    return version;
}

}  // namespace util
