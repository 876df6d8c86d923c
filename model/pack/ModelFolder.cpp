#include "model/pack/ModelFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>

#include "ZVSmartModel/Error.h"

namespace ZVSmartModel {

namespace {

[[noreturn]] void RefuseFile(const std::string& name, const std::string& reason) {
    throw Error(Status::InputOutput, name + ": " + reason);
}

constexpr const char* withoutProc = "models are opened through /proc, which is not mounted";

std::string LinkTo(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

/// A path without links; empty where the system does not tell.
std::string PathOf(int descriptor) {
    char path[PATH_MAX];
    const ssize_t count = readlink(LinkTo(descriptor).c_str(), path, sizeof path);
    return {path, static_cast<std::size_t>(count > 0 ? count : 0)};
}

/// Finds what `path` names, through all links, without opening it: a device does not notice and a
/// pipe does not wait.
OwnedDescriptor Find(int folder, const std::string& path) {
    return OwnedDescriptor(openat(folder, path.c_str(), O_PATH | O_CLOEXEC));
}

/// Opens what was found. The number of its bytes goes to `bytes`.
OwnedDescriptor OpenFound(const OwnedDescriptor& found, const std::string& name,
                          unsigned long long* bytes = nullptr) {
    struct stat status = {};
    if (fstat(found.Number(), &status) != 0) RefuseFile(name, std::strerror(errno));
    if (!S_ISREG(status.st_mode)) RefuseFile(name, "not a regular file");
    if (bytes != nullptr) *bytes = static_cast<unsigned long long>(status.st_size);
    OwnedDescriptor file(open(LinkTo(found.Number()).c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    // It is there: what is missing is the way to it.
    if (!file.IsOpen()) RefuseFile(name, errno == ENOENT ? withoutProc : std::strerror(errno));
    return file;
}

std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

}  // namespace

ModelFolder::ModelFolder(const std::string& modelPath) : modelPath(modelPath) {
    const OwnedDescriptor model = Find(AT_FDCWD, modelPath);
    if (!model.IsOpen()) RefuseFile(modelPath, std::strerror(errno));
    OpenFound(model, modelPath, &modelBytes);
    folder = Find(AT_FDCWD, FolderOf(modelPath));
    if (!folder.IsOpen()) RefuseFile(modelPath, std::strerror(errno));
    folderPath = PathOf(folder.Number());
    if (folderPath.empty()) RefuseFile(modelPath, "its folder has no path");
    if (folderPath.back() != '/') folderPath += '/';
}

OwnedDescriptor ModelFolder::Open(const std::string& name) const {
    if (name.empty()) return OpenFound(Find(AT_FDCWD, modelPath), modelPath);
    const OwnedDescriptor found = Find(folder.Number(), name);
    if (!found.IsOpen()) return OwnedDescriptor();
    // Asked of what was found, not of the name, which may lead elsewhere the next time.
    if (!PathOf(found.Number()).starts_with(folderPath)) {
        RefuseFile(name, "not in the model's folder");
    }
    return OpenFound(found, name);
}

}  // namespace ZVSmartModel
