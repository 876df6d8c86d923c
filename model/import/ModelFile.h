#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "model/element/OwnedDescriptor.h"

namespace ZVSmartModel {

/// A file of a model, open for reading. It ends where it ended when it was opened.
class ModelFile {
  public:
    explicit ModelFile(OwnedDescriptor file);

    std::uint64_t Size() const { return size; }
    /// Reads up to `byteCount` bytes at `position` and returns their number, which is smaller at
    /// the end only. Throws ImportError where the file cannot be read.
    std::size_t Read(std::uint64_t position, char* bytes, std::size_t byteCount) const;
    std::string Bytes(std::uint64_t position, std::uint64_t most) const;

  private:
    OwnedDescriptor file;
    std::uint64_t size = 0;
};

/// Opens a file by the name that the model gives, the model itself by an empty name; nothing where
/// there is none.
using OpenModelFile = std::function<std::optional<ModelFile>(const std::string& name)>;

}  // namespace ZVSmartModel
