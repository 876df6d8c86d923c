#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>

namespace ZVSmartModel {

/// What an importer may take. Beyond it the child is ended.
struct ImportLimits {
    std::uint64_t memoryBytes = 0;         ///< of memory in use
    std::chrono::milliseconds time{0};     ///< in all; 0 for no such limit
    std::chrono::milliseconds silence{0};  ///< of work without progress; 0 for no such limit
    /// Asked all the while, however silent the importer is, whether it is still wanted; or empty.
    std::function<bool()> wanted;

    /// Half of the machine's memory, and a minute without progress: more for a large model, whose
    /// parsing tells nothing, by a second for each megabyte.
    static ImportLimits For(std::uint64_t modelBytes);
};

/// Watches a child's limits from outside, where nothing it does can hinder.
class Watch {
  public:
    Watch(pid_t child, const ImportLimits& limits);

    /// How long to wait at most before the next Check.
    static constexpr int pauseMilliseconds = 20;

    void NoteProgress();
    /// Throws Error: InputOutput where a limit is passed, Cancelled where it is not wanted.
    void Check();

  private:
    using Clock = std::chrono::steady_clock;

    void CheckSilence(Clock::time_point now);

    pid_t child;
    ImportLimits limits;
    Clock::time_point begun, progress;
    /// When it was last seen how long the child has worked: the time that passed, or less where
    /// other programs had the processors.
    Clock::time_point sampled;
    Clock::duration workAtSample{0}, workSinceProgress{0};
};

/// Lowers what this process may allocate to the limit, with room for what is never used; for use
/// between fork and exec. The watch is the finer measure; this one holds while nobody watches.
void LimitOwnMemory(std::uint64_t memoryBytes);

/// Why an importer without memory ended. Throws Error: InputOutput where the limit was the
/// reason, Internal where this process is under a stricter one itself.
[[noreturn]] void ThrowNoMemory(const ImportLimits& limits);

}  // namespace ZVSmartModel
