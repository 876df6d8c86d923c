#include "tools/zvg/reading/InputSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/zvg/Command.h"
#include "tools/zvg/output/AnonymousFile.h"

using ZVSmartFormat::u64;

namespace {

constexpr const char* standardInput = "standard input";

[[noreturn]] void ThrowFailure(const std::string& what) {
    throw ToolError(ExitStatus::InputOutput, what + ": " + std::strerror(errno));
}

void WriteWhole(int descriptor, const char* bytes, std::size_t count, const std::string& name) {
    while (count > 0) {
        const ssize_t written = write(descriptor, bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) ThrowFailure("cannot keep " + name + " in a temporary file");
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
}

int Spooled(int source, const std::string& name) {
    const int descriptor = OpenAnonymousFile();
    std::string bytes(1 << 16, '\0');
    while (true) {
        const ssize_t count = read(source, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) ThrowFailure(name);
        if (count == 0) return descriptor;
        WriteWhole(descriptor, bytes.data(), static_cast<std::size_t>(count), name);
    }
}

struct stat StatusOf(int descriptor, const std::string& name) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) ThrowFailure(name);
    return status;
}

/// An open file that can seek, and where it begins.
struct Source {
    int descriptor;
    u64 base;
};

Source FindStandardInput() {
    if (isatty(STDIN_FILENO)) {
        throw ToolError(ExitStatus::Usage,
                        "standard input is a terminal: pipe a block file into it or name one");
    }
    const struct stat status = StatusOf(STDIN_FILENO, standardInput);
    const off_t here = lseek(STDIN_FILENO, 0, SEEK_CUR);
    if (S_ISREG(status.st_mode) && here >= 0) return {STDIN_FILENO, static_cast<u64>(here)};
    return {Spooled(STDIN_FILENO, standardInput), 0};
}

/// What it is that is no file; nullptr for files and pipes.
const char* OtherKind(mode_t mode) {
    if (S_ISDIR(mode)) return "is a directory";
    if (S_ISSOCK(mode)) return "is a socket";
    if (S_ISCHR(mode) || S_ISBLK(mode)) return "is a device";
    return nullptr;
}

/// Opens what may be opened without a side effect.
int OpenFile(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) ThrowFailure(path);
    const char* const other = OtherKind(status.st_mode);
    if (other != nullptr) throw ToolError(ExitStatus::InputOutput, path + ": " + other);
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) ThrowFailure(path);
    if (!S_ISFIFO(status.st_mode)) return descriptor;
    const int spooled = Spooled(descriptor, path);
    close(descriptor);
    return spooled;
}

}  // namespace

std::unique_ptr<InputStream> OpenInput(const std::string& path) {
    Source source = {-1, 0};
    if (path == "-") {
        static const Source found = FindStandardInput();
        source = found;
        source.descriptor = fcntl(found.descriptor, F_DUPFD_CLOEXEC, 0);
        if (source.descriptor < 0) ThrowFailure(standardInput);
    } else {
        source.descriptor = OpenFile(path);
    }
    const auto end = static_cast<u64>(StatusOf(source.descriptor, path).st_size);
    return std::make_unique<InputStream>(source.descriptor, source.base,
                                         end > source.base ? end - source.base : 0);
}
