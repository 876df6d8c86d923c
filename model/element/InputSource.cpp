#include "model/element/InputSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "ZVSmartModel/Error.h"
#include "model/element/AnonymousFile.h"

namespace ZVSmartModel {

using ZVSmartFormat::u64;

namespace {

/// `name` is the file's; `what` says what failed, where that is not just it.
[[noreturn]] void ThrowFailure(const std::string& name, const std::string& what = "") {
    const std::string& told = what.empty() ? name : what;
    throw Error(Status::InputOutput, told + ": " + std::strerror(errno), name);
}

void WriteWhole(int descriptor, const char* bytes, std::size_t count, const std::string& name) {
    while (count > 0) {
        const ssize_t written = write(descriptor, bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) ThrowFailure(name, "cannot keep " + name + " in a temporary file");
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
    if (other != nullptr) throw Error(Status::InputOutput, path + ": " + other, path);
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) ThrowFailure(path);
    if (!S_ISFIFO(status.st_mode)) return descriptor;
    const int spooled = Spooled(descriptor, path);
    close(descriptor);
    return spooled;
}

/// Takes over the descriptor.
std::unique_ptr<InputStream> StreamOf(int descriptor, u64 base, const std::string& name) {
    const auto end = static_cast<u64>(StatusOf(descriptor, name).st_size);
    return std::make_unique<InputStream>(descriptor, base, end > base ? end - base : 0);
}

}  // namespace

std::unique_ptr<InputStream> OpenInput(const std::string& path) {
    return StreamOf(OpenFile(path), 0, path);
}

std::unique_ptr<InputStream> OpenInput(int source, const std::string& name) {
    const struct stat status = StatusOf(source, name);
    const off_t here = lseek(source, 0, SEEK_CUR);
    if (!S_ISREG(status.st_mode) || here < 0) return StreamOf(Spooled(source, name), 0, name);
    const int descriptor = fcntl(source, F_DUPFD_CLOEXEC, 0);
    if (descriptor < 0) ThrowFailure(name);
    return StreamOf(descriptor, static_cast<u64>(here), name);
}

}  // namespace ZVSmartModel
