#include "model/pack/Watch.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <sstream>
#include <string>

#include "ZVSmartModel/Error.h"

namespace ZVSmartModel {

namespace {

// Stacks of threads, pools and buffers that are reserved and hardly touched.
constexpr std::uint64_t unusedBytes = std::uint64_t{512} << 20;

[[noreturn]] void Throw(const std::string& message) {
    throw Error(Status::InputOutput, message);
}

[[noreturn]] void ThrowTooMuchMemory(std::uint64_t limit) {
    Throw("the importer needs more than " + std::to_string(limit >> 20) +
          " MiB of memory (--max-memory)");
}

std::string Seconds(std::chrono::milliseconds time) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", std::chrono::duration<double>(time).count());
    return std::string(text) + " s";
}

/// 0 where it is not told, as of a child that has ended.
std::uint64_t ResidentBytes(pid_t process) {
    const std::string path = "/proc/" + std::to_string(process) + "/statm";
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return 0;
    char text[256] = {};
    const ssize_t count = read(file, text, sizeof text - 1);
    close(file);
    unsigned long long all = 0;
    unsigned long long resident = 0;
    if (count <= 0 || !(std::istringstream(text) >> all >> resident)) return 0;
    return resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

/// What processors spent on it; nothing where it is not told.
std::chrono::nanoseconds WorkOf(pid_t process) {
    clockid_t clock = 0;
    timespec time = {};
    if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &time) != 0) return {};
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::uint64_t SoftLimit(int resource) {
    rlimit limit = {RLIM_INFINITY, RLIM_INFINITY};
    getrlimit(static_cast<__rlimit_resource>(resource), &limit);
    return limit.rlim_cur;
}

}  // namespace

ImportLimits ImportLimits::For(std::uint64_t modelBytes) {
    const auto pages = static_cast<std::uint64_t>(std::max(sysconf(_SC_PHYS_PAGES), 0L));
    ImportLimits limits;
    limits.memoryBytes = pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) / 2;
    limits.silence = std::chrono::seconds(60 + modelBytes / 1'000'000);
    return limits;
}

Watch::Watch(pid_t child, const ImportLimits& limits)
    : child(child), limits(limits), begun(Clock::now()), progress(begun), sampled(begun) {}

void Watch::NoteProgress() {
    progress = Clock::now();
    workSinceProgress = {};
}

void Watch::Check() {
    if (limits.wanted && !limits.wanted()) throw Error(Status::Cancelled, "cancelled");
    if (ResidentBytes(child) > limits.memoryBytes) ThrowTooMuchMemory(limits.memoryBytes);
    const Clock::time_point now = Clock::now();
    if (limits.time.count() != 0 && now - begun > limits.time) {
        Throw("the importer needs more than " + Seconds(limits.time) + " (--max-time)");
    }
    if (limits.silence.count() != 0) CheckSilence(now);
}

/// A busy machine does not make a model hostile: what counts is the time in which the child
/// worked, and a multiple of it by the clock only for one that does nothing at all.
void Watch::CheckSilence(Clock::time_point now) {
    constexpr std::chrono::milliseconds sampling(200);
    constexpr int idleFactor = 20;
    if (now - sampled < sampling) return;
    const Clock::duration work = WorkOf(child);
    // Many threads at once count as one.
    workSinceProgress += std::clamp(work - workAtSample, Clock::duration(0), now - sampled);
    workAtSample = work;
    sampled = now;
    const bool idle = now - progress > idleFactor * limits.silence;
    if (idle || workSinceProgress > limits.silence) {
        Throw("the importer makes no progress for " + Seconds(limits.silence) +
              " (--max-time gives it a time in all instead)");
    }
}

void LimitOwnMemory(std::uint64_t memoryBytes) {
#ifdef __SANITIZE_ADDRESS__
    memoryBytes += std::uint64_t{1} << 46;  // the sanitizer's own, hardly touched
#endif
    rlimit limit = {};
    if (getrlimit(RLIMIT_DATA, &limit) != 0) return;
    limit.rlim_max = std::min<rlim_t>(limit.rlim_max, memoryBytes + unusedBytes);
    limit.rlim_cur = std::min(limit.rlim_cur, limit.rlim_max);
    setrlimit(RLIMIT_DATA, &limit);
}

void ThrowNoMemory(const ImportLimits& limits) {
    const std::uint64_t own = limits.memoryBytes + unusedBytes;
    if (SoftLimit(RLIMIT_AS) <= own || SoftLimit(RLIMIT_DATA) <= own) {
        throw Error(Status::Internal, "out of memory");
    }
    ThrowTooMuchMemory(limits.memoryBytes);
}

}  // namespace ZVSmartModel
