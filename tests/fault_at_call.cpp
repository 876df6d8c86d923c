// Preloaded into the tool, this makes one of its calls go wrong: ZVG_FAULT is CALL:NUMBER:WHAT,
// or several of them with commas between, for the call of that number, counted from 1 in each
// process, or 0 for all. WHAT is the number of a signal that comes before the call, or the letter e
// and the number of the error that it fails with. Of reads only those of standard input and of
// files in the folder ZVG_FAULT_IN count.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

namespace {

/// Whether this call is to fail; the reason is in `errno` then.
bool Fails(const char* name) {
    const char* const faults = std::getenv("ZVG_FAULT");
    const std::string start = std::string(name) + ':';
    const char* const fault = faults == nullptr ? nullptr : std::strstr(faults, start.c_str());
    if (fault == nullptr || (fault != faults && fault[-1] != ',')) return false;
    static std::map<std::string, long> calls;
    char* what = nullptr;
    const long number = std::strtol(fault + start.size(), &what, 10);
    if (++calls[start] != number && number != 0) return false;
    if (what[1] != 'e') {
        std::raise(std::atoi(what + 1));
        return false;
    }
    errno = std::atoi(what + 2);
    return true;
}

bool ReadFails(int descriptor) {
    const char* const folder = std::getenv("ZVG_FAULT_IN");
    if (folder == nullptr) return false;
    char path[4096] = {};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    if (readlink(link.c_str(), path, sizeof path - 1) < 0) return false;
    const bool counts =
        descriptor == STDIN_FILENO || std::strncmp(path, folder, std::strlen(folder)) == 0;
    return counts && Fails("read");
}

template <class Call>
Call* Original(const char* name, Call*) {
    return reinterpret_cast<Call*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

std::FILE* fdopen(int descriptor, const char* mode) noexcept {
    return Fails("fdopen") ? nullptr : Original("fdopen", fdopen)(descriptor, mode);
}

off_t ftello(std::FILE* file) {
    return Fails("ftello") ? -1 : Original("ftello", ftello)(file);
}

int fsync(int descriptor) {
    struct stat status = {};
    const bool isFolder = fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
    return Fails(isFolder ? "fsyncFolder" : "fsync") ? -1 : Original("fsync", fsync)(descriptor);
}

int open(const char* path, int flags, ...) {
    std::va_list more;
    va_start(more, flags);
    const mode_t mode = va_arg(more, mode_t);
    va_end(more);
    if ((flags & O_TMPFILE) == O_TMPFILE && Fails("openNameless")) return -1;
    return Original("open", open)(path, flags, mode);
}

int link(const char* from, const char* to) noexcept {
    return Fails("link") ? -1 : Original("link", link)(from, to);
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    return Fails("linkat") ? -1 : Original("linkat", linkat)(fromFolder, from, toFolder, to, flags);
}

int rename(const char* from, const char* to) noexcept {
    return Fails("rename") ? -1 : Original("rename", rename)(from, to);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned int flags) noexcept {
    return Fails("renameat2")
               ? -1
               : Original("renameat2", renameat2)(fromFolder, from, toFolder, to, flags);
}

ssize_t read(int descriptor, void* buffer, std::size_t size) {
    return ReadFails(descriptor) ? -1 : Original("read", read)(descriptor, buffer, size);
}

ssize_t pread(int descriptor, void* buffer, std::size_t size, off_t position) {
    return ReadFails(descriptor) ? -1
                                 : Original("pread", pread)(descriptor, buffer, size, position);
}
}
