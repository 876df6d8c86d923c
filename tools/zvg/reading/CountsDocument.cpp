#include "tools/zvg/reading/CountsDocument.h"

namespace ZVSmartModel::Tool {

Document CountsDocument(OpenedBlock& block) {
    ZVSmartZvg::CZVLGBlockReader& reader = block.Reader();
    const FileWalk walk(block, FileWalk::Through::Bodies);
    const unsigned int floors = reader.GetFloorNum();
    const unsigned int geoBlocks = reader.GetGeoBlockNum();
    unsigned long long components = 0;
    for (unsigned int floor = 0; floor < floors; ++floor) components += block.FloorCompNum(floor);
    unsigned long long geometries = 0;
    for (unsigned int i = 0; i < geoBlocks; ++i) geometries += block.GeoNumInBlock(i);
    return {{"floors", floors},
            {"components", components},
            {"geometryBlocks", geoBlocks},
            {"geometries", geometries},
            {"identifications", reader.GetGeoIdentificationNum()}};
}

}  // namespace ZVSmartModel::Tool
