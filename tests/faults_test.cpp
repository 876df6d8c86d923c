// Memory that runs out, streams that fail, records nested without end, blocks and files too large:
// an exception, and everything that was there before still stands.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <barrier>
#include <cstdlib>
#include <memory>
#include <optional>
#include <random>
#include <thread>
#include <vector>

#include "alloc_hooks.h"
#include "support.h"

namespace {

using namespace support;

constexpr std::size_t stepCount = 9;

/// Calls that may fail as the library does, or as a disk does. False where one did.
template <class Call>
bool Survives(Call call) {
    try {
        call();
        return true;
    } catch (const CZVFTStreamException&) {
    } catch (const std::bad_alloc&) {
    } catch (const std::runtime_error&) {
    }
    return false;
}

/// Memory that stays until the test has looked at it, with faults on order.
struct FaultyOutStream : CZVFTOutStream {
    enum Kind { shortWrite, failingWrite, missedSeek, throwingSeek, lostPosition };

    bool IsFaulty(Kind first, Kind last) {
        if (kind < first || kind > last || calls++ != failingCall) return false;
        return hasFailed = true;
    }
    u64 Write(const void* data, u64 size) override {
        const bool isFaulty = IsFaulty(shortWrite, failingWrite);
        if (isFaulty) size = kind == shortWrite ? size - 1 : 0;
        if (bytes.size() < pos + size) bytes.resize(pos + size);
        std::copy_n(static_cast<const u8*>(data), size, bytes.begin() + std::ptrdiff_t(pos));
        pos += size;
        return size;
    }
    u64 GetPos() override { return IsFaulty(lostPosition, lostPosition) ? ~u64{0} : pos; }
    int Seek(u64 newPos) override {
        if (!IsFaulty(missedSeek, throwingSeek)) return pos = newPos, 0;
        if (kind == throwingSeek) throw CZVFTStreamException("seek over buffer size");
        return -1;
    }
    bool Reserve(u64) override { return true; }

    Kind kind = shortWrite;
    long failingCall = -1;
    long calls = 0;
    bool hasFailed = false;
    u64 pos = 0;
    Bytes bytes;
};

using Done = std::array<bool, stepCount>;

/// Takes every step of the sample, whatever became of those before.
Done WriteSample(FaultyOutStream& out, unsigned int threads) {
    Done done = {};
    std::optional<CZVLGBlockSaver> saver;
    if (!Survives([&] { saver.emplace(4U); })) return done;
    saver->SetThreads(threads);
    for (std::size_t i = 0; i < stepCount; ++i)
        done[i] = Survives([&] { SampleSteps()[i](*saver, out); });
    return done;
}

/// What a saver said it stored must be in a file that it said it finished.
void ExpectNoSilentLoss(const Bytes& file, const Done& done) {
    if (!done.back()) return;
    const Findings findings = Verified(file);
    EXPECT_TRUE(findings.empty()) << findings.front().reason;
    Opened opened(file);
    ASSERT_TRUE(opened.ok);
    std::vector<std::wstring> components;
    for (const SZVLGZvgComp& comp : AllComps(file)) components.push_back(comp.compGuidName.name);
    const auto holdsGeo = [&](u32 number) {
        SZVLGZvgGeo geo;
        return opened.reader.GetGeoByIdentification(L"geo " + std::to_wstring(number), geo) &&
               Dump(geo) == Dump(SampleGeo(number));
    };
    const auto holdsComp = [&](const wchar_t* name) {
        return holdsGeo(5) && std::count(components.begin(), components.end(), name) == 1;
    };
    EXPECT_TRUE((!done[1] || holdsGeo(0)) && (!done[2] || holdsGeo(1)));
    EXPECT_TRUE((!done[3] || holdsComp(L"comp 0")) && (!done[4] || holdsComp(L"comp 1")));
    EXPECT_TRUE((!done[5] || holdsComp(L"comp 2")) && (!done[6] || holdsGeo(2)));
    EXPECT_TRUE(!done[7] || !Ask(ask::preview, opened.reader).empty());
}

/// Repeats `run` with the n-th allocation failing, for every n, until none fails any more.
template <class Run>
void WithEveryAllocationFailing(Run run, long fewest = 20) {
    if (!AllocHooks::available) GTEST_SKIP() << "sanitizers keep malloc for themselves";
    run(-1, false);  // what is allocated once for the process
    for (const bool forGood : {false, true}) {
        const std::size_t before = AllocHooks::BytesInUse();
        long n = 0;
        while (run(n, forGood) && !testing::Test::HasFailure()) ++n;
        EXPECT_EQ(AllocHooks::BytesInUse(), before) << "leaked";
        EXPECT_GE(n, fewest);
    }
}

/// What the C library keeps of each thread, for the next one.
void BeginThreads(std::ptrdiff_t count) {
    std::barrier together(count);
    std::vector<std::thread> threads;
    for (std::ptrdiff_t i = 0; i < count; ++i)
        threads.emplace_back([&] { together.arrive_and_wait(); });
    for (std::thread& thread : threads) thread.join();
}

TEST(Faults, AllocationsInWriting) {
    BeginThreads(4);
    for (const unsigned int threads : {1U, 3U}) {
        WithEveryAllocationFailing([threads](long n, bool forGood) {
            FaultyOutStream out;
            AllocHooks::FailAt(n, forGood);
            const Done done = WriteSample(out, threads);
            const bool hasFailed = AllocHooks::Stop();
            EXPECT_TRUE(hasFailed || done.back());
            ExpectNoSilentLoss(out.bytes, done);
            return hasFailed;
        });
    }
}

TEST(Faults, AllocationsInReading) {
    const Bytes file = SampleFile(4);
    const std::vector<std::string> right = Answers(file);
    WithEveryAllocationFailing([&](long n, bool forGood) {
        CZVFTReadBufferInStream in(file.data(), file.size());
        std::optional<CZVLGBlockReader> reader;
        bool isOpen = false, isSilent = false;
        AllocHooks::FailAt(n, forGood);
        isSilent = Survives([&] { isOpen = reader.emplace().Init(&in); }) && !isOpen;
        for (std::size_t i = 0; isOpen && i < right.size(); ++i)
            Survives([&] { isSilent |= Queries()[i](*reader) != right[i]; });
        const bool hasFailed = AllocHooks::Stop();
        EXPECT_FALSE(isSilent) << "allocation " << n;
        EXPECT_EQ(in.GetPos(), 0U);
        EXPECT_TRUE(!isOpen || AskAll(*reader) == right);
        return hasFailed;
    });
}

TEST(Faults, AllocationsInCopying) {
    const SZVLGZvgGeo geo = SampleGeo(0);
    const std::string before = Dump(SampleGeo(1)), after = Dump(geo);
    WithEveryAllocationFailing([&](long n, bool forGood) {
        SZVLGZvgGeo target = SampleGeo(1);
        AllocHooks::FailAt(n, forGood);
        const bool isCopied = Survives([&] { target = SZVLGZvgGeo(geo); });
        const bool hasFailed = AllocHooks::Stop();
        EXPECT_NE(isCopied, hasFailed);
        EXPECT_EQ(Dump(target), isCopied ? after : before);
        return hasFailed;
    });
}

TEST(Faults, AllocationsInTheCoder) {
    const Bytes content(100'000, 7), encoded = Encoded(content);
    using Code = bool (*)(CZVFTInStream&, CZVFTOutStream&);
    const std::pair<const Bytes&, Code> calls[] = {
        {content, [](auto& in, auto& out) { return CZVFTLzmaTool::Encode(&in, &out, nullptr); }},
        {encoded, [](auto& in, auto& out) { return CZVFTLzmaTool::Decode(&in, &out); }},
        {encoded, [](auto& in, auto&) {
             unsigned int size = 0;
             return CZVFTLzmaTool::GetAfterDecodeDataSize(&in, size);
         }}};
    for (const auto& [bytes, code] : calls)
        WithEveryAllocationFailing(
            [&, bytes = &bytes, code = code](long n, bool forGood) {
                CZVFTReadBufferInStream in(bytes->data(), bytes->size());
                OwnedBuffer buffer;
                CZVFTAllocBufferOutStream out(&buffer);
                bool isDone = false, isTold = false;
                AllocHooks::FailAt(n, forGood);
                try {
                    isDone = code(in, out);
                } catch (const CZVFTStreamException&) {
                    isTold = true;
                } catch (const std::bad_alloc&) {  // which the coder keeps to itself
                }
                const bool hasFailed = AllocHooks::Stop();
                EXPECT_TRUE(isDone != hasFailed && isTold == hasFailed) << "allocation " << n;
                return hasFailed;
            },
            1);
}

TEST(Faults, FailingOutStream) {
    using Stream = FaultyOutStream;
    const Bytes whole = SampleFile(4);
    for (const auto kind : {Stream::shortWrite, Stream::failingWrite, Stream::missedSeek,
                            Stream::throwingSeek, Stream::lostPosition}) {
        long n = 0;
        for (bool hasFailed = true; hasFailed; ++n) {
            hasFailed = false;
            for (const unsigned int threads : {1U, 3U}) {
                Stream out;
                out.kind = kind;
                out.failingCall = n;
                const Done done = WriteSample(out, threads);
                hasFailed |= out.hasFailed;
                EXPECT_NE(done.back(), out.hasFailed) << "kind " << kind << ", call " << n;
                CZVFTReadBufferInStream in(out.bytes.data(), out.bytes.size());
                CZVLGBlockReader reader;
                bool isOpen = false;
                Survives([&] { isOpen = reader.Init(&in); });
                // Only the last way back may fail without harm.
                EXPECT_EQ(isOpen, out.bytes == whole) << "kind " << kind << ", call " << n;
            }
        }
        EXPECT_GT(n, 10);
    }
}

/// What a disk keeps back is told from damage, costs one answer and no other, and is there when it
/// is asked for again.
TEST(Faults, FailingInStream) {
    using Stream = FaultyInStream;
    const Bytes file = SampleFile(4);
    const std::vector<std::string> right = Answers(file);
    for (const auto fault :
         {Stream::refuses, Stream::shortens, Stream::throws, Stream::seekThrows}) {
        long n = 0;
        for (bool hasFailed = true; hasFailed; ++n) {
            SCOPED_TRACE(testing::Message() << "fault " << fault << ", call " << n);
            Stream in(file, fault, n);
            CZVLGBlockReader reader;
            bool isOpen = false;
            Survives([&] { isOpen = reader.Init(&in); });
            EXPECT_TRUE(isOpen || in.hasFailed);
            const auto isUnread = [&] {
                const Miss miss = LastMissOf(reader);
                EXPECT_TRUE(miss.kind <= EZVLGMiss::Absent || miss.kind == EZVLGMiss::Unread);
                return miss.kind == EZVLGMiss::Unread && miss.position == in.failedAt &&
                       miss.reason.find("does not deliver") != std::string::npos;
            };
            std::size_t unread = isUnread();
            for (std::size_t i = 0; i < right.size(); ++i) {
                const bool hadFailed = in.hasFailed;
                std::string answer = refused;
                Survives([&] { answer = Queries()[i](reader); });
                if (i == 0 && hadFailed) continue;  // the head is no query
                unread += isUnread();
                EXPECT_TRUE(answer == right[i] || answer.empty() || answer == refused || !isOpen);
                EXPECT_TRUE(in.isLost || in.GetPos() == 0);
                EXPECT_TRUE(!isOpen || !in.hasFailed || Ask(Queries()[i], reader) == right[i]);
            }
            hasFailed = in.hasFailed;
            const std::size_t most = !hasFailed ? 0 : isOpen ? 1 : right.size();
            EXPECT_LE(unread, most);
            if (fault == Stream::seekThrows) continue;  // the way back may fail in silence
            EXPECT_EQ(unread, most);
            if (fault == Stream::throws) continue;

            Stream toVerify(file, fault, n);
            Findings findings;
            const auto verify = [&] { CZVLGBlockVerifier().Verify(&toVerify, findings); };
            const std::string thrown = Thrown(verify);
            EXPECT_EQ(thrown, toVerify.hasFailed ? "seek over buffer size" : "");
        }
        EXPECT_GT(n, 20);
    }
}

/// A chain of `levels` nested records; every eighth has a sibling on each given side.
SZVLGZvgGeo NestedGeo(long levels, bool isAhead, bool isBehind) {
    SZVLGZvgGeo geo = SampleGeo(1);
    for (long i = 0; i < levels; ++i) {
        const bool hasSiblings = i % 8 == 0;
        std::vector<SZVLGZvgSubGeo> list(1U + (hasSiblings && isAhead) + (hasSiblings && isBehind));
        list[hasSiblings && isAhead ? 1 : 0].geo = std::move(geo);
        geo = SZVLGZvgGeo();
        geo.subGeos = std::move(list);
    }
    return geo;
}

/// As deep as a reader takes by default, with siblings at every eighth level.
TEST(Faults, NestedAQuarterMillionDeep) {
    constexpr std::pair<bool, bool> shapes[] = {{false, false}, {true, false}, {false, true}};
    for (const auto& [isAhead, isBehind] : shapes) {
        const auto saved = [](const SZVLGZvgGeo& geo) {
            return Saved(4, 0, [&](CZVLGBlockSaver& saver) {
                saver.AddIdentificationGeo(L"a", geo);
                saver.AddIdentificationGeo(L"b", SampleGeo(2));
            });
        };
        auto geo = std::make_unique<SZVLGZvgGeo>(NestedGeo(250'000, isAhead, isBehind));
        const Bytes file = saved(*geo);
        Opened opened(file);
        const std::size_t siblings = 250'000 / 8 * std::size_t{isAhead || isBehind};
        EXPECT_GT(opened.reader.GetEstimatedDataSize(), 12 * 250'000 + 8 * siblings);
        auto moved = std::make_unique<SZVLGZvgGeo>(std::move(*geo));
        geo.reset();
        EXPECT_TRUE(saved(SZVLGZvgGeo(*moved)) == file);
        EXPECT_EQ(Ask(ask::Geo(0, 1), opened.reader), Dump(SampleGeo(2)));
        *moved = SZVLGZvgGeo();
        EXPECT_TRUE(opened.reader.GetGeoByIndex({0, 0}, *moved));
        EXPECT_TRUE(saved(*moved) == file);
    }
}

/// Puts the checksum behind a block header of .xz.
Bytes WithCrc(Bytes header) {
    const u32 crc = Crc32(header.data(), header.size());
    for (int i = 0; i < 4; ++i) header.push_back(static_cast<u8>(crc >> 8 * i));
    return header;
}

/// The same .xz stream, with a dictionary of 4 GiB to be asked for.
Bytes WithHugeDictionary(const Bytes& encoded) {
    const std::size_t end = 12 + encoded[12] * std::size_t{4};
    Bytes header = Slice(encoded, 12, end);
    for (std::size_t i = 0; i + 2 < header.size(); ++i)
        if (header[i] == 0x21 && header[i + 1] == 1) header[i + 2] = 40;
    return Slice(encoded, 0, 12) + WithCrc(header) + Slice(encoded, end + 4, encoded.size());
}

/// Announces 5 GiB, and has bytes that could be so many.
const Bytes announcesTooMuch = FromHex("FD377A585A00 0004 E6D6B446") +
                               WithCrc(FromHex("04 C0 80B518 8080808014 210116 000000")) +
                               Bytes(400'100);

TEST(Faults, BombsDoNotDecode) {
    const Parts parts = PartsOf(SampleFile(4));
    const Bytes large = Encoded(Bytes(64 * mebibyte));
    for (std::size_t kind = 0; kind < 3; ++kind)
        for (std::size_t i = 0; i < 5; ++i) {
            Parts bomb = parts;
            Bytes& encoded = bomb.Blocks()[i]->encoded;
            encoded = kind == 0   ? large
                      : kind == 1 ? WithHugeDictionary(encoded)
                                  : announcesTooMuch;
            const Bytes file = PutTogether(bomb);
            AllocHooks::ResetPeak();
            const std::size_t before = AllocHooks::BytesInUse();
            CZVFTReadBufferInStream in(file.data(), file.size());
            CZVLGBlockReader reader;
            reader.SetDecodedBlockLimit(kind == 2 ? 1ULL << 40 : mebibyte);
            EXPECT_EQ(reader.Init(&in), i != 4);
            EXPECT_EQ(reader.GetGeoNumInBlock(0) == 0, i == 0 || i == 4);
            EXPECT_EQ(reader.GetGeoNumInBlock(1) == 0, i == 1 || i == 4);
            EXPECT_EQ(reader.GetFloorCompNum(0) == 0, i == 2 || i == 4);
            EXPECT_EQ(reader.GetFloorCompNum(1) == 0, i == 3 || i == 4);
            EXPECT_LT(AllocHooks::PeakBytes() - before, 64 * mebibyte);
        }
}

/// Stores nothing, and counts a large write as if it were `scale` times as large.
struct ScaledOutStream : CZVFTOutStream {
    u64 Write(const void*, u64 size) override {
        constexpr u64 large = 1000;
        pos += size < large ? size : size * scale;
        return size;
    }
    u64 GetPos() override { return pos; }
    int Seek(u64 newPos) override { return pos = newPos, 0; }
    bool Reserve(u64) override { return true; }
    u64 scale = 1;
    u64 pos = 5;
};

TEST(Faults, MoreThan32BitsCount) {
    constexpr u32 blobBytes = 4000;  // of noise, which stays as long when it is compressed
    const struct {
        unsigned int geoCount;
        u64 scale;
        bool fits;
    } cases[] = {{1, 900'000, true},
                 {1, 1'100'000, false},
                 {4, 240'000, true},
                 {4, 270'000, false},
                 {5, 240'000, false}};
    for (const auto& one : cases) {
        ScaledOutStream out;
        out.scale = one.scale;
        std::minstd_rand random;
        SZVLGZvgGeo geo;
        geo.blobs = {SomeBlob(blobBytes)};
        const auto write = [&] {
            SaveTo(out, {4, 1, "", {}}, [&](CZVLGBlockSaver& saver) {
                for (unsigned int i = 0; i < one.geoCount; ++i) {
                    for (u32 j = 0; j < blobBytes; ++j)
                        geo.blobs[0].data[j] = static_cast<u8>(random() >> 8);
                    saver.AddIdentificationGeo(std::to_wstring(i), geo);
                }
            });
        };
        EXPECT_EQ(Thrown(write).empty(), one.fits) << one.scale;
    }
}

}  // namespace
