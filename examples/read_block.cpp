// Lists the components of a block file with the points of their shapes.
//
//     read_block house.zvg

#include <clocale>
#include <cstddef>
#include <cstdio>
#include <exception>

#include "ZVSmartFormat/FileStream.h"
#include "ZVSmartZvg/ZVSmartZvg.h"

using namespace ZVSmartZvg;

namespace {

/// The points of the geometry that a row leads to, in its own shells and in the geometries that
/// it places.
std::size_t CountPoints(CZVLGBlockReader& reader, const SZVLGZvgGeoId& row) {
    SZVLGZvgGeo geo;
    if (!reader.GetGeoByIdentification(GetGeoIdentification(row), geo)) return 0;
    std::size_t points = 0;
    for (const CZVIMShell& shell : geo.shells) points += shell.GetPoints().size();
    for (const SZVLGZvgGeoNamedTransf& part : geo.namedTransfs) {
        SZVLGZvgGeo shape;
        if (!reader.GetGeoByIdentification(part.name, shape)) continue;
        for (const CZVIMShell& shell : shape.shells) points += shell.GetPoints().size();
    }
    return points;
}

void List(CZVLGBlockReader& reader) {
    SZVLGZvgComp comp;  // one for all: the reader uses its memory again
    for (unsigned int floor = 0; floor < reader.GetFloorNum(); ++floor) {
        std::printf("%ls\n", reader.GetFloorNameByIndex(floor).c_str());
        for (unsigned int i = 0; i < reader.GetFloorCompNum(floor); ++i) {
            if (!reader.GetCompByIndex({floor, i}, comp)) continue;
            std::size_t points = 0;
            for (const SZVLGZvgCompGeoRef& part : comp.geoRefs)
                for (const SZVLGZvgGeoId& row : part.geoIds) points += CountPoints(reader, row);
            std::printf("  %ls (%ls): %zu points\n", comp.compGuidName.name.c_str(),
                        comp.classLevel2Name.c_str(), points);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_ALL, "");  // for the texts that are printed
    if (argc != 2) return std::fputs("usage: read_block FILE\n", stderr), 2;
    ZVSmartFormat::CZVFTFileInStream in(argv[1]);
    if (!in.Open()) return std::perror(argv[1]), 1;
    try {
        CZVLGBlockReader reader;
        if (!reader.Init(&in)) return std::fprintf(stderr, "%s: damaged\n", argv[1]), 1;
        List(reader);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", argv[1], failure.what());
        return 1;
    }
    return 0;
}
