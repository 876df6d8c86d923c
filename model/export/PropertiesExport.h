#pragma once

#include "ZVSmartFormat/Stream.h"
#include "model/export/ExportModel.h"

namespace ZVSmartModel {

/// Writes what is known of the chosen components as JSON, component by component; see
/// WriteProperties. Returns their number. Throws as ReadExport does, and where `out` does not take
/// it all.
std::size_t EncodeProperties(OpenedBlock& block, const ExportOptions& options,
                             ZVSmartFormat::CZVFTOutStream& out, ProgressPace& pace);

}  // namespace ZVSmartModel
