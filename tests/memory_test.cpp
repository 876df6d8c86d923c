// What one call may take: the worst records that are still accepted, on both sides of a file, and
// the first that are not.

#include <gtest/gtest.h>

#include "alloc_hooks.h"
#include "support.h"

namespace {

using namespace support;

constexpr u64 byDefault = 256 * mebibyte;
constexpr u64 page = 4096;  // to which large allocations are rounded

/// A list of `count` empty elements of `elementBytes` each behind the bit of `flags`.
Bytes Flood(u32 flags, u32 count, u32 elementBytes) {
    return Slice(BigEndian(flags), 2, 4) + BigEndian(count) +
           Bytes(std::size_t{count} * elementBytes);
}

/// Nested records, each with `width` empty ones ahead of the one that goes on.
Bytes Chain(u32 depth, u32 width) {
    Bytes record;
    for (u32 i = 0; i < depth; ++i) {
        record = std::move(record) + Bytes{0x80, 0} + BigEndian(width + 1);
        record.resize(record.size() + 8 * std::size_t{width} + 6);
    }
    return std::move(record) + Bytes(2);
}

Bytes FileWithGeo(const Bytes& record) {
    Parts parts = PartsOf(SampleFile(4));
    parts.geoBlocks = {{Section({BigEndian(static_cast<u32>(record.size())) + record}), {}}};
    return PutTogether(parts);
}

/// A component of one reference that names row 0, of so many units, `count` times.
Bytes FileWithRows(u32 count, u32 units) {
    Parts parts = PartsOf(SampleFile(0));
    const Bytes entry = TextOf(1) + Bytes(1) + BigEndian(1) + Bytes(9) + BigEndian(count) +
                        Bytes(4 * std::size_t{count} + 100);
    parts.floors.resize(1);
    parts.floors[0].block = {
        Section({entry}) + Section({TextOf(1) + TextOf(units, 'a') + Bytes(4)}), {}};
    return PutTogether(parts);
}

struct Outcome {
    bool isRead = false;
    std::size_t peak = 0;
    Miss miss = {};
};

/// Reads the first geometry or component of a file, and takes the memory at its peak, beside what
/// there was.
template <class Record, class Index>
Outcome ReadFirst(const Bytes& file, u64 limit,
                  bool (CZVLGBlockReader::*get)(const Index&, Record&)) {
    Outcome outcome;
    CZVFTReadBufferInStream in(file.data(), file.size());
    CZVLGBlockReader reader;
    if (limit != 0) reader.SetDecodedBlockLimit(limit);
    EXPECT_TRUE(reader.Init(&in));
    reader.GetGeoNumInBlock(0);  // the blocks' own bytes are counted apart
    reader.GetFloorCompNum(0);
    Record record;
    AllocHooks::ResetPeak();
    const std::size_t before = AllocHooks::BytesInUse();
    Thrown([&] { outcome.isRead = (reader.*get)({0, 0}, record); });
    outcome.peak = AllocHooks::PeakBytes() - before;
    outcome.miss = LastMissOf(reader);
    return outcome;
}
Outcome ReadGeo(const Bytes& file, u64 limit) {
    return ReadFirst(file, limit, &CZVLGBlockReader::GetGeoByIndex);
}

/// The largest number that a reader with this limit takes, between 1 and `most`.
template <class Make>
u32 LargestAccepted(u64 limit, u32 most, Make make) {
    u32 accepted = 0, refused = most;
    while (refused - accepted > 1) {
        const u32 middle = accepted + (refused - accepted) / 2;
        (ReadGeo(FileWithGeo(make(middle)), limit).isRead ? accepted : refused) = middle;
    }
    return accepted;
}

TEST(Memory, TheWorstRecordThatIsAcceptedStaysWithinTheLimit) {
    const struct {
        const char* name;
        Bytes (*make)(u32);
        u32 most;
    } cases[] = {
        {"sub-geometries", [](u32 n) { return Flood(0x8000, n, 8); }, 1 << 16},
        {"chain", [](u32 n) { return Chain(n, 0); }, 1 << 16},
        {"chain with siblings", [](u32 n) { return Chain(n, 3); }, 1 << 14},
        {"meshes", [](u32 n) { return Flood(0x0008, n, 20); }, 1 << 18},
        {"shells", [](u32 n) { return Flood(0x0100, n, 8); }, 1 << 20},
        {"polylines", [](u32 n) { return Flood(0x0040, n, 9); }, 1 << 20},
        {"point lists", [](u32 n) { return Flood(0x1000, n, 20); }, 1 << 20},
    };
    constexpr u64 limit = 4 * mebibyte;
    for (const auto& one : cases) {
        const u32 count = LargestAccepted(limit, one.most, one.make);
        const Outcome worst = ReadGeo(FileWithGeo(one.make(count)), limit);
        EXPECT_TRUE(worst.isRead) << one.name;
        const Outcome first = ReadGeo(FileWithGeo(one.make(count + 1)), limit);
        EXPECT_FALSE(first.isRead) << one.name;
        EXPECT_EQ(first.miss.reason, "geometry block 0, record 0 takes more memory than the limit");
        EXPECT_EQ(first.miss.kind, EZVLGMiss::TooLarge) << one.name;
        EXPECT_LE(first.peak, limit + page) << one.name;
        EXPECT_LE(worst.peak, limit + page) << one.name << ", " << count;
        EXPECT_TRUE(!AllocHooks::available || worst.peak > limit / 4) << one.name << ", " << count;
    }
}

TEST(Memory, TextsAndBlobsAndRowsNamedOverAndOverCountAsWell) {
    // A blob with a text of 6 million units: 12 MB in the file, 24 MB in memory.
    const Bytes blob =
        FileWithGeo(FromHex("0002 00000001") + TextOf(6'000'000, 'a') + Bytes(8 + 4 + 100));
    EXPECT_FALSE(ReadGeo(blob, 16 * mebibyte).isRead);
    const Outcome allowed = ReadGeo(blob, 32 * mebibyte);
    EXPECT_TRUE(allowed.isRead) << allowed.miss.reason;
    EXPECT_LE(allowed.peak, 32 * mebibyte);
    // Unless a host says otherwise, and whatever the file's size.
    const Outcome byItself = ReadGeo(FileWithGeo(Flood(0x8000, 2'700'000, 8)), 0);
    EXPECT_FALSE(byItself.isRead);
    EXPECT_LE(byItself.peak, byDefault);

    constexpr u64 limit = 16 * mebibyte;
    for (const u32 count : {3000U, 4000U, 4050U, 5000U, 50'000U}) {
        const Outcome outcome =
            ReadFirst(FileWithRows(count, 1000), limit, &CZVLGBlockReader::GetCompByIndex);
        EXPECT_EQ(outcome.isRead, count <= 4000) << count;
        EXPECT_LE(outcome.peak, limit + page) << count;
    }
}

/// What a saver takes, any reader takes; what it refuses leaves no trace in the file.
TEST(Memory, ASaverRefusesWhatNoReaderWouldTake) {
    SZVLGZvgGeo fitting, tooLarge, blob, image, nested;
    constexpr std::size_t fits = (byDefault - 200) / sizeof(SZVLGZvgSubGeo);
    fitting.subGeos.resize(fits);
    tooLarge.subGeos.resize(fits + 1);
    blob.blobs.resize(1);
    blob.blobs[0].dataSize = 1;  // of bytes that are not there
    image.images.resize(2);
    image.images[1].width = image.images[1].height = 1;
    nested.subGeos.resize(2);
    nested.subGeos[1].geo = image;
    SZVLGZvgComp named = Comp(L"named"), classed = Comp(L"classed");
    SZVLGZvgGeoId row;
    row.guidName.guid.Data1 = 7;
    row.textA = std::wstring(1'000'000, L'x');
    named.geoRefs.resize(1);
    named.geoRefs[0].geoIds = {row};
    row.textA.clear();  // each is read as the first
    named.geoRefs[0].geoIds.resize(100, row);
    classed.classLevel4Attr.flags = 0x8000;
    classed.classLevel4Attr.properties.resize(200'000);
    SZVLGZvgComp largest = Comp(L"largest");
    largest.compProperties.resize(180 * mebibyte / sizeof largest.compProperties.front());

    const auto save = [&](bool withRefused) {
        return Saved(4, 0, [&](CZVLGBlockSaver& saver) {
            saver.AddIdentificationGeo(L"fits", fitting);
            saver.AddComp(largest);
            for (const SZVLGZvgGeo* bad : {&tooLarge, &blob, &image, &nested}) {
                if (!withRefused) break;
                SZVLGZvgComp bringing = Comp(L"bringing", L"new floor");
                bringing.classLevel2Name = L"new class";
                bringing.geoRefs = {{L"good", SomeGeo(1), 0, 0, 0, {}, {}},
                                    {L"bad", *bad, 0, 0, 0, {}, {}}};
                const auto add = [&] { saver.AddIdentificationGeo(L"bad", *bad); };
                EXPECT_EQ(Thrown(add), "encode error");
                for (const SZVLGZvgComp* comp : {&bringing, &named, &classed})
                    EXPECT_EQ(Thrown([&] { saver.AddComp(*comp); }), "encode error");
            }
            saver.AddComp(Comp(L"c"));
        });
    };
    const Bytes file = save(true);
    EXPECT_TRUE(file == save(false));
    fitting = tooLarge = SZVLGZvgGeo();
    EXPECT_TRUE(ReadFirst(file, 0, &CZVLGBlockReader::GetCompByIndex).isRead);
    const Outcome worst = ReadGeo(file, 0);
    EXPECT_TRUE(worst.isRead);
    EXPECT_LE(worst.peak, byDefault + page);
}

/// Components that share long rows and classes, as they come from a host, are read back by any
/// reader.
TEST(Memory, WhatIsSavedIsRead) {
    const Bytes file = Saved(4, 0, [](CZVLGBlockSaver& saver) {
        for (u32 i = 0; i < 4; ++i) {
            SZVLGZvgComp comp = FullComp();
            comp.compGuidName = SerialKey(std::to_wstring(i));
            comp.classLevel4Attr.properties.resize(100'000);
            SZVLGZvgGeoId row;
            row.guidName.guid.Data1 = 9;
            row.textA = std::wstring(100'000 >> i, L'x');
            comp.geoRefs.resize(1);
            comp.geoRefs[0].geoIds.resize(400, row);
            Thrown([&] { saver.AddComp(comp); });
        }
        saver.AddComp(FullComp());
    });
    EXPECT_EQ(AllComps(file).size(), 5U);
}

/// However many threads decode ahead: two large blocks are on their way, and one is looked at.
TEST(Memory, BlocksThatAreDecodedAheadAreBounded) {
    constexpr u64 large = 40 * mebibyte;
    constexpr ZVSmartLzma::CZVFTEncodeOpt quick{0, 4096};
    Parts parts = PartsOf(SampleFile(0));
    parts.geoBlocks.assign(6, {{}, Encoded(Bytes(large), &quick)});
    const Bytes file = PutTogether(parts);
    const auto peakOf = [&](const auto& goThrough) {
        CZVFTReadBufferInStream in(file.data(), file.size());
        AllocHooks::ResetPeak();
        const std::size_t before = AllocHooks::BytesInUse();
        goThrough(in);
        return AllocHooks::PeakBytes() - before;
    };
    const std::size_t verified = peakOf([&](CZVFTReadBufferInStream& in) {
        std::vector<SZVLGBlockFinding> findings;
        CZVLGBlockVerifier().Verify(&in, file.size(), findings, 16);
    });
    const std::size_t walked = peakOf([](CZVFTReadBufferInStream& in) {
        CZVLGBlockReader reader;
        reader.Init(&in, 1, 1);
        reader.SetReadAhead(16, true);
        for (u32 i = 0; i < 6; ++i) reader.GetGeoNumInBlock(i);
    });
    EXPECT_LE(verified, 3 * large + mebibyte);
    EXPECT_LE(walked, 3 * large + mebibyte);
    EXPECT_EQ(walked > large, AllocHooks::available);
}

}  // namespace
