// Shared libraries loaded on the first call that needs them. Every CGI
// request is a new process: a library named as a dependency is opened,
// mapped, relocated and initialised at the start of each request, whether
// the request calls it or not. A library that only some requests need is
// opened here instead, once per process, and stays loaded.
#ifndef KX_PLATFORM_COMPANION_LOADER_H
#define KX_PLATFORM_COMPANION_LOADER_H

#include <dlfcn.h>
#include <unistd.h>

#include <cstring>
#include <string>

namespace kx::platform {

// Looks name up in library (a dlopen handle) as a Function; false when the
// library does not define it.
template <typename Function>
bool Resolve(void *library, const char *name, Function &slot) {
    slot = reinterpret_cast<Function>(dlsym(library, name));
    return slot != nullptr;
}

namespace companion_detail {

// The folder of the shared object that holds this code, with its "/", or
// an empty text when it cannot be told.
inline std::string OwnFolder() {
    Dl_info info{};
    static const int anchor = 0;
    if (dladdr(&anchor, &info) == 0 || info.dli_fname == nullptr) return {};
    const char *slash = std::strrchr(info.dli_fname, '/');
    return slash != nullptr ? std::string(info.dli_fname, static_cast<size_t>(slash - info.dli_fname + 1))
                            : std::string();
}

// A companion that cannot be loaded ends the process as the dynamic loader
// does for a missing dependency at start: a message on standard error and
// exit status 127. Output the process still holds in its buffers is
// dropped rather than sent as a page cut short.
[[noreturn]] inline void Missing(const char *what) {
    const char *reason = dlerror();
    const std::string message = std::string("libKXSnmpTrapDll: cannot load ") + what + ": " +
                                (reason != nullptr ? reason : "not found") + "\n";
    (void)!write(2, message.data(), message.size());
    _exit(127);
}

}  // namespace companion_detail

// Opens the companion library soname: first as the dynamic loader finds a
// dependency (an already loaded copy, LD_LIBRARY_PATH, the run path, the
// system's cache), then beside the library holding this code, where the
// companions are installed together with it.
inline void *OpenCompanion(const char *soname) {
    void *library = dlopen(soname, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const std::string beside = companion_detail::OwnFolder() + soname;
        library = dlopen(beside.c_str(), RTLD_NOW | RTLD_LOCAL);
    }
    if (library == nullptr) companion_detail::Missing(soname);
    return library;
}

// The entry point name of the companion library (a handle of
// OpenCompanion); a companion without it is treated as missing.
template <typename Function>
Function CompanionEntry(void *library, const char *name) {
    Function entry = nullptr;
    if (!Resolve(library, name, entry)) companion_detail::Missing(name);
    return entry;
}

}  // namespace kx::platform

#endif
