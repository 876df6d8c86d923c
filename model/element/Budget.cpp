#include "model/element/Budget.h"

#include <algorithm>
#include <chrono>
#include <ctime>

namespace ZVSmartModel {

namespace {

constexpr std::uint64_t boundless = std::uint64_t{1} << 62;  // leaves room to give back

// A second and 96 MiB for any file, and what grows with it.
constexpr std::uint64_t leastWork = 100'000'000;
constexpr std::uint64_t workPerByte = 400;
constexpr std::uint64_t leastMemory = 96 << 20;
constexpr std::uint64_t memoryPerByte = 2048;

std::uint64_t StepsOf(clockid_t clock) {
    timespec time = {};
    clock_gettime(clock, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 100'000'000 +
           static_cast<std::uint64_t>(time.tv_nsec) / 10;
}

}  // namespace

Budget::Budget(bool unlimited, const std::string& liftedBy)
    : unlimited(unlimited), liftedBy(liftedBy) {
    Renew();
}

void Budget::Renew() {
    files.clear();
    workLeft = unlimited ? boundless : leastWork;
    memoryLeft = unlimited ? boundless : leastMemory;
}

void Budget::AddFile(const std::string& path, std::uint64_t bytes) {
    files += (files.empty() ? "" : ", ") + path;
    if (unlimited) return;
    constexpr std::uint64_t mostBytes = std::uint64_t{1} << 40;
    workLeft += std::min(bytes, mostBytes) * workPerByte;
    memoryLeft += std::min(bytes, mostBytes) * memoryPerByte;
}

std::uint64_t Budget::BlockLimit(std::uint64_t fileBytes) const {
    constexpr std::uint64_t leastLimit = 32 << 20, limitPerByte = 64, formatLimit = 0xFFFFFFFF;
    if (unlimited || fileBytes > formatLimit) return formatLimit;
    return std::min(leastLimit + fileBytes * limitPerByte, formatLimit);
}

std::uint64_t Budget::ProcessorSteps() {
    return StepsOf(CLOCK_THREAD_CPUTIME_ID);
}

std::uint64_t Budget::ProcessSteps() {
    return StepsOf(CLOCK_PROCESS_CPUTIME_ID);
}

std::uint64_t Budget::ClockSteps() {
    const auto gone = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::nanoseconds(gone).count()) / 10;
}

void Budget::EndWork() {
    workLeft = 0;
    const std::string advice = liftedBy.empty() ? "" : " (" + liftedBy + " does it all)";
    throw BudgetUsedUp(files, "more work than the file's size accounts for" + advice);
}

void Budget::EndMemory() {
    workLeft = 0;
    if (unlimited) throw BudgetUsedUp(files, "more than 4 GiB in one piece");
    const std::string advice = liftedBy.empty() ? "" : " (" + liftedBy + " takes it)";
    throw BudgetUsedUp(files, "more memory than the file's size accounts for" + advice);
}

}  // namespace ZVSmartModel
