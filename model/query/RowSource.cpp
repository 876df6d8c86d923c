#include "model/query/RowSource.h"

#include <chrono>
#include <utility>

namespace ZVSmartModel {

ScanAhead::ScanAhead(const Table& table, QueriedFiles& files, const Request& request,
                     unsigned int threadCount, std::function<void(unsigned int)> tell)
    : table(table), files(files), request(request), tell(std::move(tell)) {
    window.resize(std::size_t{4} * threadCount);
    try {
        for (unsigned int i = 0; i < threadCount; ++i) threads.emplace_back([this] { Work(); });
    } catch (const std::system_error&) {
        if (threads.empty()) throw;  // fewer do as well
    }
}

ScanAhead::~ScanAhead() {
    {
        const std::lock_guard<std::mutex> alone(mutex);
        isOver = true;
    }
    hasRoom.notify_all();
    for (std::thread& thread : threads) thread.join();
}

bool ScanAhead::Next(RowBatch& rows) {
    std::unique_lock<std::mutex> alone(mutex);
    while (first < files.Count()) {
        FileRows& current = RowsOf(first);
        if (!current.batches.empty()) {
            std::swap(rows, current.batches.front());
            current.batches.pop_front();
            if (current.batches.size() + 1 == mostBatches) hasRoom.notify_all();
            return true;
        }
        if (failure) std::rethrow_exception(failure);
        if (current.isDone) {
            current.isDone = false;
            ++first;
            hasRoom.notify_all();
            continue;
        }
        hasRows.wait_for(alone, std::chrono::milliseconds(50));
        alone.unlock();
        tell(first);
        alone.lock();
    }
    return false;
}

void ScanAhead::Work() {
    std::unique_lock<std::mutex> alone(mutex);
    for (;;) {
        hasRoom.wait(alone, [this] {
            return isOver || next == files.Count() || next - first < window.size();
        });
        if (isOver || next == files.Count()) return;
        const unsigned int file = next++;
        alone.unlock();
        try {
            ReadFile(file);
        } catch (...) {
            alone.lock();
            failure = std::current_exception();
            isOver = true;
            hasRows.notify_one();
            hasRoom.notify_all();
            return;
        }
        alone.lock();
        RowsOf(file).isDone = true;
        if (file == first) hasRows.notify_one();
    }
}

void ScanAhead::ReadFile(unsigned int file) {
    const std::unique_ptr<FileScan> scan = table.scan(files, file, request);
    for (bool hasMore = true; hasMore;) {
        RowBatch rows(request);
        hasMore = scan->Next(rows);
        std::unique_lock<std::mutex> alone(mutex);
        FileRows& of = RowsOf(file);
        hasRoom.wait(alone, [&] { return isOver || of.batches.size() < mostBatches; });
        if (isOver) return;
        if (rows.Rows() == 0) continue;
        of.batches.push_back(std::move(rows));
        if (file == first && of.batches.size() == 1) hasRows.notify_one();
    }
}

}  // namespace ZVSmartModel
