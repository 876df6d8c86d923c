// The time for the same files written by savers in several threads, and by one saver after another
// that has threads of its own; and whether the files are the same.
//   study_threads SOURCE THREADS...     as Payload.h tells
// Prints lines of: "savers" or "saver", threads, seconds, files per second against the first
// line's, "same" or "different".

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include "bench/Payload.h"

using namespace bench;

namespace {

constexpr std::size_t fileCount = 8;

/// Writes the payload `fileCount` times, in `threadCount` threads; the files' bytes.
std::vector<Bytes> WriteFiles(const Payload& payload, std::size_t threadCount) {
    std::vector<Bytes> files(fileCount);
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&, thread] {
            for (std::size_t i = thread; i < fileCount; i += threadCount)
                files[i] = Written(payload, Part::both);
        });
    }
    for (std::thread& thread : threads) thread.join();
    return files;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    const Payload payload = LoadPayload(argv[1]);
    const Bytes expected = Written(payload, Part::both);
    double alone = 0;
    const auto writeOneByOne = [&](std::size_t threadCount) {
        std::vector<Bytes> files;
        for (std::size_t i = 0; i < fileCount; ++i)
            files.push_back(Written(payload, Part::both, static_cast<unsigned int>(threadCount)));
        return files;
    };
    const auto study = [&](const char* who, std::size_t threadCount, const auto& write) {
        std::vector<double> times;
        bool same = true;
        for (int turn = 0; turn < 7; ++turn) {
            const auto start = std::chrono::steady_clock::now();
            const std::vector<Bytes> files = write(threadCount);
            const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
            times.push_back(spent.count());
            for (const Bytes& file : files) same = same && file == expected;
        }
        std::sort(times.begin(), times.end());
        const double median = times[times.size() / 2];
        if (alone == 0) alone = median;
        std::printf("%s\t%zu\t%.3f\t%.2f\t%s\n", who, threadCount, median, alone / median,
                    same ? "same" : "different");
    };
    for (int arg = 2; arg < argc; ++arg) {
        const std::size_t threadCount = std::stoul(argv[arg]);
        study("savers", threadCount, [&](std::size_t count) { return WriteFiles(payload, count); });
        study("saver", threadCount, writeOneByOne);
    }
    return 0;
}
