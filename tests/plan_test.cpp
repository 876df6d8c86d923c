#include <optional>
#include <set>
#include <sstream>
#include <vector>

#include "tool_support.h"

using namespace ZVSmartZvg;

namespace {

class PlanTest : public ToolFixture {
  protected:
    void SetUp() override {
        ToolFixture::SetUp();
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
    low.geoRefs[0].geo = Box(11);  // ends 0.2 m below the cut
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
              "zvg: Ground: 6 cut (2 from other floors); left out: 1 below without outlines, "
              "1 above, 1 without a shape\n"
              "zvg: Upper: 4 cut (3 from other floors); left out: 1 below without outlines\n"
              "zvg: unassigned: 1 cut\n");
    ASSERT_EQ(Run("$Z plan model.zvg --floor Upper --cut 1.05 -o upper.svg"), 0);
    EXPECT_TRUE(Holds(err, "upper.svg: 5 components on 1 floor, 1:10\n")) << err;
    EXPECT_EQ(Sections(ReadAll(folder + "upper.svg"), "short"), 1);
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
