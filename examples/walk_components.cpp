// Walks a packed model: every component, the shapes it names and where they are placed. Shows
// how a host reports progress and lets the user cancel: both stand around the call per component.

#include <cstdio>
#include <exception>
#include <map>
#include <string>

#include "ZVSmartZvg/ZVSmartZvg.h"

using namespace ZVSmartZvg;

namespace {

class Walk {
  public:
    explicit Walk(CZVLGBlockReader& reader) : reader(reader) {}

    void Visit(const SZVLGZvgComp& comp) {
        ++components;
        for (const SZVLGZvgCompGeoRef& body : comp.geoRefs)
            for (const SZVLGZvgGeoId& row : body.geoIds) VisitBody(GetGeoIdentification(row));
    }
    void Print() const {
        std::printf("%zu components, %zu placements of %zu shapes, %zu points stored\n", components,
                    placements, pointsOfShape.size(), points);
    }

  private:
    void VisitBody(const std::wstring& identification) {
        SZVLGZvgGeo body;
        if (!reader.GetGeoByIdentification(identification, body)) return;
        for (const SZVLGZvgGeoNamedTransf& placed : body.namedTransfs) {
            ++placements;  // a host would draw shape `placed.name` at `placed.transf`
            if (pointsOfShape.count(placed.name) == 0) LoadShape(placed.name);
        }
    }
    void LoadShape(const std::wstring& name) {
        SZVLGZvgGeo shape;
        if (!reader.GetGeoByIdentification(name, shape)) return;
        for (const CZVIMShell& shell : shape.shells)
            pointsOfShape[name] += shell.GetPoints().size();
        points += pointsOfShape[name];
    }

    CZVLGBlockReader& reader;
    std::map<std::wstring, std::size_t> pointsOfShape;
    std::size_t components = 0, placements = 0, points = 0;
};

bool UserCancelled(unsigned int floor, unsigned int floorCount) {
    std::fprintf(stderr, "floor %u of %u\n", floor + 1, floorCount);
    return false;
}

}  // namespace

int main(int argc, char** argv) try {
    ZVSmartFormat::CZVFTFileInStream in(argc == 2 ? argv[1] : "");
    CZVLGBlockReader reader;
    if (!in.Open() || !reader.Init(&in)) return std::fputs("walk_components FILE\n", stderr), 1;
    Walk walk(reader);
    SZVLGZvgComp comp;  // one for all: the reader uses its memory again
    for (unsigned int floor = 0; floor < reader.GetFloorNum(); ++floor) {
        if (UserCancelled(floor, reader.GetFloorNum())) return 2;
        for (unsigned int i = 0; i < reader.GetFloorCompNum(floor); ++i) {
            if (reader.GetCompByIndex({floor, i}, comp)) walk.Visit(comp);
        }
    }
    walk.Print();
    return 0;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "walk_components: %s\n", failure.what());
    return 1;
}
