#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Reading.h"
#include "tools/zvg/export/ExportModel.h"
#include "tools/zvg/export/GlbExport.h"
#include "tools/zvg/export/ObjExport.h"
#include "tools/zvg/output/FileSink.h"
#include "tools/zvg/output/OutputFile.h"
#include "tools/zvg/text/StandardOutput.h"

namespace fs = std::filesystem;

namespace {

struct Arguments {
    std::string file, output;
    std::string floor, className;
    CLI::Option* floorOption = nullptr;
    CLI::Option* classOption = nullptr;
    bool force = false;
};

using Write = std::function<void(ZVSmartFormat::CZVFTOutStream&)>;

void Fill(const OutputFile& output, const std::string& path, const Write& write) {
    FileSink sink(dup(output.Descriptor()));
    write(sink);
    if (sink.Close()) return;
    throw ToolError(ExitStatus::InputOutput,
                    "cannot write " + path + ": " + std::strerror(sink.Failure()));
}

enum class Format { Glb, Obj };

Format FormatOf(const std::string& path) {
    const std::string extension = fs::path(path).extension().string();
    if (extension == ".glb" || extension == ".GLB") return Format::Glb;
    if (extension == ".obj" || extension == ".OBJ") return Format::Obj;
    throw ToolError(ExitStatus::Usage, path + ": the name must end in .glb or .obj");
}

void ExportGlb(const ExportModel& model, const Arguments& arguments) {
    OutputFile output(arguments.output, arguments.force);
    Fill(output, arguments.output,
         [&](ZVSmartFormat::CZVFTOutStream& sink) { WriteGlb(model, sink); });
    output.Commit();
}

/// Both files are written before either gets its name.
void ExportObj(const ExportModel& model, const Arguments& arguments) {
    const fs::path materials = fs::path(arguments.output).replace_extension(".mtl");
    OutputFile objOutput(arguments.output, arguments.force);
    OutputFile mtlOutput(materials.string(), arguments.force);
    Fill(objOutput, arguments.output, [&](ZVSmartFormat::CZVFTOutStream& sink) {
        WriteObj(model, materials.filename().string(), sink);
    });
    Fill(mtlOutput, materials.string(),
         [&](ZVSmartFormat::CZVFTOutStream& sink) { WriteMtl(model, sink); });
    mtlOutput.Commit();
    objOutput.Commit();
}

void Tell(const ExportModel& model, const Arguments& arguments) {
    if (model.missingGeometries != 0) {
        WriteMessage("warning: " + std::to_string(model.missingGeometries) +
                     " geometries are referred to but not in the file");
    }
    WriteMessage(arguments.output + ": " + std::to_string(model.components.size()) +
                 " components, " + std::to_string(model.scene.meshes.size()) + " meshes, " +
                 std::to_string(fs::file_size(arguments.output)) + " bytes");
}

void Export(const Arguments& arguments, const CommonOptions& common) {
    const Format format = FormatOf(arguments.output);
    if (format == Format::Glb && !CanWriteGlb()) {
        throw ToolError(ExitStatus::Usage, "this build writes no GLB (it needs tinygltf)");
    }
    OpenedBlock block(arguments.file);
    ExportSelection selection;
    if (arguments.floorOption->count() != 0) selection.floor = arguments.floor;
    if (arguments.classOption->count() != 0) selection.className = arguments.className;
    const ExportModel model = ReadExport(block, selection);
    if (format == Format::Glb) {
        ExportGlb(model, arguments);
    } else {
        ExportObj(model, arguments);
    }
    if (!common.quiet) Tell(model, arguments);
}

}  // namespace

void RegisterExport(CLI::App& app, CommonOptions& common) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* const command = AddReadingCommand(
        app, "export",
        "Write the components' surfaces as GLB, with names, classes and properties, or as OBJ with "
        "an MTL file beside it",
        "zvg export house.zvg -o house.glb --class IfcWall", arguments->file);
    command->add_option("-o,--output", arguments->output, "The file to write: .glb or .obj")
        ->required();
    arguments->floorOption = command->add_option("--floor", arguments->floor,
                                                 "Only this floor, by its number or its name");
    arguments->classOption = command->add_option(
        "--class", arguments->className, "Only components with a class of this name, on any level");
    command->add_flag("--force", arguments->force, "Replace existing output files");
    command->callback([arguments, &common] { Export(*arguments, common); });
}
