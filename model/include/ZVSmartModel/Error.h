#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "ZVSmartModel/ModelApi.h"

namespace ZVSmartModel {

/// Why a call failed. The numbers are those with which `zvg` ends.
enum class Status : int {
    Internal = 1,     ///< the library itself failed, or memory ran out
    Usage = 2,        ///< the call asks for what does not exist or this build cannot do
    InputOutput = 3,  ///< a file could not be read or written, or an importer refused a model
    Damaged = 4,      ///< the file is damaged or not a block file
    NotFound = 5,     ///< what was asked for is not in the file
    Cancelled = 6,    ///< the caller's progress callback said so
};

/// What every call of this library throws; `what()` is one line of UTF-8 for people, which names
/// the file, where it matters the place in it, and the reason.
class ZVSM_API Error : public std::runtime_error {
  public:
    /// Stands for no place in a file.
    static constexpr std::uint64_t noPosition = ~std::uint64_t{0};

    /// `message` is what people read; see below for the rest.
    Error(Status status, const std::string& message, const std::string& path = "",
          std::uint64_t position = noPosition);
    ~Error() override;

    /// Why the call failed.
    Status GetStatus() const { return status; }
    /// The file that the call was about; empty where there is none.
    const std::string& Path() const { return path; }
    /// The byte in the file at which the first damage was met; `noPosition` where nobody knows.
    std::uint64_t Position() const { return position; }

  private:
    Status status;
    std::string path;
    std::uint64_t position;
};

}  // namespace ZVSmartModel
