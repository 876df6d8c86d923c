// Saver and reader: where records go, what is kept decoded, and what is left when something is
// wrong.

#include <gtest/gtest.h>

#include <functional>

#include "ZVSmartFormat/FileStream.h"
#include "support.h"

namespace {

using namespace support;

using Pair = std::pair<u32, u32>;

/// Where an identification leads.
Pair Place(CZVLGBlockReader& reader, const std::wstring& key) {
    std::wstring found;
    SZVLGZvgGeoIndex index;
    for (u32 i = 0; reader.GetGeoIdentificationByIndex(i, found, index); ++i)
        if (found == key) return {index.blockIndex, index.indexInBlock};
    return {0xFFFFFFFF, 0xFFFFFFFF};
}

TEST(Routing, AFullBlockIsWrittenWhenTheNextOneBegins) {
    struct Case {
        unsigned int capacity;
        u32 count;
        Pair last;
    };
    const Case cases[] = {{0, 1000, {0, 999}}, {0, 1001, {1, 0}}, {1, 3, {2, 0}}, {2, 5, {2, 0}}};
    for (const Case& each : cases) {
        const u32 capacity = each.capacity == 0 ? 1000 : each.capacity;
        const Bytes file = Streamed([&](CZVFTOutStream& out) {
            SaveTo(out, {4, each.capacity, "", {}}, [&](CZVLGBlockSaver& saver) {
                for (u32 i = 0; i < each.count; ++i) {
                    const u64 before = out.GetPos();
                    saver.AddIdentificationGeo(std::to_wstring(i), SomeGeo(i));
                    EXPECT_EQ(out.GetPos() != before, i != 0 && i % capacity == 0) << i;
                }
            });
        });
        Opened opened(file);
        SZVLGZvgGeo geo, none;
        const std::wstring last = std::to_wstring(each.count - 1);
        EXPECT_EQ(Place(opened.reader, last), each.last);
        EXPECT_TRUE(opened.reader.GetGeoByIdentification(last, geo));
        EXPECT_EQ(ValueOf(geo), each.count - 1);
        const auto [block, position] = each.last;
        for (const SZVLGZvgGeoIndex& index : {SZVLGZvgGeoIndex{block, position + 1},
                                              {block + 1, 0},
                                              {0xFFFFFFFF, 0},
                                              {0, 0xFFFFFFFF}})
            EXPECT_FALSE(opened.reader.GetGeoByIndex(index, none));
    }
}

TEST(Routing, RepeatedIdentifications) {
    const Bytes file = Saved(4, 2, [](CZVLGBlockSaver& saver) {
        saver.AddIdentificationGeo(L"", SomeGeo(9));
        EXPECT_FALSE(saver.IsHaveIdentificationGeo(L""));
        saver.AddIdentificationGeo(L"a", SomeGeo(0));
        saver.AddIdentificationGeo(L"a", SomeGeo(1));  // same block: nothing
        EXPECT_FALSE(saver.IsHaveIdentificationGeo(L"A"));
        saver.AddIdentificationGeo(L"A", SomeGeo(2));
        saver.AddIdentificationGeo(L"a", SomeGeo(3));  // the next block: once more
        saver.AddIdentificationGeo(L"a", SomeGeo(4));
        saver.AddIdentificationGeo(L"c", SomeGeo(5));
        EXPECT_TRUE(saver.IsHaveIdentificationGeo(L"a"));
    });
    Opened opened(file);
    CZVLGBlockReader& reader = opened.reader;
    EXPECT_EQ(reader.GetGeoBlockNum(), 2U);
    EXPECT_EQ(reader.GetGeoNumInBlock(0), 2U);
    EXPECT_EQ(reader.GetGeoNumInBlock(1), 2U);
    EXPECT_EQ(NumberAt(PartsOf(file).index.content, 13), 3U) << "each once in the file itself";
    EXPECT_EQ(Place(reader, L"a"), Pair(0, 0));
    EXPECT_EQ(Place(reader, L"c"), Pair(1, 1));
    const u64 values[] = {0, 2, 3, 5};
    SZVLGZvgGeo geo;
    for (u32 i = 0; i < 4; ++i) {
        EXPECT_TRUE(reader.GetGeoByIndex({i / 2, i % 2}, geo));
        EXPECT_EQ(ValueOf(geo), values[i]);
    }
    for (const wchar_t* key : {L"", L"b", L"aa"})
        EXPECT_FALSE(reader.GetGeoByIdentification(key, geo));
}

/// Counts the bytes that are read.
class CountingStream : public CZVFTReadBufferInStream {
  public:
    explicit CountingStream(const Bytes& bytes)
        : CZVFTReadBufferInStream(bytes.data(), bytes.size()) {}
    bool Read(void* buffer, u64* byteCount) override {
        bytesRead += *byteCount;
        return CZVFTReadBufferInStream::Read(buffer, byteCount);
    }
    u64 bytesRead = 0;
};

TEST(Caches, GiveUpTheirLowestNumber) {
    const Bytes file = Saved(4, 1, [](CZVLGBlockSaver& saver) {
        for (u32 i = 0; i < 10; ++i) {
            saver.AddIdentificationGeo(std::to_wstring(i), SomeGeo(i));
            saver.AddComp(Comp(L"c", std::to_wstring(i)));
        }
    });
    using Fetch = std::function<void(CZVLGBlockReader&, u32)>;
    const Fetch fetchGeo = [](CZVLGBlockReader& reader, u32 i) {
        SZVLGZvgGeo geo;
        EXPECT_TRUE(reader.GetGeoByIndex({i, 0}, geo));
        EXPECT_EQ(ValueOf(geo), i);
    };
    const Fetch fetchFloor = [](CZVLGBlockReader& reader, u32 i) {
        SZVLGZvgComp comp;
        EXPECT_TRUE(reader.GetCompByIndex({i, 0}, comp));
        EXPECT_EQ(comp.classLevel1Name, std::to_wstring(i));
    };
    struct Case {
        const Fetch& fetch;
        unsigned int geoLimit, floorLimit;
        std::vector<u32> fetched, kept;
        u32 lost;
    };
    const Case cases[] = {
        {fetchGeo, 3, 0, {5, 7, 9, 1}, {7, 9, 1}, 5},
        {fetchGeo, 3, 0, {5, 7, 9, 1, 8}, {7, 9, 8}, 1},
        {fetchGeo, 0, 0, {0, 1, 2}, {0, 1, 2}, 3},
        {fetchGeo, 0, 1, {0, 1, 2, 3}, {1, 2, 3}, 0},
        {fetchGeo, 1, 0, {4, 5}, {5}, 4},
        {fetchFloor, 0, 3, {5, 7, 9, 1}, {7, 9, 1}, 5},
        {fetchFloor, 0, 3, {5, 7, 9, 1, 8}, {7, 9, 8}, 1},
        {fetchFloor, 1, 0, {0, 1, 2, 3, 4}, {0, 1, 2, 3, 4}, 5},
        {fetchFloor, 0, 0, {0, 1, 2, 3, 4, 5}, {1, 2, 3, 4, 5}, 0},
    };
    for (const Case& each : cases) {
        CountingStream in(file);
        CZVLGBlockReader reader;
        ASSERT_TRUE(reader.Init(&in, each.geoLimit, each.floorLimit));
        for (const u32 number : each.fetched) each.fetch(reader, number);
        reader.GetFloorNameByIndex(0);
        reader.GetFloorOrderByIndex(9);
        in.bytesRead = 0;
        for (const u32 number : each.kept) each.fetch(reader, number);
        EXPECT_EQ(in.bytesRead, 0U) << "still there";
        each.fetch(reader, each.lost);
        EXPECT_NE(in.bytesRead, 0U);
        reader.CleanInnerBuffer();
        in.bytesRead = 0;
        each.fetch(reader, each.kept.back());
        EXPECT_NE(in.bytesRead, 0U);
        EXPECT_EQ(in.GetPos(), 0U);
    }
}

/// A file of two floors and three geometry blocks.
Bytes SmallFile() {
    return Saved(4, 2, [](CZVLGBlockSaver& saver) {
        for (u32 i = 0; i < 5; ++i) saver.AddIdentificationGeo(std::to_wstring(i), SomeGeo(i));
        for (const wchar_t* floor : {L"F", L"G"}) saver.AddComp(Comp(L"c", floor));
    });
}

/// All lookups find nothing and change nothing.
void ExpectNeutral(CZVLGBlockReader& reader) {
    SZVLGZvgGeo geo;
    SZVLGZvgGeoImage image;
    SZVLGZvgComp comp = Comp(L"kept");
    std::wstring key = L"kept";
    SZVLGZvgGeoIndex index;
    EXPECT_FALSE(reader.GetGeoByIdentification(L"0", geo));
    EXPECT_FALSE(reader.GetGeoByIdentification(L"", geo));
    EXPECT_FALSE(reader.GetGeoByIndex({0, 0}, geo));
    EXPECT_TRUE(geo.IsEmpty());
    EXPECT_FALSE(reader.GetPreviewImage(image));
    EXPECT_FALSE(reader.GetCompByIndex({0, 0}, comp));
    EXPECT_EQ(comp.compGuidName.name, L"kept");
    EXPECT_EQ(reader.GetFloorCompNum(0), 0U);
    EXPECT_EQ(reader.GetFloorNameByIndex(0), L"");
    EXPECT_EQ(reader.GetFloorOrderByIndex(0), 0xFFFFFFFF);
    unsigned long long data[2] = {1, 2};
    EXPECT_FALSE(reader.GetFloorDataByIndex(0, data[0], data[1]));
    EXPECT_EQ(data[0] * 10 + data[1], 12U);
    EXPECT_EQ(reader.GetEstimatedDataSize(), 0U);
    EXPECT_EQ(reader.GetGeoNumInBlock(0), 0U);
    EXPECT_EQ(reader.GetGeoIdentificationNum(), 0U);
    EXPECT_FALSE(reader.GetGeoIdentificationByIndex(0, key, index));
    EXPECT_EQ(key, L"kept");
    reader.CleanInnerBuffer();
}

TEST(Reader, AnswersNeutrallyWhenNotOpen) {
    CZVLGBlockReader unopened;
    ExpectNeutral(unopened);
    std::vector<std::wstring> names = {L"old"};
    unopened.GetAllFloorName(names);
    EXPECT_TRUE(names.empty());

    Parts parts = PartsOf(SmallFile());
    parts.index.encoded[16] ^= 1;
    const Bytes file = Bytes(5) + PutTogether(parts);
    CZVFTReadBufferInStream in(file.data(), file.size());
    in.Seek(5);
    CZVLGBlockReader reader;
    EXPECT_FALSE(reader.Init(&in));
    EXPECT_EQ(in.GetPos(), 5U);
    EXPECT_EQ(reader.GetFloorNum(), 2U) << "the counts stand as read";
    EXPECT_EQ(reader.GetGeoBlockNum(), 3U);
    EXPECT_EQ(reader.GetVersion(), 4U);
    ExpectNeutral(reader);

    Opened whole(SmallFile());
    SZVLGZvgComp comp = Comp(L"kept");
    for (const SZVLGCompIndex& index : {SZVLGCompIndex{2, 0}, SZVLGCompIndex{0, 1},
                                        SZVLGCompIndex(), SZVLGCompIndex{0, 0xFFFFFFFF}})
        EXPECT_FALSE(whole.reader.GetCompByIndex(index, comp));
    EXPECT_EQ(comp.compGuidName.name, L"kept");
    EXPECT_EQ(whole.reader.GetFloorCompNum(2), 0U);
    EXPECT_EQ(whole.reader.GetFloorNameByIndex(0xFFFFFFFF), L"");
    EXPECT_EQ(whole.reader.GetFloorOrderByIndex(2), 0xFFFFFFFF);
}

TEST(Reader, ABlockThatDoesNotDecodeIsNotThere) {
    Parts parts = PartsOf(SmallFile());
    std::size_t total = 0;
    for (const Block* const block : parts.Blocks()) total += block->content.size();
    EXPECT_EQ(Opened(SmallFile()).reader.GetEstimatedDataSize(), total);
    Block &geoBlock = parts.geoBlocks.at(1), &floorBlock = parts.floors.at(0).block;
    geoBlock.encoded[0] ^= 1;
    floorBlock.encoded[0] ^= 1;
    Opened opened(PutTogether(parts));
    EXPECT_EQ(opened.reader.GetEstimatedDataSize(),
              total - geoBlock.content.size() - floorBlock.content.size());
    SZVLGZvgGeo geo;
    SZVLGZvgComp comp;
    for (int again = 0; again < 2; ++again) {
        EXPECT_FALSE(opened.reader.GetGeoByIdentification(L"2", geo));
        EXPECT_EQ(opened.reader.GetFloorCompNum(0), 0U);
        EXPECT_FALSE(opened.reader.GetCompByIndex({0, 0}, comp));
        EXPECT_EQ(opened.stream.GetPos(), 0U);
    }
    EXPECT_EQ(opened.reader.GetFloorNameByIndex(0), L"F");
    EXPECT_TRUE(opened.reader.GetGeoByIdentification(L"4", geo));
    EXPECT_TRUE(opened.reader.GetCompByIndex({1, 0}, comp));
    opened.reader.SetDecodedBlockLimit(20);
    opened.reader.CleanInnerBuffer();
    EXPECT_FALSE(opened.reader.GetGeoByIdentification(L"4", geo));
}

TEST(Reader, TakesTheFileAsItStands) {
    // Identifications out of order, one twice; records of odd lengths.
    const Bytes index = Section({}) + FromHex(
                                          "00000003 00000001 0062 00000000 00000000"
                                          "00000001 0061 00000000 00000001"
                                          "00000001 0062 00000000 00000001");
    const Bytes geos =
        Section({FromHex("00000002 0000"), FromHex("00000003 0000 FF"), FromHex("00000000"),
                 FromHex("00000064 0000"), FromHex("00000002 0100")});
    // An entry without anything whose rows lead nowhere, and whose third row number is good.
    const Bytes entry = FromHex(
        "00000001 0065 F8 00000007 00000000 00000009 00000000 FFFFFFFF"
        "00000001 00 00000000 00000000 00000003 FFFFFFFF 00000001 00000000"
        "00000000 0000 00000000");
    const Bytes row = FromHex("00000001 0072 00000000 00000000");
    const Bytes floor = FromHex("00000001 0046 00000000 0000000000000000 0000000000000000") +
                        Framed(Section({entry}) + Section({row}));
    Opened opened(FileOf(4, {geos}, {floor}, index));
    ASSERT_TRUE(opened.ok);
    EXPECT_EQ(Place(opened.reader, L"b"), Pair(0, 0)) << "the first counts";
    EXPECT_EQ(Place(opened.reader, L"a"), Pair(0, 1));
    SZVLGZvgGeo geo;
    EXPECT_TRUE(opened.reader.GetGeoByIdentification(L"a", geo));
    EXPECT_FALSE(opened.reader.GetGeoByIndex({0, 2}, geo)) << "no bytes, no record";
    for (u32 i : {3U, 4U}) {
        const auto read = [&] { opened.reader.GetGeoByIndex({0, i}, geo); };
        EXPECT_EQ(Thrown(read), "seek over buffer size");
    }
    SZVLGZvgComp comp;
    ASSERT_TRUE(opened.reader.GetCompByIndex({0, 0}, comp));
    EXPECT_EQ(comp.compGuidName.name, L"e");
    EXPECT_EQ(comp.classLevel2Name, L"");
    ASSERT_EQ(comp.geoRefs.at(0).geoIds.size(), 1U);
    EXPECT_EQ(comp.geoRefs[0].geoIds[0].guidName.name, L"r");
}

TEST(Reader, FindsEachOfManyIdentificationsAndNoneBesides) {
    // Keys that share a beginning, and that differ early, late, in length or in a NUL alone.
    std::vector<std::wstring> keys = {L"all", std::wstring(L"all\0", 4), L"allz"};
    for (u32 i = 0; i < 300; ++i) {
        keys.push_back(L"all the same so far " + std::to_wstring(7 * i));
        keys.push_back(L"all" + std::to_wstring(i) + L" of them");
    }
    const Bytes file = Streamed([&](CZVFTOutStream& out) {
        CZVLGBlockSaver saver;
        saver.Init(&out, SZVLGZvgBlockHeadInfo(), "", 1000);
        for (u32 i = 0; i < keys.size(); ++i) saver.AddIdentificationGeo(keys[i], SomeGeo(i));
        saver.WriteEnd();
    });
    Opened opened(file);
    for (u32 i = 0; i < keys.size(); ++i) {
        SZVLGZvgGeo geo;
        EXPECT_TRUE(opened.reader.GetGeoByIdentification(keys[i], geo)) << i;
        EXPECT_EQ(ValueOf(geo), i);
    }
    SZVLGZvgGeo geo;
    for (const wchar_t* const absent : {L"al", L"alk", L"alm", L"all the same so far ", L"zzz",
                                        L"0", L"all the same so far 1", L"zll the same so far 7"})
        EXPECT_FALSE(opened.reader.GetGeoByIdentification(absent, geo)) << absent;
}

TEST(Reader, ARecordReadIntoBeforeHoldsNothingOfIt) {
    std::vector<SZVLGZvgComp> comps;
    for (const u32 count : {3U, 0U, 40U, 1U, 2U, 0U, 0U, 5U}) {
        SZVLGZvgComp& comp = comps.emplace_back(Comp(std::to_wstring(comps.size())));
        for (u32 i = 0; i < count; ++i)
            comp.compProperties.emplace_back(std::wstring(count + i, L'n'),
                                             std::wstring(50 / (i + 1), L'v'));
    }
    Opened opened(Streamed([&](CZVFTOutStream& out) {
        CZVLGBlockSaver saver;
        saver.Init(&out, SZVLGZvgBlockHeadInfo());
        for (const SZVLGZvgComp& comp : comps) saver.AddComp(comp);
        saver.WriteEnd();
    }));
    SZVLGZvgComp comp;
    for (u32 i = 0; i < comps.size(); ++i) {
        ASSERT_TRUE(opened.reader.GetCompByIndex({0, i}, comp));
        EXPECT_EQ(comp.compProperties, comps[i].compProperties) << i;
        if (i == 4) opened.reader.CleanInnerBuffer();
    }
}

TEST(Reader, AnUnfinishedFileHasNoFloors) {
    for (const u32 geoCount : {0U, 3U}) {
        const Bytes file = Streamed([&](CZVFTOutStream& out) {
            CZVLGBlockSaver saver;
            saver.Init(&out, SZVLGZvgBlockHeadInfo(), "", 1);
            for (u32 i = 0; i < geoCount; ++i)
                saver.AddIdentificationGeo(std::to_wstring(i), SomeGeo(i));
            saver.AddComp(Comp(L"c"));
        });
        CZVFTReadBufferInStream in(file.data(), file.size());
        CZVLGBlockReader reader;
        bool opened = false;
        Thrown([&] { opened = reader.Init(&in); });
        EXPECT_FALSE(opened);
        EXPECT_EQ(reader.GetFloorNum(), 0U);
        ExpectNeutral(reader);
    }
}

TEST(Saver, StoresNothingOfWhatCannotBeWritten) {
    SZVLGZvgGeo blob, image, nested;
    blob.blobs.resize(1);
    blob.blobs[0].dataSize = 1;
    image.images.resize(2);
    image.images[1].width = image.images[1].height = 1;
    nested.subGeos.resize(2);
    nested.subGeos[1].geo = image;
    const auto file = [](const SZVLGZvgGeo* bad) {
        return Saved(4, 0, [&](CZVLGBlockSaver& saver) {
            saver.AddIdentificationGeo(L"a", SomeGeo(0));
            if (bad != nullptr) {
                SZVLGZvgComp comp = Comp(L"bad", L"new floor");
                comp.classLevel2Name = L"new class";
                comp.geoRefs = {{L"good", SomeGeo(1), 0, 0, 0, {}, {}},
                                {L"bad", *bad, 0, 0, 0, {}, {}}};
                EXPECT_EQ(Thrown([&] { saver.AddIdentificationGeo(L"b", *bad); }), "encode error");
                EXPECT_EQ(Thrown([&] { saver.AddComp(comp); }), "encode error");
            }
            saver.AddComp(Comp(L"c"));
        });
    };
    for (const SZVLGZvgGeo* bad : {&blob, &image, &nested}) EXPECT_TRUE(file(bad) == file(nullptr));

    CZVLGBlockSaver early;
    EXPECT_EQ(Thrown([&] { early.AddIdentificationGeo(L"a", SomeGeo(0)); }), "encode error");
    EXPECT_EQ(Thrown([&] { early.AddComp(Comp(L"c")); }), "encode error");
    EXPECT_EQ(Thrown([&] { early.WriteEnd(); }), "encode error");
    EXPECT_FALSE(early.IsHaveIdentificationGeo(L"a"));
}

TEST(Saver, AFullDiskIsAnError) {
    ZVSmartFormat::CZVFTFileOutStream out("/dev/full");
    if (!out.Open()) GTEST_SKIP() << "no such device here";
    const auto save = [&] {
        SaveTo(out, {}, [](CZVLGBlockSaver& saver) { saver.AddComp(Comp(L"c")); });
    };
    EXPECT_EQ(Thrown(save), "encode error");
}

}  // namespace
