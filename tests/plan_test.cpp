#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <optional>
#include <set>
#include <sstream>
#include <utility>
#include <vector>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Body.h"
#include "tool_support.h"

using namespace ZVSmartZvg;

namespace {

class PlanTest : public ToolFixture {
  protected:
    void SetUp() override {
        ToolFixture::SetUp();
        Begin();
    }

    void Begin() {
        ASSERT_TRUE(stream.emplace(folder + "model.zvg").Open());
        saver.Init(&*stream, {});
    }

    void Close() {
        saver.WriteEnd();
        stream->Close();
    }
    std::string Plan() {
        Close();
        EXPECT_EQ(Run("$Z plan model.zvg"), 0) << err;
        return out;
    }

    std::optional<ZVSmartFormat::CZVFTFileOutStream> stream;
    CZVLGBlockSaver saver;
};

SZVLGZvgComp MakeComp(const std::wstring& name, double elevation = 0) {
    SZVLGZvgComp comp;
    comp.classLevel1Name = L"Ground";
    std::memcpy(&comp.classLevel1DataA, &elevation, sizeof elevation);
    comp.classLevel2Name = L"IfcWall";
    comp.compGuidName = SerialKey(name);
    comp.geoRefs.resize(1);
    comp.geoRefs[0].geoIdentification = name;
    return comp;
}

/// A square of 2 m whose eastern side is a half circle.
SZVLGZvgGeo RoundedSquare() {
    SZVLGZvgGeo geo;
    geo.lineSegments = {{{0, 0, 5}, {2, 0, 5}}, {{2, 2, 5}, {0, 2, 5}}, {{0, 2, 5}, {0, 0, 5}}};
    geo.boundArcs.emplace_back(CZVIMPosition(2, 1, 5), CZVIMVector(0, 0, 1), CZVIMPosition(2, 0, 5),
                               3.14159265358979);
    return geo;
}

/// 2 m × 1 m, `height` high, in triangles.
SZVLGZvgGeo Box(double height) {
    CZVIMShell shell;
    for (const double z : {0.0, height}) shell.AddPts({{0, 0, z}, {2, 0, z}, {2, 1, z}, {0, 1, z}});
    const std::vector<int> quads[] = {{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4},
                                      {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}};
    for (const auto& quad : quads) {
        shell.AddFaceIndex({quad[0], quad[1], quad[2]});
        shell.AddFaceIndex({quad[0], quad[2], quad[3]});
    }
    shell.AddFaceIndex({0, 99, -1});  // leads nowhere
    SZVLGZvgGeo geo;
    geo.shells.push_back(shell);
    return geo;
}

CZVIMTransf Moved(double x, double y, double z) {
    CZVIMTransf transf;
    transf.SetAt(0, 3, x);
    transf.SetAt(1, 3, y);
    transf.SetAt(2, 3, z);
    return transf;
}

bool Holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

int Count(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++count;
    return count;
}

/// Drawn at 1:10 from the corner at (12, 24): 100 mm make a metre.
constexpr const char* roundedSquarePath = "\"M12 224L212 224A100 100 0 0 0 212 24L12 24Z\"";
constexpr const char* boxPaths[] = {"\"M12 124L212 124L212 24L12 24Z\"",
                                    "\"M12 124L12 24L212 24L212 124Z\""};

/// Whether a path of the document is this rectangle, from its lower left corner either way round.
bool HasBox(const std::string& svg, double left, double top, double width, double height) {
    const auto at = [](double x, double y) {
        std::ostringstream text;
        text << x << ' ' << y;
        return text.str();
    };
    const std::string a = at(left, top + height), b = at(left + width, top + height);
    const std::string c = at(left + width, top), d = at(left, top);
    return Holds(svg, "\"M" + a + 'L' + b + 'L' + c + 'L' + d + "Z\"") ||
           Holds(svg, "\"M" + a + 'L' + d + 'L' + c + 'L' + b + "Z\"");
}

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

TEST_F(PlanTest, BulgesBecomeArcsAndMirrorsTurnThem) {
    const struct {
        double xScale;
        double yScale;
        const char* path;
    } cases[] = {{1, 1, roundedSquarePath},
                 {-1, 1, "\"M312 224L112 224A100 100 0 0 1 112 24L312 24Z\""},
                 {1, -1, "\"M12 24L212 24A100 100 0 0 1 212 224L12 224Z\""}};
    saver.AddIdentificationGeo(L"shape", RoundedSquare());
    int number = 0;
    for (const auto& [xScale, yScale, path] : cases) {
        SZVLGZvgComp comp = MakeComp(L"comp" + std::to_wstring(number));
        comp.classLevel1Name = std::to_wstring(number++);
        CZVIMTransf transf = Moved(7, 8, 9);
        transf.SetAt(0, 0, xScale);
        transf.SetAt(1, 1, yScale);
        comp.geoRefs[0].geo.namedTransfs = {{L"shape", transf}};
        saver.AddComp(comp);
    }
    Close();
    for (int floor = 0; floor < number; ++floor) {
        ASSERT_EQ(Run("$Z plan model.zvg --floor " + std::to_string(floor)), 0);
        EXPECT_TRUE(Holds(out, cases[floor].path)) << out;
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

/// A component whose body is a box of 2 m by 1 m, moved.
SZVLGZvgComp BoxComp(CZVLGBlockSaver& saver, const std::wstring& name, const wchar_t* className,
                     double height, const CZVIMTransf& place) {
    SZVLGZvgComp comp = MakeComp(name);
    comp.classLevel2Name = className;
    saver.AddIdentificationGeo(L"box of " + name, Box(height));
    comp.geoRefs[0].geo.namedTransfs = {{L"box of " + name, place}};
    return comp;
}

/// The group of a component, from its title on; "drawn" is how it must be drawn.
std::string GroupOf(const std::string& svg, const std::string& name, const std::string& drawn) {
    const std::size_t at = svg.find("data-guid=\"" + name + "\" data-drawn=\"" + drawn + '"');
    return at == std::string::npos ? "" : svg.substr(at, svg.find("</g>", at) - at);
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

TEST_F(PlanTest, WallsThatTouchAreOutlinedAsOne) {
    saver.AddComp(BoxComp(saver, L"a", L"IfcWall", 3, Moved(0, 0, 0)));
    saver.AddComp(BoxComp(saver, L"b", L"IfcWall", 3, Moved(2, 0, 0)));
    saver.AddComp(BoxComp(saver, L"c", L"IfcWallStandardCase", 3, Moved(1, 0.5, 0)));
    SZVLGZvgComp other = BoxComp(saver, L"d", L"IfcWall", 3, Moved(4, 0, 0));
    other.classLevel4Name = L"brick";
    saver.AddComp(other);
    Close();
    ASSERT_EQ(Run("$Z plan model.zvg --scale 10 --json -o joined.svg"), 0) << err;
    const nlohmann::json told = nlohmann::json::parse(out);
    EXPECT_EQ(told["perFloor"][0]["cut"], 4);
    EXPECT_EQ(told["scale"], 10);
    EXPECT_EQ(err, "");
    const std::string svg = ReadAll(folder + "joined.svg");
    std::vector<std::string> outlines;
    for (std::size_t at = 0; (at = svg.find("<g class=\"plan-joined\"", at)) != std::string::npos;
         ++at) {
        const std::size_t from = svg.find(" d=\"", at) + 4;
        outlines.push_back(svg.substr(from, svg.find('"', from) - from));
    }
    ASSERT_EQ(outlines.size(), 2U);  // one of each material
    std::sort(outlines.begin(), outlines.end(),
              [](const auto& a, const auto& b) { return a.size() > b.size(); });
    EXPECT_EQ(std::count(outlines[0].begin(), outlines[0].end(), 'M'), 1) << outlines[0];
    EXPECT_EQ(std::count(outlines[0].begin(), outlines[0].end(), 'L'), 7) << outlines[0];
    EXPECT_TRUE(HasBox('"' + outlines[1] + '"', 412, 74, 200, 100)) << outlines[1];
    ASSERT_EQ(Run("$Z plan model.zvg -q -o joined.DXF && $Z plan model.zvg -o ./plan.pdf -q"), 0);
    const std::string dxf = ReadAll(folder + "joined.DXF");
    EXPECT_TRUE(Holds(dxf, "0\nLAYER\n2\nPLAN-JOINED\n70\n0\n62\n7\n6\nCONTINUOUS\n"));
    EXPECT_TRUE(Holds(dxf, "0\nVERTEX\n8\nPLAN-JOINED\n10\n3.000000\n20\n1.500000\n"));
    EXPECT_TRUE(Holds(dxf, "1\nGround\n"));
    EXPECT_EQ(dxf.substr(dxf.size() - 6), "0\nEOF\n");
    EXPECT_EQ(ReadAll(folder + "plan.pdf").rfind("%PDF-1.", 0), 0U);
    EXPECT_EQ(Run("$Z plan model.zvg --json"), 2);
}

TEST_F(PlanTest, RoomsSayTheirAreasWithinTheirOutlines) {
    SZVLGZvgComp room = MakeComp(L"room");
    room.classLevel2Name = L"IfcSpace";
    CZVIMShell shell;  // an L of 4 m by 4 m whose legs are 1 m wide: its middle is outside
    const double corners[6][2] = {{0, 0}, {4, 0}, {4, 1}, {1, 1}, {1, 4}, {0, 4}};
    for (const double z : {0.0, 3.0}) {
        for (const auto& [x, y] : corners) shell.AddPts({{x, y, z}});
    }
    for (int i = 0; i < 6; ++i) shell.AddFaceIndex({i, (i + 1) % 6, (i + 1) % 6 + 6, i + 6});
    room.geoRefs[0].geo.shells.push_back(shell);
    room.compProperties = {{L"Element.Name", L"12"},
                           {L"Element.LongName", L"K\u00fcche"},
                           {L"Other.Area", L"99"},
                           {L"Other.Area@", L"area m2"},
                           {L"BaseQuantities.NetFloorArea", L"7.2"},
                           {L"BaseQuantities.NetFloorArea@", L"area m2"},
                           {L"Zone.Name", L"Flat 1"}};
    saver.AddComp(room);
    saver.AddComp(BoxComp(saver, L"table", L"IfcTable", 0.7, Moved(0, 0, 0)));
    const std::string svg = Plan();
    EXPECT_EQ(err,
              "zvg: Ground: 1 cut, 1 seen below; areas that differ: K\xC3\xBC"
              "che 7.20 m\xC2\xB2 "
              "by the file, 7.00 m\xC2\xB2 as drawn\n");
    EXPECT_TRUE(Holds(svg, ">12</text>"));
    EXPECT_TRUE(Holds(svg, ">7.20 m\xC2\xB2</text>"));
    const std::size_t text = svg.find("class=\"plan-room\" x=\"");
    ASSERT_NE(text, std::string::npos) << svg;
    double x = 0, y = 0;
    ASSERT_EQ(std::sscanf(svg.c_str() + text, "class=\"plan-room\" x=\"%lf\" y=\"%lf\"", &x, &y),
              2);
    const double metresX = (x - 12) / 50, metresY = 4 - (y - 24) / 50;  // at 1:20
    EXPECT_TRUE(metresX < 4 && metresY < 4 && (metresX < 1 || metresY < 1)) << x << ' ' << y;
    EXPECT_FALSE(Holds(svg, "Flat 1"));
    ASSERT_EQ(Run("$Z plan --zones model.zvg"), 0) << err;
    EXPECT_TRUE(Holds(out, ">Flat 1</text>"));
    EXPECT_TRUE(Holds(GroupOf(out, "room", "section"), "fill=\"#d5e6f5\"")) << out;
}

TEST_F(PlanTest, DimensionsAndAxesRunAlongTheWalls) {
    for (const double turn : {0.0, 0.5}) {
        Begin();
        const double c = std::cos(turn), s = std::sin(turn);
        const auto turned = [&](double x, double y, double length, double depth) {
            CZVIMTransf place = Moved(c * x - s * y, s * x + c * y, 0);
            place.SetAt(0, 0, c * length / 2);  // of a box of 2 m by 1 m
            place.SetAt(1, 0, s * length / 2);
            place.SetAt(0, 1, -s * depth);
            place.SetAt(1, 1, c * depth);
            return place;
        };
        // Four walls around 6.25 m by 4.5 m, and two axes 5.75 m apart.
        saver.AddComp(BoxComp(saver, L"south", L"IfcWall", 3, turned(0, 0, 6.25, 0.5)));
        saver.AddComp(BoxComp(saver, L"north", L"IfcWall", 3, turned(0, 4, 6.25, 0.5)));
        saver.AddComp(BoxComp(saver, L"west", L"IfcWall", 3, turned(0, 0, 0.5, 4.5)));
        saver.AddComp(BoxComp(saver, L"east", L"IfcWall", 3, turned(5.75, 0, 0.5, 4.5)));
        SZVLGZvgComp grid = MakeComp(L"grid");
        grid.classLevel2Name = L"IfcGrid";
        for (const auto& [tag, x] : {std::pair(L"GridAxis A", 0.25), {L"GridAxis B", 6.0}}) {
            SZVLGZvgSubGeo& axis = grid.geoRefs[0].geo.subGeos.emplace_back();
            axis.attr.flags = 0x80;
            axis.attr.styleName = tag;
            CZVIMPolyline3D line;
            line.AddPoint({c * x, s * x, 0});
            line.AddPoint({c * x - s * 4, s * x + c * 4, 0});
            axis.geo.polylines = {line};
        }
        saver.AddComp(grid);
        const std::string svg = Plan();
        for (const auto& [text, times] :
             {std::pair("6.25", 1), {"4.5", 1}, {"5.75", 1}, {"A", 2}, {"B", 2}}) {
            EXPECT_EQ(Count(svg, std::string(">") + text + "</text>"), times) << text << turn;
        }
        const bool isTilted = Holds(svg, "rotate(-28.648 ");  // half a radian
        EXPECT_EQ(isTilted, turn > 0) << svg;
    }
}

TEST_F(PlanTest, SymbolsAreUsedWhereTheyLieOnTheirBodies) {
    const auto door = [&](const std::wstring& name, const wchar_t* operation, double x) {
        SZVLGZvgComp comp = BoxComp(saver, name, L"IfcDoor", 3, Moved(x, 0, 0));
        comp.compProperties = {{L"Element.OperationType", operation}};
        return comp;
    };
    const auto withCurve = [&](SZVLGZvgComp comp, double x) {
        CZVIMPolyline3D curve;
        for (const auto& [u, v] : {std::pair(0.0, 0.0), {2.0, 0.0}, {2.0, 1.0}, {0.5, 1.0}}) {
            curve.AddPoint({x + u, v, 0});
        }
        curve.SetClosedFlag();
        comp.geoRefs[0].geo.polylines = {curve};
        CZVIMPolyline3D flat;  // around nothing
        for (const double u : {0.0, 1.0, 2.0}) flat.AddPoint({x + u, 0.5, 0});
        flat.SetClosedFlag();
        comp.geoRefs[0].geo.polylines.push_back(flat);
        return comp;
    };
    saver.AddComp(door(L"left", L"SINGLE_SWING_LEFT", 0));
    SZVLGZvgComp right = door(L"right", L"NOTDEFINED", 10);
    right.compProperties.push_back({L"Maker's.OperationType", L"SINGLE_SWING_LEFT"});
    right.compProperties.push_back({L"Type.OperationType", L"SINGLE_SWING_RIGHT"});
    saver.AddComp(right);
    saver.AddComp(door(L"double", L"DOUBLE_DOOR_SINGLE_SWING", 20));
    saver.AddComp(door(L"sliding", L"SLIDING_TO_LEFT", 30));
    saver.AddComp(door(L"unknown", L"NOTDEFINED", 40));
    saver.AddComp(withCurve(door(L"own", L"SINGLE_SWING_LEFT", 50), 50));
    saver.AddComp(withCurve(BoxComp(saver, L"astray", L"IfcDoor", 3, Moved(60, 0, 0)), 50));
    saver.AddComp(withCurve(BoxComp(saver, L"wall", L"IfcWall", 3, Moved(70, 0, 0)), 70));
    Close();
    ASSERT_EQ(Run("$Z plan model.zvg --scale 100"), 0);  // 10 mm a metre; 3 m high
    EXPECT_TRUE(Holds(GroupOf(out, "left", "symbol"), "M32 44A20 20 0 0 0 12 24M")) << out;
    EXPECT_TRUE(Holds(GroupOf(out, "right", "symbol"), "M112 44A20 20 0 0 1 132 24M")) << out;
    EXPECT_TRUE(Holds(GroupOf(out, "double", "symbol"),
                      "M222 44A10 10 0 0 0 212 34M222 44A10 10 0 "
                      "0 1 232 34"))
        << out;
    EXPECT_FALSE(Holds(GroupOf(out, "sliding", "symbol"), "A")) << out;
    EXPECT_TRUE(HasBox(GroupOf(out, "unknown", "section"), 412, 44, 20, 10)) << out;
    EXPECT_TRUE(Holds(GroupOf(out, "own", "symbol"), "\"M512 54L532 54L532 44L517 44Z\""));
    EXPECT_TRUE(HasBox(GroupOf(out, "astray", "section"), 612, 44, 20, 10)) << out;
    EXPECT_FALSE(Holds(GroupOf(out, "astray", "section"), "M512"));
    EXPECT_TRUE(HasBox(GroupOf(out, "wall", "section"), 712, 44, 20, 10)) << out;
    EXPECT_TRUE(Holds(err, "8 cut; symbols beside their bodies, not used: 1\n")) << err;
}

TEST_F(PlanTest, StairsHaveTreadsAnArrowAndABreakLine) {
    SZVLGZvgComp stair = MakeComp(L"stair");
    stair.classLevel2Name = L"IfcStairFlight";
    for (int i = 0; i < 10; ++i) {  // 0.2 m up each 0.25 m, 1 m wide
        CZVIMShell step = Box(0.2).shells[0];
        CZVIMTransf place = Moved(0.25 * i, 0, 0.2 * i);
        place.SetAt(0, 0, 0.125);
        step.TransformBy(place);
        stair.geoRefs[0].geo.shells.push_back(step);
    }
    saver.AddComp(stair);
    const std::string svg = Plan();  // at 1:10; the break line is 5 mm longer on both sides
    const std::string below = GroupOf(svg, "stair", "projection");
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(HasBox(below, 12 + 25 * i, 29, 25, 100)) << i << below;
    EXPECT_FALSE(HasBox(below, 12 + 25 * 7, 29, 25, 100));
    EXPECT_TRUE(Holds(below, "M24.5 79L")) << below;  // the way up begins in the first tread
    EXPECT_TRUE(Holds(GroupOf(svg, "stair", "overhead"), "ZM187 129L212 129L212 29L187 29Z"))
        << svg;
}

/// The width and height of all paths of a component, in millimetres.
std::pair<double, double> SizeOf(const std::string& group) {
    double low[2] = {1e9, 1e9}, high[2] = {-1e9, -1e9};
    for (std::size_t at = 0; (at = group.find_first_of("ML", at)) != std::string::npos; ++at) {
        double point[2];
        if (std::sscanf(group.c_str() + at + 1, "%lf %lf", &point[0], &point[1]) != 2) continue;
        for (int i = 0; i < 2; ++i) {
            low[i] = std::min(low[i], point[i]);
            high[i] = std::max(high[i], point[i]);
        }
    }
    return {high[0] - low[0], high[1] - low[1]};
}

TEST_F(PlanTest, TiltedAndStretchedCurvesAreDrawnAsTheyLookFromAbove) {
    CZVIMTransf stretched, upright, tilted, mirrored;
    stretched.SetAt(0, 0, 2);
    mirrored.SetAt(0, 0, -1);
    upright.SetAt(1, 1, 0), upright.SetAt(1, 2, -1), upright.SetAt(2, 1, 1), upright.SetAt(2, 2, 0);
    tilted.SetAt(1, 1, 0.5), tilted.SetAt(1, 2, -0.75), tilted.SetAt(2, 1, 0.75);
    SZVLGZvgGeo circle, arc, ring;
    circle.circles.emplace_back(CZVIMPosition(0, 0, 0), CZVIMVector(0, 0, 1), 1);
    arc.boundArcs.emplace_back(CZVIMPosition(0, 0, 0), CZVIMVector(0, 0, 1), CZVIMPosition(1, 0, 0),
                               3.14159265358979);
    CZVIMPolyline3D square;
    for (const auto& [x, y] : {std::pair(0.0, 0.0), {1.0, 0.0}, {1.0, 1.0}, {0.0, 1.0}}) {
        square.AddPoint({x, y, 0});
    }
    square.SetClosedFlag();
    ring.polylines = {square};
    ring.lineSegments.emplace_back(CZVIMPosition(0, 0, 0), CZVIMPosition(0, 2, 0));
    const struct {
        const wchar_t* name;
        const SZVLGZvgGeo& geo;
        const CZVIMTransf& place;
        double width, height;  // metres
    } cases[] = {{L"stretched", circle, stretched, 4, 2}, {L"upright", circle, upright, 2, 0},
                 {L"tilted", circle, tilted, 2, 1},       {L"arc", arc, tilted, 2, 0.5},
                 {L"wide", arc, stretched, 4, 1},         {L"ring", ring, tilted, 1, 1},
                 {L"mirrored", ring, mirrored, 1, 2}};
    for (const auto& each : cases) {
        SZVLGZvgComp comp = MakeComp(each.name);
        comp.classLevel2Name = L"IfcAnnotation";
        saver.AddIdentificationGeo(std::wstring(L"curves of ") + each.name, each.geo);
        comp.geoRefs[0].geo.namedTransfs = {{std::wstring(L"curves of ") + each.name, each.place}};
        saver.AddComp(comp);
    }
    Close();
    ASSERT_EQ(Run("$Z plan model.zvg --scale 10"), 0);
    for (const auto& each : cases) {
        const std::string name(each.name, each.name + std::wcslen(each.name));
        const auto [width, height] = SizeOf(GroupOf(out, name, "symbol"));
        EXPECT_NEAR(width, each.width * 100, 0.5) << name;
        EXPECT_NEAR(height, each.height * 100, 0.5) << name;
    }
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

/// The rounded square again, half as large and mapped at twice its size: a chain of which the
/// arc runs clockwise and is used against its sense.
constexpr const char* ifc = R"(ISO-10303-21;
HEADER;FILE_DESCRIPTION((''),'2;1');FILE_NAME('','',(''),(''),'','','');FILE_SCHEMA(('IFC4'));ENDSEC;
DATA;
#1=IFCPROJECT('0000000000000000000001',$,'P',$,$,$,$,(#5),#2);
#2=IFCUNITASSIGNMENT((#3,#4));
#3=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);
#4=IFCSIUNIT(*,.PLANEANGLEUNIT.,$,.RADIAN.);
#5=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Plan',3,1.E-5,#7,$);
#6=IFCCARTESIANPOINT((0.,0.,0.));
#7=IFCAXIS2PLACEMENT3D(#6,$,$);
#8=IFCLOCALPLACEMENT($,#7);
#10=IFCCARTESIANPOINT((0.,0.));
#11=IFCCARTESIANPOINT((1000.,0.));
#12=IFCCARTESIANPOINT((1000.,1000.));
#13=IFCCARTESIANPOINT((0.,1000.));
#14=IFCCARTESIANPOINT((1000.,500.));
#15=IFCAXIS2PLACEMENT2D(#14,$);
#16=IFCCIRCLE(#15,500.);
#17=IFCTRIMMEDCURVE(#16,(IFCPARAMETERVALUE(1.5707963267948966)),(IFCPARAMETERVALUE(-1.5707963267948966)),.F.,.PARAMETER.);
#18=IFCPOLYLINE((#12,#13,#10,#11));
#19=IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.T.,#18);
#20=IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.F.,#17);
#21=IFCCOMPOSITECURVE((#19,#20),.F.);
#22=IFCGEOMETRICCURVESET((#21));
#23=IFCSHAPEREPRESENTATION(#5,'FootPrint','GeometricCurveSet',(#22));
#24=IFCREPRESENTATIONMAP(#7,#23);
#25=IFCCARTESIANTRANSFORMATIONOPERATOR3D($,$,#6,2.,$);
#26=IFCMAPPEDITEM(#24,#25);
#27=IFCSHAPEREPRESENTATION(#5,'FootPrint','MappedRepresentation',(#26));
#28=IFCPRODUCTDEFINITIONSHAPE($,$,(#27));
#29=IFCBUILDINGELEMENTPROXY('0000000000000000000002',$,'Post',$,$,#8,#28,$,$);
ENDSEC;
END-ISO-10303-21;
)";

TEST_F(PlanTest, LinesOfMeshFilesAreKept) {
    ASSERT_EQ(Run("$Z --version"), 0);
    if (!Holds(out, "OBJ")) GTEST_SKIP() << "built without an importer for OBJ";
    std::ofstream(folder + "model.obj")  // Y is up
        << "v 0 5 0\nv 2 5 0\nv 2 5 -1\nv 0 5 -1\nl 1 2 3 4 1\n";
    ASSERT_EQ(Run("$Z pack model.obj -o packed.zvg"), 0) << err;
    ASSERT_EQ(Run("$Z plan packed.zvg"), 0) << err;
    const std::string svg = out;
    EXPECT_TRUE(Holds(svg, boxPaths[0]) || Holds(svg, boxPaths[1])) << svg;
}

TEST_F(PlanTest, FootPrintsOfImportedElementsKeepTheirArcs) {
    ASSERT_EQ(Run("$Z --version"), 0);
    if (!Holds(out, "IFC")) GTEST_SKIP() << "built without an importer for IFC";
    std::ofstream(folder + "model.ifc") << ifc;
    ASSERT_EQ(Run("$Z pack model.ifc -o packed.zvg"), 0) << err;
    ASSERT_EQ(Run("$Z plan packed.zvg"), 0) << err;
    EXPECT_TRUE(Holds(out, roundedSquarePath)) << out;
    EXPECT_TRUE(Holds(out, "<title>Post</title>"));
}

}  // namespace
