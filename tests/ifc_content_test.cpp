// What a model holds arrives: its rooms, its values with kind and unit, its relations, its names,
// and word of what does not. The models are written by hand, so every value is known.
#include <cmath>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "tool_support.h"

using namespace ZVSmartZvg;
using nlohmann::json;

namespace {

using Pairs = PropertyList;

struct Found {
    SZVLGZvgComp comp;
    SZVLGZvgGeo body;  ///< the shapes that it names, put together without their places
};

/// The component's properties of one set, with their companions, in their order.
Pairs OfSet(const SZVLGZvgComp& comp, const std::wstring& set) {
    Pairs pairs;
    for (const auto& pair : comp.compProperties) {
        if (pair.first.rfind(set + L'.', 0) == 0) pairs.push_back(pair);
    }
    return pairs;
}

class IfcContentTest : public ToolFixture {
  protected:
    void SetUp() override {
        ToolFixture::SetUp();
        if (Run("$Z --version") == 0 && out.find("IFC") == std::string::npos) {
            GTEST_SKIP() << "this build reads no IFC";
        }
    }

    /// Packs a model with the tool.
    int Pack(const std::string& model, const std::string& more = "") {
        return Run("$Z pack --force --no-preview -o m.zvg " + more + " " + model);
    }

    std::string Ours(const std::string& name) { return ZVG_TEST_MODELS "/" + name; }

    /// What was packed, by GlobalId.
    std::map<std::wstring, Found> Packed() {
        std::map<std::wstring, Found> all;
        ZVSmartFormat::CZVFTFileInStream stream(folder + "m.zvg");
        CZVLGBlockReader reader;
        if (!stream.Open() || !reader.Init(&stream)) return all;
        for (unsigned int floor = 0; floor < reader.GetFloorNum(); ++floor) {
            for (unsigned int i = 0; i < reader.GetFloorCompNum(floor); ++i) {
                Found found;
                reader.GetCompByIndex({floor, i}, found.comp);
                for (const auto& ref : found.comp.geoRefs) {
                    for (const auto& row : ref.geoIds) AddBody(reader, row, found.body);
                }
                all[found.comp.compGuidName.name] = found;
            }
        }
        return all;
    }

    json Report() { return json::parse(ReadAll(folder + "r.json"), nullptr, false); }

    /// How often a kind of finding was made, by the report.
    std::size_t Count(const std::string& kind) {
        std::size_t count = 0;
        const json report = Report();
        for (const json& finding : report["findings"]) {
            if (finding["kind"] == kind) count += finding["count"].get<std::size_t>();
        }
        return count;
    }

  private:
    static void AddBody(CZVLGBlockReader& reader, const SZVLGZvgGeoId& row, SZVLGZvgGeo& body) {
        SZVLGZvgGeo places;
        reader.GetGeoByIdentification(GetGeoIdentification(row), places);
        for (const auto& named : places.namedTransfs) {
            SZVLGZvgGeo shape;
            reader.GetGeoByIdentification(named.name, shape);
            for (const auto& shell : shape.shells) body.shells.push_back(shell);
            for (const auto& sub : shape.subGeos) body.subGeos.push_back(sub);
        }
    }
};

TEST_F(IfcContentTest, ValuesKeepKindAndUnit) {
    ASSERT_EQ(Pack(Ours("content.ifc")), 0) << err;
    const auto all = Packed();
    const std::pair<std::wstring, std::wstring> duct[] = {
        {L"Length", L"8.5"},
        {L"Length@", L"length ft"},
        {L"Length@", L"a note on the length"},
        {L"Wall", L"0.75"},
        {L"Wall@", L"length mm"},
        {L"Section", L"2.25"},
        {L"Section@", L"area ft2"},
        {L"Count", L"3"},
        {L"Count@", L"count"},
        {L"Number", L"-4"},
        {L"Number@", L"integer"},
        {L"Real", L"0.1"},
        {L"Real@", L"real"},
        {L"Outside", L"false"},
        {L"Outside@", L"boolean"},
        {L"Bend", L"45"},
        {L"Bend@", L"angle deg"},
        {L"Mass", L"12.5"},
        {L"Mass@", L"mass kg"},
        {L"Delay", L"60"},
        {L"Delay@", L"time s"},
        {L"Share", L"0.25"},
        {L"Share@", L"ratio"},
        {L"UValue", L"0.35"},
        {L"UValue@", L"thermalTransmittance W/m2K"},
        {L"Supply", L"16"},
        {L"Supply@", L"temperature degC"},
        {L"Cost", L"99.5"},
        {L"Cost@", L"money EUR"},
        {L"Nothing", L""},
        {L"Nothing@", L"empty"},
        {L"Blank", L""},
        {L"Blank@", L"text"},
        {L"Blank@", L"a note on a blank"},
        {L"Status", L"NEW, TEMPORARY"},
        {L"Status@", L"enumeration:text"},
        {L"Offsets", L"1, 2.5"},
        {L"Offsets@", L"list:length ft"},
        {L"Flow", L"3 .. 9"},
        {L"Flow@", L"range:real"},
        {L"Flow.SetPoint", L"5"},
        {L"Flow.SetPoint@", L"real"},
        {L"Curve", L"1 = 10, 2 = 20"},
        {L"Curve@", L"table:length=time ft = s"},
        {L"Made of", L"Brick"},
        {L"Made of@", L"entity:IfcMaterial"},
        {L"Made of@", L"a note on the material"},
        {L"Fan.Number", L"-4"},
        {L"Fan.Number@", L"integer"},
    };
    Pairs expected;
    for (const auto& [name, value] : duct) expected.emplace_back(L"Duct." + name, value);
    EXPECT_EQ(OfSet(all.at(L"1duct00000000000000000").comp, L"Duct"), expected);
    EXPECT_EQ(OfSet(all.at(L"1room00000000000000000").comp, L"Qto_SpaceBaseQuantities"),
              (Pairs{{L"Qto_SpaceBaseQuantities.NetFloorArea", L"200"},
                     {L"Qto_SpaceBaseQuantities.NetFloorArea@", L"area ft2"},
                     {L"Qto_SpaceBaseQuantities.GrossVolume", L"1600"},
                     {L"Qto_SpaceBaseQuantities.GrossVolume@", L"volume ft3"},
                     {L"Qto_SpaceBaseQuantities.Height", L"2438.4"},
                     {L"Qto_SpaceBaseQuantities.Height@", L"length mm"},
                     {L"Qto_SpaceBaseQuantities.Doors", L"1"},
                     {L"Qto_SpaceBaseQuantities.Doors@", L"count"}}));
    EXPECT_EQ(all.at(L"1wall0000000000000000a").comp.geoRefs[0].materials.at(0).properties,
              (Pairs{{L"LayerThickness", L"0.3048"},
                     {L"LayerThickness@", L"length m"},
                     {L"Pset_MaterialCommon.MassDensity", L"1800"},
                     {L"Pset_MaterialCommon.MassDensity@", L"massDensity kg/m3"}}));
}

TEST_F(IfcContentTest, RoomsSpatialStructureAndRelationsArrive) {
    ASSERT_EQ(Pack(Ours("content.ifc"), "--report r.json --strict"), 0) << err;
    EXPECT_EQ(Report()["complete"], true);
    const auto all = Packed();
    const struct {
        const wchar_t* id;
        const wchar_t* className;
        const wchar_t* floor;
        Pairs holds;
    } cases[] = {
        {L"1project00000000000000",
         L"IfcProject",
         L"unassigned",
         {{L"Element.LongName", L"Everything once"},
          {L"Element.Phase", L"Design"},
          {L"Project.TrueNorth", L"0.6, 0.8"},
          {L"Project.TrueNorth@", L"list:real"},
          {L"MapConversion.Eastings", L"500000"},
          {L"MapConversion.Eastings@", L"length ft"},
          {L"ProjectedCRS.Name", L"EPSG:25832"},
          {L"Units.LENGTHUNIT", L"ft"},
          {L"Units.VOLUMEUNIT", L"ft3"},
          {L"Units.MASSDENSITYUNIT", L"kg/m3"}}},
        {L"1site00000000000000000",
         L"IfcSite",
         L"unassigned",
         {{L"Element.RefLatitude", L"41, 52, 27, 840000"},
          {L"Element.RefLatitude@", L"angle deg, min, sec, usec"},
          {L"Site.Latitude", L"41.8744"},
          {L"Site.Latitude@", L"angle deg"},
          {L"Site.Longitude", L"-87.6394"},
          {L"Element.RefElevation", L"590"},
          {L"Element.RefElevation@", L"length ft"},
          {L"Element.LandTitleNumber", L"LT-7"},
          {L"Address.AddressLines", L"12 Long Lane, Yard 3"},
          {L"Address.Town", L"Chicago"}}},
        {L"1building0000000000000",
         L"IfcBuilding",
         L"unassigned",
         {{L"Pset_BuildingCommon.YearOfConstruction", L"1931"},
          {L"Element.ElevationOfRefHeight", L"590.5"}}},
        {L"1storey000000000000000",
         L"IfcBuildingStorey",
         L"Ground floor",
         {{L"Element.LongName", L"EG"},
          {L"Pset_BuildingStoreyCommon.AboveGround", L"unknown"},
          {L"Pset_BuildingStoreyCommon.AboveGround@", L"logical"}}},
        {L"1room00000000000000000",
         L"IfcSpace",
         L"Ground floor",
         {{L"Element.Name", L"A101"},
          {L"Element.LongName", L"Foyer"},
          {L"Element.Description", L"Where one enters"},
          {L"Zone.Name", L"Z1"},
          {L"Zone.GlobalId", L"1zone00000000000000000"},
          {L"Zone.GlobalId@", L"reference"},
          {L"SpaceBoundary.PhysicalExternal", L"1wall0000000000000000a"}}},
        {L"1zone00000000000000000",
         L"IfcZone",
         L"unassigned",
         {{L"Pset_ZoneCommon.FireClass", L"A"}, {L"Element.ObjectType", L"Fire"}}},
        {L"1wall0000000000000000a",
         L"IfcWall",
         L"Ground floor",
         {{L"SpaceBoundary.PhysicalExternal", L"1room00000000000000000"},
          {L"Connection.AtEnd", L"1wall0000000000000000b"},
          {L"Layer.Name", L"A-WALL"},
          {L"Group.Name", L"Phase 1"},
          {L"Classification.Uniclass.Code", L"EF_25_10"},
          {L"Classification.Uniclass.Name", L"Walls"}}},
        {L"1wall0000000000000000b",
         L"IfcWall",
         L"Ground floor",
         {{L"Connection.AtStart", L"1wall0000000000000000a"}, {L"Element.Description", L""}}},
        {L"1door00000000000000000",
         L"IfcDoor",
         L"Ground floor",
         {{L"Element.OverallHeight", L"7"},
          {L"Element.OverallHeight@", L"length ft"},
          {L"Element.OverallWidth", L"3"},
          {L"Element.OperationType", L"SINGLE_SWING_LEFT"},
          {L"Type.GlobalId", L"1doortype0000000000000"},
          {L"Type.Class", L"IfcDoorType"},
          {L"Type.OperationType", L"SINGLE_SWING_LEFT"},
          {L"IfcDoorLiningProperties.LiningDepth", L"0.5"},
          {L"IfcDoorLiningProperties.LiningDepth@", L"length ft"},
          {L"IfcDoorPanelProperties.PanelOperation", L"SWINGING"},
          {L"IfcDoorPanelProperties.PanelWidth", L"0.9"},
          {L"IfcDoorPanelProperties.PanelWidth@", L"ratio"}}},
        {L"1duct00000000000000000",
         L"IfcDuctSegment",
         L"Ground floor",
         {{L"System.Name", L"Supply air"}}},
        {L"1port00000000000000000",
         L"IfcDistributionPort",
         L"Ground floor",
         {{L"Port.ConnectedTo", L"1port00000000000000001"},
          {L"Element.FlowDirection", L"SOURCE"},
          {L"Element.SystemType", L"VENTILATION"}}},
    };
    for (const auto& each : cases) {
        ASSERT_EQ(all.count(each.id), 1U) << each.id;
        const SZVLGZvgComp& comp = all.at(each.id).comp;
        EXPECT_EQ(comp.classLevel2Name, each.className);
        EXPECT_EQ(comp.classLevel1Name, each.floor) << each.id;
        const std::set<std::pair<std::wstring, std::wstring>> pairs(comp.compProperties.begin(),
                                                                    comp.compProperties.end());
        for (const auto& pair : each.holds) {
            EXPECT_EQ(pairs.count(pair), 1U) << each.id << ' ' << pair.first << ' ' << pair.second;
        }
    }
    EXPECT_EQ(all.at(L"1room00000000000000000").comp.groupGuidName.name, L"1zone00000000000000000");
    EXPECT_TRUE(all.at(L"1room00000000000000000").comp.relatedGuidNames.empty());
    ASSERT_EQ(all.at(L"1port00000000000000000").comp.relatedGuidNames.size(), 1U);
    EXPECT_EQ(all.at(L"1port00000000000000000").comp.relatedGuidNames[0].name,
              L"1duct00000000000000000");
}

TEST_F(IfcContentTest, RoomsHaveBodiesAndGridsCurves) {
    ASSERT_EQ(Pack(Ours("content.ifc")), 0) << err;
    const auto all = Packed();
    double farthest[3] = {0, 0, 0};
    for (const auto& shell : all.at(L"1room00000000000000000").body.shells) {
        for (const auto& point : shell.GetPoints()) {
            farthest[0] = std::max(farthest[0], point.GetX());
            farthest[1] = std::max(farthest[1], point.GetY());
            farthest[2] = std::max(farthest[2], point.GetZ());
        }
    }
    EXPECT_NEAR(farthest[0], 3.048, 1e-6);
    EXPECT_NEAR(farthest[1], 6.096, 1e-6);
    EXPECT_NEAR(farthest[2], 2.4384, 1e-6);
    const SZVLGZvgGeo& grid = all.at(L"1grid00000000000000000").body;
    ASSERT_EQ(grid.subGeos.size(), 2U);
    EXPECT_EQ(grid.subGeos[1].attr.styleName, L"GridAxis 1");
    ASSERT_EQ(grid.subGeos[1].geo.lineSegments.size(), 1U);
    EXPECT_NEAR(grid.subGeos[1].geo.lineSegments[0].getEndpt().GetX(), 6.096, 1e-6);
}

TEST_F(IfcContentTest, RoomsHideNothing) {
    ASSERT_EQ(Pack(Ours("content.ifc")), 0) << err;
    const std::string room = "1room00000000000000000";
    ASSERT_EQ(Run("$Z plan m.zvg"), 0) << err;
    const std::size_t roomAt = out.find(room);
    EXPECT_LT(roomAt, out.find("1wall0000000000000000a"));
    EXPECT_EQ(out.find("unassigned"), std::string::npos);
    const struct {
        const char* options;
        bool shown;
    } cases[] = {{"", false}, {"--rooms", true}, {"--class IfcSpace", true}};
    for (const auto& [options, shown] : cases) {
        ASSERT_EQ(Run(std::string("$Z export --force -o m.glb ") + options + " m.zvg"), 0) << err;
        std::size_t nodes = 0;
        const json gltf = JsonOfGlb(ReadAll(folder + "m.glb"));
        for (const json& node : gltf["nodes"]) {
            nodes += node.value("extras", json::object()).value("globalId", "") == room;
        }
        EXPECT_EQ(nodes, shown ? 1U : 0U) << options;
    }
    if (Run("$Z preview m.zvg -o a.png --render 64x64") != 0) return;  // no renderer
    ASSERT_EQ(Run("$Z preview m.zvg -o b.png --render 64x64 --rooms"), 0) << err;
    EXPECT_NE(ReadAll(folder + "a.png"), ReadAll(folder + "b.png"));
}

TEST_F(IfcContentTest, LaterEntitiesComeUnderTheirNames) {
    ASSERT_EQ(Pack(Ours("road.ifc"), "--report r.json"), 0) << err;
    auto all = Packed();
    const SZVLGZvgComp& pavement = all.at(L"2pavement0000000000000").comp;
    EXPECT_EQ(pavement.classLevel2Name, L"IfcPavement");
    EXPECT_EQ(pavement.classLevel2bName, L"FLEXIBLE");
    EXPECT_EQ(pavement.classLevel3Name, L"Asphalt 12 cm");
    EXPECT_EQ(pavement.classLevel1Name, L"Carriageway");
    EXPECT_EQ(pavement.ownerTextA, L"B 1");
    EXPECT_EQ(all.at(L"2pavement0000000000000").body.shells.size(), 1U);
    EXPECT_EQ(all.at(L"2road00000000000000000").comp.classLevel2Name, L"IfcRoad");
    EXPECT_EQ(all.at(L"2part00000000000000000").comp.classLevel2Name, L"IfcRoadPart");
    EXPECT_EQ(all.at(L"2kerb00000000000000000").comp.classLevel2Name, L"IfcKerb");
    // The alignment is what no stand-in can be found for, so it is told of by name.
    EXPECT_EQ(Count("unknownEntity"), 1U);
    EXPECT_NE(err.find("IFCALIGNMENT"), std::string::npos) << err;
    EXPECT_NE(err.find("2align0000000000000000"), std::string::npos) << err;
}

/// The model with a part of its text changed.
std::string Changed(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

TEST_F(IfcContentTest, DamagedLinesCostThemselvesOnly) {
    const std::string good = ReadAll(Ours("content.ifc"));
    const struct {
        const char* from;
        const char* to;
        const wchar_t* lost;  ///< the one component that goes; or none
        std::size_t damaged;
    } cases[] = {
        {"'W-2',$);", "'W-2',$)", nullptr, 0},                        // the end of a line
        {"'West wall'", "'West wall", L"1wall0000000000000000b", 1},  // of a string
        {"'W-2',$);", "'W-2',$;", L"1wall0000000000000000b", 1},      // of the arguments
        {"#108=IFCWALL(", "#108=(", L"1wall0000000000000000b", 1},
        {"#108=IFCWALL(", "\x01\x02garbage(", L"1wall0000000000000000b", 1},
    };
    ASSERT_EQ(Pack(Ours("content.ifc")), 0);
    const std::size_t whole = Packed().size();
    for (const auto& each : cases) {
        std::ofstream(folder + "d.ifc", std::ios::binary) << Changed(good, each.from, each.to);
        ASSERT_EQ(Pack("d.ifc", "--report r.json"), 0) << each.to << err;
        const auto all = Packed();
        EXPECT_EQ(all.size(), each.lost ? whole - 1 : whole) << each.to;
        EXPECT_EQ(all.count(each.lost ? each.lost : L""), 0U) << each.to;
        EXPECT_EQ(Count("damagedLine"), each.damaged) << each.to << Report().dump();
        std::filesystem::remove(folder + "m.zvg");
        EXPECT_EQ(Pack("d.ifc", "--report r.json --strict"), each.lost ? 4 : 0) << each.to << err;
        EXPECT_EQ(std::filesystem::exists(folder + "m.zvg"), each.lost == nullptr) << each.to;
    }
}

TEST_F(IfcContentTest, TheReportCountsAndNames) {
    std::string text = ReadAll(Ours("content.ifc"));
    text = Changed(text, "'Where one enters'", "'\\S\\) \\S\\d'");  // © ä
    text = Changed(text, "IFCZONE(", "IFCZOO(");
    text = Changed(text, "'Wall',$,IFCLENGTH", "'Length',$,IFCLENGTH");
    text = Changed(text, "#103=IFCEXTRUDEDAREASOLID(#102", "#103=IFCEXTRUDEDAREASOLID(#9999");
    std::ofstream(folder + "d.ifc", std::ios::binary) << text;
    ASSERT_EQ(Pack("d.ifc", "--report r.json"), 0) << err;
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 2) << err;
    EXPECT_EQ(OfSet(Packed().at(L"1room00000000000000000").comp, L"Element")[1].second,
              L"\u00A9 \u00E4");
    const json report = Report();
    EXPECT_EQ(report["schema"], 1);
    EXPECT_EQ(report["complete"], false);
    EXPECT_EQ(Count("unknownEntity"), 1U);
    EXPECT_EQ(Count("valueDropped"), 1U);
    EXPECT_EQ(Count("noBody"), 1U) << report.dump();
    for (const json& finding : report["findings"]) {
        const std::map<std::string, std::string> places = {
            {"unknownEntity", "1zone00000000000000000"},
            {"valueDropped", "1duct00000000000000000"},
            {"noBody", "1wall0000000000000000a"}};
        const auto place = places.find(finding["kind"]);
        if (place == places.end()) continue;
        EXPECT_EQ(finding["where"], json::array({place->second}));
    }
    for (const json& type : report["types"]) {
        if (type["type"] != "IfcWall") continue;
        EXPECT_EQ(type,
                  json({{"type", "IfcWall"}, {"inModel", 2}, {"arrived", 2}, {"withBody", 0}}));
    }
}

TEST_F(IfcContentTest, ZippedModels) {
    if (Run("python3 -c 'import zipfile'") != 0) GTEST_SKIP() << "python3 is missing";
    const std::string zip = "python3 -m zipfile -c ";
    ASSERT_EQ(Run("cp " + Ours("content.ifc") + " a.ifc; cp a.ifc b.ifc; " + zip +
                  "one.ifczip a.ifc; " + zip + "two.ifczip a.ifc b.ifc; " + zip +
                  "none.ifczip stdout; head -c 2000 one.ifczip > cut.ifczip"),
              0);
    ASSERT_EQ(Pack("a.ifc"), 0) << err;
    const auto plain = Packed();
    ASSERT_EQ(Pack("one.ifczip"), 0) << err;
    EXPECT_EQ(Packed().size(), plain.size());
    // The size that the archive tells, in both of its tables, is less and more than there is.
    const std::string archive = ReadAll(folder + "one.ifczip");
    const std::size_t directory = archive.find("PK\x01\x02");
    ASSERT_NE(directory, std::string::npos);
    for (const char* size : {"\x10\x01\x00\x00", "\xF0\xFF\xFF\xFF"}) {
        std::string lying = archive;
        lying.replace(22, 4, size, 4).replace(directory + 24, 4, size, 4);
        std::ofstream(folder + (size[0] == 0x10 ? "less" : "more") + ".ifczip", std::ios::binary)
            << lying;
    }
    for (const auto& [bad, status] :
         {std::pair{"two", 3}, {"none", 3}, {"cut", 4}, {"less", 4}, {"more", 4}}) {
        EXPECT_EQ(Pack(std::string(bad) + ".ifczip"), status) << bad;
        EXPECT_NE(err.find("archive"), std::string::npos) << err;
    }
}

TEST_F(IfcContentTest, ForeignPairsAreReadAsTheyStand) {
    SZVLGZvgComp comp;
    comp.compGuidName = SerialKey(L"a");
    comp.compProperties = {
        {L"A", L"1"}, {L"A@", L"length ft"}, {L"A@", L"x"}, {L"A@@", L"y"}, {L"B@", L"2"},
        {L"B", L"3"}, {L"@", L"4"},          {L"", L"5"},   {L"@", L""},    {L"C", L""}};
    WriteBlock(folder + "f.zvg", [&](CZVLGBlockSaver& saver) { saver.AddComp(comp); });
    ASSERT_EQ(Run("$Z show --json f.zvg 0:0"), 0) << err;
    EXPECT_EQ(json::parse(out)["compProperties"],
              json::parse(R"([{"name":"A","value":"1","kind":"length","unit":"ft"},
                              {"name":"A@","value":"x","kind":"y"},
                              {"name":"B@","value":"2"}, {"name":"B","value":"3"},
                              {"name":"@","value":"4"}, {"name":"","value":"5","kind":""},
                              {"name":"C","value":""}])"));
    ASSERT_EQ(Run("$Z show --properties f.zvg 0:0"), 0) << err;
    EXPECT_EQ(out.substr(0, out.find('\n')), "A\t1 ft");
    ASSERT_EQ(Run("$Z list f.zvg"), 0) << err;
    EXPECT_NE(out.find("\ta\t7\t"), std::string::npos) << out;
    comp.compProperties[1].second = L"length m";
    WriteBlock(folder + "g.zvg", [&](CZVLGBlockSaver& saver) { saver.AddComp(comp); });
    Run("$Z diff f.zvg g.zvg");
    EXPECT_NE(out.find("property A: '1 ft' -> '1 m'"), std::string::npos) << out;
}

}  // namespace
