#include "ZVSmartModel/Exports.h"

#include "model/element/BlockFileImp.h"
#include "model/export/ExportModel.h"
#include "model/export/GlbExport.h"
#include "model/export/ObjExport.h"

namespace ZVSmartModel {

namespace {

/// Has `write(model, limits, pace)` write what is read.
template <class Write>
ExportSummary Export(const BlockFile& file, const ExportOptions& options, const Progress& progress,
                     Write write) {
    return file.Internals().Ask([&](OpenedBlock& block) {
        ProgressPace pace(progress);
        const ExportModel model = ReadExport(block, options, pace);
        write(model, block.Limits(), pace);
        ExportSummary summary;
        summary.elements = model.components.size();
        summary.meshes = model.scene.meshes.size();
        summary.missing = model.missingGeometries;
        if (const std::optional<Error> damage = block.Verdict()) summary.lost = damage->what();
        return summary;
    });
}

}  // namespace

ExportSummary WriteGlb(const BlockFile& file, ZVSmartFormat::CZVFTOutStream& out,
                       const ExportOptions& options, const Progress& progress) {
    if (!CanWriteGlb()) throw Error(Status::Usage, "this build writes no GLB (it needs tinygltf)");
    return Export(file, options, progress,
                  [&out](const ExportModel& model, Budget&, ProgressPace& pace) {
                      EncodeGlb(model, out, pace);
                  });
}

ExportSummary WriteObj(const BlockFile& file, ZVSmartFormat::CZVFTOutStream& obj,
                       ZVSmartFormat::CZVFTOutStream& mtl, const std::string& mtlName,
                       const ExportOptions& options, const Progress& progress) {
    return Export(file, options, progress,
                  [&](const ExportModel& model, Budget& limits, ProgressPace& pace) {
                      EncodeObj(model, mtlName, limits, obj, pace);
                      EncodeMtl(model, mtl);
                  });
}

}  // namespace ZVSmartModel
