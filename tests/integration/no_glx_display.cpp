// Preloaded into the program: GLX answers that no display is current, as a loaded X
// server now and then does right after the context was made. Only the lookup of
// glXGetCurrentDisplay through glXGetProcAddress changes; everything else passes through.
#include <dlfcn.h>

#include <cstring>

namespace {

using Proc = void (*)();
using GetProc = Proc (*)(const unsigned char*);

void* NoCurrentDisplay() {
    return nullptr;
}

}  // namespace

extern "C" Proc glXGetProcAddressARB(const unsigned char* name) {
    static const auto next = reinterpret_cast<GetProc>(dlsym(RTLD_NEXT, "glXGetProcAddressARB"));
    if (std::strcmp(reinterpret_cast<const char*>(name), "glXGetCurrentDisplay") == 0) {
        return reinterpret_cast<Proc>(&NoCurrentDisplay);
    }
    return next ? next(name) : nullptr;
}

extern "C" Proc glXGetProcAddress(const unsigned char* name) {
    return glXGetProcAddressARB(name);
}
