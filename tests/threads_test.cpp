// Readers and a saver in threads of their own share nothing but the coder's mode.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "ZVSmartFormat/FileStream.h"
#include "support.h"

namespace {

using namespace support;

TEST(Threads, EightReadersAndASaver) {
    constexpr int rounds = 1000;
    const Bytes file = SampleFile(4);
    const TempFile onDisk(file);
    const std::vector<std::string> right = Answers(file);

    std::atomic<int> readersLeft{8}, mistakes{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] {
            ZVSmartFormat::CZVFTFileInStream in(onDisk.path);
            if (!in.Open()) ++mistakes;
            for (int round = 0; round < rounds; ++round) mistakes += Answers(in) != right;
            --readersLeft;
        });
    threads.emplace_back([&] {
        for (bool isFast = true; readersLeft != 0; isFast = !isFast) {
            CZVLGBlockSaver().SetEncodeFastMod(isFast);
            mistakes += Answers(SampleFile(4)) != right;
        }
    });
    for (std::thread& thread : threads) thread.join();
    CZVLGBlockSaver().SetEncodeFastMod(false);
    EXPECT_EQ(mistakes, 0);
}

}  // namespace
