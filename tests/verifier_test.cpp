// What the verifier tells of a damaged file, one finding for one wound, at its place; and what a
// reader tells of it at open.

#include <gtest/gtest.h>

#include <algorithm>

#include "support.h"

namespace {

using namespace support;

SZVLGZvgGeo Faces(const std::vector<int>& face) {
    SZVLGZvgGeo geo;
    geo.shells.emplace_back().AddPts({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    geo.shells.back().AddFaceIndex(face);
    return geo;
}

/// A component with a part that only refers to a stored geometry.
SZVLGZvgComp Part(const wchar_t* name, const wchar_t* floor, const wchar_t* geo) {
    SZVLGZvgComp comp = Comp(SerialKey(name), floor);
    comp.classLevel2Name = comp.ownerGuidName.name = name;
    comp.geoRefs.resize(1);
    comp.geoRefs[0].geoIdentification = geo;
    return comp;
}

/// Two geometry blocks, the second of one geometry; components p and q on floor F, r on floor G.
void FillModel(CZVLGBlockSaver& saver) {
    for (const wchar_t* const name : {L"a", L"b", L"c"})
        saver.AddIdentificationGeo(name, Faces({0, 1, 2}));
    saver.AddComp(Part(L"p", L"F", L"a"));
    saver.AddComp(Part(L"q", L"F", L"c"));
    SZVLGZvgComp third = Part(L"r", L"G", L"b");
    third.classLevel2Name = L"q";  // and so two owners below one level 4
    // A row of the host's own beside the one that leads to the geometry.
    third.geoRefs[0].geoIds = {{L"elsewhere", L"x", L""}};
    saver.AddComp(third);
}

/// Where the fields of FillModel's component entries are.
enum : std::size_t { Name = 4, Owner = 7, Level2 = 11, Level3 = 15, Level4 = 19, Row = 44 };

constexpr u32 none = 0xFFFFFFFF;

/// A place in a file: the n-th field of that name, or some bytes behind its begin.
struct At {
    const char* field;
    std::size_t n = 0;
    std::size_t behind = 0;

    std::size_t In(const std::vector<FieldSpan>& spans) const {
        return FieldIn(spans, field, n).begin + behind;
    }
};
constexpr At geoBlock0{"blockSize", 0}, floor0{"blockSize", 2}, theIndex{"blockSize", 4};
constexpr At geoSection{"geometry section tableWidth"}, floorSection{"floor section tableWidth"};

/// A model, taken apart, and what a case changes in it.
struct Damaged {
    Parts parts = PartsOf(Saved(4, 2, FillModel));
    std::function<void(Bytes& file, const std::vector<FieldSpan>&)> change;  // at last

    Bytes& Floor(std::size_t floor) { return Open(parts.floors[floor].block); }
    Bytes& Geos(std::size_t block) { return Open(parts.geoBlocks[block]); }
    Bytes& Index() { return Open(parts.index); }
    void Set(std::size_t field, u32 comp, u32 value) {
        Bytes& floor = Floor(0);
        SetU32(floor, Table(floor, 0).at[comp] + field, value);
    }
    /// The first byte of identification i, each of 14 bytes.
    std::size_t Identification(std::size_t i) { return Table(Index(), 0).end + 4 + 14 * i; }
    void LeadTo(std::size_t i, u32 block) { SetU32(Index(), Identification(i) + 6, block); }
    void SetGeos(const std::vector<Bytes>& records) { Geos(0) = Section(records); }
    Bytes Record(std::size_t i) { return Table(Geos(0), 0).Record(Geos(0), i); }

    Bytes File(std::vector<FieldSpan>& spans) {
        Bytes file = PutTogether(parts, &spans);
        if (change) change(file, spans);
        return file;
    }

  private:
    static Bytes& Open(Block& block) {
        block.encoded.clear();
        return block.content;
    }
};

std::string Refers(int comp, const std::string& row) {
    return "floor 0, component " + std::to_string(comp) + " refers to row " + row;
}

using Damage = std::function<void(Damaged&)>;
Damage Put(std::size_t field, u32 comp, u32 value) {
    return [=](Damaged& d) { d.Set(field, comp, value); };
}
/// Adds to a byte.
Damage Add(At at, int number) {
    return [=](Damaged& d) {
        d.change = [=](Bytes& file, const auto& spans) {
            u8& byte = file[at.In(spans)];
            byte = static_cast<u8>(byte + number);
        };
    };
}
/// Adds or takes 1, so that the byte stays below its even neighbour.
Damage Flip(At at) {
    return [=](Damaged& d) {
        d.change = [=](Bytes& file, const auto& spans) { file[at.In(spans)] ^= 1; };
    };
}
Damage FlipIn(std::size_t block) {
    return [=](Damaged& d) { d.parts.Blocks()[block]->encoded[40] ^= 1; };
}

const std::tuple<Damage, At, std::string> damages[] = {
    {[](Damaged&) {}, {}, ""},
    {[](Damaged& d) { d.Floor(1) = Section({}) + Section({}); }, {}, ""},
    {[](Damaged& d) {
         d.LeadTo(0, 9);
         d.LeadTo(2, 9);
     },
     theIndex, "identification 0 leads to no geometry; 1 more does"},
    {[](Damaged& d) {
         Bytes& index = d.Index();
         const auto first = index.begin() + std::ptrdiff_t(d.Identification(0));
         std::swap_ranges(first, first + 14, first + 14);
     },
     theIndex, "the identifications are not in ascending order"},
    {Put(Level2, 0, 9), floor0, Refers(0, "9 of the level-2 table, which has 2")},
    {[](Damaged& d) {
         d.Set(Level3, 0, 1);
         d.Set(Level3, 1, 8);
     },
     floor0, "floor 0, component 0 refers to row 1 of its level-3 table, which has 1; 1 more does"},
    {Put(Level4, 1, 1), floor0, Refers(1, "1 of its level-4 table, which has 1")},
    {Put(Owner, 1, 2), floor0, Refers(1, "2 of its owner table, which has 2")},
    {Put(Level4 + 4, 1, 1), floor0, Refers(1, "1 of its level-2b table, which has 1")},
    {Put(Level2, 1, none), floor0, Refers(1, "0 of a level-2b table below a row that is none")},
    {Put(Level3, 1, none), floor0, Refers(1, "0 of a level-4 table below a row that is none")},
    {Put(Level4, 1, none), floor0, Refers(1, "0 of an owner table below a row that is none")},
    {Put(Row, 1, 2), floor0, Refers(1, "2 of the floor's identification table, which has 2")},
    {[](Damaged& d) { d.Index()[d.Identification(2) + 5] = 'd'; }, floor0,
     "floor 0, component 1 has a part whose rows lead to no geometry"},
    {[](Damaged& d) { d.Set(Name, 1, u32('p') << 16 | 0xF800); }, floor0,
     "floor 0, component table at byte 0: record 1 has the identity of record 0"},
    {[](Damaged& d) {
         Bytes& floor = d.Floor(0);
         floor[Table(floor, Table(floor, 0).end).at[1] + 5] = 'a';
     },
     floor0, "floor 0, identification table at byte 131: record 1 has the identity of record 0"},
    {[](Damaged& d) { d.parts.floors[1].fields[0] = d.parts.floors[0].fields[0]; }, floorSection,
     "floor section: record 1 has the identity of record 0"},
    {[](Damaged& d) { d.Index()[Table(d.Index(), 0).at[1] + 5] = 'p'; }, theIndex,
     "the index block, level-2 table at byte 0: record 1 has the identity of record 0"},
    {[](Damaged& d) {
         Bytes& index = d.Index();
         std::replace(index.begin(), index.begin() + std::ptrdiff_t(d.Identification(0)), u8('r'),
                      u8('q'));
     },
     theIndex, "the index block, owner table at byte 184: record 1 has the identity of record 0"},
    {[](Damaged& d) {
         d.SetGeos({d.Record(0) + Bytes(3), d.Record(1)});
     },
     geoBlock0,
     "geometry block 0, records at byte 0, record 1: does not begin where the one before ends"},
    {[](Damaged& d) {
         Bytes& geos = d.Geos(0);
         std::swap(geos[geos.size() - 2], geos[geos.size() - 1]);
     },
     geoBlock0,
     "geometry block 0, records at byte 0, record 0: does not begin where the one before ends"},
    {[](Damaged& d) {
         d.SetGeos({d.Record(0), d.Record(1) + Bytes(3)});
     },
     geoBlock0, "geometry block 0, records at byte 0: the records do not end at the offset table"},
    {[](Damaged& d) {
         Bytes longer = d.Record(0) + Bytes(2);
         SetU32(longer, 0, static_cast<u32>(longer.size() - 4));
         d.SetGeos({longer, d.Record(1)});
     },
     geoBlock0, "geometry block 0, records at byte 0, record 0: bytes left over"},
    {[](Damaged& d) { d.Geos(0) = d.Geos(0) + Bytes(3); }, geoBlock0,
     "geometry block 0: 3 bytes left over"},
    {[](Damaged& d) { d.SetGeos({d.Record(0)}); }, theIndex,
     "identification 1 leads to no geometry"},
    {FlipIn(0), geoBlock0, "geometry block 0 does not decode; 2 identifications lead into it"},
    {FlipIn(2), floor0, "floor 0 does not decode"},
    {FlipIn(4), theIndex, "the index block does not decode"},
    {[](Damaged& d) { d.Index().resize(20); }, theIndex,
     "the index block, level-2 table at byte 0: its sizes cannot be"},
    {[](Damaged& d) { d.change = [](Bytes& file, const auto&) { file.erase(file.begin()); }; },
     {"magic"},
     "the head: it's not zvg file format"},
    {[](Damaged& d) { d.change = [](Bytes& file, const auto&) { file.resize(13); }; },
     {"magic"},
     "the head: seek over buffer size"},
    {Add({"geometry section totalSize", 0, 3}, 1), geoSection,
     "geometry block section: total size, count and offset table disagree"},
    {Add({"geometry section count", 0, 3}, -1), geoSection,
     "geometry block section: total size, count and offset table disagree; 1 identification leads "
     "to blocks that are not there"},
    {Flip({"geometry section tableOffset", 0, 3}), geoSection,
     "geometry block section: total size, count and offset table disagree; 3 identifications lead "
     "to blocks that are not there"},
    {Flip({"geometry section tableWidth"}), geoSection,
     "geometry block section: the offset width is not the one for its size"},
    {Flip({"geometry section tableOffset"}), geoSection,
     "geometry block section: its sizes cannot be; 3 identifications lead to blocks that are not "
     "there"},
    {Flip({"geometry section offsets"}), geoBlock0,
     "geometry block section, record 0: does not begin where the one before ends; "
     "2 identifications lead into it"},
    {Flip({"floor section totalSize", 0, 3}), floorSection,
     "floor section: total size, count and offset table disagree"},
    {Add({"floor section count", 0, 3}, -1), floorSection,
     "floor section: total size, count and offset table disagree"},
    {Flip({"floor section totalSize"}), floorSection, "floor section: its sizes cannot be"},
    {Flip({"floor name"}), {"floor name"}, "floor section, record 0: seek over buffer size"},
    {Flip({"floorSectionOffset", 0, 3}), floorSection,
     "the floor section does not begin where the geometry blocks end"},
    {Flip({"floorSectionOffset"}), floorSection,
     "the floor section does not begin where the geometry blocks end"},
    {[](Damaged& d) {
         d.change = [](Bytes& file, const auto& spans) {
             const std::size_t at = At{"floorSectionOffset"}.In(spans);
             const u32 floors = NumberAt(file, at);
             SetU32(file, at, floors + 3);
             file.insert(file.begin() + floors, 3, 0);
         };
     },
     floorSection, "the floor section does not begin where the geometry blocks end"},
    {Add({"blockSize", 0, 3}, 1),
     {"blockSize", 1},
     "geometry block 0: bytes behind the compressed data"},
    {Add({"blockSize", 2, 3}, -1), floor0, "floor 0 does not decode"},
    {Add({"blockSize", 4, 3}, -1), theIndex, "the index block does not decode"},
};

TEST(Verifier, TellsWhatIsWrong) {
    for (const auto& [damage, at, reason] : damages) {
        SCOPED_TRACE(reason);
        Damaged damaged;
        damage(damaged);
        std::vector<FieldSpan> spans;
        const Findings findings = Verified(damaged.File(spans), 5);
        ASSERT_EQ(findings.size(), reason.empty() ? 0U : 1U)
            << (findings.empty() ? "" : findings.back().reason);
        if (findings.empty()) continue;
        EXPECT_EQ(findings[0].reason, reason);
        EXPECT_EQ(findings[0].position, at.In(spans));
    }
}

/// What a reader tells at open: whether it opened, and what does not fit.
std::string Misfit(const Bytes& file) {
    CZVLGBlockReader reader;
    const Bytes placed = Bytes(5) + file;
    CZVFTReadBufferInStream in(placed.data(), placed.size());
    in.Seek(5);
    SZVLGBlockFinding finding{0, "kept"};
    EXPECT_FALSE(reader.GetStructureFinding(finding));
    bool isOpen = false;
    const std::string thrown = Thrown([&] { isOpen = reader.Init(&in); });
    if (!thrown.empty()) return thrown;
    if (!reader.GetStructureFinding(finding)) return isOpen ? finding.reason : "not open";
    return std::to_string(finding.position) + ": " + finding.reason;
}

TEST(Structure, EveryByteOfTheSectionsHeadsIsTold) {
    for (const Bytes& file : {SampleFile(4), Saved(4, 2, FillModel), Saved(4, 0, [](auto&) {})}) {
        std::vector<FieldSpan> spans;
        ASSERT_EQ(PutTogether(PartsOf(file), &spans), file);
        EXPECT_EQ(Misfit(file), "kept");
        spans.back().name = "index blockSize";
        for (const FieldSpan& span : spans) {
            const bool isHead = span.name.find(" section t") != std::string::npos ||
                                span.name.find(" section c") != std::string::npos;
            if (!isHead && span.name != "floorSectionOffset" && span.name != "index blockSize")
                continue;
            for (std::size_t at = span.begin; at < span.end; ++at)
                for (int by = 1; by < 256; ++by) {
                    Bytes changed = file;
                    changed[at] = static_cast<u8>(changed[at] + by);
                    EXPECT_NE(Misfit(changed), "kept") << span.name << " by " << by;
                }
        }
    }
}

TEST(Structure, TellsWhatHidesBehindSectionsThatFit) {
    const std::tuple<Damage, At, const char*> cases[] = {
        {[](Damaged& d) { d.LeadTo(1, 2); }, theIndex,
         "the index block leads to geometry blocks that are not there"},
        {[](Damaged& d) { d.parts.floors.back().fields[0].bytes[3] = 9; }, floorSection,
         "the floor section has records that do not fill it"}};
    for (const auto& [damage, at, reason] : cases) {
        Damaged damaged;
        damage(damaged);
        std::vector<FieldSpan> spans;
        const Bytes file = damaged.File(spans);
        EXPECT_EQ(Misfit(file), std::to_string(at.In(spans)) + ": " + reason);
    }
}

/// What a reader does not show or refuses, written by a saver.
TEST(Verifier, TellsWhatNobodyCanShow) {
    SZVLGZvgGeo geo = Faces({0, 3, 1});
    geo.visualShells.emplace_back().shell = Faces({-1}).shells[0];
    geo.polyFaceMeshes.emplace_back().facesIndex = {5, 0};
    geo.subGeos.emplace_back().geo = Faces({0, 1, 3});
    geo.renderMeshes.emplace_back().pointIndices = {7};  // what that means is the host's
    SZVLGZvgGeo picture;
    picture.images.emplace_back().width = 0x10000;
    picture.images.back().height = 0x4000;
    const std::wstring longKey(30'000, 'Z');
    Parts parts = PartsOf(Saved(4, 0, [&](CZVLGBlockSaver& saver) {
        saver.AddIdentificationGeo(L"faces", geo);
        saver.AddIdentificationGeo(longKey, picture);
        saver.AddComp(Part(L"x", L"", longKey.c_str()));
    }));
    // The part names its one row, of 60,000 bytes, again and again.
    Bytes& floor = parts.floors[0].block.content;
    const Bytes entry = Table(floor, 0).Record(floor, 0);
    const Bytes rows = Slice(floor, Table(floor, 0).end, floor.size());
    constexpr u32 count = 4000;
    floor = Section({Slice(entry, 0, Row - 4) + BigEndian(count) + Bytes(4 * std::size_t{count}) +
                     Slice(entry, Row + 4, entry.size())}) +
            rows;
    parts.floors[0].block.encoded.clear();
    const Bytes file = PutTogether(parts);
    const Findings findings = Verified(file, 5);
    ASSERT_EQ(findings.size(), 3U);
    EXPECT_EQ(findings[0].reason,
              "geometry block 0, records at byte 0, record 0: 4 faces name points that are not "
              "there");
    EXPECT_EQ(findings[1].reason,
              "geometry block 0, records at byte 0, record 1: an image of 65536 x 16384 has only 0 "
              "bytes of pixels");
    EXPECT_EQ(findings[2].reason,
              "floor 0, component table at byte 0, record 0: takes more memory than a reader "
              "allows by default");
    Opened opened(file);
    EXPECT_EQ(Ask(ask::Comp(0, 0), opened.reader), refused);
}

TEST(Verifier, AFileAheadOfOtherBytes) {
    const Bytes file = Saved(4, 2, FillModel);
    const auto reason = [&](u64 byteCount, std::size_t trailing) {
        const Bytes placed = Bytes(7) + file + Bytes(trailing, 0xEE);
        CZVFTReadBufferInStream in(placed.data(), placed.size());
        in.Seek(7);
        Findings findings;
        const bool isWhole = CZVLGBlockVerifier().Verify(&in, byteCount, findings);
        EXPECT_EQ(in.GetPos(), 7U);
        return isWhole ? "" : findings[0].reason;
    };
    EXPECT_EQ(reason(file.size(), 0), "");
    EXPECT_EQ(reason(file.size(), 9), "");
    EXPECT_EQ(reason(file.size() + 2, 9), "2 bytes behind the end of the file");
    EXPECT_EQ(reason(file.size() - 1, 9), "the index block does not decode");
    EXPECT_EQ(reason(file.size() + 2, 0), "2 bytes of the file are not there");
    EXPECT_EQ(reason(~u64{0} - 1, 0).find("18446744073709"), 0U);
}

}  // namespace
