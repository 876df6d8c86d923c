#pragma once

#include <CLI/CLI.hpp>

#include "tools/zvg/Command.h"

namespace ZVSmartModel::Tool {

// Each function adds one command to `app`: its options, its help with an example, and the
// callback that runs it. `common` is filled while the command line is parsed, before a callback
// runs, and must outlive `app`. A callback ends with Error where the command fails.

void RegisterPack(CLI::App& app, CommonOptions& common);
void RegisterInfo(CLI::App& app, CommonOptions& common);
void RegisterTree(CLI::App& app, CommonOptions& common);
void RegisterList(CLI::App& app, CommonOptions& common);
void RegisterShow(CLI::App& app, CommonOptions& common);
void RegisterGeo(CLI::App& app, CommonOptions& common);
void RegisterProps(CLI::App& app, CommonOptions& common);
void RegisterQuery(CLI::App& app, CommonOptions& common);
void RegisterDiff(CLI::App& app, CommonOptions& common);
void RegisterPlan(CLI::App& app, CommonOptions& common);
void RegisterExport(CLI::App& app, CommonOptions& common);
void RegisterPreview(CLI::App& app, CommonOptions& common);
void RegisterView(CLI::App& app, CommonOptions& common);
void RegisterVerify(CLI::App& app, CommonOptions& common);

// These two speak of the command line itself.
void RegisterMan(CLI::App& app);
void RegisterCompletion(CLI::App& app);

}  // namespace ZVSmartModel::Tool
