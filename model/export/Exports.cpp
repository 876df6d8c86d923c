#include "ZVSmartModel/Exports.h"

#include "model/element/BlockFileImp.h"
#include "model/export/ExportModel.h"
#include "model/export/GlbExport.h"
#include "model/export/MergedScene.h"
#include "model/export/ObjExport.h"
#include "model/export/PropertiesExport.h"
#include "model/export/SurfaceDetails.h"

namespace ZVSmartModel {

namespace {

/// Asks for a summary of what `write(block, pace)` did.
template <class Write>
ExportSummary Ask(const BlockFile& file, const Progress& progress, Write write) {
    return file.Internals().Ask([&](OpenedBlock& block) {
        ProgressPace pace(progress);
        ExportSummary summary = write(block, pace);
        if (const std::optional<Error> damage = block.Verdict()) summary.lost = damage->what();
        return summary;
    });
}

/// Has `write(model, limits, pace)` write what is read.
template <class Write>
ExportSummary Export(const BlockFile& file, const ExportOptions& options, const Progress& progress,
                     Write write) {
    return Ask(file, progress, [&](OpenedBlock& block, ProgressPace& pace) {
        ExportModel model = ReadExport(block, options, pace);
        ExportSummary summary;
        summary.elements = model.components.size();
        summary.missing = model.missingGeometries;
        if (options.merge) MergeByLook(model, block.Limits());
        summary.meshes = model.scene.meshes.size();
        write(model, block.Limits(), pace);
        return summary;
    });
}

}  // namespace

ExportSummary WriteGlb(const BlockFile& file, ZVSmartFormat::CZVFTOutStream& out,
                       const ExportOptions& options, const Progress& progress) {
    if (options.compress && !CanCompressGlb()) {
        throw Error(Status::Usage, "this build compresses no GLB (it needs meshoptimizer)");
    }
    if (options.edges && options.instances) {
        throw Error(Status::Usage, "edges have no instances: readers show the lines of one alone");
    }
    return Export(file, options, progress,
                  [&](ExportModel& model, Budget& limits, ProgressPace& pace) {
                      AddDetails(model.scene, options, limits, pace);
                      EncodeGlb(model, options, out, pace);
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

ExportSummary WriteProperties(const BlockFile& file, ZVSmartFormat::CZVFTOutStream& out,
                              const ExportOptions& options, const Progress& progress) {
    return Ask(file, progress, [&](OpenedBlock& block, ProgressPace& pace) {
        ExportSummary summary;
        summary.elements = EncodeProperties(block, options, out, pace);
        return summary;
    });
}

}  // namespace ZVSmartModel
