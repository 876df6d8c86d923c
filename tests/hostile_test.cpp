// Files that are cut short, damaged or made to deceive: refused or neutral, never a fault, never
// memory or time out of proportion.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "ZVSmartFormat/FileStream.h"
#include "alloc_hooks.h"
#include "support.h"

namespace {

using namespace support;
using ZVSmartFormat::CZVFTFileInStream;

/// Whether `answer` is neither refused nor neutral nor right. Fewer of something is neutral.
bool IsWrong(const std::string& answer, const std::string& right) {
    if (answer == right || answer.empty() || answer == refused) return false;
    if (answer[0] != '#' || right[0] != '#') return true;
    return std::stoul(answer.substr(1)) > std::stoul(right.substr(1));
}

bool IsChanged(const std::vector<std::string>& answers, const std::vector<std::string>& right) {
    for (std::size_t i = 0; i < right.size(); ++i)
        if (IsWrong(answers[i], right[i])) return true;
    return false;
}

std::vector<FieldSpan> SpansOf(const Bytes& file) {
    std::vector<FieldSpan> spans;
    EXPECT_EQ(PutTogether(PartsOf(file), &spans), file);
    return spans;
}

TEST(Hostile, TruncatedAnywhere) {
    for (unsigned int version = 0; version <= 4; ++version) {
        Bytes file = SampleFile(version);
        ASSERT_LT(file.size(), 4096U);
        const std::vector<std::string> right = Answers(file);
        EXPECT_EQ(std::count(right.begin(), right.end(), refused), 0);
        EXPECT_GT(right.size() - std::size_t(std::count(right.begin(), right.end(), "")), 20U);
        const std::size_t headEnd = FieldIn(SpansOf(file), "floorSectionOffset").begin;
        const TempFile copy(file);
        while (!file.empty()) {
            file.pop_back();
            const std::size_t size = file.size();
            const std::string opening = size >= headEnd ? ""
                                        : size >= 9     ? "seek over buffer size"
                                                        : "it's not zvg file format";
            std::filesystem::resize_file(copy.path, size);
            CZVFTReadBufferInStream memory(file.data(), size);
            CZVFTFileInStream onDisk(copy.path);
            HostInStream host(file);
            ASSERT_TRUE(onDisk.Open());
            for (CZVFTInStream* const in :
                 std::initializer_list<CZVFTInStream*>{&memory, &onDisk, &host}) {
                CZVLGBlockReader reader;
                EXPECT_EQ(Thrown([&] { EXPECT_FALSE(reader.Init(in)); }), opening) << size;
                EXPECT_FALSE(opening.empty() && IsChanged(AskAll(reader), right))
                    << version << " at " << size;
            }
        }
    }
}

/// Where nothing but the reader's plausibility stands between damage and a changed answer.
const std::string unchecked =
    ";version;firstText;secondText;flags;optionalValue;optionalText;transf;floor name;floor order;"
    "floor values;geometry section tableWidth;geometry section tableOffset;"
    "geometry section offsets;floor section tableWidth;floor section totalSize;"
    "floor section tableOffset;floor section offsets;";

/// What a reader tells of the block at `position`, in which a byte is damaged.
void ExpectDamageTold(const Bytes& file, std::size_t position) {
    CZVFTReadBufferInStream in(file.data(), file.size());
    CZVLGBlockReader reader;
    bool isTold = !reader.Init(&in);
    for (const Query& query : Queries()) {
        Ask(query, reader);
        const Miss miss = LastMissOf(reader);
        if (miss.kind <= EZVLGMiss::Absent) continue;
        isTold = true;
        EXPECT_EQ(miss.kind, EZVLGMiss::Damaged);
        EXPECT_EQ(miss.position, position) << miss.reason;
    }
    EXPECT_TRUE(isTold) << position;
}

TEST(Hostile, EveryByteDamaged) {
    Bytes file = SampleFile(4);
    const std::vector<FieldSpan> spans = SpansOf(file);
    const std::vector<std::string> right = Answers(file);
    std::size_t block = 0;  // the one that was passed last
    for (std::size_t i = 0; i < file.size(); ++i) {
        std::string field;
        for (const FieldSpan& span : spans)
            if (i >= span.begin && i < span.end) {
                field = span.name;
                if (field == "blockSize") block = span.begin;
            }

        const bool isUnchecked = unchecked.find(";" + field + ";") != std::string::npos;
        const u8 stored = file[i];
        Bytes values = {0x00, 0x7F, 0x80, 0xFF};
        for (int bit = 0; bit < 8; ++bit) values.push_back(static_cast<u8>(stored ^ 1 << bit));
        for (const u8 value : values) {
            file[i] = value;
            EXPECT_TRUE(isUnchecked || !IsChanged(Answers(file), right)) << field;
            if (field.empty() && value != stored) ExpectDamageTold(file, block);
        }
        file[i] = stored;
    }
}

constexpr u32 extremes[] = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

/// Runs `check` and expects it to need little memory.
template <class Check>
void ExpectSmall(std::size_t mostBytes, Check check) {
    AllocHooks::ResetPeak();
    const std::size_t before = AllocHooks::BytesInUse();
    check();
    EXPECT_LT(AllocHooks::PeakBytes() - before, mostBytes);
}

/// Four bytes anywhere cover every count, size, width, offset and index, and more.
TEST(Hostile, ExtremesInEveryField) {
    const Bytes file = SampleFile(4);
    ExpectSmall(8 * mebibyte, [&] {
        for (const FieldSpan& span : SpansOf(file))
            for (std::size_t i = span.begin; i < span.end && i + 4 <= file.size(); ++i)
                for (const u32 value : extremes) {
                    Bytes damaged = file;
                    SetU32(damaged, i, value);
                    Exercise(damaged);
                }
    });
}

TEST(Hostile, DamageInsideDecodedBlocks) {
    Parts parts = PartsOf(SampleFile(4));
    ExpectSmall(8 * mebibyte, [&] {
        for (Block* const block : parts.Blocks()) {
            const Block whole = *block;
            const auto damage = [&](auto change) {
                block->encoded.clear();
                change(block->content);
                Exercise(PutTogether(parts));
                block->content = whole.content;
            };
            for (std::size_t i = 0; i < whole.content.size(); ++i) {
                damage([i](Bytes& content) { content[i] ^= 0xFF; });
                damage([i](Bytes& content) { ++content[i]; });
                damage([i](Bytes& content) { content.resize(i); });
                if (i + 4 > whole.content.size()) continue;
                for (const u32 value : extremes)
                    damage([&](Bytes& content) { SetU32(content, i, value); });
            }
            *block = whole;
        }
    });
}

/// A tree of sub-geometries of four bytes each: tiny in a file, hundreds of bytes in memory.
void MakeGeoFlood(Parts& parts) {
    constexpr u32 count = 16'000'000;
    const Bytes head = BigEndian(6 + 4 * count) + FromHex("8000") + BigEndian(count);
    parts.geoBlocks = {{Section({head + Bytes(4 * std::size_t{count})}), {}}};
}

/// One component that names the same long identification row a million times.
void MakeRowFlood(Parts& parts) {
    constexpr u32 count = 1'000'000;
    const Bytes entry = TextOf(1) + Bytes(1) + BigEndian(1) + Bytes(9) + BigEndian(count) +
                        Bytes(4 * std::size_t{count} + 100);
    const Bytes row = TextOf(1) + TextOf(1000) + Bytes(4);
    for (FloorRecord& floor : parts.floors) floor.block = {Section({entry}) + Section({row}), {}};
}

/// Class tables by the thousand that all claim the same offset table of a mebibyte.
void MakeSharedTables(Parts& parts) {
    std::vector<Bytes> rows;
    for (std::size_t left = 2000; left != 0; --left) {
        Bytes level4 = Bytes(8) + Section({});
        SetU32(level4, 9, static_cast<u32>(mebibyte));
        SetU32(level4, 13, 0xFFFFFFFF);
        SetU32(level4, 17, 200'000);
        rows.push_back(Bytes(8) + Section({level4}) + Section({}));
    }
    parts.index = {Section(rows), {}};
    parts.index.content.resize(2 * mebibyte);
}

/// Records that are nothing but damage.
void MakeDamagedRecords(Parts& parts) {
    parts.geoBlocks = {{Section(std::vector<Bytes>(300'000, Bytes(4, 0xFF))), {}}};
}

TEST(Hostile, SmallFilesCostLittle) {
    const struct {
        const char* name;
        void (*make)(Parts&);
        std::size_t mostBytes;
    } cases[] = {{"sub-geometries", MakeGeoFlood, 200 * mebibyte},
                 {"repeated rows", MakeRowFlood, 400 * mebibyte},
                 {"shared tables", MakeSharedTables, 40 * mebibyte},
                 {"damaged records", MakeDamagedRecords, 100 * mebibyte}};
    for (const auto& one : cases) {
        Parts parts = PartsOf(SampleFile(0));
        one.make(parts);
        const Bytes file = PutTogether(parts);
        EXPECT_LT(file.size(), 100'000U) << one.name;
        const std::clock_t start = std::clock();  // other programs' time is not ours
        ExpectSmall(one.mostBytes, [&] { Answers(file); });
        ExpectSmall(one.mostBytes, [&] { EXPECT_FALSE(Verified(file).empty()) << one.name; });
        const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        EXPECT_LT(seconds, AllocHooks::available ? 5 : 50) << one.name;
    }
}

/// The end of a section's head and the bytes of its offset table would read as records.
TEST(Hostile, OffsetsOutsideTheRecordsLeadNowhere) {
    const Bytes record = RecordBytes(4, {});
    const Bytes sized = BigEndian(static_cast<u32>(record.size())) + record;
    const u32 tableOffset = 13 + static_cast<u32>(sized.size());
    const auto count = static_cast<u32>(sized.size() + 20);
    Bytes content = Bytes(1) + BigEndian(tableOffset + count) + BigEndian(count) +
                    BigEndian(tableOffset) + sized + sized + Bytes(20);
    Parts parts = PartsOf(SampleFile(4));
    for (const u32 one : {9U, 13U, tableOffset}) {
        content.back() = static_cast<u8>(one);
        parts.geoBlocks[0] = {content, {}};
        Opened opened(PutTogether(parts));
        const bool isRecord = one == 13;
        EXPECT_EQ(Ask(ask::Geo(0, count - 1), opened.reader),
                  isRecord ? Dump(SZVLGZvgGeo()) : refused)
            << one;
    }
}

/// A small file must not make a reader go through one long floor thousands of times.
TEST(Hostile, FloorsThatAreAllTheSameLongOne) {
    constexpr u32 count = 3000;
    Parts parts = PartsOf(SampleFile(4));
    parts.floors.resize(1);
    parts.floors.resize(count, parts.floors[0]);
    parts.floors[0].fields[0].bytes = TextOf(50'000);
    std::vector<FieldSpan> spans;
    Bytes file = PutTogether(parts, &spans);
    for (const FieldSpan& span : spans) {
        if (span.name != "floor section offsets") continue;
        ASSERT_EQ(span.end - span.begin, 4 * count);
        for (u32 i = 0; i < count; ++i) SetU32(file, span.begin + std::size_t{4} * i, 13);
    }
    Opened opened(file);
    ASSERT_TRUE(opened.ok);
    ExpectSmall(8 * mebibyte, [&] {
        std::vector<std::wstring> names;
        EXPECT_EQ(Thrown([&] { opened.reader.GetAllFloorName(names); }), "seek over buffer size");
        EXPECT_EQ(Thrown([&] { opened.reader.GetEstimatedDataSize(); }), "seek over buffer size");
    });
}

TEST(Hostile, ImageSizesIn32Bits) {
    const struct {
        u32 width, height, byteCount;
    } cases[] = {{0x8000, 0x8000, 0},         {0x10000, 0x4000, 0},
                 {0x10001, 0x10001, 0x80004}, {0x40000001, 1, 4},
                 {0xFFFFFFFF, 0xFFFFFFFF, 4}, {0xFFFFFFFF, 1, 0xFFFFFFFC},
                 {0x7FFFFFFF, 1, 0xFFFFFFFC}};
    for (const auto& one : cases) {
        SZVLGZvgGeo geo;
        SZVLGZvgGeoImage& image = geo.images.emplace_back();
        image.width = one.width;
        image.height = one.height;
        EXPECT_EQ(image.PixelBytes(), one.byteCount);
        const auto save = [&] {
            return Saved(4, 0, [&](CZVLGBlockSaver& saver) {
                saver.AddIdentificationGeo(L"a", geo);
                saver.AddPreviewImage(image);
            });
        };
        EXPECT_EQ(Thrown(save).empty(), one.byteCount == 0);
        if (one.byteCount > mebibyte) continue;
        image.pixels = static_cast<u8*>(std::calloc(1, one.byteCount + (one.byteCount == 0)));
        Opened opened(save());
        SZVLGZvgGeo read;
        ASSERT_TRUE(opened.reader.GetGeoByIndex({0, 0}, read));
        EXPECT_EQ(Dump(SZVLGZvgGeo(read)), Dump(geo));
        EXPECT_TRUE(opened.reader.GetPreviewImage(image));
        EXPECT_EQ(image.pixels != nullptr, one.byteCount != 0);
    }
}

/// A file whose bytes ahead of the base nobody may read.
struct BasedInStream : CZVFTFileInStream {
    BasedInStream(const std::string& path, u64 base) : CZVFTFileInStream(path), base(base) {}
    bool Read(void* buffer, u64* size) override {
        EXPECT_GE(GetPos(), base);
        return CZVFTFileInStream::Read(buffer, size);
    }
    u64 base;
};

TEST(Hostile, AnyBaseAndTrailingBytes) {
    const Bytes file = SampleFile(4);
    for (const u64 base : {0ULL, 1ULL, 7ULL, 4096ULL, 5ULL << 30}) {
        const TempFile copy(file + Bytes(base == 7 ? 8 : 0, 'x'), base);
        BasedInStream in(copy.path, base);
        ASSERT_TRUE(in.Open());
        in.Seek(base);
        EXPECT_EQ(Answers(in), Answers(file)) << base;
        EXPECT_EQ(in.GetPos(), base);
        Findings findings;
        EXPECT_EQ(CZVLGBlockVerifier().Verify(&in, findings), base != 7);
        EXPECT_EQ(findings.size(), base == 7 ? 1U : 0U);
    }
}

}  // namespace
