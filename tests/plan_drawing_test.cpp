// How what is cut and seen is drawn: curves, joined walls, symbols, rooms, axes and dimensions.

#include <algorithm>
#include <cmath>
#include <utility>

#include "plan_support.h"

using namespace plans;

namespace {

class PlanDrawingTest : public PlanTest {};

TEST_F(PlanDrawingTest, BulgesBecomeArcsAndMirrorsTurnThem) {
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

TEST_F(PlanDrawingTest, WallsThatTouchAreOutlinedAsOne) {
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

TEST_F(PlanDrawingTest, RoomsSayTheirAreasWithinTheirOutlines) {
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

TEST_F(PlanDrawingTest, DimensionsAndAxesRunAlongTheWalls) {
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

TEST_F(PlanDrawingTest, SymbolsAreUsedWhereTheyLieOnTheirBodies) {
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

TEST_F(PlanDrawingTest, StairsHaveTreadsAnArrowAndABreakLine) {
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

TEST_F(PlanDrawingTest, TiltedAndStretchedCurvesAreDrawnAsTheyLookFromAbove) {
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

TEST_F(PlanDrawingTest, LinesOfMeshFilesAreKept) {
    ASSERT_EQ(Run("$Z --version"), 0);
    if (!Holds(out, "OBJ")) GTEST_SKIP() << "built without an importer for OBJ";
    std::ofstream(folder + "model.obj")  // Y is up
        << "v 0 5 0\nv 2 5 0\nv 2 5 -1\nv 0 5 -1\nl 1 2 3 4 1\n";
    ASSERT_EQ(Run("$Z pack model.obj -o packed.zvg"), 0) << err;
    ASSERT_EQ(Run("$Z plan packed.zvg"), 0) << err;
    const std::string svg = out;
    EXPECT_TRUE(Holds(svg, boxPaths[0]) || Holds(svg, boxPaths[1])) << svg;
}

TEST_F(PlanDrawingTest, FootPrintsOfImportedElementsKeepTheirArcs) {
    ASSERT_EQ(Run("$Z --version"), 0);
    if (!Holds(out, "IFC")) GTEST_SKIP() << "built without an importer for IFC";
    std::ofstream(folder + "model.ifc") << ifc;
    ASSERT_EQ(Run("$Z pack model.ifc -o packed.zvg"), 0) << err;
    ASSERT_EQ(Run("$Z plan packed.zvg"), 0) << err;
    EXPECT_TRUE(Holds(out, roundedSquarePath)) << out;
    EXPECT_TRUE(Holds(out, "<title>Post</title>"));
}

}  // namespace
