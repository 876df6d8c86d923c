#pragma once

#include <vector>

#include "ZVIM/Position.h"
#include "ZVIM/Shell.h"
#include "ZVIM/Vector.h"
#include "ZVSmartFormat/Api.h"
#include "ZVSmartSerial/Serial.h"

// Colours are 32-bit values of the host's own. WriteSerial writes every version as version 1,
// ReadSerial reads every version as version 1. Reading throws CZVFTStreamException "seek over
// buffer size" for a count that cannot fit the bytes left before anything is sized; the object is
// then partly read and usable. That the lists fit each other is not checked.

namespace ZVIM::GeometryModelResource {

using GeometryPrimitiveResource::CZVIMPosition;
using GeometryPrimitiveResource::CZVIMVector;
using ZVSmartSerial::u32;
using ZVSmartSerial::u8;

/// A shell with what is needed to show it.
class ZVFT_API CZVIMVisualShell {
  public:
    CZVIMShell shell;                  ///< what is shown
    std::vector<CZVIMVector> normals;  ///< the host's; not checked against the shell
    std::vector<u32> faceColors;       ///< one per face, or none

    /// The shell; u32 count, normals; u32 count, colours.
    void WriteSerial(ZVSmartSerial::CZVFTSerialWriter* writer, unsigned int version) const;
    /// The mirror of WriteSerial.
    void ReadSerial(ZVSmartSerial::CZVFTSerialReader* reader, unsigned int version);
};

/// Faces with colours and with edges that may be hidden.
class ZVFT_API CZVIMVisualPolyFaceMesh {
  public:
    std::vector<CZVIMPosition> points;  ///< in the model's unit
    std::vector<int> facesIndex;   ///< per face its vertex count, then the point indices from 0
    std::vector<u32> faceColors;   ///< one per face, or none
    std::vector<u8> edgeVisibles;  ///< one per edge in face order, 0 hidden; or none

    /// Each list as a u32 count and its elements, in the order above.
    void WriteSerial(ZVSmartSerial::CZVFTSerialWriter* writer, unsigned int version) const;
    /// The mirror of WriteSerial.
    void ReadSerial(ZVSmartSerial::CZVFTSerialReader* reader, unsigned int version);
};

}  // namespace ZVIM::GeometryModelResource
