// Serial form of a shell:
//
//   u32 n, n positions
//   u32 m, m × u32     for each face its vertex count, then its point indices

#include "ZVIM/Shell.h"

#include "siblings/geomodel/Bulk.h"

namespace ZVIM::GeometryModelResource {

void CZVIMShell::AddPts(const std::vector<CZVIMPosition>& morePoints) {
    points.insert(points.end(), morePoints.begin(), morePoints.end());
}

void CZVIMShell::AddFaceIndex(const std::vector<int>& face) {
    facesIndex.push_back(static_cast<int>(face.size()));
    facesIndex.insert(facesIndex.end(), face.begin(), face.end());
}

CZVIMShell& CZVIMShell::TransformBy(const CZVIMTransf& transf) {
    for (CZVIMPosition& point : points) point.TransformBy(transf);
    return *this;
}

void CZVIMShell::WriteSerial(CZVFTSerialWriter* writer, unsigned int) const {
    WritePositions(writer, points);
    WriteNumberList(writer, facesIndex);
}

void CZVIMShell::ReadSerial(CZVFTSerialReader* reader, unsigned int) {
    ReadPositions(reader, points);
    ReadNumberList(reader, facesIndex);
}

}  // namespace ZVIM::GeometryModelResource
