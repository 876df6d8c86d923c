#include "tools/zvg/output/UnfinishedFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "tools/zvg/output/SignalCleanup.h"

namespace ZVSmartModel::Tool {

namespace {

constexpr int mostTries = 100;  // a process of this number may have died here before

/// By this name a file that has none can be given one.
std::string DescriptorPath(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

/// Some file systems have nothing to hand on, which they say.
bool SyncWhole(int descriptor) {
    return fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP;
}

}  // namespace

UnfinishedFile::~UnfinishedFile() {
    if (descriptor >= 0) close(descriptor);
    if (name.empty()) return;
    unlink(name.c_str());
    KeepOnSignal(name.c_str());
}

std::string UnfinishedFile::Folder() const {
    const std::string folder = std::filesystem::path(target).parent_path().string();
    return folder.empty() ? "." : folder;
}

/// Short, so that it fits wherever the target's name does.
std::string UnfinishedFile::FreeName() {
    return Folder() + "/.zvg-" + std::to_string(getpid()) + '-' + std::to_string(namesTaken++) +
           ".tmp";
}

bool UnfinishedFile::Create(const std::string& wanted) {
    target = wanted;
    descriptor = open(Folder().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    if (descriptor >= 0 && access(DescriptorPath(descriptor).c_str(), F_OK) == 0) return true;
    if (descriptor >= 0) close(descriptor);
    return CreateNamed();
}

bool UnfinishedFile::CreateNamed() {
    for (int i = 0; i < mostTries; ++i) {
        const std::string free = FreeName();
        descriptor = open(free.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor < 0 && errno == EEXIST) continue;
        if (descriptor < 0) return false;
        name = free;
        RemoveOnSignal(name.c_str());
        return true;
    }
    return false;
}

bool UnfinishedFile::Sync() const {
    return SyncWhole(descriptor);
}

/// A file with a name can take another one's place.
bool UnfinishedFile::GiveName() {
    const std::string source = DescriptorPath(descriptor);
    for (int i = 0; i < mostTries; ++i) {
        name = FreeName();
        RemoveOnSignal(name.c_str());
        if (linkat(AT_FDCWD, source.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
            return true;
        }
        KeepOnSignal(name.c_str());
        name.clear();
        if (errno != EEXIST) return false;
    }
    return false;
}

/// Without `replace` a target that has appeared meanwhile is not replaced, where the file system
/// can promise that.
bool UnfinishedFile::Place(bool replace, bool keepOld) {
    if (name.empty()) {
        const std::string source = DescriptorPath(descriptor);
        if (linkat(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), AT_SYMLINK_FOLLOW) == 0) {
            return true;
        }
        if (!replace || errno != EEXIST || !GiveName()) return false;
    }
    bool placed = false;
    if (!replace) {
        placed = renameat2(AT_FDCWD, name.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0;
        if (!placed && errno != EINVAL && errno != ENOSYS) return false;
    } else if (keepOld && !KeepOld()) {
        return false;
    }
    if (!placed && std::rename(name.c_str(), target.c_str()) != 0) {
        const int reason = errno;
        if (!oldName.empty()) TakeBack();
        errno = reason;
        return false;
    }
    KeepOnSignal(name.c_str());
    name.clear();
    return true;
}

/// By a second name; where the file system knows none, by another one.
bool UnfinishedFile::KeepOld() {
    for (int i = 0; i < mostTries; ++i) {
        oldName = FreeName();
        if (link(target.c_str(), oldName.c_str()) == 0) return true;
        if (errno == EEXIST) continue;
        if (errno != ENOENT && std::rename(target.c_str(), oldName.c_str()) == 0) return true;
        oldName.clear();
        return errno == ENOENT;
    }
    oldName.clear();
    return false;
}

bool UnfinishedFile::TakeBack() {
    if (oldName.empty()) return unlink(target.c_str()) == 0;
    if (std::rename(oldName.c_str(), target.c_str()) != 0) return false;
    ForgetOld();  // where both names were still those of one file, nothing was renamed
    return true;
}

void UnfinishedFile::ForgetOld() {
    if (!oldName.empty()) unlink(oldName.c_str());
    oldName.clear();
}

/// A folder that may not be read cannot be synced; that is no failure of what stands in it.
bool UnfinishedFile::SyncFolder() const {
    const int folder = open(Folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return errno == EACCES;
    const bool good = SyncWhole(folder);
    const int reason = errno;
    close(folder);
    errno = reason;
    return good;
}

}  // namespace ZVSmartModel::Tool
