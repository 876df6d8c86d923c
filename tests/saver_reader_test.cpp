// What saver and reader do with many records: routing, shared tables, caches, settings, and what
// is left when something goes wrong.

#include <cstdio>
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
    EXPECT_EQ(reader.GetGeoIdentificationNum(), 3U);
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

SerialGuid Guid(u32 number) {
    return {number, 0, 0, {}};
}

std::vector<SZVLGZvgComp> AllComps(const Bytes& file) {
    Opened opened(file);
    std::vector<SZVLGZvgComp> comps;
    for (u32 floor = 0; floor < opened.reader.GetFloorNum(); ++floor)
        for (u32 i = 0; i < opened.reader.GetFloorCompNum(floor); ++i) {
            comps.emplace_back();
            EXPECT_TRUE(opened.reader.GetCompByIndex({floor, i}, comps.back()));
        }
    return comps;
}

TEST(Tables, FloorsInTheOrderTheyWereMet) {
    const Bytes file = Saved(4, 0, [](CZVLGBlockSaver& saver) {
        u32 order = 10;
        for (const wchar_t* floor : {L"B", L"", L"none", L"B", L"a"}) {
            SZVLGZvgComp comp = Comp(std::to_wstring(order), floor);
            comp.classLevel1DataB = comp.classLevel1Id = order++;
            saver.AddComp(comp);
        }
    });
    Opened opened(file);
    std::vector<std::wstring> names = {L"old"};
    opened.reader.GetAllFloorName(names);
    EXPECT_EQ(names, (std::vector<std::wstring>{L"B", L"", L"a"}));
    const std::vector<SZVLGZvgComp> comps = AllComps(file);
    const u32 floors[] = {0, 0, 1, 1, 2}, orders[] = {10, 10, 11, 11, 14};
    const wchar_t* const keys[] = {L"10", L"13", L"11", L"12", L"14"};
    ASSERT_EQ(comps.size(), 5U);
    for (u32 i = 0; i < 5; ++i) {
        EXPECT_EQ(comps[i].compGuidName.name, keys[i]);
        EXPECT_EQ(comps[i].classLevel1Name, names[floors[i]]) << "the first one's";
        EXPECT_EQ(comps[i].classLevel1Id, orders[i]);
        EXPECT_EQ(comps[i].classLevel1DataB, orders[i]);
        EXPECT_EQ(opened.reader.GetFloorOrderByIndex(floors[i]), orders[i]);
    }
}

TEST(Tables, WhatKeysAComponentAndAnOwner) {
    const SerialKey keys[] = {
        {Guid(1), L"a"}, {Guid(1), L"b"}, {Guid(2), L"a"}, L"a", L"a", L"A", {},
        {SerialGuid()},  {SerialGuid()}};
    const std::vector<std::wstring> kept = {L"0", L"2", L"3", L"5", L"6", L"7"};
    const wchar_t* const owners[] = {L"0", L"0", L"2", L"3", L"3", L"5", L"6", L"7", L"7"};
    const std::vector<SZVLGZvgComp> comps = AllComps(Saved(4, 0, [&](CZVLGBlockSaver& saver) {
        for (u32 i = 0; i < 27; ++i) {  // on two floors, then each with a key of its own
            SZVLGZvgComp comp = Comp(keys[i % 9], i < 9 ? L"F" : L"G");
            if (i >= 18) comp = Comp(std::to_wstring(i), L"owners");
            comp.classLevel2Name = comp.classLevel1Name;
            comp.ownerGuidName = keys[i % 9];
            comp.ownerTextA = comp.compProperties.emplace_back().first = std::to_wstring(i % 9);
            saver.AddComp(comp);
        }
    }));
    ASSERT_EQ(comps.size(), 6U + 6U + 9U);
    for (u32 i = 0; i < 12; ++i) EXPECT_EQ(comps[i].compProperties[0].first, kept[i % 6]) << i;
    for (u32 i = 0; i < 9; ++i) EXPECT_EQ(comps[12 + i].ownerTextA, owners[i]) << i;
}

TEST(Tables, TheFirstRowStandsAndADroppedComponentLeavesItsClasses) {
    const Bytes file = Saved(4, 0, [](CZVLGBlockSaver& saver) {
        for (u32 i = 0; i < 4; ++i) {
            SZVLGZvgComp comp = Comp(std::to_wstring(i == 3 ? 2 : i));
            comp.classLevel2Name = i == 3 ? L"late" : L"";
            comp.classLevel3Name = i == 2 ? L"none" : L"";  // only floors go by "none"
            comp.classLevel2Id = comp.classLevel3Id = comp.classLevel4Id = comp.classLevel2bId = i;
            comp.classLevel4Attr.flags = comp.classLevel2bAttr.flags = 0x400;
            comp.classLevel4Attr.extraByte = comp.classLevel2bAttr.extraByte = static_cast<u8>(i);
            comp.geoRefs.resize(i == 3 ? 1 : 0);
            if (i == 3) comp.geoRefs[0] = {L"k", SomeGeo(1), 0, 0, 0, {}, {}};
            saver.AddComp(comp);
        }
        EXPECT_FALSE(saver.IsHaveIdentificationGeo(L"k"));
    });
    EXPECT_EQ(Table(Parts(file).index, 0).count, 2U);
    const std::vector<SZVLGZvgComp> comps = AllComps(file);
    ASSERT_EQ(comps.size(), 3U);
    for (u32 i = 0; i < 3; ++i) {
        const u32 expected = i < 2 ? 0 : 2;
        EXPECT_EQ(comps[i].classLevel2Id + comps[i].classLevel2bId, 0U);
        EXPECT_EQ(comps[i].classLevel2bAttr.extraByte, 0);
        EXPECT_EQ(comps[i].classLevel3Id, expected);
        EXPECT_EQ(comps[i].classLevel4Id, expected);
        EXPECT_EQ(comps[i].classLevel4Attr.extraByte, expected);
    }
}

std::wstring Shown(const SZVLGZvgGeoId& row) {
    const std::wstring guid = std::to_wstring(row.guidName.guid.Data1);
    return (row.guidName.name.empty() ? guid : row.guidName.name) + L"|" + row.textA + L"|" +
           row.textB + L" ";
}

TEST(References, RowsAndWhereTheyLead) {
    const SerialGuid guid = {0x0123ABCD, 0x4567, 0x89AB, {0xCD, 0xEF, 0, 1, 2, 3, 4, 5}};
    const std::wstring text = L"0123ABCD-4567-89AB-CDEF-000102030405";
    const SerialKey none;
    using Rows = std::vector<SZVLGZvgGeoId>;
    struct Case {
        std::wstring identification;
        Rows rows;
        std::wstring shown;  // the rows that are read back
        u32 stored;
    };
    const Case cases[] = {
        {L"", {}, L"", 0},
        {L"",
         {{Guid(1), L"a", L""}, {Guid(1), L"b", L""}, {Guid(2), L"", L""}},
         L"1|a| 1|a| 2|| ",
         2},
        {L"", {{L"n", L"a", L""}, {L"n", L"a", L""}, {L"na", L"", L""}}, L"n|a| n|a| na|| ", 2},
        {L"",
         {{none, L"a", L""}, {none, L"b", L""}, {none, L"a", L"b"}, {none, L"ab", L""}},
         L"none|a| none|b| none|a|b none|ab| ",
         4},
        {L"k", {}, L"k|| ", 1},
        {L"k", {{L"o", L"k", L"k"}}, L"o|k|k k|| ", 2},
        {L"k", {{L"k", L"t", L""}, {L"o", L"", L""}}, L"k|t| o|| ", 2},
        {L"k", {{none, L"k", L"t"}}, L"none|k|t ", 1},
        {L"none", {}, L"none|none| ", 1},
        {text, {{guid, L"t", L""}}, L"19114957|t| ", 1},
        // The first row that brought its GUID stands, and it leads elsewhere.
        {L"k", {{{guid, L"z"}, L"", L""}, {{guid, L"k"}, L"", L""}}, L"z|| z|| k|| ", 2},
    };
    for (const Case& each : cases) {
        SZVLGZvgComp comp = Comp(L"c"), read;
        comp.geoRefs = {{each.identification, SomeGeo(5), 0, 0, 0, {}, each.rows}};
        const bool named = !each.identification.empty();
        const Bytes file = Saved(4, 0, [&](CZVLGBlockSaver& saver) {
            saver.AddComp(comp);
            EXPECT_EQ(saver.IsHaveIdentificationGeo(each.identification), named);
        });
        const Bytes block = Parts(file).floorBlocks.at(0);
        EXPECT_EQ(Table(block, Table(block, 0).end).count, each.stored);
        Opened opened(file);
        ASSERT_TRUE(opened.reader.GetCompByIndex({0, 0}, read));
        EXPECT_TRUE(read.geoRefs.at(0).geoIdentification.empty());
        EXPECT_TRUE(read.geoRefs.at(0).geo.IsEmpty());
        std::wstring shown;
        bool found = false;
        for (const SZVLGZvgGeoId& row : read.geoRefs[0].geoIds) {
            shown += Shown(row);
            SZVLGZvgGeo geo;
            found = found || (GetGeoIdentification(row) == each.identification &&
                              opened.reader.GetGeoByIdentification(each.identification, geo) &&
                              ValueOf(geo) == 5);
        }
        EXPECT_EQ(shown, each.shown);
        EXPECT_EQ(found, named) << "by what is stored alone";
    }
}

TEST(References, StoreAGeometryOnceAndOnlyWhenThereIsOne) {
    const Bytes file = Saved(4, 1, [](CZVLGBlockSaver& saver) {
        saver.AddIdentificationGeo(L"k", SomeGeo(1));
        saver.AddIdentificationGeo(L"l", SomeGeo(1));
        for (u32 i = 0; i < 3; ++i) {
            SZVLGZvgComp comp = Comp(std::to_wstring(i));
            comp.geoRefs = {{L"k", SomeGeo(2), 0, 0, 0, {}, {}},
                            {L"empty", {}, 0, 0, 0, {}, {}},      // only refers
                            {L"", SomeGeo(3), 0, 0, 0, {}, {}}};  // has no name to go by
            saver.AddComp(comp);
        }
        EXPECT_FALSE(saver.IsHaveIdentificationGeo(L"empty"));
    });
    EXPECT_EQ(Opened(file).reader.GetGeoBlockNum(), 2U);
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

TEST(Reader, EstimatesWhatIsDecoded) {
    Bytes file = SmallFile();
    const Parts parts(file);
    std::size_t total = parts.index.size();
    for (const Bytes& block : parts.geoBlocks) total += block.size();
    for (const Bytes& block : parts.floorBlocks) total += block.size();
    EXPECT_EQ(Opened(file).reader.GetEstimatedDataSize(), total);
    file[parts.geoSection.at[1] + 4] ^= 1;  // a block that cannot be told adds nothing
    EXPECT_EQ(Opened(file).reader.GetEstimatedDataSize(), total - parts.geoBlocks[1].size());
    file[parts.floorSection.at[0] + 24 + 2 + 4] ^= 1;
    EXPECT_EQ(Opened(file).reader.GetEstimatedDataSize(),
              total - parts.geoBlocks[1].size() - parts.floorBlocks[0].size());
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

    Bytes file = SmallFile();
    file[Parts(file).indexPos + 20] ^= 1;
    file = Bytes(5) + file;
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
    Bytes file = SmallFile();
    const Parts parts(file);
    file[parts.geoSection.at[1] + 30] ^= 1;
    file[parts.floorSection.at[0] + 24 + 2 + 30] ^= 1;
    Opened opened(file);
    SZVLGZvgGeo geo;
    SZVLGZvgComp comp;
    for (int again = 0; again < 2; ++again) {
        EXPECT_FALSE(opened.reader.GetGeoByIdentification(L"2", geo));
        EXPECT_TRUE(geo.IsEmpty());
        EXPECT_EQ(opened.reader.GetFloorCompNum(0), 0U);
        EXPECT_FALSE(opened.reader.GetCompByIndex({0, 0}, comp));
        EXPECT_EQ(opened.stream.GetPos(), 0U);
    }
    EXPECT_EQ(opened.reader.GetFloorNameByIndex(0), L"F");
    EXPECT_TRUE(opened.reader.GetGeoByIdentification(L"4", geo));
    EXPECT_TRUE(opened.reader.GetCompByIndex({1, 0}, comp));

    Opened limited(SmallFile());
    limited.reader.SetDecodedBlockLimit(20);
    EXPECT_FALSE(limited.reader.GetGeoByIdentification(L"2", geo));
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
                        Block(Section({entry}) + Section({row}));
    Opened opened(FileOf(4, {geos}, {floor}, index));
    ASSERT_TRUE(opened.ok);
    EXPECT_EQ(Place(opened.reader, L"b"), std::make_pair(0U, 0U)) << "the first counts";
    EXPECT_EQ(Place(opened.reader, L"a"), std::make_pair(0U, 1U));
    SZVLGZvgGeo geo;
    EXPECT_TRUE(opened.reader.GetGeoByIdentification(L"a", geo));
    EXPECT_FALSE(opened.reader.GetGeoByIndex({0, 2}, geo)) << "no bytes, no record";
    for (u32 i : {3U, 4U})
        EXPECT_EQ(Thrown([&] {
                      opened.reader.GetGeoByIndex({0, i}, geo);
                  }),
                  "seek over buffer size");
    SZVLGZvgComp comp;
    ASSERT_TRUE(opened.reader.GetCompByIndex({0, 0}, comp));
    EXPECT_EQ(comp.compGuidName.name, L"e");
    EXPECT_EQ(comp.classLevel2Name, L"");
    ASSERT_EQ(comp.geoRefs.at(0).geoIds.size(), 1U);
    EXPECT_EQ(comp.geoRefs[0].geoIds[0].guidName.name, L"r");
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

TEST(Settings, FillTheGapsOfNewLevel4Rows) {
    const std::string path = testing::TempDir() + "zvg_settings_test.ini";
    ZVSmartFormat::CZVFTFileOutStream ini(path);
    ASSERT_TRUE(ini.Open());
    const std::string text =
        "\xEF\xBB\xBF; comment\r\nbefore=1\r\n[Other]\nother=2\n[ZBufferSize]\r\n twelve = 12 \r\n"
        "twelve=13\nunit=12px\nempty=\nsign=+7\nminus=-5\nlarge=4294967296\nlargest=4294967295\n"
        "huge=99999999999999999999999\nblank=1 2\nequals=3=4\nW\xC3\xA4nde=21\n#hash=5\n"
        "[Other]\nlate=9\n";
    ini.Write(text.data(), text.size());
    ini.Close();
    struct Case {
        const wchar_t* name;
        bool set;
        u32 value;
    };
    const Case cases[] = {{L"twelve", true, 12},          {L"unit", false, 0},
                          {L"empty", false, 0},           {L"sign", true, 7},
                          {L"minus", true, 0xFFFFFFFB},   {L"large", true, 0xFFFFFFFF},
                          {L"largest", true, 0xFFFFFFFF}, {L"huge", true, 0xFFFFFFFF},
                          {L"blank", false, 0},           {L"equals", false, 0},
                          {L"W\u00E4nde", true, 21},      {L"#hash", false, 0},
                          {L"Twelve", false, 0},          {L"before", false, 0},
                          {L"other", false, 0},           {L"late", false, 0}};
    for (const bool hasFile : {true, false}) {
        SZVLGZvgComp own = Comp(L"own");
        own.classLevel3Name = L"3";
        own.classLevel4Name = L"twelve";
        own.classLevel4Attr.flags = 0x40;
        own.classLevel4Attr.zBufferSize = 99;
        const SaveOptions options = {4, 0, hasFile ? path : path + ".missing", {}};
        const std::vector<SZVLGZvgComp> comps =
            AllComps(Saved(options, [&](CZVLGBlockSaver& saver) {
                for (const Case& each : cases) {
                    SZVLGZvgComp comp = Comp(each.name);
                    comp.classLevel4Name = each.name;
                    saver.AddComp(comp);
                }
                saver.AddComp(own);
                own.compGuidName = L"own too";
                own.classLevel3Name = L"";  // the row is there already
                saver.AddComp(own);
            }));
        ASSERT_EQ(comps.size(), std::size(cases) + 2);
        for (std::size_t i = 0; i < std::size(cases); ++i) {
            const SZVLGZvgDisplayAttr& attr = comps[i].classLevel4Attr;
            EXPECT_EQ(attr.flags, hasFile && cases[i].set ? 0x40 : 0) << i;
            EXPECT_EQ(attr.zBufferSize, hasFile ? cases[i].value : 0) << i;
        }
        EXPECT_EQ(comps[std::size(cases)].classLevel4Attr.zBufferSize, 99U);
        EXPECT_EQ(comps.back().classLevel4Attr.zBufferSize, hasFile ? 12U : 0U);
    }
    std::remove(path.c_str());
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

TEST(Saver, EveryShortWriteIsAnError) {
    const auto save = [](CZVFTOutStream& out) {
        SaveTo(out, {4, 1, "", {}}, [](CZVLGBlockSaver& saver) {
            for (u32 i = 0; i < 3; ++i) saver.AddIdentificationGeo(std::to_wstring(i), SomeGeo(i));
            saver.AddComp(Comp(L"c"));
        });
    };
    const std::size_t size = Streamed(save).size();
    for (u64 room = 0; room <= size; room += 3) {
        OwnedBuffer buffer;
        FullStream out(&buffer, room);
        EXPECT_EQ(Thrown([&] { save(out); }), "encode error") << room;  // placeholders count twice
    }
    ZVSmartFormat::CZVFTFileOutStream fullDisk("/dev/full");
    if (fullDisk.Open()) {
        EXPECT_EQ(Thrown([&] { save(fullDisk); }), "encode error");
    }
}

}  // namespace
