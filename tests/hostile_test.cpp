// Files that are cut short, damaged or made to deceive: refused or neutral, never a fault, never
// memory or time out of proportion.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "ZVSmartFormat/FileStream.h"
#include "alloc_hooks.h"
#include "support.h"

namespace {

using namespace support;

namespace fs = std::filesystem;
using ZVSmartFormat::CZVFTFileInStream;

struct TempFile {
    TempFile() : path(fs::temp_directory_path() / ("zvg-hostile-" + std::to_string(getpid()))) {}
    ~TempFile() { fs::remove(path); }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    fs::path path;
};

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

TEST(Hostile, TruncatedAnywhere) {
    for (unsigned int version = 0; version <= 4; ++version) {
        Bytes file = SampleFile(version);
        ASSERT_LT(file.size(), 4096U);
        const std::vector<std::string> right = Answers(file);
        EXPECT_EQ(std::count(right.begin(), right.end(), refused), 0);
        EXPECT_GT(right.size() - std::size_t(std::count(right.begin(), right.end(), "")), 20U);
        TempFile copy;
        std::ofstream(copy.path, std::ios::binary)
            .write(reinterpret_cast<const char*>(file.data()), std::streamsize(file.size()));
        while (!file.empty()) {
            file.pop_back();
            fs::resize_file(copy.path, file.size());
            CZVFTFileInStream in(copy.path.string());
            ASSERT_TRUE(in.Open());
            EXPECT_FALSE(IsChanged(Answers(file), right)) << version << " at " << file.size();
            EXPECT_FALSE(IsChanged(Answers(in), right)) << version << " at " << file.size();
        }
    }
}

std::string FieldAt(const std::vector<FieldSpan>& spans, std::size_t position) {
    for (const FieldSpan& span : spans)
        if (position >= span.begin && position < span.end) return span.name;
    return "compressed data";
}

TEST(Hostile, EveryByteDamaged) {
    // Where nothing but the reader's plausibility stands between damage and a changed answer.
    const std::set<std::string> unchecked = {"version",
                                             "firstText",
                                             "secondText",
                                             "flags",
                                             "optionalValue",
                                             "optionalText",
                                             "transf",
                                             "floor name",
                                             "floor order",
                                             "floor values",
                                             "geometry section tableWidth",
                                             "geometry section tableOffset",
                                             "geometry section offsets",
                                             "floor section tableWidth",
                                             "floor section totalSize",
                                             "floor section tableOffset",
                                             "floor section offsets"};
    std::vector<FieldSpan> spans;
    Bytes file = SampleFile(4);
    ASSERT_EQ(PutTogether(PartsOf(file), &spans), file);
    const std::vector<std::string> right = Answers(file);
    for (std::size_t i = 0; i < file.size(); ++i) {
        const u8 stored = file[i];
        Bytes values = {0x00, 0x7F, 0x80, 0xFF};
        for (int bit = 0; bit < 8; ++bit) values.push_back(static_cast<u8>(stored ^ 1 << bit));
        for (const u8 value : values) {
            file[i] = value;
            const std::string field = FieldAt(spans, i);
            EXPECT_TRUE(unchecked.count(field) || !IsChanged(Answers(file), right)) << field;
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
    std::vector<FieldSpan> spans;
    const Bytes file = PutTogether(PartsOf(SampleFile(4)), &spans);
    ExpectSmall(8 * mebibyte, [&] {
        for (const FieldSpan& span : spans)
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

/// A text of `units` zeros.
Bytes TextOf(u32 units) {
    Bytes bytes;
    PutU32(bytes, units);
    bytes.resize(4 + 2 * std::size_t{units});
    return bytes;
}

/// A tree of sub-geometries of four bytes each: tiny in a file, hundreds of bytes in memory.
void MakeGeoFlood(Parts& parts) {
    Bytes record;
    constexpr u32 count = 16'000'000;
    PutU32(record, 6 + 4 * count);
    record.insert(record.end(), {0x80, 0});
    PutU32(record, count);
    record.resize(record.size() + 4 * std::size_t{count});
    parts.geoBlocks = {{Section({record}), {}}};
}

/// One component that names the same long identification row a million times.
void MakeRowFlood(Parts& parts) {
    constexpr u32 count = 1'000'000;
    Bytes entry = TextOf(1);
    entry.push_back(0);
    PutU32(entry, 1);
    entry.resize(entry.size() + 9);
    PutU32(entry, count);
    entry.resize(entry.size() + 4 * std::size_t{count} + 100);
    Bytes row = TextOf(1), text = TextOf(1000);
    row.insert(row.end(), text.begin(), text.end());
    row.resize(row.size() + 4);
    Bytes content = Section({entry}), rows = Section({row});
    content.insert(content.end(), rows.begin(), rows.end());
    for (FloorRecord& floor : parts.floors) floor.block = {content, {}};
}

/// Class tables by the thousand that all claim the same offset table of a mebibyte.
void MakeSharedTables(Parts& parts) {
    std::vector<Bytes> rows;
    for (std::size_t left = 2000; left != 0; --left) {
        Bytes level4 = Section({});
        SetU32(level4, 1, static_cast<u32>(mebibyte));
        SetU32(level4, 5, 0xFFFFFFFF);
        SetU32(level4, 9, 200'000);
        level4.insert(level4.begin(), 8, 0);
        Bytes row(8, 0);
        const Bytes level3 = Section({level4}), level2b = Section({});
        row.insert(row.end(), level3.begin(), level3.end());
        row.insert(row.end(), level2b.begin(), level2b.end());
        rows.push_back(row);
    }
    parts.index = {Section(rows), {}};
    parts.index.content.resize(2 * mebibyte);
}

/// Records that are nothing but damage.
void MakeDamagedRecords(Parts& parts) {
    const Bytes record(4, 0xFF);
    parts.geoBlocks = {{Section(std::vector<Bytes>(300'000, record)), {}}};
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
        const auto start = std::chrono::steady_clock::now();
        ExpectSmall(one.mostBytes, [&] { Answers(file); });
        ExpectSmall(one.mostBytes, [&] {
            CZVFTReadBufferInStream in(file.data(), file.size());
            std::vector<SZVLGBlockFinding> findings;
            EXPECT_FALSE(CZVLGBlockVerifier().Verify(&in, findings)) << one.name;
        });
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        EXPECT_LT(seconds.count(), AllocHooks::available ? 5 : 50) << one.name;
    }
}

/// The end of a section's head and the bytes of its offset table would read as records.
TEST(Hostile, OffsetsOutsideTheRecordsLeadNowhere) {
    const Bytes record = RecordBytes(4, {});
    const Bytes sized = BigEndian(static_cast<u32>(record.size())) + record;
    const u32 tableOffset = 13 + static_cast<u32>(sized.size());
    const Bytes table = sized + Bytes(20);  // its last entry is the one in question
    const auto count = static_cast<u32>(table.size());
    Bytes content(1);
    PutU32(content, tableOffset + count);
    PutU32(content, count);
    PutU32(content, tableOffset);
    content = std::move(content) + sized + table;
    const struct {
        u32 offset;
        std::string thrown;
    } cases[] = {{9, "seek over buffer size"}, {13, ""}, {tableOffset, "seek over buffer size"}};
    Parts parts = PartsOf(SampleFile(4));
    for (const auto& one : cases) {
        content.back() = static_cast<u8>(one.offset);
        parts.geoBlocks[0] = {content, {}};
        Opened opened(PutTogether(parts));
        SZVLGZvgGeo geo;
        bool isRead = false;
        const auto read = [&] { isRead = opened.reader.GetGeoByIndex({0, count - 1}, geo); };
        EXPECT_EQ(Thrown(read), one.thrown) << one.offset;
        EXPECT_EQ(isRead, one.thrown.empty()) << one.offset;
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
        TempFile copy;
        std::ofstream(copy.path, std::ios::binary)
            .seekp(std::streamoff(base))
            .write(reinterpret_cast<const char*>(file.data()), std::streamsize(file.size()))
            .write("trailing", base == 7 ? 8 : 0);
        BasedInStream in(copy.path.string(), base);
        ASSERT_TRUE(in.Open());
        in.Seek(base);
        EXPECT_EQ(Answers(in), Answers(file)) << base;
        EXPECT_EQ(in.GetPos(), base);
        std::vector<SZVLGBlockFinding> findings;
        EXPECT_EQ(CZVLGBlockVerifier().Verify(&in, findings), base != 7);
        EXPECT_EQ(findings.size(), base == 7 ? 1U : 0U);
    }
}

}  // namespace
