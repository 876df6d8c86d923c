// What is cut, seen and left out on which floor, and what hostile models do to a plan.

#include <set>
#include <sstream>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Body.h"
#include "plan_support.h"

using namespace plans;

namespace {

TEST_F(PlanTest, FloorsLieOnEachOtherInOneScale) {
    saver.AddIdentificationGeo(L"box", Box(3));
    for (const double level : {0.0, 4.0}) {
        SZVLGZvgComp comp = MakeComp(level > 0 ? L"upper" : L"lower", level);
        comp.classLevel1Name = level > 0 ? L"Upper" : L"Ground";
        comp.classLevel2Name = L"IfcBuildingElementProxy";
        comp.geoRefs[0].geo.namedTransfs = {{L"box", Moved(2.5 * level, level, level)}};
        comp.compProperties = {{L"Project.TrueNorth", L"1, 0"}};
        saver.AddComp(comp);
    }
    Close();
    ASSERT_EQ(Run("$Z plan model.zvg --paper A4 --scale 1:50"), 0) << err;
    // 12 m by 5 m at 20 mm the metre, in the middle of 297 mm by 210 mm.
    EXPECT_TRUE(HasBox(out, 28.5, 130, 40, 20)) << out;
    EXPECT_TRUE(HasBox(out, 228.5, 50, 40, 20)) << out;
    EXPECT_TRUE(Holds(out, R"(width="297mm" height="430mm")"));
    EXPECT_TRUE(Holds(out, "translate(0 220)"));  // the second sheet, 10 mm below the first
    EXPECT_TRUE(Holds(out,
                      "<g class=\"plan-layer IfcBuildingElementProxy section\" "
                      "id=\"floor-1-IfcBuildingElementProxy-section\""));
    // The needle points along the X axis from its middle at (262.5, 43).
    EXPECT_TRUE(Holds(out, "M267 43L258.644 40.68L260.7 43L258.644 45.32Z")) << out;
    ASSERT_EQ(Run("$Z plan model.zvg --paper a4 -o a4.svg"), 0);
    EXPECT_TRUE(Holds(err, "a4.svg: 2 components on 2 floors, 1:50\n")) << err;
    ASSERT_EQ(Run("$Z plan model.zvg --scale 100"), 0);  // one sheet, both in one row
    EXPECT_TRUE(HasBox(out, 12, 64, 20, 10)) << out;
    EXPECT_TRUE(HasBox(out, 12 + 120 + 12 + 100, 24, 20, 10)) << out;
    EXPECT_EQ(Run("$Z plan model.zvg --paper A4 --scale 1:20"), 2);
    EXPECT_TRUE(Holds(err, "the floors do not fit A4 at 1:20; 1:50 does")) << err;
    for (const char* wrong : {"--paper B5", "--paper A5", "--scale 1:0", "--scale half"}) {
        EXPECT_EQ(Run(std::string("$Z plan model.zvg ") + wrong), 2) << wrong;
    }
}

TEST_F(PlanTest, BodiesAreCutAboveTheirFloor) {
    SZVLGZvgComp low = MakeComp(L"low", 10);
    low.geoRefs[0].geo = Box(9.4);  // ends 0.6 m below the floor
    SZVLGZvgComp high = MakeComp(L"high", 10);
    SZVLGZvgGeo box = Box(3);  // in two open surfaces
    CZVIMShell half;
    half.AddPts(box.shells[0].GetPoints());
    half.AddFaceIndex({0, 1, 5, 4});
    half.AddFaceIndex({1, 2, 6, 5});
    box.shells[0] = half;
    CZVIMShell other;
    other.AddPts(half.GetPoints());
    other.AddFaceIndex({2, 3, 7, 6});
    other.AddFaceIndex({3, 0, 4, 7});
    box.shells.push_back(other);
    saver.AddIdentificationGeo(L"box", box);
    high.geoRefs[0].geo.subGeos.resize(1);  // the box in a moved sub-geometry
    high.geoRefs[0].geo.subGeos[0].attr.flags = 0x4000;
    high.geoRefs[0].geo.subGeos[0].attr.transf = Moved(100, 50, 0);
    high.geoRefs[0].geo.subGeos[0].geo.namedTransfs = {{L"box", Moved(0, 0, 10)}};
    saver.AddComp(low);
    saver.AddComp(high);
    const std::string svg = Plan();
    EXPECT_TRUE(Holds(svg, boxPaths[0]) || Holds(svg, boxPaths[1])) << svg;
    EXPECT_TRUE(
        Holds(svg, "<g id=\"high\" class=\"IfcWall\" data-guid=\"high\" data-drawn=\"section\">"));
    EXPECT_FALSE(Holds(svg, "\"low\""));
    EXPECT_TRUE(Holds(svg, "elevation +10 m"));
}

/// How often the component is drawn as a section.
int Sections(const std::string& svg, const std::string& name) {
    const std::string tag = "data-guid=\"" + name + "\" data-drawn=\"section\"";
    int count = 0;
    for (std::size_t at = 0; (at = svg.find(tag, at)) != std::string::npos; ++at) ++count;
    return count;
}

TEST_F(PlanTest, WhatReachesThePlaneIsCutWhereverItIsFiled) {
    const auto add = [&](const wchar_t* name, const wchar_t* floor, double elevation, double bottom,
                         double height, const wchar_t* className = L"IfcWall") {
        SZVLGZvgComp comp = MakeComp(name, elevation);
        comp.classLevel1Name = floor;
        comp.classLevel1Id = elevation > 0;
        comp.classLevel2Name = className;
        if (height > 0) {
            const std::wstring box = std::wstring(L"box of ") + name;
            saver.AddIdentificationGeo(box, Box(height));
            comp.geoRefs[0].geo.namedTransfs = {{box, Moved(0, 0, bottom)}};
        }
        saver.AddComp(comp);
    };
    add(L"through", L"Ground", 0, 0, 4.5);
    add(L"void", L"Ground", 0, 0, 4.5, L"IfcSpace");
    add(L"touching", L"Ground", 0, 0, 4.2);  // a corner in the plane counts as above it
    add(L"short", L"Ground", 0, 0, 4.1);
    add(L"slab", L"Ground", 0, -0.2, 0.2);
    add(L"lamp", L"Ground", 0, 2, 0.5);
    add(L"empty", L"Ground", 0, 0, 0);
    add(L"column", L"Upper", 3, 0, 3);
    add(L"upper", L"Upper", 3, 3, 3);
    SZVLGZvgComp loose = MakeComp(L"loose");
    loose.classLevel1Name = L"unassigned";
    loose.classLevel1Id = 2;
    loose.geoRefs[0].geo = Box(5);
    saver.AddComp(loose);
    const std::string svg = Plan();
    const struct {
        const char* name;
        int floors;
    } cases[] = {{"through", 2}, {"void", 1},   {"touching", 2}, {"short", 1}, {"slab", 0},
                 {"lamp", 0},    {"column", 1}, {"upper", 1},    {"loose", 3}};
    for (const auto& [name, floors] : cases) EXPECT_EQ(Sections(svg, name), floors) << name;
    EXPECT_EQ(err,
              "zvg: Ground: 6 cut (2 from other floors), 1 seen below, 1 overhead; left out: 1 "
              "without a shape\n"
              "zvg: Upper: 4 cut (3 from other floors), 2 seen below\n"
              "zvg: unassigned: 1 cut\n");
    ASSERT_EQ(Run("$Z plan model.zvg --floor Upper --cut 1.05 -o upper.svg"), 0);
    EXPECT_TRUE(Holds(err, "upper.svg: 6 components on 1 floor, 1:10\n")) << err;
    EXPECT_EQ(Sections(ReadAll(folder + "upper.svg"), "short"), 1);
}

TEST_F(PlanTest, HigherThingsCoverLowerOnesAndHangingOnesAreDashed) {
    saver.AddComp(BoxComp(saver, L"cupboard", L"IfcFurniture", 1, Moved(0.5, 0, 0)));
    saver.AddComp(BoxComp(saver, L"carpet", L"IfcFurniture", 0.1, Moved(0, 0, 0)));
    saver.AddComp(BoxComp(saver, L"slab", L"IfcSlab", 0.2, Moved(0, 0, -0.2)));
    saver.AddComp(BoxComp(saver, L"beam", L"IfcBeam", 0.3, Moved(0, 0.5, 2.5)));
    saver.AddComp(BoxComp(saver, L"deep", L"IfcSlab", 0.2, Moved(0, 0, -3)));
    const std::string svg = Plan();  // at 1:10: 2.5 m by 1.5 m from (12, 24)
    const std::size_t slab = svg.find("data-guid=\"slab\" data-drawn=\"projection\"");
    const std::size_t carpet = svg.find("data-guid=\"carpet\" data-drawn=\"projection\"");
    const std::size_t cupboard = svg.find("data-guid=\"cupboard\" data-drawn=\"projection\"");
    EXPECT_LT(slab, carpet);
    EXPECT_LT(carpet, cupboard);
    ASSERT_NE(cupboard, std::string::npos);
    EXPECT_TRUE(HasBox(GroupOf(svg, "cupboard", "projection"), 62, 74, 200, 100)) << svg;
    EXPECT_TRUE(HasBox(GroupOf(svg, "beam", "overhead"), 12, 24, 200, 100)) << svg;
    EXPECT_TRUE(Holds(svg,
                      "IfcBeam-overhead\" fill=\"none\" stroke=\"#7a6845\" "
                      "stroke-width=\"0.13\" stroke-dasharray"));
    EXPECT_FALSE(Holds(svg, "\"deep\""));
    EXPECT_EQ(err, "zvg: Ground: 3 seen below, 1 overhead; left out: 1 too far below\n");
    ASSERT_EQ(Run("$Z plan model.zvg --depth 4 --roof"), 0);
    EXPECT_TRUE(Holds(err, "Ground: 4 seen below, 1 overhead\nzvg: Roof plan: 5 seen below\n"));
    EXPECT_FALSE(GroupOf(out, "deep", "projection").empty());
    EXPECT_FALSE(GroupOf(out, "beam", "projection").empty());
}

/// The GUIDs that are drawn as cut on the document's floor.
std::set<std::string> DrawnAsCut(const std::string& svg) {
    std::set<std::string> guids;
    const std::string key = "data-guid=\"";
    for (std::size_t at = 0; (at = svg.find(key, at)) != std::string::npos;) {
        at += key.size();
        const std::size_t end = svg.find('"', at);
        const std::string drawn = svg.substr(end, svg.find('>', end) - end);
        if (Holds(drawn, "section") || Holds(drawn, "symbol")) {
            guids.insert(svg.substr(at, end - at));
        }
    }
    return guids;
}

TEST_F(PlanTest, WhatIsCutIsWhatCrossesThePlane) {
    ASSERT_EQ(Run("$Z --version"), 0);
    if (!Holds(out, "IFC")) GTEST_SKIP() << "built without an importer for IFC";
    using namespace ZVSmartModel;
    const std::string larger = ZVG_MODELS_DIR;
    for (const std::string& path :
         {std::string(ZVG_EXAMPLES_DIR "/house.ifc"), larger + "/06_Duplex_ifc2x3.ifc",
          larger + "/10_Schependomlaan_structure_ifc2x3.ifc"}) {
        if (!std::filesystem::exists(path)) continue;
        ASSERT_EQ(Run("$Z pack " + path + " -o real.zvg --force -q"), 0) << err;
        const BlockFile file(folder + "real.zvg");
        const std::vector<Floor> floors = file.Floors();
        std::vector<std::set<std::string>> crossing(floors.size());
        std::set<std::string> bodiless;
        std::size_t count = 0;
        file.ForEach({}, [&](const Element& element) {
            const Body body = ReadBody(file, element.index);
            const bool isRoom = element.className == "IfcSpace";
            if (body.surfaces.empty()) bodiless.insert(element.guid);
            for (std::size_t floor = 0; floor < floors.size(); ++floor) {
                const double plane = floors[floor].elevation + 1.2;
                bool crosses = false;
                for (const Triangles& surface : body.surfaces) {
                    for (const auto& triangle : surface.triangles) {
                        double low = 1e300, high = -1e300;
                        for (const std::uint32_t corner : triangle) {
                            low = std::min(low, surface.points[corner][2]);
                            high = std::max(high, surface.points[corner][2]);
                        }
                        crosses |= low < plane && plane <= high;
                    }
                }
                if (!crosses || (isRoom && element.index.floor != floor)) continue;
                crossing[floor].insert(element.guid);
                ++count;
            }
            return true;
        });
        EXPECT_GT(count, 4U);
        for (std::size_t floor = 0; floor < floors.size(); ++floor) {
            if (floors[floor].name == "unassigned") continue;
            ASSERT_EQ(Run("$Z plan real.zvg -q --all --floor " + std::to_string(floor)), 0) << err;
            std::set<std::string> drawn = DrawnAsCut(out);
            for (const std::string& guid : bodiless) drawn.erase(guid);
            EXPECT_EQ(drawn, crossing[floor]) << path << ", floor " << floor;
        }
    }
}

TEST_F(PlanTest, StraysAndFarOriginsLeaveTheSheetAlone) {
    const auto run = [&](double away) {
        ASSERT_TRUE(stream.emplace(folder + "model.zvg").Open());
        CZVLGBlockSaver fresh;
        fresh.Init(&*stream, {});
        fresh.AddIdentificationGeo(L"box", Box(3));
        for (const auto& [name, x] : {std::pair(L"a", 0.0), {L"b", 0.0}, {L"far", 2 + away}}) {
            SZVLGZvgComp comp = MakeComp(name);
            comp.geoRefs[0].geo.namedTransfs = {{L"box", Moved(1e7 + x, -1e7, 0)}};
            fresh.AddComp(comp);
        }
        fresh.WriteEnd();
        stream->Close();
        ASSERT_EQ(Run("$Z plan model.zvg"), 0);
    };
    run(99);  // many diagonals, but no 100 m
    EXPECT_EQ(Sections(out, "far"), 1);
    EXPECT_EQ(err, "zvg: Ground: 3 cut\n");
    run(101);
    EXPECT_TRUE(Holds(out, boxPaths[0]) || Holds(out, boxPaths[1])) << out;
    EXPECT_EQ(Sections(out, "far"), 0);
    EXPECT_EQ(err, "zvg: Ground: 2 cut; left out: 1 far away, which --all draws: far far\n");
    ASSERT_EQ(Run("$Z plan model.zvg --all -q"), 0);
    EXPECT_EQ(Sections(out, "far"), 1);
    EXPECT_EQ(err, "");
}

/// Checks nesting of elements, escapes and forbidden characters, and gathers the ids.
void ExpectWellFormed(const std::string& xml, std::multiset<std::string>& ids) {
    std::vector<std::string> open;
    for (std::size_t at = xml.find("?>") + 2; at < xml.size(); ++at) {
        const char byte = xml[at];
        ASSERT_TRUE(static_cast<unsigned char>(byte) >= 0x20 || byte == '\n') << at;
        if (byte == '&') {
            const std::string entity = xml.substr(at + 1, xml.find(';', at) - at - 1);
            ASSERT_TRUE(std::set<std::string>({"amp", "lt", "gt", "quot"}).count(entity)) << entity;
        }
        if (byte != '<') continue;
        const std::size_t end = xml.find('>', at);
        const std::string tag = xml.substr(at + 1, end - at - 1);
        ASSERT_FALSE(Holds(tag, "<")) << tag;
        if (tag[0] == '/') {
            ASSERT_FALSE(open.empty());
            ASSERT_EQ(open.back(), tag.substr(1));
            open.pop_back();
        } else if (tag.back() != '/') {
            open.push_back(tag.substr(0, tag.find(' ')));
        }
        if (tag.rfind("g id=\"", 0) == 0) ids.insert(tag.substr(6, tag.find('"', 6) - 6));
        at = end;
    }
    EXPECT_TRUE(open.empty());
}

TEST_F(PlanTest, HostileNamesGiveWellFormedXml) {
    const std::wstring evil =
        std::wstring(L"1<b>&\"'\x01\x1B]]>--\n") + wchar_t(0xD800) + wchar_t(0xFFFE) + L"}*{";
    const std::wstring names[] = {evil, L"a b", L"a_b", L"a$b", L"a_b-2", L""};
    for (const std::wstring& name : names) {
        SZVLGZvgComp comp = MakeComp(name);
        comp.classLevel1Name = comp.classLevel2Name = evil;
        comp.compProperties = {{L"Element.Name", evil}};
        comp.geoRefs[0].geoIdentification = L"box";
        comp.geoRefs[0].geo = Box(3);
        saver.AddComp(comp);
    }
    const std::string svg = Plan();
    std::multiset<std::string> ids;
    ExpectWellFormed(svg, ids);
    EXPECT_EQ(ids.size(), std::size(names));
    EXPECT_EQ(std::set<std::string>(ids.begin(), ids.end()).size(), std::size(names));
    EXPECT_EQ(svg.find("\xEF\xBF\xBE"), std::string::npos);
    EXPECT_TRUE(Holds(svg, "<title>1&lt;b&gt;&amp;&quot;'"));
}

TEST_F(PlanTest, HostilePlacementsEnd) {
    saver.AddIdentificationGeo(L"box", Box(3));
    SZVLGZvgGeo circle;  // A places B and itself, B places A and the box
    circle.namedTransfs = {
        {L"A", Moved(1, 0, 0)}, {L"A", Moved(0, 1, 0)}, {L"box", Moved(0, 0, 0)}};
    saver.AddIdentificationGeo(L"B", circle);
    circle.namedTransfs[2].name = L"B";
    SZVLGZvgComp comp = MakeComp(L"A");
    comp.geoRefs[0].geo = circle;
    saver.AddComp(comp);
    for (int level = 0; level < 60; ++level) {  // 2^60 leaves
        SZVLGZvgGeo twice;
        const std::wstring next = L"level" + std::to_wstring(level + 1);
        twice.namedTransfs = {{next, Moved(0, 0, 0)}, {next, Moved(0, 0, 0)}};
        saver.AddIdentificationGeo(L"level" + std::to_wstring(level), twice);
    }
    SZVLGZvgComp deep = MakeComp(L"level0");
    saver.AddComp(deep);
    SZVLGZvgComp far = MakeComp(L"far");
    far.geoRefs[0].geo = Box(1e308);
    far.geoRefs[0].geo.circles.emplace_back(CZVIMPosition(1e300, 0, 0), CZVIMVector(0, 0, 1),
                                            1e308);
    saver.AddComp(far);
    const std::string svg = Plan();
    EXPECT_TRUE(Holds(svg, boxPaths[0]) || Holds(svg, boxPaths[1])) << svg;
    EXPECT_FALSE(Holds(svg, "nan") || Holds(svg, "inf"));
}

TEST_F(PlanTest, TargetsAndFloorsAreChecked) {
    SZVLGZvgComp comp = MakeComp(L"a");
    comp.geoRefs[0].geo = Box(3);
    saver.AddComp(comp);
    Close();
    EXPECT_EQ(Run("$Z plan model.zvg --cut inf"), 2);
    const std::string call = "$Z plan model.zvg -o plan.svg";
    EXPECT_EQ(Run(call + " --floor Attic"), 5);
    EXPECT_FALSE(std::filesystem::exists(folder + "plan.svg"));
    EXPECT_EQ(Run(call + " --floor Ground"), 0);
    EXPECT_EQ(Run(call), 3);
    EXPECT_EQ(Run(call + " --force -q"), 0);
    EXPECT_EQ(err, "");
    EXPECT_EQ(out, "");
    std::string bytes = ReadAll(folder + "model.zvg");
    bytes[bytes.find("\xFD"
                     "7zXZ") +
          40] ^= 0x55;  // in the geometry block
    std::ofstream(folder + "model.zvg", std::ios::binary) << bytes;
    EXPECT_EQ(Run("$Z plan model.zvg"), 4);
}

}  // namespace
