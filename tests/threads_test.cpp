// Readers and a saver in threads of their own share nothing but the coder's mode, and a saver's own
// threads leave no trace in its file.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <stdexcept>
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

/// Six blocks of geometries and nine floors, of many sizes.
Bytes ManyBlocks(unsigned int threads) {
    return Streamed([threads](CZVFTOutStream& out) {
        CZVLGBlockSaver saver;
        saver.SetThreads(threads);
        saver.SetSeal(true);
        saver.Init(&out, {}, "", 5);
        for (u32 i = 0; i < 27; ++i) {
            SZVLGZvgGeo geo = SampleGeo(i % 3);
            geo.renderMeshes.emplace_back().extraIndices.assign(999 * (i % 7), i);
            saver.AddIdentificationGeo(L"geo " + std::to_wstring(i), geo);
            SZVLGZvgComp comp;
            comp.compGuidName = SerialKey(L"comp " + std::to_wstring(i));
            comp.classLevel1Name = L"floor " + std::to_wstring(i % 9);
            saver.AddComp(comp);
        }
        saver.WriteEnd();
    });
}

TEST(Threads, OfASaverGiveTheSameFile) {
    const Bytes alone = ManyBlocks(1);
    EXPECT_TRUE(Verified(alone).empty());
    for (int round = 0; round < 5; ++round)
        for (const unsigned int threads : {0U, 2U, 5U, 1000U})
            EXPECT_EQ(ManyBlocks(threads), alone);
}

/// A file that is given up while its blocks are compressed.
TEST(Threads, OfASaverEndWithIt) {
    for (int round = 0; round < 20; ++round) {
        const Bytes begun = Streamed([](CZVFTOutStream& out) {
            CZVLGBlockSaver saver;
            saver.SetThreads(4);
            saver.Init(&out, {}, "", 1);
            for (u32 i = 0; i < 5; ++i)
                saver.AddIdentificationGeo(L"geo " + std::to_wstring(i), SampleGeo(i));
            saver.Init(&out, {});
        });
        EXPECT_FALSE(begun.empty());
    }
}

/// What a walk through a whole file answers, floors and geometry blocks in turns.
std::vector<std::string> Walked(const Bytes& file, unsigned int threads, bool geometry = true) {
    std::vector<std::string> answers;
    CZVFTReadBufferInStream in(file.data(), file.size());
    CZVLGBlockReader reader;
    const auto ask = [&](const auto& query) {
        std::string answer;
        try {
            answer = query();
        } catch (const CZVFTStreamException& failure) {
            answer = failure.what();
        }
        const Miss miss = LastMissOf(reader);
        answers.push_back(answer + ' ' + std::to_string(static_cast<int>(miss.kind)) + ' ' +
                          std::to_string(miss.position) + ' ' + miss.reason);
    };
    ask([&] { return std::to_string(reader.Init(&in, 1, 1)); });
    reader.SetReadAhead(threads, geometry);
    for (u32 i = 0; i < 9; ++i) {
        ask([&] { return std::to_string(reader.GetFloorCompNum(i)); });
        ask([&] { return std::to_string(reader.GetGeoNumInBlock(i)); });
        ask([&] {
            SZVLGZvgGeo geo;
            const bool isRead = reader.GetGeoByIndex({i / 2 * 2, 3}, geo);
            return std::to_string(isRead) + std::to_string(geo.renderMeshes.size());
        });
        ask([&] {
            SZVLGZvgComp comp;
            reader.GetCompByIndex({i, 2}, comp);
            return std::to_string(comp.compGuidName.name.size());
        });
    }
    return answers;
}

TEST(Threads, OfAWalkAnswerAsNoneDo) {
    const Bytes whole = ManyBlocks(1);
    EXPECT_EQ(Walked(whole, 3), Walked(whole, 1));
    for (std::size_t at = 0; at < whole.size(); at += 7) {
        Bytes damaged = whole;
        damaged[at] ^= 0x41;
        EXPECT_EQ(Walked(damaged, 3, at % 2 == 0), Walked(damaged, 1)) << at;
    }
}

/// How many numbers each geometry has, by block and number there: as the caller reads it, and as
/// the threads have by then that decode ahead for him.
using Counts = std::map<std::pair<u32, u32>, std::size_t>;
std::pair<Counts, Counts> ReadTwice(const Bytes& file) {
    const auto count = [](const SZVLGZvgGeo& geo) {
        return geo.renderMeshes.empty() ? 0 : geo.renderMeshes.back().extraIndices.size();
    };
    std::mutex mutex;
    Counts ahead, asked, aheadInTime;
    CZVFTReadBufferInStream in(file.data(), file.size());
    CZVLGBlockReader reader;
    try {
        if (!reader.Init(&in, 1, 1)) return {};
    } catch (const CZVFTStreamException&) {
        return {};
    }
    reader.SetGeoReadAhead(3, [&](u32 block, u32 geoNum, const auto& read) {
        for (u32 i = 0; i <= geoNum; ++i) {
            SZVLGZvgGeo geo;
            if (!read(i, geo)) continue;
            const std::lock_guard<std::mutex> alone(mutex);
            ahead[{block, i}] = count(geo);
        }
        throw std::runtime_error("which nobody hears");
    });
    for (u32 block = 0; block < 6; ++block) {
        for (u32 i = 0; i < 5; ++i) {
            SZVLGZvgGeo geo;
            try {
                if (reader.GetGeoByIndex({block, i}, geo)) asked[{block, i}] = count(geo);
            } catch (const CZVFTStreamException&) {
                continue;
            }
            const std::lock_guard<std::mutex> alone(mutex);
            const auto made = ahead.find({block, i});
            if (made != ahead.end()) aheadInTime.insert(*made);
        }
    }
    return {asked, aheadInTime};
}

TEST(Threads, OfAWalkReadTheSameGeometries) {
    const Bytes whole = ManyBlocks(1);
    const auto [asked, ahead] = ReadTwice(whole);
    EXPECT_EQ(asked.size(), 27U);
    EXPECT_EQ(ahead, asked);
    for (std::size_t at = 0; at < whole.size(); at += 7) {
        Bytes damaged = whole;
        damaged[at] ^= 0x41;
        const auto [alone, others] = ReadTwice(damaged);
        EXPECT_TRUE(std::includes(alone.begin(), alone.end(), others.begin(), others.end())) << at;
    }
}

/// What a thread does with a block ends with the walk.
TEST(Threads, OfAWalkEndWithIt) {
    const Bytes file = ManyBlocks(1);
    CZVFTReadBufferInStream in(file.data(), file.size());
    CZVLGBlockReader reader;
    reader.Init(&in);
    std::atomic<u32> blocks{0};
    const auto readOn = [&](u32, u32, const auto& read) {
        ++blocks;
        SZVLGZvgGeo geo;
        while (read(0, geo)) geo = {};
    };
    for (int round = 0; round < 10; ++round) reader.SetGeoReadAhead(2, readOn);
    while (blocks == 0) std::this_thread::yield();
    reader.SetReadAhead(0);
    EXPECT_LE(blocks, 20U);
}

}  // namespace
