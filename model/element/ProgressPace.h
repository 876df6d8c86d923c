#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// Tells a caller how far a call is: each work when it begins, then a few times a second. It may
/// be told at every turn of a loop.
class ProgressPace {
  public:
    /// `progress` is borrowed; it may be empty.
    explicit ProgressPace(const Progress& progress) : progress(progress) {}

    /// `done` of `total` of what there is of `work`. Throws Error, Cancelled, where the caller
    /// does not want more.
    void Tell(const char* work, std::size_t done, std::size_t total);

  private:
    using Clock = std::chrono::steady_clock;

    const Progress& progress;
    std::string current;
    Clock::time_point told;
};

}  // namespace ZVSmartModel
