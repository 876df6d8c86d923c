#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

#include "ZVSmartModel/Error.h"

namespace ZVSmartModel {

/// Ends what asks for more than the files' sizes account for. Uncaught it ends the command.
class BudgetUsedUp : public Error {
  public:
    BudgetUsedUp(const std::string& files, const std::string& reason)
        : Error(Status::Damaged, files + ": the rest is left out: " + reason), reason(reason) {}

    /// Why, in a few words, and what the user can do about it.
    const std::string& Reason() const { return reason; }

  private:
    std::string reason;
};

/// What one command may take for the block files that it reads: work and memory, with room for
/// far more than an honest file of their size asks for. It is charged where a few bytes of a file
/// can ask for much: records that overlap, rows and placements that repeat, names that lead to
/// one record, polygons, rays.
class Budget {
  public:
    /// `liftedBy` tells a person how to take what a file asks for, such as "--no-limit".
    explicit Budget(bool unlimited, const std::string& liftedBy = "");

    /// As it was at first, without files.
    void Renew();

    /// Makes room for one more file.
    void AddFile(const std::string& path, std::uint64_t bytes);

    /// Charges steps of about ten nanoseconds. Throws BudgetUsedUp, as all that charges.
    void Work(std::uint64_t steps) {
        if (steps > workLeft) EndWork();
        workLeft -= steps;
    }

    /// Charges bytes that are kept, until they are given back.
    void Memory(std::uint64_t bytes) {
        if (bytes > memoryLeft) EndMemory();
        memoryLeft -= bytes;
    }
    void GiveBack(std::uint64_t bytes) { memoryLeft += bytes; }

    /// A budget for what a thread does ahead of this one: as much work as is left here, and so much
    /// memory. What is done counts here when it is taken over.
    Budget Apart(std::uint64_t memory) const {
        Budget apart = *this;
        apart.memoryLeft = std::min(memoryLeft, memory);
        return apart;
    }
    /// @{
    std::uint64_t WorkLeft() const { return workLeft; }
    std::uint64_t MemoryLeft() const { return memoryLeft; }
    /// @}

    /// The largest decoded block that a reader should take of a file of this size.
    std::uint64_t BlockLimit(std::uint64_t fileBytes) const;

    /// Does what cannot be counted from outside and charges the processor time that it took.
    template <class Act>
    auto Timed(Act act) {
        const std::uint64_t begun = ProcessorSteps();
        auto result = act();
        Work(ProcessorSteps() - begun);
        return result;
    }

    /// The same where other threads of the process work for this one: the time that has passed, or
    /// what all threads have worked where that is less; but for `apart()` steps of it, asked for
    /// afterwards, which are charged by what they do.
    /// @{
    template <class Act, class Apart>
    auto TimedWithThreads(Act act, Apart apart) {
        const std::uint64_t begun = ClockSteps(), worked = ProcessSteps();
        auto result = act();
        const std::uint64_t taken = std::min(ClockSteps() - begun, ProcessSteps() - worked);
        Work(taken - std::min<std::uint64_t>(taken, apart()));
        return result;
    }
    template <class Act>
    auto TimedWithThreads(Act act) {
        return TimedWithThreads(act, [] { return 0; });
    }
    /// @}

    /// The processor time that this thread has taken, in steps.
    static std::uint64_t ProcessorSteps();

    /// The same of all threads of the process.
    static std::uint64_t ProcessSteps();

    /// The steps that a clock has gone, whoever took them: cheaper to ask for by far.
    static std::uint64_t ClockSteps();

    /// What lifts the limits, as it was given.
    const std::string& LiftedBy() const { return liftedBy; }

    /// Throws as if more memory had been asked for than there is.
    [[noreturn]] void EndMemory();

  private:
    [[noreturn]] void EndWork();

    bool unlimited;
    std::string liftedBy;
    std::string files;
    std::uint64_t workLeft = 0, memoryLeft = 0;
};

/// Memory that is charged as long as this object lives.
class HeldMemory {
  public:
    explicit HeldMemory(Budget& budget) : budget(budget) {}
    ~HeldMemory() { GiveBack(); }
    HeldMemory(const HeldMemory&) = delete;
    HeldMemory& operator=(const HeldMemory&) = delete;

    void Add(std::uint64_t bytes) {
        budget.Memory(bytes);
        held += bytes;
    }
    void GiveBack() {
        budget.GiveBack(held);
        held = 0;
    }
    std::uint64_t Held() const { return held; }

  private:
    Budget& budget;
    std::uint64_t held = 0;
};

}  // namespace ZVSmartModel
