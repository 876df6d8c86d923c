#pragma once

#include <string>

#include "model/element/OwnedDescriptor.h"

namespace ZVSmartModel {

/// Where `path` leads if it is a symbolic link; a dangling link leads to the file it would make.
std::string FollowLinks(const std::string& path);

/// A file that gets its name only when it is whole: until then it lies beside it, under a name
/// that nobody knows, and goes with this object. A link stays and what it leads to is replaced. A
/// device or a pipe stays as well, and is sent the whole content; the file has no name then. Every
/// call throws Error InputOutput.
class NewFile {
  public:
    explicit NewFile(const std::string& path);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    int Descriptor() const { return file.Number(); }

    /// Gives the file its name, once everything is on the disk; another file of that name goes.
    /// Whoever reads from a pipe is waited for.
    void Commit();

  private:
    void Send() const;
    [[noreturn]] void Fail(const char* reason) const;

    std::string path, temporary;
    OwnedDescriptor file;
};

}  // namespace ZVSmartModel
