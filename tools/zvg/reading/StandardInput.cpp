#include "tools/zvg/reading/StandardInput.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>

#include "tools/zvg/Command.h"
#include "tools/zvg/output/AnonymousFile.h"

using ZVSmartFormat::u64;

namespace {

[[noreturn]] void ThrowFailure(const std::string& what) {
    throw ToolError(ExitStatus::InputOutput, what + ": " + std::strerror(errno));
}

void WriteWhole(int descriptor, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = write(descriptor, bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) ThrowFailure("cannot keep standard input in a temporary file");
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
}

int Spooled() {
    const int descriptor = OpenAnonymousFile();
    std::string bytes(1 << 16, '\0');
    while (true) {
        const ssize_t count = read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) ThrowFailure("standard input");
        if (count == 0) return descriptor;
        WriteWhole(descriptor, bytes.data(), static_cast<std::size_t>(count));
    }
}

struct Source {
    int descriptor;
    u64 base;
    u64 size;
};

u64 SizeOf(int descriptor) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) ThrowFailure("standard input");
    return static_cast<u64>(status.st_size);
}

Source FindSource() {
    if (isatty(STDIN_FILENO)) {
        throw ToolError(ExitStatus::Usage,
                        "standard input is a terminal: pipe a block file into it or name one");
    }
    struct stat status = {};
    if (fstat(STDIN_FILENO, &status) != 0) ThrowFailure("standard input");
    const off_t here = lseek(STDIN_FILENO, 0, SEEK_CUR);
    if (!S_ISREG(status.st_mode) || here < 0) {
        const int descriptor = Spooled();
        return {descriptor, 0, SizeOf(descriptor)};
    }
    const u64 base = static_cast<u64>(here);
    const u64 end = SizeOf(STDIN_FILENO);
    return {STDIN_FILENO, base, end > base ? end - base : 0};
}

}  // namespace

StandardInput::StandardInput() {
    static const Source source = FindSource();
    descriptor = source.descriptor;
    base = source.base;
    size = source.size;
}

bool StandardInput::Read(void* buffer, u64* count) {
    u64 done = 0;
    while (done < *count) {
        const ssize_t got = pread(descriptor, static_cast<char*>(buffer) + done, *count - done,
                                  static_cast<off_t>(base + position));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return false;
        if (got == 0) break;
        done += static_cast<u64>(got);
        position += static_cast<u64>(got);
    }
    *count = done;
    return true;
}

int StandardInput::Seek(u64 pos) {
    if (pos > static_cast<u64>(INT64_MAX) - base) return -1;
    position = pos;
    return 0;
}
