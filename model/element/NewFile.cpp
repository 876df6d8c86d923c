#include "model/element/NewFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ZVSmartModel/Error.h"

namespace ZVSmartModel {

NewFile::NewFile(const std::string& path)
    : path(path), temporary(path + ".XXXXXX"), file(mkostemp(temporary.data(), O_CLOEXEC)) {
    if (!file.IsOpen()) Fail();
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(file.Number(), 0666 & ~mask);
}

NewFile::~NewFile() {
    if (!temporary.empty()) unlink(temporary.c_str());
}

void NewFile::Commit() {
    if (fsync(file.Number()) != 0 || std::rename(temporary.c_str(), path.c_str()) != 0) Fail();
    temporary.clear();
}

void NewFile::Fail() const {
    throw Error(Status::InputOutput, path + ": " + std::strerror(errno), path);
}

}  // namespace ZVSmartModel
