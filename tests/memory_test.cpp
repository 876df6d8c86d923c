// What one call may take: the worst records that are still accepted, on both sides of a file, and
// the first that are not.

#include <gtest/gtest.h>

#include "alloc_hooks.h"
#include "support.h"

namespace {

using namespace support;

constexpr u64 byDefault = 256 * mebibyte;
constexpr u64 page = 4096;  // to which large allocations are rounded

/// The memory that `call` takes at its peak, beside what there was.
template <class Call>
std::size_t PeakOf(Call call) {
    AllocHooks::ResetPeak();
    const std::size_t before = AllocHooks::BytesInUse();
    call();
    return AllocHooks::PeakBytes() - before;
}

Bytes WithLength(const Bytes& record) {
    return BigEndian(static_cast<u32>(record.size())) + record;
}

/// A list of `count` empty elements of `elementBytes` each behind the bit of `flags`.
Bytes Flood(u32 flags, u32 count, u32 elementBytes) {
    Bytes record = {static_cast<u8>(flags >> 8), static_cast<u8>(flags)};
    PutU32(record, count);
    record.resize(record.size() + std::size_t{count} * elementBytes);
    return record;
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

Bytes TextOf(u32 units) {
    Bytes text = BigEndian(units);
    text.resize(4 + 2 * std::size_t{units}, 'a');
    return text;
}

Bytes FileWithGeo(const Bytes& record) {
    Parts parts = PartsOf(SampleFile(4));
    parts.geoBlocks = {{Section({WithLength(record)}), {}}};
    return PutTogether(parts);
}

struct Outcome {
    bool isRead = false;
    std::size_t peak = 0;
    EZVLGMiss miss = EZVLGMiss::None;
    std::string reason;
};

Outcome ReadGeo(const Bytes& file, u64 limit) {
    Outcome outcome;
    CZVFTReadBufferInStream in(file.data(), file.size());
    CZVLGBlockReader reader;
    if (limit != 0) reader.SetDecodedBlockLimit(limit);
    EXPECT_TRUE(reader.Init(&in));
    reader.GetGeoNumInBlock(0);  // the block's own bytes are counted apart
    SZVLGZvgGeo geo;
    SZVLGBlockFinding finding;
    outcome.peak = PeakOf([&] {
        Thrown([&] { outcome.isRead = reader.GetGeoByIndex({0, 0}, geo); });
        outcome.miss = reader.GetLastMiss(finding);
    });
    outcome.reason = finding.reason;
    return outcome;
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
        EXPECT_EQ(first.reason, "geometry block 0, record 0 takes more memory than the limit");
        EXPECT_EQ(first.miss, EZVLGMiss::TooLarge) << one.name;
        EXPECT_LE(first.peak, limit + page) << one.name;
        EXPECT_LE(worst.peak, limit + page) << one.name << ", " << count;
        EXPECT_TRUE(!AllocHooks::available || worst.peak > limit / 4) << one.name << ", " << count;
    }
}

TEST(Memory, TextsAndBlobsCountAsWell) {
    // A blob with a text of 6 million units: 12 MB in the file, 24 MB in memory.
    const Bytes blob = FromHex("0002 00000001") + TextOf(6'000'000) + Bytes(8 + 4 + 100);
    EXPECT_FALSE(ReadGeo(FileWithGeo(blob), 16 * mebibyte).isRead);
    const Outcome allowed = ReadGeo(FileWithGeo(blob), 32 * mebibyte);
    EXPECT_TRUE(allowed.isRead) << allowed.reason;
    EXPECT_LE(allowed.peak, 32 * mebibyte);
}

/// A file of less than 3 KB asked for 2 GiB whatever the host set.
TEST(Memory, ASmallFileTakesNoMoreThanTheHostAllows) {
    const Bytes file = FileWithGeo(Flood(0x8000, 2'700'000, 8));
    EXPECT_LT(file.size(), 6'000U);
    for (const u64 limit : {u64{32 * mebibyte}, u64{0}}) {
        const Outcome outcome = ReadGeo(file, limit);
        EXPECT_FALSE(outcome.isRead);
        EXPECT_LE(outcome.peak, limit == 0 ? byDefault : limit);
    }
}

/// A component of one reference that names row 0, of so many units, `count` times.
Bytes FileWithRows(u32 count, u32 units) {
    Parts parts = PartsOf(SampleFile(0));
    Bytes entry = TextOf(1);
    entry.push_back(0);
    entry = entry + BigEndian(1) + Bytes(9) + BigEndian(count);
    entry.resize(entry.size() + 4 * std::size_t{count} + 100);
    const Bytes row = TextOf(1) + TextOf(units) + Bytes(4);
    parts.floors.resize(1);
    parts.floors[0].block = {Section({entry}) + Section({row}), {}};
    return PutTogether(parts);
}

TEST(Memory, RowsNamedOverAndOverCountEachTime) {
    constexpr u64 limit = 16 * mebibyte;
    const auto read = [](u32 count) {
        Outcome outcome;
        const Bytes file = FileWithRows(count, 1000);
        CZVFTReadBufferInStream in(file.data(), file.size());
        CZVLGBlockReader reader;
        reader.SetDecodedBlockLimit(limit);
        EXPECT_TRUE(reader.Init(&in));
        EXPECT_EQ(reader.GetFloorCompNum(0), 1U);
        SZVLGZvgComp comp;
        outcome.peak = PeakOf([&] {
            Thrown([&] { outcome.isRead = reader.GetCompByIndex({0, 0}, comp); });
        });
        return outcome;
    };
    for (const u32 count : {3000U, 4000U, 4050U, 5000U, 50'000U}) {
        const Outcome outcome = read(count);
        EXPECT_EQ(outcome.isRead, count <= 4000) << count;
        EXPECT_LE(outcome.peak, limit + page) << count;
    }
}

/// What a saver takes, any reader takes; what it refuses leaves no trace in the file.
TEST(Memory, ASaverRefusesWhatNoReaderWouldTake) {
    SZVLGZvgGeo fitting, tooLarge;
    constexpr std::size_t fits = (byDefault - 200) / sizeof(SZVLGZvgSubGeo);
    fitting.subGeos.resize(fits);
    tooLarge.subGeos.resize(fits + 1);
    SZVLGZvgComp bringing = Comp(L"bringing"), named = Comp(L"named"), classed = Comp(L"classed");
    bringing.geoRefs = {{L"good", SomeGeo(1), 0, 0, 0, {}, {}},
                        {L"bad", tooLarge, 0, 0, 0, {}, {}}};
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
            if (!withRefused) return;
            const auto add = [&] { saver.AddIdentificationGeo(L"bad", tooLarge); };
            EXPECT_EQ(Thrown(add), "encode error");
            for (const SZVLGZvgComp* comp : {&bringing, &named, &classed})
                EXPECT_EQ(Thrown([&] { saver.AddComp(*comp); }), "encode error")
                    << ToHex(Bytes(1, static_cast<u8>(comp - &bringing)));
        });
    };
    const Bytes file = save(true);
    EXPECT_TRUE(file == save(false));
    fitting = tooLarge = SZVLGZvgGeo();
    Opened opened(file);
    SZVLGZvgComp comp;
    EXPECT_TRUE(opened.reader.GetCompByIndex({0, 0}, comp));
    comp = SZVLGZvgComp();
    opened.reader.CleanInnerBuffer();
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
    const std::vector<SZVLGZvgComp> comps = AllComps(file);
    EXPECT_EQ(comps.size(), 5U);
}

}  // namespace
