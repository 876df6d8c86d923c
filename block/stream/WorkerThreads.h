#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace ZVSmartFormat {

/// Threads that do what they are told, in the order in which they are told. One is begun when there
/// is more to do than those that are there have taken on.
class WorkerThreads {
  public:
    explicit WorkerThreads(unsigned int most) : most(most) {}
    /// Waits for what is being done. What is not begun is left undone.
    ~WorkerThreads();
    WorkerThreads(const WorkerThreads&) = delete;
    WorkerThreads& operator=(const WorkerThreads&) = delete;

    /// Has `task` done, which throws nothing. Throws std::system_error, with nothing done, where
    /// the system gives not one thread; fewer than asked for do.
    void Do(std::function<void()> task);

  private:
    void Work();

    const std::size_t most;
    std::mutex mutex;
    std::condition_variable hasTask;
    std::deque<std::function<void()>> tasks;
    std::size_t idle = 0;
    bool isEnding = false;
    std::vector<std::thread> threads;
};

}  // namespace ZVSmartFormat
