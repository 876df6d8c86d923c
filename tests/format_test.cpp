// The format, byte by byte: what is written is compared with bytes worked out by hand from the
// layout, and the same bytes are read and written again.

#include <gtest/gtest.h>

#include <functional>

#include "support.h"

namespace {

using namespace support;

const std::string d0 = Doubles({0}), d1 = Doubles({1}), d2 = Doubles({2}), d3 = Doubles({3});
const std::string p123 = Doubles({1, 2, 3});
const std::string identity = Doubles({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0});
const std::string shifted = Doubles({1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3});

TEST(Format, EmptyFile) {
    const Bytes file = Saved(4, 0, [](CZVLGBlockSaver&) {});
    EXPECT_EQ(ToHex(Slice(file, 0, 52)),
              Plain("7A 76 67 62 6C 6F 63 6B 00 00000004 00000000 00000000 00 00000027"
                    "00 0000000D 00000000 0000000D 00 0000000D 00000000 0000000D"));
    EXPECT_EQ(ToHex(PartsOf(file).index.content), Plain("00 0000000D 00000000 0000000D 00000000"));
}

TEST(Format, Head) {
    SZVLGZvgBlockHeadInfo texts, value, text, transf, all;
    texts.firstText = all.firstText = L"A";
    texts.secondText = all.secondText = L"\U0001F3E0";
    value.optionalValue = all.optionalValue = -2;
    text.optionalText = all.optionalText = L"o";
    transf.transf = all.transf = Shifted();
    all.flags = 0xF5;
    value.flags = 0xE0;
    struct Case {
        const SZVLGZvgBlockHeadInfo& head;
        u8 flags;
        std::string hex;
    };
    const std::string noTexts = "00000000 00000000";
    const std::string someTexts = "00000001 0041 00000002 D83C DFE0";
    const Case cases[] = {{texts, 0, someTexts + "00"},
                          {value, 0x40, noTexts + "40 FFFFFFFE"},
                          {text, 0x80, noTexts + "80 00000001 006F"},
                          {transf, 0x20, noTexts + "20 00000001" + shifted},
                          {all, 0xF5, someTexts + "F5 FFFFFFFE 00000001 006F 00000001" + shifted}};
    for (const Case& each : cases) {
        const Bytes file = Saved(SaveOptions{2, 0, "", each.head}, [](CZVLGBlockSaver&) {});
        const Bytes head = FromHex("7A7667626C6F636B00 00000002" + each.hex);
        EXPECT_EQ(ToHex(Slice(file, 0, head.size() + 4)),
                  ToHex(head + BigEndian(static_cast<u32>(head.size() + 17))));

        Opened opened(file);
        SZVLGZvgBlockHeadInfo read;
        read.firstText = L"old";
        opened.reader.GetHeadInfo(read);
        EXPECT_EQ(opened.reader.GetVersion(), 2U);
        EXPECT_EQ(read.flags, each.flags);
        EXPECT_EQ(Saved(SaveOptions{2, 0, "", read}, [](CZVLGBlockSaver&) {}), file);
    }
}

TEST(Format, HeadsThatAreRefused) {
    const Bytes file = Saved(4, 0, [](CZVLGBlockSaver&) {});
    const struct {
        std::size_t size, at;
        u8 value;
        const char* text;
    } cases[] = {{file.size(), 7, 'x', "it's not zvg file format"},
                 {file.size(), 8, 1, "it's not zvg file format"},
                 {file.size(), 12, 5, "it's upper zvg format"},
                 {13, 12, 5, "it's upper zvg format"},
                 {file.size(), 9, 1, "it's upper zvg format"}};
    for (const auto& each : cases) {
        Bytes damaged = Bytes(3) + Slice(file, 0, each.size);
        damaged[3 + each.at] = each.value;
        CZVFTReadBufferInStream in(damaged.data(), damaged.size());
        in.Seek(3);
        CZVLGBlockReader reader;
        EXPECT_EQ(Thrown([&] { reader.Init(&in); }), each.text) << each.size << " " << each.at;
        EXPECT_EQ(in.GetPos(), 3U);
    }
}

TEST(Format, OffsetWidthsAtTheirBoundaries) {
    struct Case {
        u32 tableOffset;
        const char *head, *table;
    };
    const Case cases[] = {{0xFF, "00 00000100 00000001 000000FF", "0D"},
                          {0x100, "40 00000102 00000001 00000100", "000D"},
                          {0xFFFF, "40 00010001 00000001 0000FFFF", "000D"},
                          {0x10000, "80 00010004 00000001 00010000", "0000000D"}};
    for (const Case& each : cases) {
        // The head, a length, flags, count, texts of 1, 0 and 1 units, the blob's size: 43 bytes.
        SZVLGZvgGeo geo, read;
        geo.blobs = {SomeBlob(each.tableOffset - 43)};
        const Bytes file =
            Saved(3, 0, [&](CZVLGBlockSaver& saver) { saver.AddIdentificationGeo(L"k", geo); });
        const Bytes block = PartsOf(file).geoBlocks.at(0).content;
        EXPECT_EQ(ToHex(Slice(block, 0, 13)), Plain(each.head));
        EXPECT_EQ(ToHex(Slice(block, each.tableOffset, block.size())), each.table);
        EXPECT_TRUE(Opened(file).reader.GetGeoByIdentification(L"k", read));
        EXPECT_TRUE(RecordBytes(3, read) == RecordBytes(3, geo));
    }
}

SZVLGZvgGeo ReadRecord(unsigned int version, const Bytes& record) {
    const Bytes framed = BigEndian(static_cast<u32>(record.size())) + record;
    Opened opened(FileOf(version, {Section({framed})}, {}, Section({}) + BigEndian(0)));
    SZVLGZvgGeo geo;
    EXPECT_TRUE(opened.reader.GetGeoByIndex({0, 0}, geo));
    return geo;
}

/// `hex` is what `geo` is written as, and what it is read from.
void CheckRecord(unsigned int version, const SZVLGZvgGeo& geo, const std::string& hex) {
    SCOPED_TRACE("version " + std::to_string(version));
    EXPECT_EQ(ToHex(RecordBytes(version, geo)), Plain(hex));
    EXPECT_EQ(ToHex(RecordBytes(version, ReadRecord(version, FromHex(hex)))), Plain(hex));
}

TEST(Format, GeometryRecord) {
    const std::string shell = "00000001" + p123 + "00000002 00000001 00000000",
                      blob = "00000001 00000001 0061 00000000 00000001 0062 00000002",
                      up = d0 + d0 + d1, colours = "00000001 AABBCCDD";
    const std::string visualShell = "00000001 00000001" + shell + "00000001" + up + colours;
    const std::string mesh =
        "00000001" + p123 + "00000002 00000005 FFFFFFFF 00000001" + d1 + d2 + "00000001" + up;
    const std::string middle =
        "00000002 00000001" + p123 + d0 + d0 + d0 + "00000001" + d1 + d0 + d0 + p123 +  // segments
        "00000001 00000001" + d0 + d0 + d0 + up + d1 + d0 + d0 + d0 + d1 + d0 + d2 +    // arc
        "00000001 00000001 01 00000001" + p123 +                                        // polyline
        "00000001 00000001" + p123 + up + d2 +                                          // circle
        "00000001" + shell + "00000001 00000002 00000001 00000001" + p123 +  // shell, mesh
        "00000001 00000001" + shell + colours + "00000002 01 00" +           // poly face mesh
        "00000001 00000001 006E 00000001" + shifted +                        // named transform
        "00000001 00000001" + p123 + "0102030405060708 FFFFFFFFFFFFFFFE" +   // point list
        "00000001 00000001 00000002 00000001 0069 00000001" + identity + "CDCDCDCDCDCDCDCD" +
        "00000001 00000001 006D 00000001" + identity;  // image, named transform
    const std::string subs = "00000002 0000 0000 0000 0100 00000001 00000000 00000000";
    const std::string longSubs =
        "00000002 0000 00000000 0000 0000 00000000 0100 00000001 00000000 00000000";
    const SZVLGZvgGeo geo = FullGeo();
    const std::string start = "FFFE" + blob, later = "ABAB" + visualShell + "00000001";
    for (const unsigned int version : {0U, 1U})
        CheckRecord(version, geo, start + later + "00" + mesh + middle + subs);
    CheckRecord(2, geo, start + later + mesh + middle + subs);
    CheckRecord(3, geo, start + later + mesh + middle + longSubs);
    CheckRecord(
        4, geo,
        start + "00000001" + shifted + later + mesh + "00000001 00000009" + middle + longSubs);

    CheckRecord(4, SZVLGZvgGeo(), "0000");
    u32 bit = 1;
    const auto checkBit = [&](auto list) {
        SZVLGZvgGeo one;
        (one.*list).resize(1);
        EXPECT_EQ(NumberAt(RecordBytes(4, one), 0, 2), bit <<= 1);
        EXPECT_EQ((ReadRecord(4, RecordBytes(4, one)).*list).size(), 1U);
    };
    const auto checkBits = [&](auto... lists) { (checkBit(lists), ...); };
    using Geo = SZVLGZvgGeo;
    checkBits(&Geo::blobs, &Geo::visualShells, &Geo::renderMeshes, &Geo::lineSegments,
              &Geo::boundArcs, &Geo::polylines, &Geo::circles, &Geo::shells, &Geo::meshes,
              &Geo::polyFaceMeshes, &Geo::namedTransfs, &Geo::pointLists, &Geo::images,
              &Geo::namedTransfs2, &Geo::subGeos);
}

TEST(Format, DisplayAttributes) {
    SZVLGZvgGeo geo;
    geo.subGeos.resize(1);
    SZVLGZvgDisplayAttr& attr = geo.subGeos[0].attr;
    attr = FullAttr();
    const auto check = [&](unsigned int version, const std::string& hex) {
        CheckRecord(version, geo, "8000 00000001" + hex + "0000");
    };
    // By the bit of the two words that says whether it is there.
    const std::map<int, std::string> fields = {
        {4, "01020304"},
        {6, "00000005"},
        {7, "00000001 0073"},
        {9, "00000006 07"},
        {10, "08"},
        {14, "00000001" + shifted},
        {15, "00000002 00000001 006B 00000001 0076 00000001 006B 00000000"},
        {32 + 17, "090A0B0C"},
        {32 + 18, "00000001 0032"},
        {32 + 19, d1},
        {32 + 20, d2},
        {32 + 21, d3},
        {32 + 22, d1},
        {32 + 23, d2},
        {32 + 27, "00000001 0033"},
        {32 + 28, "0D0E0F10" + d3 + "00000001 0066"},
        {32 + 29, d3 + "00000001 0068"},
        {32 + 30, d2},
        {32 + 31, "DEADBEEF"}};
    std::string rest, extension;
    for (const auto& [bit, hex] : fields)
        if (bit != 4) (bit < 32 ? rest : extension) += hex;
    for (const unsigned int version : {0U, 1U}) check(version, "C6F0 01 02 03 00000004" + rest);
    check(2, "C6F0 01 02 03 04" + rest);
    for (const unsigned int version : {3U, 4U})
        check(version, "C6F0 F8FE0000 01 02 03 04" + rest + extension);

    for (int bit = 0; bit < 64; ++bit) {
        if (bit >= 16 && bit < 32) continue;
        attr.flags = static_cast<u16>(bit < 16 ? 1U << bit : 0U);
        attr.flags2 = bit >= 32 ? 1U << (bit - 32) : 0U;
        const std::string words =
            ToHex(Slice(BigEndian(attr.flags), 2, 4) + BigEndian(attr.flags2));
        check(4, words + (fields.count(bit) != 0 ? fields.at(bit) : ""));
    }
}

TEST(Format, AlphaApartFromTheColour) {
    struct Case {
        const char* hex;
        u16 flags;
        u8 alpha;
    };
    const Case cases[] = {{"0020 00000080", 0x30, 0x80},
                          {"0020 000000FF", 0x20, 0xFF},
                          {"0030 010203 00000080", 0x30, 0x80},
                          {"0010 010203", 0x10, 0xFF}};
    for (const Case& each : cases) {
        const SZVLGZvgGeo geo =
            ReadRecord(1, FromHex("8000 00000001" + (each.hex + std::string("0000"))));
        EXPECT_EQ(geo.subGeos.at(0).attr.flags, each.flags) << each.hex;
        EXPECT_EQ(geo.subGeos.at(0).attr.alpha, each.alpha) << each.hex;
    }
}

/// The file that holds `FullComp()` and nothing else.
Bytes FullCompFile(unsigned int version) {
    const bool longAttrs = version > 2;
    const std::string flags2 = longAttrs ? "00000000" : "";
    const Bytes entry = FromHex(
        "00000000 0000000000000001 0203 0405 060708090A0B0C0D FF"
        "00000001 00000001 006B 00000001 0076 00000002 00000001 0072 00000001 0071 00000001 0067"
        "00000000 00000000 00000000 00000000 00000000"
        "00000002 01 00000002 00000003 00000002 00000000 00000001" +
        std::string(version == 0
                        ? ""
                        : "00000002 00000007 00000001 006D 00000001 0078 00000001 0079"
                          "00000001 00000001 0070 00000001 0071"
                          "00000008 00000004 006E006F006E0065 00000000 00000000 00000000") +
        "00 00000000 00000000 00000001 00000000" + (version == 0 ? "" : "00000000") +
        (version < 2 ? "" : "0040" + flags2 + "00000006"));
    const Bytes rows = Section({FromHex("00000001 0069 00000001 0074 00000000"),
                                FromHex("00000004 006E006F006E0065 00000001 006A 00000001 0075")});
    const Bytes floor = FromHex("00000001 0046 00000002 0102030405060708 0000000000000009") +
                        Framed(Section({entry}) + rows);
    const Bytes owners = Section(
        {FromHex("00000001 006F 00000001 0061 C0 00000001 0062 00000001 0073 00000001 0063")});
    const Bytes level4 = Section({FromHex("00000001 0034 00000044 0400" + flags2 + "0B") + owners});
    const Bytes level3 = Section({FromHex("00000001 0033 00000033") + level4});
    const Bytes level2b = Section({FromHex("00000001 0035 00000055 0000" + flags2)});
    const Bytes level2 = Section({FromHex("00000001 0032 00000022") + level3 + level2b});
    return FileOf(version, {}, {floor}, level2 + BigEndian(0));
}

TEST(Format, ComponentWithEverything) {
    for (unsigned int version = 0; version <= 4; ++version) {
        const auto saved = [&](const SZVLGZvgComp& comp) {
            return ToHex(Saved(version, 0, [&](CZVLGBlockSaver& saver) { saver.AddComp(comp); }));
        };
        const Bytes expected = FullCompFile(version);
        EXPECT_EQ(saved(FullComp()), ToHex(expected)) << version;
        SZVLGZvgComp read;
        ASSERT_TRUE(Opened(expected).reader.GetCompByIndex({0, 0}, read));
        EXPECT_EQ(saved(read), ToHex(expected)) << version;
    }
}

TEST(Format, EntryAndOwnerFlags) {
    struct Case {
        const char *entry, *owner;
        std::function<void(SZVLGZvgComp&)> change;
    };
    const SerialGuid guid = {1, 0, 0, {}};
    const Case cases[] = {
        {"F8", "00", [](SZVLGZvgComp&) {}},
        {"F9", "00", [](SZVLGZvgComp& comp) { comp.compProperties.resize(1); }},
        {"FA", "00", [](SZVLGZvgComp& comp) { comp.relatedGuidNames.resize(1); }},
        {"FC", "00", [](SZVLGZvgComp& comp) { comp.groupGuidName = L"NONE"; }},
        {"FC", "00", [&](SZVLGZvgComp& comp) { comp.groupGuidName = guid; }},
        {"F8", "00",
         [&](SZVLGZvgComp& comp) {
             comp.groupGuidName = {guid, L"none"};
         }},
        {"F8", "40", [](SZVLGZvgComp& comp) { comp.ownerTextB = L"b"; }},
        {"F8", "80", [](SZVLGZvgComp& comp) { comp.ownerTextC = L"c"; }},
        {"F8", "80", [&](SZVLGZvgComp& comp) { comp.ownerSecondGuidName = guid; }},
    };
    for (const Case& each : cases) {
        SZVLGZvgComp comp, read;
        each.change(comp);
        const Bytes file = Saved(4, 0, [&](CZVLGBlockSaver& saver) { saver.AddComp(comp); });
        const Parts parts = PartsOf(file);
        // Behind a section's head and the name "none".
        EXPECT_EQ(ToHex(Slice(parts.floors.at(0).block.content, 25, 26)), each.entry);
        // Behind the heads and fields of the nameless rows of levels 2 to 4, then the owner's own.
        const std::size_t owner = 13 + 8 + 13 + 8 + 13 + 8 + 6 + 13;
        EXPECT_EQ(ToHex(Slice(parts.index.content, owner + 16, owner + 17)), each.owner);
        ASSERT_TRUE(Opened(file).reader.GetCompByIndex({0, 0}, read));
        EXPECT_EQ(Dump(read), Dump(comp));
    }
}

TEST(Format, IdentificationsStandInTheOrderOfTheirUnits) {
    const std::wstring keys[] = {L"\uE000", L"b", L"\U00010000", L"aa", L"a", L"B"};
    const Bytes file = Saved(4, 0, [&](CZVLGBlockSaver& saver) {
        for (const std::wstring& key : keys) saver.AddIdentificationGeo(key, SZVLGZvgGeo());
    });
    EXPECT_EQ(ToHex(PartsOf(file).index.content),
              Plain("00 0000000D 00000000 0000000D 00000006"
                    "00000001 0042 00000000 00000005 00000001 0061 00000000 00000004"
                    "00000002 00610061 00000000 00000003 00000001 0062 00000000 00000001"
                    "00000002 D800DC00 00000000 00000002 00000001 E000 00000000 00000000"));
    Opened opened(file);
    EXPECT_EQ(opened.reader.GetGeoIdentificationNum(), 6U);
    std::wstring key;
    SZVLGZvgGeoIndex index;
    EXPECT_TRUE(opened.reader.GetGeoIdentificationByIndex(4, key, index));
    EXPECT_EQ(key, L"\U00010000");
    EXPECT_EQ(index.indexInBlock, 2U);
    for (const std::wstring& each : keys) EXPECT_NE(Ask(ask::Geo(each), opened.reader), "");
}

}  // namespace
