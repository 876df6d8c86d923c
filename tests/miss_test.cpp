// What hides behind an answer: absent, damaged and where, or kept back by the stream.

#include <gtest/gtest.h>

#include <functional>

#include "support.h"

namespace {

using namespace support;

struct Miss {
    EZVLGMiss kind;
    SZVLGBlockFinding finding;
};

Miss LastMissOf(CZVLGBlockReader& reader) {
    Miss miss;
    miss.kind = reader.GetLastMiss(miss.finding);
    return miss;
}

/// One call to a reader.
using Call = std::function<void(CZVLGBlockReader&)>;

template <class Record, class Index>
Call Get(bool (CZVLGBlockReader::*get)(const Index&, Record&), Index index) {
    return [=](CZVLGBlockReader& reader) {
        Record record;
        (reader.*get)(index, record);
    };
}
template <class Answer>
Call Get(Answer (CZVLGBlockReader::*get)(u32), u32 number) {
    return [=](CZVLGBlockReader& reader) { (reader.*get)(number); };
}
Call GetComp(u32 floor, u32 i) {
    return Get(&CZVLGBlockReader::GetCompByIndex, SZVLGCompIndex{floor, i});
}
Call GetGeo(u32 block, u32 i) {
    return Get(&CZVLGBlockReader::GetGeoByIndex, SZVLGZvgGeoIndex{block, i});
}
Call GetGeo(const std::wstring& identification) {
    return Get(&CZVLGBlockReader::GetGeoByIdentification, identification);
}
const Call getPreview = [](CZVLGBlockReader& reader) {
    SZVLGZvgGeoImage image;
    reader.GetPreviewImage(image);
};
const Call getNames = [](CZVLGBlockReader& reader) {
    std::vector<std::wstring> names;
    reader.GetAllFloorName(names);
};
const Call getSize = [](CZVLGBlockReader& reader) { reader.GetEstimatedDataSize(); };
const Call getFloors = [](CZVLGBlockReader& reader) { reader.GetFloorNum(); };
const Call getBlocks = [](CZVLGBlockReader& reader) { reader.GetGeoBlockNum(); };
Call GetIdentification(u32 i) {
    return [=](CZVLGBlockReader& reader) {
        std::wstring text;
        SZVLGZvgGeoIndex index;
        reader.GetGeoIdentificationByIndex(i, text, index);
    };
}

/// What a host meets that opens a file, reads all that it is told of and asks after each call.
std::vector<Miss> ReadAll(CZVFTInStream& in) {
    std::vector<Miss> misses;
    CZVLGBlockReader reader;
    const auto take = [&](const auto& call) {
        Thrown([&] { call(reader); });
        if (const Miss miss = LastMissOf(reader); miss.kind != EZVLGMiss::None)
            misses.push_back(miss);
    };
    take([&](CZVLGBlockReader&) { reader.Init(&in); });
    for (const Call& call : {getNames, getSize, getPreview}) take(call);
    for (u32 floor = 0; floor < reader.GetFloorNum(); ++floor) {
        u32 count = 0;
        take([&](CZVLGBlockReader&) { count = reader.GetFloorCompNum(floor); });
        for (u32 i = 0; i < count; ++i) take(GetComp(floor, i));
    }
    for (u32 i = 0; i < reader.GetGeoIdentificationNum(); ++i) {
        std::wstring identification;
        SZVLGZvgGeoIndex index;
        reader.GetGeoIdentificationByIndex(i, identification, index);
        take(GetGeo(identification));
    }
    return misses;
}
std::vector<Miss> ReadAll(const Bytes& file) {
    CZVFTReadBufferInStream in(file.data(), file.size());
    return ReadAll(in);
}

TEST(Miss, EveryByteOfEveryBlockIsTold) {
    const Bytes file = SampleFile(4);
    EXPECT_TRUE(ReadAll(file).empty());
    const Parts parts = PartsOf(file);
    std::size_t flips = 0;
    for (std::size_t i = 0; i < 5; ++i) {
        Parts copy = parts;
        const Bytes& encoded = copy.Blocks()[i]->encoded;
        const auto begin = std::search(file.begin(), file.end(), encoded.begin(), encoded.end());
        const auto at = static_cast<std::size_t>(begin - file.begin());
        for (std::size_t byte = 0; byte < encoded.size(); ++byte, ++flips) {
            Bytes damaged = file;
            damaged[at + byte] ^= static_cast<u8>(1 << (byte % 8));
            const std::vector<Miss> misses = ReadAll(damaged);
            ASSERT_FALSE(misses.empty()) << "block " << i << ", byte " << byte;
            for (const Miss& miss : misses) {
                EXPECT_EQ(miss.kind, EZVLGMiss::Damaged);
                EXPECT_EQ(miss.finding.position, at - 4) << miss.finding.reason;
            }
        }
    }
    EXPECT_GT(flips, 500U);
}

std::size_t BlockPosition(const Parts& parts, std::size_t i) {
    const Bytes file = PutTogether(parts);
    Parts copy = parts;
    const Bytes& encoded = copy.Blocks()[i]->encoded;
    return static_cast<std::size_t>(
               std::search(file.begin(), file.end(), encoded.begin(), encoded.end()) -
               file.begin()) -
           4;
}

/// A file of two geometries in a block each and a component on each of two floors.
Bytes TwoOfEach() {
    return Saved(4, 1, [](CZVLGBlockSaver& saver) {
        saver.AddIdentificationGeo(L"a", SomeGeo(1));
        saver.AddIdentificationGeo(L"b", SomeGeo(2));
        for (const wchar_t* floor : {L"F", L"G"}) {
            SZVLGZvgComp comp = Comp(L"c", floor);
            comp.geoRefs.resize(1);
            comp.geoRefs[0].geoIdentification = L"a";
            saver.AddComp(comp);
        }
    });
}

using Change = void (*)(Bytes&);
const std::size_t wholeFile = 9;  // where other numbers are of a block

TEST(Miss, WhatIsDamagedIsToldWithPlaceAndReason) {
    const Parts whole = PartsOf(TwoOfEach());
    const auto breakCoder = [](Bytes& block) { block.clear(); };
    const struct {
        const char* name;
        std::size_t block;  // 0, 1: geometries, 2, 3: floors, 4: index
        Change change;      // of its decoded content; an empty one does not decode
        Call call;
        const char* reason;  // empty where the answer is whole
    } cases[] = {
        {"nothing", 0, [](Bytes&) {}, GetGeo(0, 0), ""},
        {"geometry block", 1, breakCoder, GetGeo(1, 0), "geometry block 1 does not decode"},
        {"by its key", 1, breakCoder, GetGeo(L"b"), "geometry block 1 does not decode"},
        {"its count", 1, breakCoder, Get(&CZVLGBlockReader::GetGeoNumInBlock, 1),
         "geometry block 1 does not decode"},
        {"its size", 1, breakCoder, getSize, "geometry block 1 does not tell its decoded size"},
        {"the other", 1, breakCoder, GetGeo(L"a"), ""},
        {"floor", 3, breakCoder, GetComp(1, 0), "floor 1 does not decode"},
        {"its comps", 3, breakCoder, Get(&CZVLGBlockReader::GetFloorCompNum, 1),
         "floor 1 does not decode"},
        {"its name", 3, breakCoder, Get(&CZVLGBlockReader::GetFloorNameByIndex, 1), ""},
        {"the names", 3, breakCoder, getNames, ""},
        {"index", 4, breakCoder, GetGeo(L"a"), "the index block does not decode"},
        {"a component", 4, breakCoder, GetComp(0, 0), "the index block does not decode"},
        {"record", 0, [](Bytes& content) { content[17] = 0xFF; }, GetGeo(0, 0),
         "geometry block 0, record 0 is damaged"},
        {"its length", 0, [](Bytes& content) { content[13] = 0xFF; }, GetGeo(0, 0),
         "geometry block 0, record 0 is damaged"},
        {"hidden", 0, [](Bytes& content) { content[8] = 0; }, GetGeo(L"a"),
         "geometry block 0, record 0 has a count that its size contradicts"},
        {"entry", 2, [](Bytes& content) { content[13] = 0xFF; }, GetComp(0, 0),
         "floor 0, component 0 is damaged"},
        {"floor tables", 2, [](Bytes& content) { content.resize(9); }, GetComp(0, 0),
         "floor 0 is damaged"},
        {"hidden comps", 2, [](Bytes& content) { content[8] = 0; },
         Get(&CZVLGBlockReader::GetFloorCompNum, 0),
         "floor 0 has a count that its size contradicts"},
        {"class row", 4, [](Bytes& content) { content[8] = 0; }, GetComp(0, 0),
         "a class row of floor 0, component 0 is not there"},
        {"class name", 4, [](Bytes& content) { content[13] = 0xFF; }, GetComp(0, 0),
         "a class row of floor 0, component 0 is damaged"},
        {"identification", 4, [](Bytes& content) { content.back() = 7; }, GetGeo(L"b"),
         "the index block has an identification that leads to no stored geometry"},
        {"to no block", 4, [](Bytes& content) { content[content.size() - 5] = 7; }, GetGeo(L"b"),
         "the index block has an identification that leads to no stored geometry"},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.name);
        Parts parts = whole;
        Block& block = *parts.Blocks()[one.block];
        const bool mustDecode = (one.change(block.content), !block.content.empty());
        if (mustDecode) {
            block.encoded = Encoded(block.content);
        } else {
            block.encoded[20] ^= 1;
        }
        const Bytes file = Bytes(7, 1) + PutTogether(parts);
        CZVFTReadBufferInStream in(file.data(), file.size());
        in.Seek(7);
        CZVLGBlockReader reader;
        reader.Init(&in);
        Thrown([&] { one.call(reader); });
        const Miss miss = LastMissOf(reader);
        const bool isWhole = *one.reason == '\0';
        EXPECT_EQ(miss.kind, isWhole ? EZVLGMiss::None : EZVLGMiss::Damaged);
        EXPECT_EQ(miss.finding.reason, one.reason);
        EXPECT_EQ(miss.finding.position, isWhole ? 0 : BlockPosition(parts, one.block));
    }
}

TEST(Miss, WhatIsAbsentIsNotDamaged) {
    const Bytes file = TwoOfEach();
    CZVFTReadBufferInStream in(file.data(), file.size());
    CZVLGBlockReader reader;
    const std::vector<Call> beyond = {GetGeo(2, 0),
                                      GetGeo(0, 1),
                                      GetGeo(0xFFFFFFFF, 0),
                                      GetGeo(L"c"),
                                      GetGeo(L""),
                                      getPreview,
                                      GetComp(2, 0),
                                      GetComp(0, 1),
                                      GetIdentification(2),
                                      Get(&CZVLGBlockReader::GetGeoNumInBlock, 2),
                                      Get(&CZVLGBlockReader::GetFloorCompNum, 2),
                                      Get(&CZVLGBlockReader::GetFloorNameByIndex, 2),
                                      Get(&CZVLGBlockReader::GetFloorOrderByIndex, 0xFFFFFFFF)};
    const auto expectAbsent = [&](const Call& call) {
        call(reader);
        SZVLGBlockFinding finding = {5, "kept"};
        EXPECT_EQ(reader.GetLastMiss(finding), EZVLGMiss::Absent);
        EXPECT_EQ(finding.reason, "kept");
    };
    for (const Call& call : beyond) expectAbsent(call);
    ASSERT_TRUE(reader.Init(&in));
    EXPECT_EQ(LastMissOf(reader).kind, EZVLGMiss::None);
    for (const Call& call : beyond) expectAbsent(call);
    for (const Call& call : {getNames, getSize, getFloors, getBlocks, GetIdentification(1)}) {
        call(reader);
        EXPECT_EQ(LastMissOf(reader).kind, EZVLGMiss::None);
    }
    Bytes text(100, 'x');
    CZVFTReadBufferInStream other(text.data(), text.size());
    CZVLGBlockReader foreign;
    EXPECT_EQ(Thrown([&] { foreign.Init(&other); }), "it's not zvg file format");
    EXPECT_EQ(LastMissOf(foreign).kind, EZVLGMiss::Absent);
}

/// A count that a flipped bit made smaller hides a floor or all geometry.
TEST(Miss, SectionsThatContradictThemselvesAreTold) {
    std::vector<FieldSpan> spans;
    const Parts parts = PartsOf(TwoOfEach());
    const Bytes file = PutTogether(parts, &spans);
    const struct {
        const char* field;
        Call call;
    } cases[] = {
        {"geometry section count", getBlocks},     {"geometry section count", GetGeo(1, 0)},
        {"geometry section totalSize", getBlocks}, {"floor section count", getFloors},
        {"floor section count", GetComp(1, 0)},    {"floor section count", getNames}};
    for (const auto& one : cases)
        for (const FieldSpan& span : spans) {
            if (span.name != one.field) continue;
            Bytes damaged = file;
            damaged[span.end - 1] ^= 3;
            CZVFTReadBufferInStream in(damaged.data(), damaged.size());
            CZVLGBlockReader reader;
            EXPECT_TRUE(reader.Init(&in));
            EXPECT_EQ(LastMissOf(reader).kind, EZVLGMiss::Damaged) << one.field;
            one.call(reader);
            EXPECT_EQ(LastMissOf(reader).kind, EZVLGMiss::Damaged) << one.field;
        }
}

/// Fails one read, as a disk does: nothing is delivered, or a part, or an exception is thrown.
struct FailingDisk : CZVFTReadBufferInStream {
    enum Kind { failing, partial, throwing };
    FailingDisk(const Bytes& file, Kind kind, long turn)
        : CZVFTReadBufferInStream(file.data(), file.size()), kind(kind), turn(turn) {}
    bool Read(void* buffer, u64* byteCount) override {
        if (*byteCount == 0 || turn-- != 0) return CZVFTReadBufferInStream::Read(buffer, byteCount);
        failedAt = pos;
        if (kind == throwing) throw std::runtime_error("the disk is gone");
        *byteCount = kind == partial ? *byteCount / 2 : 0;
        u64 part = *byteCount;
        CZVFTReadBufferInStream::Read(buffer, &part);
        return kind == partial;
    }
    Kind kind;
    long turn;
    u64 failedAt = 0xFFFFFFFF;
};

TEST(Miss, AFailingDiskIsNoDamage) {
    const Bytes file = TwoOfEach();
    for (const auto kind : {FailingDisk::failing, FailingDisk::partial, FailingDisk::throwing}) {
        long turn = 0;
        for (bool hasFailed = true; hasFailed; ++turn) {
            FailingDisk disk(file, kind, turn);
            std::vector<Miss> misses;
            CZVLGBlockReader reader;
            const auto call = [&](const auto& made) {
                try {
                    made();
                } catch (const std::exception&) {
                }
                misses.push_back(LastMissOf(reader));
            };
            bool isOpen = false;
            call([&] { isOpen = reader.Init(&disk); });
            for (const Call& made : {GetGeo(L"a"), GetComp(1, 0), getNames, getSize})
                call([&] { made(reader); });
            hasFailed = disk.failedAt != 0xFFFFFFFF;
            const auto isUnread = [&](const Miss& miss) {
                return miss.kind == EZVLGMiss::Unread && miss.finding.position == disk.failedAt &&
                       miss.finding.reason.find("does not deliver") != std::string::npos;
            };
            EXPECT_EQ(std::count_if(misses.begin(), misses.end(), isUnread), !hasFailed ? 0
                                                                             : isOpen   ? 1
                                                                                        : 5)
                << kind << ", read " << turn;
            for (const Miss& miss : misses)
                EXPECT_TRUE(isUnread(miss) || miss.kind == EZVLGMiss::None) << turn;
        }
        EXPECT_GT(turn, 20);
    }
}

}  // namespace
