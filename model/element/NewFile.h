#pragma once

#include <string>

#include "model/element/OwnedDescriptor.h"

namespace ZVSmartModel {

/// A file that gets its name only when it is whole: until then it lies beside it, under a name
/// that nobody knows, and goes with this object. Every call throws Error InputOutput.
class NewFile {
  public:
    explicit NewFile(const std::string& path);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    int Descriptor() const { return file.Number(); }

    /// Gives the file its name, once everything is on the disk; another file of that name goes.
    void Commit();

  private:
    [[noreturn]] void Fail() const;

    std::string path, temporary;
    OwnedDescriptor file;
};

}  // namespace ZVSmartModel
