#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "model/export/ExportModel.h"
#include "model/export/GlbExport.h"
#include "model/export/ObjExport.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/output/OutputFile.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Progress.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

using ZVSmartFormat::CZVFTOutStream;
namespace fs = std::filesystem;

namespace {

struct Arguments {
    std::string file;
    Target target;
    std::optional<std::string> floor, className;
    bool salvage = false;
    bool rooms = false;
};

enum class Format { Glb, Obj };

Format FormatOf(const std::string& path) {
    if (path == "-") return Format::Glb;  // OBJ is two files
    const std::string extension = fs::path(path).extension().string();
    if (extension == ".glb" || extension == ".GLB") return Format::Glb;
    if (extension == ".obj" || extension == ".OBJ") return Format::Obj;
    throw Error(Status::Usage, path + ": the name must end in .glb or .obj");
}

unsigned long long ExportGlb(const ExportModel& model, const Arguments& arguments) {
    OutputFile output(arguments.target.path, arguments.target.force, {arguments.file});
    output.Fill([&](CZVFTOutStream& sink) { WriteGlb(model, sink); });
    output.Commit();
    return output.Bytes();
}

unsigned long long ExportObj(const ExportModel& model, const Arguments& arguments, Budget& limits) {
    const fs::path materials = fs::path(arguments.target.path).replace_extension(".mtl");
    OutputFile objOutput(arguments.target.path, arguments.target.force, {arguments.file});
    OutputFile mtlOutput(materials.string(), arguments.target.force, {arguments.file});
    objOutput.Fill([&](CZVFTOutStream& sink) {
        WriteObj(model, materials.filename().string(), limits, sink);
    });
    mtlOutput.Fill([&](CZVFTOutStream& sink) { WriteMtl(model, sink); });
    OutputFile::CommitBoth(mtlOutput, objOutput);
    return objOutput.Bytes();
}

void Tell(const ExportModel& model, const Arguments& arguments, unsigned long long bytes) {
    if (model.missingGeometries != 0) {
        WriteMessage("warning: " + std::to_string(model.missingGeometries) +
                     " geometries are referred to but not in the file");
    }
    WriteMessage(TargetName(arguments.target.path) + ": " +
                 std::to_string(model.components.size()) + " components, " +
                 std::to_string(model.scene.meshes.size()) + " meshes, " + std::to_string(bytes) +
                 " bytes");
}

void Export(const Arguments& arguments, const CommonOptions& common) {
    const Format format = FormatOf(arguments.target.path);
    if (format == Format::Glb && !CanWriteGlb()) {
        throw Error(Status::Usage, "this build writes no GLB (it needs tinygltf)");
    }
    Budget limits(common.noLimit, "--no-limit");
    OpenedBlock block(OpenNamed(arguments.file), limits);
    ExportSelection selection;
    selection.floor = arguments.floor;
    selection.className = arguments.className;
    selection.salvage = arguments.salvage;
    selection.rooms = arguments.rooms;
    Progress progress(common.quiet);
    selection.progress = [&progress](std::size_t done, std::size_t total) {
        progress.Show("exporting", static_cast<double>(done), static_cast<double>(total),
                      "components");
    };
    const ExportModel model = ReadExport(block, selection);
    progress.Clear();
    const unsigned long long bytes =
        format == Format::Glb ? ExportGlb(model, arguments) : ExportObj(model, arguments, limits);
    if (!common.quiet) Tell(model, arguments, bytes);
    block.ThrowIfDamaged();
}

}  // namespace

void RegisterExport(CLI::App& app, CommonOptions& common) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* const command = AddReadingCommand(
        app, "export",
        "Write the components' surfaces as GLB, with names, classes and properties, or as OBJ with "
        "an MTL file beside it",
        "zvg export house.zvg -o house.glb --class IfcWall", arguments->file);
    AddTargetOptions(*command, "The file to write: .glb or .obj; - is GLB on standard output",
                     arguments->target)
        ->required();
    AddFloorOption(*command, arguments->floor);
    AddClassOption(*command, arguments->className);
    command->add_flag("--salvage", arguments->salvage,
                      "Of a damaged file write what is whole; the exit status is 4 all the same");
    AddLimitOption(*command, common);
    AddRoomsOption(*command, arguments->rooms);
    command->callback([arguments, &common] { Export(*arguments, common); });
}

}  // namespace ZVSmartModel::Tool
