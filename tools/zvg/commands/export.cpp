#include <charconv>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "ZVSmartModel/Exports.h"
#include "model/element/FileName.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/output/OutputFile.h"
#include "tools/zvg/reading/Lookup.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Progress.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

using ZVSmartFormat::CZVFTOutStream;
using ProgressCall = ZVSmartModel::Progress;
namespace fs = std::filesystem;

namespace {

struct ExportArguments {
    std::string file;
    Target target;
    std::optional<std::string> floor, className;
    std::vector<std::string> elements, where;
    std::string properties;  ///< the file for them; empty for none
    std::string normals = "none";
    ExportOptions options;  ///< but for the selection
    bool noProperties = false;
    bool rooms = false;
};

enum class Format { Glb, Obj };

Format ExportFormatOf(const std::string& path) {
    if (path == "-") return Format::Glb;  // OBJ is two files
    const std::string extension = ExtensionOf(path);
    if (extension == "glb") return Format::Glb;
    if (extension == "obj") return Format::Obj;
    throw Error(Status::Usage, path + ": the name must end in .glb or .obj");
}

/// What came of an export.
struct Outcome {
    ExportSummary summary;
    unsigned long long bytes = 0;
};

/// The properties in a file beside, if they are wanted.
class Sidecar {
  public:
    explicit Sidecar(const ExportArguments& arguments) {
        if (arguments.properties.empty()) return;
        if (arguments.properties == "-") {
            throw Error(Status::Usage, "--properties: a file, not standard output");
        }
        output.emplace(arguments.properties, arguments.target.force,
                       std::vector{arguments.file, arguments.target.path});
    }

    void Fill(const BlockFile& file, const ExportOptions& options, const ProgressCall& progress) {
        if (!output) return;
        output->Fill([&](CZVFTOutStream& sink) { WriteProperties(file, sink, options, progress); });
    }

    /// All or none.
    void CommitWith(std::vector<OutputFile*> files) {
        if (output) files.insert(files.begin(), &*output);
        OutputFile::CommitTogether(files);
    }

  private:
    std::optional<OutputFile> output;
};

Outcome ExportGlb(const BlockFile& file, const ExportArguments& arguments,
                  const ExportOptions& options, const ProgressCall& progress) {
    OutputFile output(arguments.target.path, arguments.target.force, {arguments.file});
    Sidecar sidecar(arguments);
    Outcome outcome;
    output.Fill(
        [&](CZVFTOutStream& sink) { outcome.summary = WriteGlb(file, sink, options, progress); });
    sidecar.Fill(file, options, progress);
    sidecar.CommitWith({&output});
    outcome.bytes = output.Bytes();
    return outcome;
}

Outcome ExportObj(const BlockFile& file, const ExportArguments& arguments,
                  const ExportOptions& options, const ProgressCall& progress) {
    const fs::path materials = fs::path(arguments.target.path).replace_extension(".mtl");
    OutputFile objOutput(arguments.target.path, arguments.target.force, {arguments.file});
    OutputFile mtlOutput(materials.string(), arguments.target.force, {arguments.file});
    Sidecar sidecar(arguments);
    Outcome outcome;
    objOutput.Fill([&](CZVFTOutStream& obj) {
        mtlOutput.Fill([&](CZVFTOutStream& mtl) {
            outcome.summary =
                WriteObj(file, obj, mtl, materials.filename().string(), options, progress);
        });
    });
    sidecar.Fill(file, options, progress);
    sidecar.CommitWith({&mtlOutput, &objOutput});
    outcome.bytes = objOutput.Bytes();
    return outcome;
}

void Tell(const Outcome& outcome, const ExportArguments& arguments) {
    const ExportSummary& summary = outcome.summary;
    if (summary.missing != 0) {
        WriteMessage("warning: " + std::to_string(summary.missing) +
                     " geometries are referred to but not in the file");
    }
    WriteMessage(TargetName(arguments.target.path) + ": " + std::to_string(summary.elements) +
                 " components, " + std::to_string(summary.meshes) + " meshes, " +
                 std::to_string(outcome.bytes) + " bytes");
}

/// Throws Error, Usage, for what is no "none", "flat", "smooth" or "smooth=DEGREES".
void SetNormals(const std::string& text, ExportOptions& options) {
    constexpr double degree = 3.14159265358979323846 / 180;
    const std::string smooth = "smooth";
    if (text == "none") return;
    if (text == "flat") {
        options.normals = Normals::Flat;
        return;
    }
    options.normals = Normals::Smooth;
    if (text == smooth) return;
    if (text.rfind(smooth + '=', 0) == 0) {
        const char* const first = text.data() + smooth.size() + 1;
        const char* const last = text.data() + text.size();
        double degrees = 0;
        const auto [end, error] = std::from_chars(first, last, degrees);
        if (error == std::errc() && end == last && degrees >= 0 && degrees <= 180) {
            options.creaseAngle = degrees * degree;
            return;
        }
    }
    throw Error(Status::Usage, "--normals: '" + text +
                                   "' is none of none, flat, smooth and smooth=DEGREES (0 to 180)");
}

/// What OBJ cannot say it must not be asked for.
void CheckForObj(const ExportOptions& options) {
    const char* const wrong = options.normals != Normals::None ? "--normals"
                              : options.edges                  ? "--edges"
                              : options.instances              ? "--instances"
                              : options.quantize               ? "--quantize"
                              : options.compress               ? "--compress"
                                                               : nullptr;
    if (wrong) throw Error(Status::Usage, std::string(wrong) + " is for .glb alone");
}

ExportOptions ExportOptionsOf(const BlockFile& file, const ExportArguments& arguments) {
    ExportOptions options = arguments.options;
    options.selection.floor = arguments.floor;
    if (arguments.className) options.selection.classNames = {*arguments.className};
    for (const std::string& text : arguments.elements) {
        for (const ElementIndex index : FindElements(file, arguments.file, text)) {
            options.selection.elements.push_back(index);
        }
    }
    options.selection.properties = PropertyTests(arguments.where);
    options.selection.rooms = arguments.rooms;
    options.properties = !arguments.noProperties;
    SetNormals(arguments.normals, options);
    return options;
}

void Export(const ExportArguments& arguments, const CommonOptions& common) {
    const bool isGlb = ExportFormatOf(arguments.target.path) == Format::Glb;
    const BlockFile file = OpenBlockFile(arguments.file, common);
    const ExportOptions options = ExportOptionsOf(file, arguments);
    if (!isGlb) CheckForObj(options);
    Progress line(common.quiet);
    const ProgressCall progress = line.Shares();
    const Outcome outcome = isGlb ? ExportGlb(file, arguments, options, progress)
                                  : ExportObj(file, arguments, options, progress);
    line.Clear();
    if (!common.quiet) Tell(outcome, arguments);
    if (!outcome.summary.lost.empty()) throw Error(Status::Damaged, outcome.summary.lost);
}

}  // namespace

void RegisterExport(CLI::App& app, CommonOptions& common) {
    const auto arguments = std::make_shared<ExportArguments>();
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
    command
        ->add_option("--element", arguments->elements,
                     "Only the component at this FLOOR:POS, or of this GUID or this name; may be "
                     "said more than once")
        ->allow_extra_args(false);
    AddWhereOption(*command, arguments->where);
    command->add_flag(
        "--no-properties", arguments->noProperties,
        "Leave out what is known of the components, but for GUIDs, places and classes");
    command->add_option("--properties", arguments->properties,
                        "Write what is known of the components to this file as well, as JSON by "
                        "their GUIDs");
    ExportOptions& options = arguments->options;
    command->add_flag("--merge", options.merge,
                      "One mesh for each floor and look, in place of a node for each component");
    command
        ->add_option("--normals", arguments->normals,
                     "Normals of the surfaces: none (the default; viewers shade flat), flat, or "
                     "smooth below 30 degrees, below others with smooth=DEGREES")
        ->type_name("KIND");
    command->add_flag("--edges", options.edges, "Draw lines along edges and creases");
    command->add_flag("--instances", options.instances,
                      "One node for alike components of a class (EXT_mesh_gpu_instancing)");
    command->add_flag("--quantize", options.quantize,
                      "Store coordinates in 16 bits (KHR_mesh_quantization)");
    command->add_flag("--compress", options.compress,
                      "Compress points and indices (EXT_meshopt_compression)");
    command->add_flag("--salvage", options.salvage,
                      "Of a damaged file write what is whole; the exit status is 4 all the same");
    AddLimitOption(*command, common);
    AddThreadsOption(*command, common.threads);
    AddRoomsOption(*command, arguments->rooms);
    command->callback([arguments, &common] { Export(*arguments, common); });
}

}  // namespace ZVSmartModel::Tool
