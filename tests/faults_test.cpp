// Memory that runs out, streams that fail, records nested without end, blocks and files too large:
// an exception, and everything that was there before still stands.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <optional>
#include <random>

#include "alloc_hooks.h"
#include "support.h"

namespace {

using namespace support;

constexpr std::size_t stepCount = 9;

/// Calls that may fail as the library does. False where one did.
template <class Call>
bool Survives(Call call) {
    try {
        call();
        return true;
    } catch (const CZVFTStreamException&) {
    } catch (const std::bad_alloc&) {
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
Done WriteSample(FaultyOutStream& out) {
    Done done = {};
    std::optional<CZVLGBlockSaver> saver;
    if (!Survives([&] { saver.emplace(4U); })) return done;
    for (std::size_t i = 0; i < stepCount; ++i)
        done[i] = Survives([&] { SampleSteps()[i](*saver, out); });
    return done;
}

/// What a saver said it stored must be in a file that it said it finished.
void ExpectNoSilentLoss(const Bytes& file, const Done& done) {
    if (!done.back()) return;
    CZVFTReadBufferInStream in(file.data(), file.size());
    std::vector<SZVLGBlockFinding> findings;
    EXPECT_TRUE(CZVLGBlockVerifier().Verify(&in, findings)) << findings.front().reason;
    CZVLGBlockReader reader;
    ASSERT_TRUE(reader.Init(&in));
    std::vector<std::wstring> components;
    for (u32 floor = 0; floor < reader.GetFloorNum(); ++floor)
        for (u32 i = 0; i < reader.GetFloorCompNum(floor); ++i) {
            SZVLGZvgComp comp;
            EXPECT_TRUE(reader.GetCompByIndex({floor, i}, comp));
            components.push_back(comp.compGuidName.name);
        }
    const auto holdsGeo = [&](u32 number) {
        SZVLGZvgGeo geo;
        return reader.GetGeoByIdentification(L"geo " + std::to_wstring(number), geo) &&
               Dump(geo) == Dump(SampleGeo(number));
    };
    const auto holdsComp = [&](const wchar_t* name) {
        return holdsGeo(5) && std::count(components.begin(), components.end(), name) == 1;
    };
    SZVLGZvgGeoImage preview;
    EXPECT_TRUE((!done[1] || holdsGeo(0)) && (!done[2] || holdsGeo(1)));
    EXPECT_TRUE((!done[3] || holdsComp(L"comp 0")) && (!done[4] || holdsComp(L"comp 1")));
    EXPECT_TRUE((!done[5] || holdsComp(L"comp 2")) && (!done[6] || holdsGeo(2)));
    EXPECT_TRUE(!done[7] || reader.GetPreviewImage(preview));
}

/// Repeats `run` with the n-th allocation failing, for every n, until none fails any more.
template <class Run>
void WithEveryAllocationFailing(Run run) {
    if (!AllocHooks::available) GTEST_SKIP() << "sanitizers keep malloc for themselves";
    run(-1, false);  // what is allocated once for the process
    for (const bool forGood : {false, true}) {
        const std::size_t before = AllocHooks::BytesInUse();
        long n = 0;
        while (run(n, forGood) && !testing::Test::HasFailure()) ++n;
        EXPECT_EQ(AllocHooks::BytesInUse(), before) << "leaked";
        EXPECT_GT(n, 20);
    }
}

TEST(Faults, AllocationsInWriting) {
    WithEveryAllocationFailing([](long n, bool forGood) {
        FaultyOutStream out;
        AllocHooks::FailAt(n, forGood);
        const Done done = WriteSample(out);
        const bool hasFailed = AllocHooks::Stop();
        EXPECT_TRUE(hasFailed || done.back());
        ExpectNoSilentLoss(out.bytes, done);
        return hasFailed;
    });
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
        for (std::size_t i = 0; isOpen && i < right.size(); ++i)
            EXPECT_EQ(Ask(Queries()[i], *reader), right[i]);
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

TEST(Faults, FailingOutStream) {
    using Stream = FaultyOutStream;
    const Bytes whole = SampleFile(4);
    for (const auto kind : {Stream::shortWrite, Stream::failingWrite, Stream::missedSeek,
                            Stream::throwingSeek, Stream::lostPosition}) {
        long n = 0;
        for (bool hasFailed = true; hasFailed; ++n) {
            Stream out;
            out.kind = kind;
            out.failingCall = n;
            const Done done = WriteSample(out);
            hasFailed = out.hasFailed;
            EXPECT_NE(done.back(), hasFailed) << "kind " << kind << ", call " << n;
            CZVFTReadBufferInStream in(out.bytes.data(), out.bytes.size());
            CZVLGBlockReader reader;
            bool isOpen = false;
            Survives([&] { isOpen = reader.Init(&in); });
            // Only the last way back may fail without harm.
            EXPECT_EQ(isOpen, out.bytes == whole) << "kind " << kind << ", call " << n;
        }
        EXPECT_GT(n, 10);
    }
}

/// Fails one call. A stream refuses a seek only when the call is its turn.
struct FaultyInStream : CZVFTReadBufferInStream {
    enum Kind { shortRead, failingRead, throwingSeek };

    FaultyInStream(const Bytes& file, Kind kind, long failingCall)
        : CZVFTReadBufferInStream(file.data(), file.size()), kind(kind), failingCall(failingCall) {}
    bool IsFaulty() { return calls++ == failingCall && (hasFailed = true); }
    bool Read(void* buffer, u64* size) override {
        if (kind == throwingSeek || !IsFaulty()) return CZVFTReadBufferInStream::Read(buffer, size);
        if (kind == failingRead) return false;
        return CZVFTReadBufferInStream::Read(buffer, &--*size);
    }
    int Seek(u64 newPos) override {
        if (kind == throwingSeek && IsFaulty()) {
            isLost = newPos == base;
            throw CZVFTStreamException("seek over buffer size");
        }
        return CZVFTReadBufferInStream::Seek(newPos);
    }

    Kind kind;
    long failingCall;
    long calls = 0;
    u64 base = 0;
    bool hasFailed = false;
    bool isLost = false;  ///< it was the way back that failed
};

TEST(Faults, FailingInStream) {
    const Bytes file = SampleFile(4);
    const std::vector<std::string> right = Answers(file);
    for (const auto kind :
         {FaultyInStream::shortRead, FaultyInStream::failingRead, FaultyInStream::throwingSeek}) {
        long n = 0;
        for (bool hasFailed = true; hasFailed; ++n) {
            FaultyInStream in(file, kind, n);
            CZVLGBlockReader reader;
            bool isOpen = false;
            Survives([&] { isOpen = reader.Init(&in); });
            EXPECT_TRUE(isOpen || in.hasFailed);
            for (std::size_t i = 0; isOpen && i < right.size(); ++i) {
                const std::string answer = Ask(Queries()[i], reader);
                EXPECT_TRUE(answer == right[i] || answer.empty() || answer == refused) << i;
                EXPECT_TRUE(in.isLost || in.GetPos() == 0) << "kind " << kind << ", call " << n;
                if (!in.hasFailed) continue;
                EXPECT_EQ(Ask(Queries()[i], reader), right[i]) << "call " << n;
            }
            hasFailed = in.hasFailed;
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

/// How many sub-geometries each record has, depth-first.
std::vector<std::size_t> ShapeOf(const SZVLGZvgGeo& root) {
    std::vector<std::size_t> shape;
    std::vector<const SZVLGZvgGeo*> pending = {&root};
    while (!pending.empty()) {
        const SZVLGZvgGeo& geo = *pending.back();
        pending.pop_back();
        shape.push_back(geo.subGeos.size() + 1000 * geo.lineSegments.size());
        for (const SZVLGZvgSubGeo& sub : geo.subGeos) pending.push_back(&sub.geo);
    }
    return shape;
}

/// As deep as a reader takes by default, with siblings at every eighth level.
TEST(Faults, NestedAQuarterMillionDeep) {
    constexpr std::pair<bool, bool> shapes[] = {{false, false}, {true, false}, {false, true}};
    for (const auto& [isAhead, isBehind] : shapes) {
        auto geo = std::make_unique<SZVLGZvgGeo>(NestedGeo(250'000, isAhead, isBehind));
        const Bytes file = Saved(4, 0, [&](CZVLGBlockSaver& saver) {
            saver.AddIdentificationGeo(L"a", *geo);
            saver.AddIdentificationGeo(L"b", SampleGeo(2));
        });
        const std::vector<std::size_t> stored = ShapeOf(*geo);
        auto moved = std::make_unique<SZVLGZvgGeo>(std::move(*geo));
        geo.reset();
        EXPECT_EQ(ShapeOf(SZVLGZvgGeo(*moved)), stored);
        Opened opened(file);
        SZVLGZvgGeo read;
        EXPECT_TRUE(opened.reader.GetGeoByIndex({0, 1}, read));
        EXPECT_EQ(Dump(read), Dump(SampleGeo(2)));
        *moved = SZVLGZvgGeo();
        EXPECT_TRUE(opened.reader.GetGeoByIndex({0, 0}, *moved));
        EXPECT_EQ(ShapeOf(*moved), stored);
    }
}

/// Makes an .xz stream ask for a dictionary of 4 GiB and mends its block header's checksum.
void AskForHugeDictionary(Bytes& encoded) {
    constexpr std::size_t header = 12;
    const std::size_t size = (encoded[header] + std::size_t{1}) * 4;
    for (std::size_t i = header; i + 2 < header + size; ++i)
        if (encoded[i] == 0x21 && encoded[i + 1] == 1) encoded[i + 2] = 40;
    const u32 crc = Crc32(&encoded[header], size - 4);
    for (std::size_t i = 0; i < 4; ++i)
        encoded[header + size - 4 + i] = static_cast<u8>(crc >> 8 * i);
}

TEST(Faults, BombsDoNotDecode) {
    constexpr std::size_t limit = mebibyte;
    const Parts parts = PartsOf(SampleFile(4));
    const Block large = {{}, Encoded(Bytes(64 * mebibyte))};
    for (std::size_t kind = 0; kind < 2; ++kind)
        for (std::size_t i = 0; i < 5; ++i) {
            Parts bomb = parts;
            Block& block = *bomb.Blocks()[i];
            if (kind == 0) block = large;
            if (kind == 1) AskForHugeDictionary(block.encoded);
            const Bytes file = PutTogether(bomb);
            AllocHooks::ResetPeak();
            const std::size_t before = AllocHooks::BytesInUse();
            CZVFTReadBufferInStream in(file.data(), file.size());
            CZVLGBlockReader reader;
            reader.SetDecodedBlockLimit(limit);
            EXPECT_EQ(reader.Init(&in), i != 4);
            EXPECT_EQ(reader.GetGeoNumInBlock(0) == 0, i == 0 || i == 4);
            EXPECT_EQ(reader.GetGeoNumInBlock(1) == 0, i == 1 || i == 4);
            EXPECT_EQ(reader.GetFloorCompNum(0) == 0, i == 2 || i == 4);
            EXPECT_EQ(reader.GetFloorCompNum(1) == 0, i == 3 || i == 4);
            EXPECT_LT(AllocHooks::PeakBytes() - before, limit + 64 * mebibyte);
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
        CZVLGBlockSaver saver;
        saver.Init(&out, {}, "", 1);
        std::minstd_rand random;
        SZVLGZvgGeo geo;
        SZVLGZvgGeoBlob& blob = geo.blobs.emplace_back();
        blob.dataSize = blobBytes;
        blob.data = static_cast<u8*>(std::malloc(blobBytes));
        const auto write = [&] {
            for (unsigned int i = 0; i < one.geoCount; ++i) {
                for (u32 j = 0; j < blobBytes; ++j) blob.data[j] = static_cast<u8>(random() >> 8);
                saver.AddIdentificationGeo(std::to_wstring(i), geo);
            }
            saver.WriteEnd();
        };
        if (one.fits) {
            EXPECT_NO_THROW(write()) << one.scale;
        } else {
            EXPECT_THROW(write(), CZVFTStreamException) << one.scale;
        }
    }
}

}  // namespace
