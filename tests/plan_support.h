// Models of a few components, and what their plans hold.

#pragma once

#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

#include "tool_support.h"

namespace plans {

using namespace ZVSmartZvg;

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

inline SZVLGZvgComp MakeComp(const std::wstring& name, double elevation = 0) {
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
inline SZVLGZvgGeo RoundedSquare() {
    SZVLGZvgGeo geo;
    geo.lineSegments = {{{0, 0, 5}, {2, 0, 5}}, {{2, 2, 5}, {0, 2, 5}}, {{0, 2, 5}, {0, 0, 5}}};
    geo.boundArcs.emplace_back(CZVIMPosition(2, 1, 5), CZVIMVector(0, 0, 1), CZVIMPosition(2, 0, 5),
                               3.14159265358979);
    return geo;
}

/// 2 m × 1 m, `height` high, in triangles.
inline SZVLGZvgGeo Box(double height) {
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

inline CZVIMTransf Moved(double x, double y, double z) {
    CZVIMTransf transf;
    transf.SetAt(0, 3, x);
    transf.SetAt(1, 3, y);
    transf.SetAt(2, 3, z);
    return transf;
}

inline bool Holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

inline int Count(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++count;
    return count;
}

/// Drawn at 1:10 from the corner at (12, 24): 100 mm make a metre.
inline constexpr const char* roundedSquarePath = "\"M12 224L212 224A100 100 0 0 0 212 24L12 24Z\"";
inline constexpr const char* boxPaths[] = {"\"M12 124L212 124L212 24L12 24Z\"",
                                           "\"M12 124L12 24L212 24L212 124Z\""};

/// Whether a path of the document is this rectangle, from its lower left corner either way round.
inline bool HasBox(const std::string& svg, double left, double top, double width, double height) {
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

/// A component whose body is a box of 2 m by 1 m, moved.
inline SZVLGZvgComp BoxComp(CZVLGBlockSaver& saver, const std::wstring& name,
                            const wchar_t* className, double height, const CZVIMTransf& place) {
    SZVLGZvgComp comp = MakeComp(name);
    comp.classLevel2Name = className;
    saver.AddIdentificationGeo(L"box of " + name, Box(height));
    comp.geoRefs[0].geo.namedTransfs = {{L"box of " + name, place}};
    return comp;
}

/// The group of a component, from its title on; "drawn" is how it must be drawn.
inline std::string GroupOf(const std::string& svg, const std::string& name,
                           const std::string& drawn) {
    const std::size_t at = svg.find("data-guid=\"" + name + "\" data-drawn=\"" + drawn + '"');
    return at == std::string::npos ? "" : svg.substr(at, svg.find("</g>", at) - at);
}

}  // namespace plans
