#include "model/element/NewFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "ZVSmartModel/Error.h"
#include "model/element/AnonymousFile.h"

namespace ZVSmartModel {

std::string FollowLinks(const std::string& path) {
    namespace fs = std::filesystem;
    constexpr int mostLinks = 40;
    std::error_code ignored;
    fs::path target = path;
    for (int i = 0; i < mostLinks && fs::is_symlink(target, ignored); ++i) {
        target = target.parent_path() / fs::read_symlink(target, ignored);
    }
    return target.string();
}

NewFile::NewFile(const std::string& path) : path(FollowLinks(path)) {
    struct stat status = {};
    if (stat(this->path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        if (S_ISDIR(status.st_mode)) Fail(std::strerror(EISDIR));
        file = OwnedDescriptor(OpenAnonymousFile());
        return;
    }
    temporary = this->path + ".XXXXXX";
    file = OwnedDescriptor(mkostemp(temporary.data(), O_CLOEXEC));
    if (!file.IsOpen()) Fail(std::strerror(errno));
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(file.Number(), 0666 & ~mask);
}

NewFile::~NewFile() {
    if (!temporary.empty()) unlink(temporary.c_str());
}

void NewFile::Commit() {
    if (temporary.empty()) return Send();
    if (fsync(file.Number()) != 0 || std::rename(temporary.c_str(), path.c_str()) != 0) {
        Fail(std::strerror(errno));
    }
    temporary.clear();
}

void NewFile::Send() const {
    const OwnedDescriptor target(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    if (!target.IsOpen()) Fail(std::strerror(errno));
    std::string piece(1 << 16, '\0');
    off_t position = 0;
    while (const ssize_t read = pread(file.Number(), piece.data(), piece.size(), position)) {
        const ssize_t sent =
            read < 0 ? read : write(target.Number(), piece.data(), static_cast<std::size_t>(read));
        if (sent >= 0) {
            position += sent;
        } else if (errno != EINTR) {
            Fail(std::strerror(errno));
        }
    }
}

void NewFile::Fail(const char* reason) const {
    throw Error(Status::InputOutput, path + ": " + reason, path);
}

}  // namespace ZVSmartModel
