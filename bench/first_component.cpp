// A process that gets one component, with its properties and its first geometry, and ends.
//   first_component zvg FILE.zvg        the component in the middle of the middle floor
//   first_component sqlite FILE.sqlite  the component in the middle; of the geometry only its
//                                       bytes, decoded
// Prints the number of properties and the geometry's size, so that no work is left out.

#include <cstdio>
#include <cstring>

#include "ZVSmartFormat/FileStream.h"
#include "ZVSmartZvg/BlockReader.h"
#include "bench/Database.h"
#include "bench/Payload.h"

using namespace bench;

namespace {

int FromBlockFile(const char* path) {
    ZVSmartFormat::CZVFTFileInStream in(path);
    ZVSmartZvg::CZVLGBlockReader reader;
    if (!in.Open() || !reader.Init(&in)) return 1;
    const u32 floor = reader.GetFloorNum() / 2;
    SZVLGZvgComp comp;
    SZVLGZvgGeo geo;
    if (!reader.GetCompByIndex({floor, reader.GetFloorCompNum(floor) / 2}, comp)) return 1;
    for (const auto& reference : comp.geoRefs)
        for (const auto& row : reference.geoIds)
            if (geo.IsEmpty()) reader.GetGeoByIdentification(GetGeoIdentification(row), geo);
    std::printf("%zu %d\n", comp.compProperties.size(), geo.IsEmpty() ? 0 : 1);
    return 0;
}

int FromDatabase(const char* path) {
    Database database(path, false);
    Statement count(database, "SELECT max(id) FROM component");
    count.Step();
    const sqlite3_int64 id = count.Integer(0) / 2;

    SZVLGZvgComp comp;
    Statement head(database,
                   "SELECT guid, body, level2, level3, level4, level2b, owner, name FROM component "
                   "JOIN class ON class.id = class JOIN floor ON floor.id = floor "
                   "WHERE component.id = ?");
    head.Bind(1, id).Step();
    comp.compGuidName.name = head.Text(0);
    comp.classLevel2Name = head.Text(2);
    comp.classLevel3Name = head.Text(3);
    comp.classLevel4Name = head.Text(4);
    comp.classLevel2bName = head.Text(5);
    comp.ownerGuidName.name = head.Text(6);
    comp.classLevel1Name = head.Text(7);

    Statement properties(database,
                         "SELECT name, value FROM property WHERE component = ? ORDER BY position");
    properties.Bind(1, id);
    while (properties.Step())
        comp.compProperties.emplace_back(properties.Text(0), properties.Text(1));

    Statement shape(database,
                    "SELECT body FROM reference JOIN geometry ON geometry.id = geometry "
                    "WHERE component = ? ORDER BY position LIMIT 1");
    shape.Bind(1, id);
    std::size_t bytes = 0;
    if (shape.Step()) {
        const View blob = shape.Blob(0);
        const bool isXz = blob.size() > 6 && std::memcmp(blob.data(),
                                                         "\xFD"
                                                         "7zXZ",
                                                         6) == 0;
        bytes = isXz ? Decoded(blob, DecodedSize(blob)).size() : blob.size();
    }
    std::printf("%zu %zu\n", comp.compProperties.size(), bytes);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    return std::strcmp(argv[1], "zvg") == 0 ? FromBlockFile(argv[2]) : FromDatabase(argv[2]);
}
