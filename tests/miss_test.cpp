// What hides behind an answer: absent, or damaged and where.

#include <gtest/gtest.h>

#include "support.h"

namespace {

using namespace support;

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

const Query getNames = ask::ListedName(0);

TEST(Miss, WhatIsDamagedIsToldWithPlaceAndReason) {
    using Change = void (*)(Bytes&);
    const Change breakCoder = [](Bytes& block) { block.clear(); };
    const struct {
        std::size_t block;  // 0, 1: geometries, 2, 3: floors, 4: index
        Change change;      // of its decoded content; an empty one does not decode
        Query query;
        const char* reason;  // empty where the answer is whole
    } cases[] = {
        {0, [](Bytes&) {}, ask::Geo(0, 0), ""},
        {1, breakCoder, ask::Geo(1, 0), "geometry block 1 does not decode"},
        {1, breakCoder, ask::Geo(L"b"), "geometry block 1 does not decode"},
        {1, breakCoder, ask::GeoCount(1), "geometry block 1 does not decode"},
        {1, breakCoder, ask::dataSize, "geometry block 1 does not tell its decoded size"},
        {1, breakCoder, ask::Geo(L"a"), ""},
        {3, breakCoder, ask::Comp(1, 0), "floor 1 does not decode"},
        {3, breakCoder, ask::CompCount(1), "floor 1 does not decode"},
        {3, breakCoder, ask::FloorName(1), ""},
        {3, breakCoder, getNames, ""},
        {4, breakCoder, ask::Geo(L"a"), "the index block does not decode"},
        {4, breakCoder, ask::Comp(0, 0), "the index block does not decode"},
        {0, [](Bytes& content) { content[17] = 0xFF; }, ask::Geo(0, 0),
         "geometry block 0, record 0 is damaged"},
        {0, [](Bytes& content) { content[13] = 0xFF; }, ask::Geo(0, 0),
         "geometry block 0, record 0 is damaged"},
        {0, [](Bytes& content) { content[8] = 0; }, ask::Geo(L"a"),
         "geometry block 0, record 0 has a count that its size contradicts"},
        {2, [](Bytes& content) { content[13] = 0xFF; }, ask::Comp(0, 0),
         "floor 0, component 0 is damaged"},
        {2, [](Bytes& content) { content.resize(9); }, ask::Comp(0, 0), "floor 0 is damaged"},
        {2, [](Bytes& content) { content[8] = 0; }, ask::CompCount(0),
         "floor 0 has a count that its size contradicts"},
        {4, [](Bytes& content) { content[8] = 0; }, ask::Comp(0, 0),
         "a class row of floor 0, component 0 is not there"},
        {4, [](Bytes& content) { content[13] = 0xFF; }, ask::Comp(0, 0),
         "a class row of floor 0, component 0 is damaged"},
        {4, [](Bytes& content) { content.back() = 7; }, ask::Geo(L"b"),
         "the index block has an identification that leads to no stored geometry"},
        {4, [](Bytes& content) { content[content.size() - 5] = 7; }, ask::Geo(L"b"),
         "the index block has an identification that leads to no stored geometry"},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(testing::Message() << one.reason << ", case " << &one - cases);
        Parts parts = PartsOf(TwoOfEach());
        Block& block = *parts.Blocks()[one.block];
        one.change(block.content);
        if (block.content.empty()) {
            block.encoded[20] ^= 1;
        } else {
            block.encoded.clear();
        }
        std::vector<FieldSpan> spans;
        const Bytes file = Bytes(7, 1) + PutTogether(parts, &spans);
        CZVFTReadBufferInStream in(file.data(), file.size());
        in.Seek(7);
        CZVLGBlockReader reader;
        reader.Init(&in);
        Ask(one.query, reader);
        const Miss miss = LastMissOf(reader);
        const bool isWhole = *one.reason == '\0';
        EXPECT_EQ(miss.kind, isWhole ? EZVLGMiss::None : EZVLGMiss::Damaged);
        EXPECT_EQ(miss.reason, one.reason);
        EXPECT_EQ(miss.position, isWhole ? 0 : FieldIn(spans, "blockSize", one.block).begin);
    }
}

TEST(Miss, WhatIsAbsentIsNotDamaged) {
    const Bytes file = TwoOfEach(), text(100, 'x');
    CZVFTReadBufferInStream in(file.data(), file.size()), other(text.data(), text.size());
    CZVLGBlockReader reader;
    const auto expectAbsent = [&] {
        for (const Query& beyond :
             {ask::Geo(2, 0), ask::Geo(0, 1), ask::Geo(0xFFFFFFFF, 0), ask::Geo(L"c"),
              ask::Geo(L""), ask::preview, ask::Comp(2, 0), ask::Comp(0, 1), ask::GeoCount(2),
              ask::CompCount(2), ask::FloorName(0xFFFFFFFF), ask::Identification(2)}) {
            EXPECT_EQ(Ask(beyond, reader), "");
            SZVLGBlockFinding finding = {5, "kept"};
            EXPECT_EQ(reader.GetLastMiss(finding), EZVLGMiss::Absent);
            EXPECT_EQ(finding.reason, "kept");
        }
    };
    expectAbsent();
    ASSERT_TRUE(reader.Init(&in));
    EXPECT_EQ(LastMissOf(reader).kind, EZVLGMiss::None);
    expectAbsent();
    for (const Query& query :
         {getNames, ask::dataSize, ask::floorCount, ask::blockCount, ask::Identification(1)}) {
        Ask(query, reader);
        EXPECT_EQ(LastMissOf(reader).kind, EZVLGMiss::None);
    }
    EXPECT_EQ(Thrown([&] { reader.Init(&other); }), "it's not zvg file format");
    expectAbsent();
}

/// A count that a flipped bit made smaller hides a floor or all geometry.
TEST(Miss, SectionsThatContradictThemselvesAreTold) {
    std::vector<FieldSpan> spans;
    const Bytes file = PutTogether(PartsOf(TwoOfEach()), &spans);
    const std::pair<const char*, Query> cases[] = {
        {"geometry section count", ask::blockCount},     {"geometry section count", ask::Geo(1, 0)},
        {"geometry section totalSize", ask::blockCount}, {"floor section count", ask::floorCount},
        {"floor section count", ask::Comp(1, 0)},        {"floor section count", getNames}};
    for (const auto& [field, query] : cases) {
        Bytes damaged = file;
        damaged[FieldIn(spans, field).end - 1] ^= 3;
        Opened opened(damaged);
        EXPECT_TRUE(opened.ok);
        EXPECT_EQ(LastMissOf(opened.reader).kind, EZVLGMiss::Damaged) << field;
        Ask(query, opened.reader);
        EXPECT_EQ(LastMissOf(opened.reader).kind, EZVLGMiss::Damaged) << field;
    }
}

}  // namespace
