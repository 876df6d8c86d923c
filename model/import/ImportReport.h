#pragma once

#include <functional>
#include <stdexcept>
#include <string>

namespace ZVSmartModel {

/// What an importer tells while it works.
struct ImportReport {
    std::function<void(const std::string& message)> warn;
    std::function<void(double fraction)> progress;  ///< 0 to 1
};

/// What a user may choose.
struct ImportOptions {
    double tolerance = 0.001;  ///< metres that lines may be off the curves they stand for
};

/// An input that cannot be read; `what()` says why, without the input's name.
class ImportError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// One that is damaged: no other machine and no other day would read it.
class DamagedModel : public ImportError {
  public:
    using ImportError::ImportError;
};

}  // namespace ZVSmartModel
