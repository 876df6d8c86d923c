#pragma once

namespace ZVSmartModel {

/// Makes the work of a library that sorts by address come out the same in every process and every
/// build. While one lives, `new` hands out memory from a place of its own: who asks for the same
/// sizes in the same order gets the same addresses. `delete` takes back such memory at any time.
/// They may be nested. For processes of one thread.
class SteadyMemory {
  public:
    SteadyMemory();
    ~SteadyMemory();
    SteadyMemory(const SteadyMemory&) = delete;
    SteadyMemory& operator=(const SteadyMemory&) = delete;
};

}  // namespace ZVSmartModel
