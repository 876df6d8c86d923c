#include "tools/zvg/Command.h"
#include "tools/zvg/export/GlbExport.h"

bool CanWriteGlb() {
    return false;
}

void WriteGlb(const ExportModel&, ZVSmartFormat::CZVFTOutStream&) {
    throw ToolError(ExitStatus::Usage, "this build writes no GLB (it needs tinygltf)");
}
