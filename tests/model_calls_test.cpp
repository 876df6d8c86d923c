// The calls that do what the commands of zvg do, through the shared library, on a small building.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <bit>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "ZVSmartModel/Diff.h"
#include "ZVSmartModel/Exports.h"
#include "ZVSmartModel/Plan.h"
#include "ZVSmartModel/Preview.h"
#include "ZVSmartModel/Verify.h"
#include "failure_of.h"
#include "support.h"

using namespace ZVSmartModel;
using support::Bytes;
using support::Streamed;
using Out = ZVSmartFormat::CZVFTOutStream;
using Components = std::vector<ZVSmartZvg::SZVLGZvgComp>;

namespace {

/// A component with a slope two metres high.
ZVSmartZvg::SZVLGZvgComp Slope(unsigned int floor, const std::wstring& guid, const wchar_t* type) {
    const ZVSmartZvg::SerialKey key(guid);
    ZVSmartZvg::SZVLGZvgComp comp = support::Comp(key, floor == 0 ? L"Ground" : L"Upper");
    const double low = 3.0 * floor;
    comp.classLevel1Id = floor;
    comp.classLevel1DataA = std::bit_cast<ZVSmartZvg::u64>(low);
    comp.classLevel2Name = type;
    comp.compProperties = {{L"Element.Name", L"the " + guid}};
    ZVSmartZvg::CZVIMShell shell;
    shell.AddPts({{0, 0, low}, {1, 0, low}, {1, 1, low + 2}, {0, 1, low + 2}});
    shell.AddFaceIndex({0, 1, 2, 3});
    comp.geoRefs.resize(1);
    comp.geoRefs[0].geoIdentification = L"body of " + guid;
    comp.geoRefs[0].geo.shells.push_back(shell);
    return comp;
}

const Components house = {Slope(0, L"wall", L"IfcWall"), Slope(0, L"room", L"IfcSpace"),
                          Slope(1, L"slab", L"IfcSlab")};

Bytes Packed(const Components& comps) {
    return support::Saved(4, 0, [&](auto& saver) {
        for (const auto& comp : comps) saver.AddComp(comp);
    });
}

using Call = std::function<void(const BlockFile&, Out&, const Progress&)>;

const Call obj = [](auto& file, auto& out, auto& told) { WriteObj(file, out, out, "m", {}, told); };
const Call diff = [](auto& file, auto&, auto& told) {
    Compare(
        file, file, [](auto&) { return true; }, told);
};

std::vector<Call> Calls() {
    std::vector<Call> calls = {obj, diff};
    calls.push_back([](auto& file, auto& out, auto& told) { WritePlan(file, out, {}, told); });
    const auto glb = [](auto& file, auto& out, auto& told) { WriteGlb(file, out, {}, told); };
    calls.push_back(glb);
    const auto picture = [](auto& file, auto& out, auto& told) {
        const std::string png = PngOf(RenderPicture(file, {64, 48, false, false}, told));
        out.Write(png.data(), png.size());
    };
    if (CanRenderPictures()) calls.push_back(picture);
    return calls;
}

TEST(ModelCalls, TellWhatTheyWrote) {
    const BlockFile file(Packed(house));
    const Bytes svg = Streamed([&](Out& out) {
        const PlanSummary summary = WritePlan(file, out, {"Upper", "A title"});
        EXPECT_TRUE(summary.floors == 1 && summary.elements == 1 && summary.lost.empty());
        ExportOptions options;
        EXPECT_EQ(WriteObj(file, out, out, "m").elements, 2U) << "rooms are left out";
        options.selection.classNames = {"IfcSpace", "IfcSlab"};
        EXPECT_EQ(WriteObj(file, out, out, "m", options).meshes, 2U);
        options.selection.elements = {{0, 0}, {7, 0}};
        EXPECT_EQ(WriteObj(file, out, out, "m", options).elements, 1U);
    });
    EXPECT_NE(std::string(svg.begin(), svg.end()).find(">A title<"), std::string::npos);
    EXPECT_EQ(FailureOf([] { PngOf({2, 2, Bytes(15)}); }), Status::Usage);
    if (!CanRenderPictures()) return;
    EXPECT_EQ(FailureOf([&] { RenderPicture(file, {0, 48, false, false}); }), Status::Usage);
}

TEST(ModelCalls, ExportedFilesAppearWholeOrNotAtAll) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(testing::TempDir()) / "exported";
    fs::remove_all(folder);
    fs::create_directory(folder);
    const auto files = [&] { return std::distance(fs::directory_iterator(folder), {}); };
    const BlockFile file(Packed(house));
    const auto none = [](const std::string&, double) { return false; };
    const std::string path = folder / "house.OBJ";
    EXPECT_EQ(FailureOf([&] { ExportFile(file, path, {}, none); }), Status::Cancelled);
    EXPECT_EQ(FailureOf([&] { ExportFile(file, folder / "house.ply"); }), Status::Usage);
    EXPECT_EQ(FailureOf([&] { ExportFile(file, folder / "none/a.obj"); }), Status::InputOutput);
    EXPECT_EQ(files(), 0);
    EXPECT_EQ(ExportFile(file, path).elements, 2U);
    EXPECT_GT(fs::file_size(path), fs::file_size(folder / "house.mtl"));
    EXPECT_EQ(files(), 2);

    const fs::path pipe = folder / "pipe.glb", link = folder / "link.glb";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::ostringstream piped;
    std::thread reader([&] { piped << std::ifstream(pipe).rdbuf(); });
    ExportFile(file, pipe);
    reader.join();
    EXPECT_TRUE(fs::is_fifo(pipe));
    fs::create_symlink("linked.glb", link);
    ExportFile(file, link);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(piped.str().size(), fs::file_size(folder / "linked.glb"));
    EXPECT_EQ(files(), 5);
    const fs::path full = folder / "full.glb";
    fs::create_symlink("/dev/full", full);
    EXPECT_EQ(FailureOf([&] { ExportFile(file, full); }), Status::InputOutput);
    EXPECT_TRUE(fs::is_character_file(full));
}

TEST(ModelCalls, EndWhereNobodyWantsMore) {
    const Bytes bytes = Packed(house);
    const BlockFile file(bytes);
    const auto none = [](const std::string&, double) { return false; };
    for (const Call& call : Calls()) {
        Streamed([&](Out& out) {
            EXPECT_EQ(FailureOf([&] { call(file, out, none); }), Status::Cancelled);
        });
    }
    support::CZVFTReadBufferInStream sound(bytes.data(), bytes.size());
    EXPECT_EQ(FailureOf([&] { VerifyFile(sound, none); }), Status::Cancelled);
    EXPECT_TRUE(VerifyFile(sound).empty());
    EXPECT_EQ(FailureOf([] { VerifyFile("missing.zvg"); }), Status::InputOutput);
}

TEST(ModelCalls, DamageElsewhereDoesNotCount) {
    support::Parts parts = support::PartsOf(Packed(house));
    Bytes& upper = parts.floors.at(1).block.encoded;
    upper.at(upper.size() / 2) ^= 0xFF;
    const BlockFile file(support::PutTogether(parts));
    Streamed([&](Out& out) {
        EXPECT_EQ(FailureOf([&] { obj(file, out, {}); }), Status::Damaged);
        EXPECT_EQ(FailureOf([&] { diff(file, out, {}); }), Status::Damaged);
        EXPECT_NE(WritePlan(file, out).lost.find("damaged: "), std::string::npos);
        ExportOptions options;
        options.salvage = true;
        EXPECT_NE(WriteObj(file, out, out, "m", options).lost, "");
        options.selection.floor = "Ground";
        EXPECT_EQ(WriteObj(file, out, out, "m", options).lost, "");
    });
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(FailureOf([&] { file.FindGuid("slab"); }), Status::Damaged) << i;
    }
    EXPECT_EQ(file.DamageMet().size(), 1U);
}

/// A word for each thing that differs between the house and `comps`.
std::string Told(const Components& comps) {
    std::string words;
    const BlockFile b(Packed(comps));
    Compare(BlockFile(Packed(house)), b, [&](const Difference& difference) {
        words += "+-*>~"[static_cast<int>(difference.kind)];
        if (const auto& floor = difference.floor) {
            words += floor->name + (floor->renamed ? ">" + floor->renamed->b : "") + ' ';
            return true;
        }
        const ElementDifference& element = *difference.element;
        words += element.className + ' ';
        EXPECT_EQ(element.name, "the " + element.guid);
        EXPECT_TRUE(!element.inB || b.Read(*element.inB).guid == element.guid);
        if (element.floor) words += element.floor->a + '>' + element.floor->b + ' ';
        for (const ValueChange& change : element.properties) {
            words += change.name + '=' + change.b.value_or("none") + ' ';
        }
        for (const ValueChange& change : element.fieldValues) {
            words += change.b.value_or("none") + ' ';
        }
        for (const std::string& field : element.fields) words += field + ' ';
        if (element.geometry) words += "geometry ";
        return true;
    });
    return words;
}

TEST(ModelCalls, CompareTellsWhatBecameOfWhat) {
    EXPECT_EQ(Told(house), "");
    EXPECT_EQ(Told({house[0]}), "-Upper -IfcSpace -IfcSlab ");
    Components other = house;
    other[2].classLevel1Name = L"Attic";
    EXPECT_EQ(Told(other), "~Upper>Attic ");
    other = {house[0], Slope(1, L"room", L"IfcSpace"), Slope(1, L"door", L"IfcDoor"), house[2]};
    other[0].compProperties.emplace_back(L"Pset.FireRating", L"F90");
    other[3].compAttr.flags = ZVSmartZvg::DisplayAttrFlag::colour;
    other[3].compAttr.red = 7;
    EXPECT_EQ(Told(other),
              "*IfcWall Pset.FireRating=F90 >IfcSpace Ground>Upper geometry "
              "*IfcSlab #070000FF appearance +IfcDoor ");
}

TEST(ModelCalls, ThreadsShareAFile) {
    const BlockFile file(Packed(house));
    const auto all = [&file](Out& out) {
        for (const Call& call : Calls()) call(file, out, {});
    };
    const Bytes alone = Streamed(all);
    const auto again = [&] {
        for (int i = 0; i < 20; ++i) EXPECT_EQ(Streamed(all), alone);
    };
    std::thread other(again);
    again();
    other.join();
}

}  // namespace
