#pragma once

#include <functional>
#include <stdexcept>
#include <string>

/// What an importer tells while it works.
struct ImportReport {
    std::function<void(const std::string& message)> warn;
    std::function<void(double fraction)> progress;  ///< 0 to 1
};

/// An input that cannot be read; `what()` says why, without the input's name.
class ImportError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};
