#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "model/query/Tables.h"

namespace ZVSmartModel {

/// Where the rows of a scan come from, file after file.
class RowSource {
  public:
    virtual ~RowSource() = default;
    /// Replaces `rows` by the next ones, none of them for a while perhaps. False behind the last.
    virtual bool Next(RowBatch& rows) = 0;
};

/// Reads one file when rows are asked for.
class OneFile : public RowSource {
  public:
    /// What is referred to is borrowed.
    OneFile(const Table& table, QueriedFiles& files, unsigned int file, const Request& request)
        : scan(table.scan(files, file, request)) {}

    bool Next(RowBatch& rows) override {
        rows.Clear();
        if (isOver) return false;
        isOver = !scan->Next(rows);
        return true;
    }

  private:
    std::unique_ptr<FileScan> scan;
    bool isOver = false;
};

/// Reads all files, ahead of who asks and in threads: a few files at once, of each a few batches.
class ScanAhead : public RowSource {
  public:
    /// `tell(done)` is called while rows are waited for, with the number of files that are done;
    /// what it throws passes through `Next`. The rest is borrowed.
    ScanAhead(const Table& table, QueriedFiles& files, const Request& request, unsigned int threads,
              std::function<void(unsigned int done)> tell);
    ~ScanAhead() override;

    bool Next(RowBatch& rows) override;

  private:
    static constexpr std::size_t mostBatches = 8;

    /// What was read of a file and is not asked for yet.
    struct FileRows {
        std::deque<RowBatch> batches;
        bool isDone = false;
    };

    void Work();
    void ReadFile(unsigned int file);
    FileRows& RowsOf(unsigned int file) { return window[file % window.size()]; }

    const Table& table;
    QueriedFiles& files;
    const Request& request;
    std::function<void(unsigned int)> tell;

    std::mutex mutex;                 ///< of what follows
    std::condition_variable hasRows;  ///< of the first file, or it is done
    std::condition_variable hasRoom;  ///< for another batch or file
    std::vector<FileRows> window;     ///< of the files from `first` on
    unsigned int first = 0;           ///< whose rows are asked for
    unsigned int next = 0;            ///< which no thread has begun
    std::exception_ptr failure;
    bool isOver = false;

    std::vector<std::thread> threads;
};

}  // namespace ZVSmartModel
