#pragma once

#include <vector>

#include "ZVIM/Position.h"
#include "ZVIM/Transf.h"
#include "ZVSmartFormat/Api.h"
#include "ZVSmartSerial/Serial.h"

/// Faces and grids over points, and the forms of them that carry colours.
namespace ZVIM::GeometryModelResource {

using GeometryPrimitiveResource::CZVIMPosition;
using GeometryPrimitiveResource::CZVIMTransf;

/// Points, and faces over them as one flat list: for each face its vertex count, then that many
/// point indices, from 0.
class ZVFT_API CZVIMShell {
  public:
    /// Appends a point.
    void AddPt(const CZVIMPosition& point) { points.push_back(point); }
    /// Appends the points.
    void AddPts(const std::vector<CZVIMPosition>& morePoints);
    /// Appends one face, given as its point indices without the count. They are not checked.
    void AddFaceIndex(const std::vector<int>& face);

    /// The points, in the order they were added.
    const std::vector<CZVIMPosition>& GetPoints() const { return points; }
    /// The flat face list, counts included. What was read from untrusted bytes may hold any
    /// numbers: check each count and index before it is followed.
    const std::vector<int>& GetFacesIndex() const { return facesIndex; }

    /// Moves the points in place, and returns this.
    CZVIMShell& TransformBy(const CZVIMTransf& transf);

    /// u32 count, positions; u32 count, the face list as u32. Every version is written as
    /// version 1.
    void WriteSerial(ZVSmartSerial::CZVFTSerialWriter* writer, unsigned int version) const;
    /// The mirror of WriteSerial; every version reads as version 1. A count that cannot fit the
    /// bytes left throws CZVFTStreamException "seek over buffer size" before anything is sized;
    /// the shell is then partly read and usable.
    void ReadSerial(ZVSmartSerial::CZVFTSerialReader* reader, unsigned int version);

  private:
    std::vector<CZVIMPosition> points;
    std::vector<int> facesIndex;
};

}  // namespace ZVIM::GeometryModelResource
