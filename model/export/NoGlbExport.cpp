#include "ZVSmartModel/Error.h"
#include "model/export/GlbExport.h"

namespace ZVSmartModel {

bool CanWriteGlb() {
    return false;
}

void WriteGlb(const ExportModel&, ZVSmartFormat::CZVFTOutStream&) {
    throw Error(Status::Usage, "this build writes no GLB (it needs tinygltf)");
}

}  // namespace ZVSmartModel
