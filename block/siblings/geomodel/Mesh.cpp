// Serial form of a mesh: u32 row, u32 column, u32 n, n positions, row after row.

#include "ZVIM/Mesh.h"

#include <climits>
#include <cstddef>
#include <utility>

#include "siblings/geomodel/Bulk.h"

namespace ZVIM::GeometryModelResource {

namespace {

bool IsFullGrid(const CZVIMMesh& mesh) {
    if (mesh.GetRow() < 0 || mesh.GetColumn() < 0) return false;
    return u64(mesh.GetRow()) * u64(mesh.GetColumn()) == mesh.GetPoints().size();
}

}  // namespace

bool CZVIMMesh::AddColPts(const std::vector<CZVIMPosition>& columnPoints) {
    if (columnPoints.empty() || columnPoints.size() > INT_MAX) return false;
    const int columnSize = static_cast<int>(columnPoints.size());
    if (points.empty()) {
        if (row != 0 && row != columnSize) return false;
        points = columnPoints;
        row = columnSize;
        column = 1;
        return true;
    }
    if (row != columnSize || column == INT_MAX || !IsFullGrid(*this)) return false;

    std::vector<CZVIMPosition> wider;
    wider.reserve(points.size() + columnPoints.size());
    auto rowBegin = points.begin();
    for (const CZVIMPosition& point : columnPoints) {
        wider.insert(wider.end(), rowBegin, rowBegin + column);
        wider.push_back(point);
        rowBegin += column;
    }
    points = std::move(wider);
    ++column;
    return true;
}

void CZVIMMesh::WriteSerial(CZVFTSerialWriter* writer, unsigned int) const {
    writer->WriteU32(static_cast<u32>(row));
    writer->WriteU32(static_cast<u32>(column));
    WritePositions(writer, points);
}

void CZVIMMesh::ReadSerial(CZVFTSerialReader* reader, unsigned int) {
    row = static_cast<int>(reader->ReadU32());
    column = static_cast<int>(reader->ReadU32());
    ReadPositions(reader, points);
}

CZVIMShell MeshToShell(const CZVIMMesh& mesh) {
    CZVIMShell shell;
    if (!IsFullGrid(mesh) || mesh.GetPoints().size() > INT_MAX) return shell;
    shell.AddPts(mesh.GetPoints());
    const int column = mesh.GetColumn();
    if (column < 2) return shell;  // rows without points may be announced by the billion
    std::vector<int> quad(4);
    for (int r = 0; r + 1 < mesh.GetRow(); ++r) {
        for (int c = 0; c + 1 < column; ++c) {
            const int first = r * column + c;
            quad = {first, first + 1, first + column + 1, first + column};
            shell.AddFaceIndex(quad);
        }
    }
    return shell;
}

}  // namespace ZVIM::GeometryModelResource
