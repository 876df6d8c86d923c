// Serial forms:
//
//   visual shell           the shell; u32 n, n vectors; u32 n, n × u32 colour
//   visual poly face mesh  u32 n, n positions; u32 m, m × u32 face list; u32 k, k × u32 colour;
//                          u32 e, e × u8 edge visible

#include "ZVIM/Visual.h"

#include "siblings/geomodel/Bulk.h"

namespace ZVIM::GeometryModelResource {

void CZVIMVisualShell::WriteSerial(CZVFTSerialWriter* writer, unsigned int version) const {
    shell.WriteSerial(writer, version);
    WriteVectors(writer, normals);
    WriteNumberList(writer, faceColors);
}

void CZVIMVisualShell::ReadSerial(CZVFTSerialReader* reader, unsigned int version) {
    shell.ReadSerial(reader, version);
    ReadVectors(reader, normals);
    ReadNumberList(reader, faceColors);
}

void CZVIMVisualPolyFaceMesh::WriteSerial(CZVFTSerialWriter* writer, unsigned int) const {
    WritePositions(writer, points);
    WriteNumberList(writer, facesIndex);
    WriteNumberList(writer, faceColors);
    writer->WriteCount(edgeVisibles.size());
    writer->WriteBytes(edgeVisibles.data(), edgeVisibles.size());
}

void CZVIMVisualPolyFaceMesh::ReadSerial(CZVFTSerialReader* reader, unsigned int) {
    ReadPositions(reader, points);
    ReadNumberList(reader, facesIndex);
    ReadNumberList(reader, faceColors);
    edgeVisibles.resize(reader->ReadCount(1));
    reader->ReadBytes(edgeVisibles.data(), edgeVisibles.size());
}

}  // namespace ZVIM::GeometryModelResource
