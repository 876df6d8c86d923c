#include "stream/WorkerThreads.h"

#include <system_error>
#include <utility>

namespace ZVSmartFormat {

WorkerThreads::~WorkerThreads() {
    {
        const std::lock_guard<std::mutex> alone(mutex);
        isEnding = true;
    }
    hasTask.notify_all();
    for (std::thread& thread : threads) thread.join();
}

void WorkerThreads::Do(std::function<void()> task) {
    {
        const std::lock_guard<std::mutex> alone(mutex);
        if (tasks.size() >= idle && threads.size() < most) {
            try {
                threads.emplace_back([this] { Work(); });
            } catch (const std::system_error&) {
                if (threads.empty()) throw;
            }
        }
        tasks.push_back(std::move(task));
    }
    hasTask.notify_one();
}

void WorkerThreads::Work() {
    std::unique_lock<std::mutex> alone(mutex);
    for (;;) {
        ++idle;
        hasTask.wait(alone, [this] { return isEnding || !tasks.empty(); });
        --idle;
        if (isEnding) return;
        const std::function<void()> task = std::move(tasks.front());
        tasks.pop_front();
        alone.unlock();
        task();
        alone.lock();
    }
}

}  // namespace ZVSmartFormat
