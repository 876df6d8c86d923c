// Saver and reader: where records go, what is kept decoded, what is left when something is wrong,
// and objects used out of turn: an error or a fresh start, never a success that is none.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ZVSmartFormat/FileStream.h"
#include "support.h"

namespace {

using namespace support;

/// Where an identification leads, and behind how many others it stands.
std::string Place(CZVLGBlockReader& reader, const std::string& key) {
    for (u32 i = 0; i < reader.GetGeoIdentificationNum(); ++i) {
        const std::string found = Ask(ask::Identification(i), reader);
        if (found.find(key + "@") == 0) return found.substr(key.size() + 1);
    }
    return "";
}

TEST(Routing, AFullBlockIsWrittenWhenTheNextOneBegins) {
    const struct {
        unsigned int capacity;
        u32 count;
        SZVLGZvgGeoIndex last;
    } cases[] = {{0, 1000, {0, 999}}, {0, 1001, {1, 0}}, {1, 3, {2, 0}}, {2, 5, {2, 0}}};
    for (const auto& each : cases) {
        const u32 capacity = each.capacity == 0 ? 1000 : each.capacity;
        Opened opened(Streamed([&](CZVFTOutStream& out) {
            SaveTo(out, {4, each.capacity, "", {}}, [&](CZVLGBlockSaver& saver) {
                for (u32 i = 0; i < each.count; ++i) {
                    const u64 before = out.GetPos();
                    saver.AddIdentificationGeo(std::to_wstring(i), SomeGeo(i));
                    EXPECT_EQ(out.GetPos() != before, i != 0 && i % capacity == 0) << i;
                }
            });
        }));
        const std::string last = Dump(SomeGeo(each.count - 1));
        const auto [block, position] = each.last;
        EXPECT_EQ(Ask(ask::Geo(std::to_wstring(each.count - 1)), opened.reader), last);
        EXPECT_EQ(Ask(ask::Geo(block, position), opened.reader), last);
        EXPECT_EQ(opened.reader.GetGeoBlockNum(), block + 1);
        EXPECT_EQ(opened.reader.GetGeoNumInBlock(block), position + 1);
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
    EXPECT_EQ(Place(reader, "a"), "0,0");
    EXPECT_EQ(Place(reader, "c"), "1,1");
    const u64 values[] = {0, 2, 3, 5};
    for (u32 i = 0; i < 4; ++i)
        EXPECT_EQ(Ask(ask::Geo(i / 2, i % 2), reader), Dump(SomeGeo(values[i])));
    for (const wchar_t* key : {L"", L"b", L"aa"}) EXPECT_EQ(Ask(ask::Geo(key), reader), "");
}

TEST(Caches, GiveUpTheirLowestNumber) {
    const Bytes file = Saved(4, 1, [](CZVLGBlockSaver& saver) {
        for (u32 i = 0; i < 10; ++i) {
            saver.AddIdentificationGeo(std::to_wstring(i), SomeGeo(i));
            saver.AddComp(Comp(L"c", std::to_wstring(i)));
        }
    });
    const struct {
        bool areFloors;
        unsigned int geoLimit, floorLimit;
        std::vector<u32> fetched, kept;
        u32 lost;
    } cases[] = {
        {false, 3, 0, {5, 7, 9, 1}, {7, 9, 1}, 5},
        {false, 3, 0, {5, 7, 9, 1, 8}, {7, 9, 8}, 1},
        {false, 0, 0, {0, 1, 2}, {0, 1, 2}, 3},
        {false, 0, 1, {0, 1, 2, 3}, {1, 2, 3}, 0},
        {false, 1, 0, {4, 5}, {5}, 4},
        {true, 0, 3, {5, 7, 9, 1}, {7, 9, 1}, 5},
        {true, 0, 3, {5, 7, 9, 1, 8}, {7, 9, 8}, 1},
        {true, 1, 0, {0, 1, 2, 3, 4}, {0, 1, 2, 3, 4}, 5},
        {true, 0, 0, {0, 1, 2, 3, 4, 5}, {1, 2, 3, 4, 5}, 0},
    };
    for (const auto& each : cases) {
        FaultyInStream in(file);
        CZVLGBlockReader reader;
        ASSERT_TRUE(reader.Init(&in, each.geoLimit, each.floorLimit));
        const auto fetch = [&](u32 number) {
            in.calls = 0;
            const Query query = each.areFloors ? ask::Comp(number, 0) : ask::Geo(number, 0);
            const std::string right =
                each.areFloors ? Dump(Comp(L"c", std::to_wstring(number))) : Dump(SomeGeo(number));
            EXPECT_EQ(Ask(query, reader), right);
            return in.calls != 0;
        };
        for (const u32 number : each.fetched) fetch(number);
        reader.GetFloorNameByIndex(0);
        reader.GetFloorOrderByIndex(9);
        for (const u32 number : each.kept) EXPECT_FALSE(fetch(number)) << "still there";
        EXPECT_TRUE(fetch(each.lost));
        reader.CleanInnerBuffer();
        EXPECT_TRUE(fetch(each.kept.back()));
        EXPECT_EQ(in.GetPos(), 0U);
    }
}

TEST(Caches, KeepWhatWasUsedLastWithinBytes) {
    const Bytes file = Saved(4, 1, [](CZVLGBlockSaver& saver) {
        for (u32 i = 0; i < 6; ++i) {
            saver.AddIdentificationGeo(std::to_wstring(i), SomeGeo(i));
            saver.AddComp(Comp(L"c", std::to_wstring(i)));
        }
    });
    const Parts parts = PartsOf(file);
    const u64 floor = parts.floors[0].block.content.size(), geo = parts.geoBlocks[0].content.size();
    FaultyInStream in(file);
    CZVLGBlockReader reader;
    reader.SetCacheBytes(2 * floor + geo);
    ASSERT_TRUE(reader.Init(&in, 1, 1)) << "numbers do not count then";
    const auto isRead = [&](const Query& query) {
        in.calls = 0;
        Ask(query, reader);
        return in.calls != 0;
    };
    for (const Query& query : {ask::Comp(4, 0), ask::Geo(0, 0), ask::Comp(1, 0), ask::Comp(4, 0)})
        isRead(query);
    EXPECT_TRUE(isRead(ask::Comp(5, 0)));  // in the place of the geometry, and of floor 1
    EXPECT_FALSE(isRead(ask::Comp(4, 0)));
    EXPECT_TRUE(isRead(ask::Geo(0, 0)));
    EXPECT_FALSE(isRead(ask::Comp(4, 0)));
    reader.SetCacheBytes(1);
    ASSERT_TRUE(reader.Init(&in));
    isRead(ask::Comp(3, 0));
    EXPECT_FALSE(isRead(ask::Comp(3, 0))) << "the last one stays";
    EXPECT_TRUE(isRead(ask::Geo(0, 0)));
    EXPECT_FALSE(isRead(ask::Comp(3, 0))) << "beside its geometries as well";
    EXPECT_TRUE(isRead(ask::Comp(2, 0)));
    EXPECT_TRUE(isRead(ask::Comp(3, 0)));
}

/// A file of two floors and three geometry blocks.
Bytes SmallFile() {
    return Saved(4, 2, [](CZVLGBlockSaver& saver) {
        for (u32 i = 0; i < 5; ++i) saver.AddIdentificationGeo(std::to_wstring(i), SomeGeo(i));
        for (const wchar_t* floor : {L"F", L"G"}) saver.AddComp(Comp(L"c", floor));
    });
}

/// All lookups find nothing and change nothing.
void ExpectNeutral(CZVLGBlockReader& reader, u32 floorCount = 0, u32 blockCount = 0) {
    const std::vector<std::string> answers = AskAll(reader);
    for (std::size_t i = 3; i < answers.size(); ++i) EXPECT_EQ(answers[i], "") << i;
    EXPECT_EQ(reader.GetFloorNum(), floorCount) << "the counts stand as read";
    EXPECT_EQ(reader.GetGeoBlockNum(), blockCount);
    SZVLGZvgComp comp = Comp(L"kept");
    for (const SZVLGCompIndex& index : {SZVLGCompIndex{2, 0}, SZVLGCompIndex{0, 1},
                                        SZVLGCompIndex(), SZVLGCompIndex{0, 0xFFFFFFFF}})
        EXPECT_FALSE(reader.GetCompByIndex(index, comp));
    EXPECT_EQ(comp.compGuidName.name, L"kept");
    unsigned long long data[2] = {1, 2};
    EXPECT_EQ(reader.GetFloorDataByIndex(floorCount, data[0], data[1]), false);
    EXPECT_EQ(data[0] * 10 + data[1], 12U);
    std::vector<std::wstring> names = {L"old"};
    reader.GetAllFloorName(names);
    EXPECT_EQ(names, std::vector<std::wstring>(floorCount));
    reader.CleanInnerBuffer();
}

TEST(Reader, AnswersNeutrallyWhenNotOpen) {
    CZVLGBlockReader unopened;
    ExpectNeutral(unopened);
    Parts parts = PartsOf(SmallFile());
    parts.index.encoded[16] ^= 1;
    const Bytes file = Bytes(5) + PutTogether(parts);
    CZVFTReadBufferInStream in(file.data(), file.size());
    in.Seek(5);
    CZVLGBlockReader reader;
    EXPECT_FALSE(reader.Init(&in));
    EXPECT_EQ(in.GetPos(), 5U);
    EXPECT_EQ(reader.GetVersion(), 4U);
    ExpectNeutral(reader, 2, 3);

    for (const u32 geoCount : {0U, 3U}) {
        const Bytes unfinished = Streamed([&](CZVFTOutStream& out) {
            CZVLGBlockSaver saver;
            saver.Init(&out, SZVLGZvgBlockHeadInfo(), "", 1);
            for (u32 i = 0; i < geoCount; ++i)
                saver.AddIdentificationGeo(std::to_wstring(i), SomeGeo(i));
            saver.AddComp(Comp(L"c"));
        });
        Opened opened(unfinished);
        EXPECT_FALSE(opened.ok);
        ExpectNeutral(opened.reader);
    }
}

TEST(Reader, ABlockThatDoesNotDecodeIsNotThere) {
    Parts parts = PartsOf(SmallFile());
    std::size_t total = 0;
    for (const Block* const block : parts.Blocks()) total += block->content.size();
    EXPECT_EQ(Opened(SmallFile()).reader.GetEstimatedDataSize(), total);
    for (Block* const block : {&parts.geoBlocks.at(1), &parts.floors.at(0).block}) {
        block->encoded[0] ^= 1;
        total -= block->content.size();
    }
    Opened opened(PutTogether(parts));
    EXPECT_EQ(opened.reader.GetEstimatedDataSize(), total);
    for (int again = 0; again < 2; ++again) {
        for (const Query& query : {ask::Geo(L"2"), ask::CompCount(0), ask::Comp(0, 0)})
            EXPECT_EQ(Ask(query, opened.reader), "");
        EXPECT_EQ(opened.stream.GetPos(), 0U);
    }
    for (const Query& query : {ask::FloorName(0), ask::Geo(L"4"), ask::Comp(1, 0)})
        EXPECT_NE(Ask(query, opened.reader), "");
    opened.reader.SetDecodedBlockLimit(20);
    opened.reader.CleanInnerBuffer();
    EXPECT_EQ(Ask(ask::Geo(L"4"), opened.reader), "");
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
    EXPECT_EQ(Place(opened.reader, "b"), "0,0") << "the first counts";
    EXPECT_EQ(Place(opened.reader, "a"), "0,1");
    EXPECT_EQ(Ask(ask::Geo(L"a"), opened.reader), Dump(SZVLGZvgGeo()));
    EXPECT_EQ(Ask(ask::Geo(0, 2), opened.reader), "") << "no bytes, no record";
    for (const u32 i : {3U, 4U}) EXPECT_EQ(Ask(ask::Geo(0, i), opened.reader), refused);
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
    Opened opened(Saved(4, 1000, [&](CZVLGBlockSaver& saver) {
        for (u32 i = 0; i < keys.size(); ++i) saver.AddIdentificationGeo(keys[i], SomeGeo(i));
    }));
    for (u32 i = 0; i < keys.size(); ++i)
        EXPECT_EQ(Ask(ask::Geo(keys[i]), opened.reader), Dump(SomeGeo(i))) << i;
    for (const wchar_t* const absent : {L"al", L"alk", L"alm", L"all the same so far ", L"zzz",
                                        L"0", L"all the same so far 1", L"zll the same so far 7"})
        EXPECT_EQ(Ask(ask::Geo(absent), opened.reader), "") << absent;
}

TEST(Reader, ARecordReadIntoBeforeHoldsNothingOfIt) {
    std::vector<SZVLGZvgComp> comps;
    for (const u32 count : {3U, 0U, 40U, 1U, 2U, 0U, 0U, 5U}) {
        SZVLGZvgComp& comp = comps.emplace_back(Comp(std::to_wstring(comps.size())));
        for (u32 i = 0; i < count; ++i)
            comp.compProperties.emplace_back(std::wstring(count + i, L'n'),
                                             std::wstring(50 / (i + 1), L'v'));
    }
    Opened opened(Saved(4, 0, [&](CZVLGBlockSaver& saver) {
        for (const SZVLGZvgComp& comp : comps) saver.AddComp(comp);
    }));
    SZVLGZvgComp comp;
    for (u32 i = 0; i < comps.size(); ++i) {
        ASSERT_TRUE(opened.reader.GetCompByIndex({0, i}, comp));
        EXPECT_EQ(comp.compProperties, comps[i].compProperties) << i;
        if (i == 4) opened.reader.CleanInnerBuffer();
    }
}

TEST(Reader, PropertiesThatAreNotAskedForArePassedAndAllElseIsRead) {
    SZVLGZvgComp full = FullComp();
    full.compProperties = {{L"A.Size", L"1"}, {L"A.Size@", L"length"}, {L"A.Size@", L"text"},
                           {L"Größe", L"2"},  {L"Size", L"3"},         {L"", L"4"}};
    Opened opened(Saved(4, 0, [&](CZVLGBlockSaver& saver) { saver.AddComp(full); }));
    SZVLGZvgComp whole, comp;
    ASSERT_TRUE(opened.reader.GetCompByIndex({0, 0}, whole));
    const auto read = [&](const SZVLGCompParts& parts) {
        EXPECT_TRUE(opened.reader.GetCompPartsByIndex({0, 0}, parts, comp));
        PropertyList kept = std::move(comp.compProperties);
        comp.compProperties = whole.compProperties;
        EXPECT_EQ(Dump(comp), Dump(whole));
        return kept;
    };
    const PropertyList& all = full.compProperties;
    EXPECT_EQ(read({}), all);
    EXPECT_EQ(read({false, L"Size"}), PropertyList());
    EXPECT_EQ(read({true, L"Size"}), (PropertyList{all[0], all[1], all[4], all[5]}));
    EXPECT_EQ(read({true, L"öße"}), (PropertyList{all[3], all[4]}));
    EXPECT_EQ(read({true, L" A.Size"}), PropertyList());
}

TEST(Reader, AnotherInitOfAReaderOpensAsAFreshOneDoes) {
    const Bytes sample = SampleFile(4);
    const Bytes other = Saved(2, 1, [](CZVLGBlockSaver& saver) {
        for (u32 i = 0; i < 4; ++i) saver.AddIdentificationGeo(std::to_wstring(i), SomeGeo(i));
        for (u32 i = 0; i < 6; ++i) saver.AddComp(Comp(L"c", std::to_wstring(i)));
    });
    const Bytes unfinished = Slice(other, 0, 60), foreign(100, 'x');
    CZVLGBlockReader reader;
    FaultyInStream first(sample), second(other), cut(unfinished), none(foreign);
    EXPECT_TRUE(reader.Init(&first, 1, 1));
    EXPECT_EQ(AskAll(reader), Answers(sample));
    first.calls = 0;
    EXPECT_TRUE(reader.Init(&second));
    EXPECT_EQ(AskAll(reader), Answers(other));
    // Three blocks and five floors are kept again.
    const auto ask = [&] {
        for (u32 i = 0; i < 5; ++i) EXPECT_EQ(reader.GetFloorCompNum(i), 1U);
        for (u32 i = 0; i < 3; ++i) EXPECT_EQ(reader.GetGeoNumInBlock(i), 1U);
    };
    reader.CleanInnerBuffer();
    ask();
    second.calls = 0;
    ask();
    EXPECT_EQ(second.calls, 0);

    EXPECT_FALSE(reader.Init(&cut));
    cut.calls = 0;
    Opened fresh(unfinished);
    EXPECT_EQ(AskAll(reader), AskAll(fresh.reader));
    EXPECT_TRUE(reader.Init(&second));
    EXPECT_EQ(Thrown([&] { reader.Init(&none); }), "it's not zvg file format");
    second.calls = none.calls = 0;
    CZVLGBlockReader untouched;
    EXPECT_EQ(AskAll(reader), AskAll(untouched));
    EXPECT_EQ(first.calls + second.calls + cut.calls + none.calls, 0);
}

/// Calls every storing operation and tells what each threw.
std::vector<std::string> StoreEverything(CZVLGBlockSaver& saver) {
    SZVLGZvgGeoRelInclude rel;
    return {Thrown([&] { saver.AddIdentificationGeo(L"new", SomeGeo(1)); }),
            Thrown([&] { saver.AddPreviewImage(SomeImage(1, 1)); }),
            Thrown([&] { saver.AddComp(Comp(L"new")); }),
            Thrown([&] { saver.CreateIncludeBlockGeo(SomeGeo(2)); }),
            Thrown([&] { saver.WriteEnd(); })};
}
const std::vector<std::string> allRefused(5, "encode error");

TEST(Saver, NeedsAStreamWithAPosition) {
    const TempFile pipe;
    std::remove(pipe.path.c_str());
    ASSERT_EQ(mkfifo(pipe.path.c_str(), 0600), 0);
    ZVSmartFormat::CZVFTFileOutStream toPipe(pipe.path), full("/dev/full");
    ASSERT_TRUE(toPipe.Open());
    CZVLGBlockSaver saver;
    EXPECT_EQ(StoreEverything(saver), allRefused) << "nor does it store before one is there";
    Streamed([&](CZVFTOutStream& out) {
        saver.Init(&out, {});
        saver.AddIdentificationGeo(L"new", SomeGeo(0));
        EXPECT_EQ(Thrown([&] { saver.Init(&toPipe, {}); }), "encode error");
    });
    EXPECT_FALSE(saver.IsHaveIdentificationGeo(L"new"));
    EXPECT_EQ(StoreEverything(saver), allRefused) << "the file before is over";
    if (!full.Open()) return;
    const auto save = [&] { SaveTo(full, {}, [](auto& late) { late.AddComp(Comp(L"c")); }); };
    EXPECT_EQ(Thrown(save), "encode error");
}

TEST(Saver, StoresNothingBehindTheEndAndAnotherInitBeginsAFreshFile) {
    const std::string text = "[ZBufferSize]\nclass=7\n";
    const TempFile ini(Bytes(text.begin(), text.end()));
    const auto fill = [](CZVLGBlockSaver& saver) {
        SZVLGZvgGeoRelInclude rel;
        EXPECT_TRUE(
            saver.GetRelIncludeByRuledFace({{{0, 0, 0}, {4, 0, 0}}, {{0, 3, 0}, {4, 3, 1}}}, rel));
        EXPECT_TRUE(saver.IsHaveIdentificationGeo(rel.key));
        const std::wstring include = saver.CreateIncludeBlockGeo(SomeGeo(3));
        SZVLGZvgComp comp = Comp(L"c");
        comp.classLevel4Name = L"class";
        comp.geoRefs = {{rel.key, {}, 0, 0, 0, {}, {}}, {include, {}, 0, 0, 0, {}, {}}};
        saver.AddComp(comp);
        for (u32 i = 0; i < 5; ++i) saver.AddIdentificationGeo(std::to_wstring(i), SomeGeo(i));
    };
    const Bytes fresh = Saved(3, 0, fill);
    CZVLGBlockSaver saver(3);
    for (const bool isFinished : {false, true}) {
        Streamed([&](CZVFTOutStream& out) {
            saver.Init(&out, {}, ini.path, 1);
            fill(saver);
            if (isFinished) saver.WriteEnd();
        });
        const Bytes again = Streamed([&](CZVFTOutStream& out) {
            saver.Init(&out, {});
            fill(saver);
            saver.WriteEnd();
            const u64 end = out.GetPos();
            EXPECT_EQ(StoreEverything(saver), allRefused);
            EXPECT_EQ(out.GetPos(), end);
        });
        EXPECT_TRUE(again == fresh);
    }
}

}  // namespace
