#pragma once

#include <vector>

#include "ZVIM/Position.h"
#include "ZVIM/Shell.h"
#include "ZVSmartFormat/Api.h"
#include "ZVSmartSerial/Serial.h"

namespace ZVIM::GeometryModelResource {

using GeometryPrimitiveResource::CZVIMPosition;

/// A grid of points, row after row. The size is announced by SetRow and SetColumn and filled by
/// AddPt, or grows by AddColPts; nothing keeps the size and the points in step otherwise.
class ZVFT_API CZVIMMesh {
  public:
    /// The number of rows or columns that the grid is to have; points stay as they are.
    /// @{
    void SetRow(int count) { row = count; }
    void SetColumn(int count) { column = count; }
    /// @}
    /// The number of rows or columns as it was set, grown or read; 0 in a new mesh.
    /// @{
    int GetRow() const { return row; }
    int GetColumn() const { return column; }
    /// @}

    /// Appends a point in row-major order.
    void AddPt(const CZVIMPosition& point) { points.push_back(point); }
    /// Appends a column at the right of the grid, a point to each row, and counts it. The first
    /// column of a mesh without points becomes column one and, where no row count is set, sets
    /// it. False, with the mesh unchanged, where the column is empty or has another number of
    /// points than there are rows, or where the points so far are no full grid. Takes time
    /// proportional to the whole grid.
    bool AddColPts(const std::vector<CZVIMPosition>& columnPoints);
    /// Row-major.
    const std::vector<CZVIMPosition>& GetPoints() const { return points; }

    /// u32 row, u32 column, u32 count, positions. Every version is written as version 1.
    void WriteSerial(ZVSmartSerial::CZVFTSerialWriter* writer, unsigned int version) const;
    /// The mirror of WriteSerial; every version reads as version 1. The size is taken as it stands
    /// (above 2^31 - 1 it reads as negative). A count that cannot fit the bytes left throws
    /// CZVFTStreamException "seek over buffer size" before anything is sized; the mesh is then
    /// partly read and usable.
    void ReadSerial(ZVSmartSerial::CZVFTSerialReader* reader, unsigned int version);

  private:
    std::vector<CZVIMPosition> points;
    int row = 0;
    int column = 0;
};

/// The mesh's points as they are, and for each cell of the grid the quad (r, c), (r, c+1),
/// (r+1, c+1), (r+1, c). An empty shell where the points are not row × column many, or more than
/// an int can index; safe for a mesh read from untrusted bytes.
ZVFT_API CZVIMShell MeshToShell(const CZVIMMesh& mesh);

}  // namespace ZVIM::GeometryModelResource
