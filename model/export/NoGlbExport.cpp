#include "ZVSmartModel/Error.h"
#include "ZVSmartModel/Exports.h"
#include "model/export/GlbExport.h"

namespace ZVSmartModel {

bool CanWriteGlb() {
    return false;
}

void EncodeGlb(const ExportModel&, ZVSmartFormat::CZVFTOutStream&, ProgressPace&) {
    throw Error(Status::Usage, "this build writes no GLB (it needs tinygltf)");
}

}  // namespace ZVSmartModel
