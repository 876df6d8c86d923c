// Preloaded into the tool, sends SIGTERM to it where it makes the call that ZVG_SIGNAL_AT names.

#include <dlfcn.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

template <class Call>
Call* Original(const char* name, Call*) {
    const char* const chosen = std::getenv("ZVG_SIGNAL_AT");
    if (chosen != nullptr && std::strcmp(chosen, name) == 0) std::raise(SIGTERM);
    return reinterpret_cast<Call*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

std::FILE* fdopen(int descriptor, const char* mode) noexcept {
    return Original("fdopen", fdopen)(descriptor, mode);
}

int rename(const char* from, const char* to) noexcept {
    return Original("rename", rename)(from, to);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned int flags) noexcept {
    return Original("renameat2", renameat2)(fromFolder, from, toFolder, to, flags);
}
}
