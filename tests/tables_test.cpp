// The tables that components share, what their references lead to, and displacement settings.

#include <gtest/gtest.h>

#include "support.h"

namespace {

using namespace support;

SerialGuid Guid(u32 number) {
    return {number, 0, 0, {}};
}

TEST(Tables, FloorsInTheOrderTheyWereMet) {
    const Bytes file = Saved(4, 0, [](CZVLGBlockSaver& saver) {
        u32 order = 10;
        for (const wchar_t* floor : {L"B", L"", L"none", L"B", L"a"}) {
            SZVLGZvgComp comp = Comp(std::to_wstring(order), floor);
            comp.classLevel1DataB = comp.classLevel1Id = order++;
            comp.classLevel1DataA = comp.classLevel1DataB << 33;
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
        unsigned long long dataA = 0, dataB = 0;
        EXPECT_TRUE(opened.reader.GetFloorDataByIndex(floors[i], dataA, dataB));
        EXPECT_EQ(dataA, u64{orders[i]} << 33);
        EXPECT_EQ(dataB, orders[i]);
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
    EXPECT_EQ(Table(PartsOf(file).index.content, 0).count, 2U);
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
        const Bytes block = PartsOf(file).floors.at(0).block.content;
        EXPECT_EQ(Table(block, Table(block, 0).end).count, each.stored);
        Opened opened(file);
        ASSERT_TRUE(opened.reader.GetCompByIndex({0, 0}, read));
        EXPECT_TRUE(read.geoRefs.at(0).geoIdentification.empty());
        EXPECT_TRUE(read.geoRefs.at(0).geo.IsEmpty());
        std::wstring shown;
        bool found = false;
        for (const SZVLGZvgGeoId& row : read.geoRefs[0].geoIds) {
            shown += Shown(row);
            found |= Ask(ask::Geo(GetGeoIdentification(row)), opened.reader) == Dump(SomeGeo(5));
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

TEST(Settings, FillTheGapsOfNewLevel4Rows) {
    const std::string text =
        "\xEF\xBB\xBF; comment\r\nbefore=1\r\n[Other]\nother=2\n[ZBufferSize]\r\n twelve = 12 \r\n"
        "twelve=13\nunit=12px\nempty=\nsign=+7\nminus=-5\nlarge=4294967296\nlargest=4294967295\n"
        "huge=99999999999999999999999\nblank=1 2\nequals=3=4\nW\xC3\xA4nde=21\n#hash=5\n"
        "\xE2\x82\xAC=22\n\xF0\x9F\x8F\xA0=23\na\xC3=24\nb\xE0\x80\xAF=25\n\xED\xA0\x80="
        "26\nnothing\n"
        "[Other]\nlate=9\n";
    const TempFile ini(Bytes(text.begin(), text.end()));
    const std::vector<std::wstring> names = {L"twelve",
                                             L"unit",
                                             L"empty",
                                             L"sign",
                                             L"minus",
                                             L"large",
                                             L"largest",
                                             L"huge",
                                             L"blank",
                                             L"equals",
                                             L"W\u00E4nde",
                                             L"#hash",
                                             L"\u20AC",
                                             L"\U0001F3E0",
                                             L"a\uFFFD",
                                             L"b\uFFFD\uFFFD\uFFFD",
                                             L"\uFFFD\uFFFD\uFFFD",
                                             L"nothing",
                                             L"Twelve",
                                             L"before",
                                             L"other",
                                             L"late"};
    const u32 all = 0xFFFFFFFF;  // and 0 where nothing is set
    const std::vector<u32> values = {12, 0,  0,  7,  all - 4, all, all, all, 0, 0, 21,
                                     0,  22, 23, 24, 25,      26,  0,   0,   0, 0, 0};
    for (const bool hasFile : {true, false}) {
        SZVLGZvgComp own = Comp(L"own");
        own.classLevel3Name = L"3";
        own.classLevel4Name = L"twelve";
        own.classLevel4Attr.flags = 0x40;
        own.classLevel4Attr.zBufferSize = 99;
        const SaveOptions options = {4, 0, hasFile ? ini.path : ini.path + ".missing", {}};
        const auto comps = AllComps(Saved(options, [&](CZVLGBlockSaver& saver) {
            for (const std::wstring& name : names) {
                SZVLGZvgComp comp = Comp(name);
                comp.classLevel4Name = name;
                saver.AddComp(comp);
            }
            saver.AddComp(own);
            own.compGuidName = L"own too";
            own.classLevel3Name = L"";  // the row is there already
            saver.AddComp(own);
        }));
        ASSERT_EQ(comps.size(), names.size() + 2);
        for (std::size_t i = 0; i < names.size(); ++i) {
            const u32 value = hasFile ? values.at(i) : 0;
            EXPECT_EQ(comps[i].classLevel4Attr.flags, value != 0 ? 0x40 : 0) << i;
            EXPECT_EQ(comps[i].classLevel4Attr.zBufferSize, value) << i;
        }
        EXPECT_EQ(comps[names.size()].classLevel4Attr.zBufferSize, 99U);
        EXPECT_EQ(comps.back().classLevel4Attr.zBufferSize, hasFile ? 12U : 0U);
    }
}

}  // namespace
