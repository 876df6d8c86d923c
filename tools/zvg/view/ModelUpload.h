#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "model/element/OwnedDescriptor.h"

namespace ZVSmartModel::Tool {

/// A model on its way from a browser, in a folder of its own that goes with this object.
class ModelUpload {
  public:
    static constexpr std::uint64_t mostBytes = std::uint64_t{2} << 30;
    static constexpr std::chrono::minutes longestTime{10};

    /// Whether a model may have this name, which becomes that of a file.
    static bool IsGoodName(const std::string& name);

    /// Throws Error InputOutput where there is no room for it.
    explicit ModelUpload(const std::string& name);
    ~ModelUpload();
    ModelUpload(const ModelUpload&) = delete;
    ModelUpload& operator=(const ModelUpload&) = delete;

    /// Adds what came. False where it is too much, too late or cannot be kept: then nothing more
    /// is taken.
    bool Take(const char* bytes, std::size_t count);

    /// Packs what came into a block file without a name. Ends with Error, Cancelled, soon after
    /// `cancelled` is set; throws as PackModelFile does, with messages that do not name the folder.
    OwnedDescriptor Pack(const std::atomic<bool>& cancelled);

    /// What the packed file may be called.
    std::string BlockName() const;

  private:
    std::string folder;  ///< with a slash behind it
    std::string name;
    OwnedDescriptor file;
    std::uint64_t bytes = 0;
    std::chrono::steady_clock::time_point begun = std::chrono::steady_clock::now();
};

}  // namespace ZVSmartModel::Tool
