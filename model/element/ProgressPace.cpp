#include "model/element/ProgressPace.h"

#include "ZVSmartModel/Error.h"

namespace ZVSmartModel {

void ProgressPace::Tell(const char* work, std::size_t done, std::size_t total) {
    if (!progress) return;
    constexpr std::chrono::milliseconds pause(50);
    const Clock::time_point now = Clock::now();
    if (work == current && now - told < pause) return;
    current = work;
    told = now;
    const double fraction = total == 0 ? 0 : static_cast<double>(done) / static_cast<double>(total);
    if (!progress(current, fraction)) throw Error(Status::Cancelled, "cancelled");
}

}  // namespace ZVSmartModel
