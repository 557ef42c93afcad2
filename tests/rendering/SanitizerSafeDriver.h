#pragma once

#include <dlfcn.h>
#include <link.h>

#include <cstdlib>
#include <cstring>

namespace test_rendering {

// Under the address sanitizer with its slow unwinder, llvmpipe's code generator deadlocks:
// it allocates while the unwinder holds its lock. Mesa's softpipe with the interpreted
// vertex stage draws the same without generating code. Called before the first context.
inline void UseSanitizerSafeDriver() {
#if defined(__SANITIZE_ADDRESS__)
    setenv("GALLIUM_DRIVER", "softpipe", 0);
    setenv("DRAW_USE_LLVM", "0", 0);
#endif
}

// The leak checker runs at exit, after SDL has unloaded the graphics driver: the driver's
// own allocations could then be neither named nor suppressed. Called once a context
// exists, this pins the loaded driver in memory until the process ends.
inline void KeepDriverLoaded() {
#if defined(__SANITIZE_ADDRESS__)
    dl_iterate_phdr(
        [](dl_phdr_info* info, size_t, void*) {
            if (info->dlpi_name && std::strstr(info->dlpi_name, "_dri.so")) {
                dlopen(info->dlpi_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
            }
            return 0;
        },
        nullptr);
#endif
}

}  // namespace test_rendering
