#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "ZVSmartModel/Pack.h"
#include "model/element/FileName.h"
#include "model/pack/DisplacedClasses.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/output/OutputFile.h"
#include "tools/zvg/reading/ReportDocument.h"
#include "tools/zvg/text/Progress.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

namespace {

struct PackArguments {
    std::string model, settings, preview, report;
    Target target;
    unsigned int geosPerBlock = 0;
    unsigned int formatVersion = 4;
    bool fast = false;
    bool noPreview = false;
    unsigned int threads = 0;
    bool seal = false;
    std::uint64_t maxMemory = 0;  ///< bytes; 0 where not given
    double maxTime = 0;           ///< seconds; 0 where not given
    double tolerance = 1;
    bool strict = false;
};

/// Prints what is told while it is packed; progress on a terminal only.
class Listener {
  public:
    Listener(double modelBytes, bool quiet)
        : quiet(quiet), progress(quiet), modelBytes(modelBytes) {}

    /// Importing is told in bytes of the model, other work in percent.
    void Show(const std::string& work, double fraction) {
        if (work == "importing" && fraction >= 0) {
            progress.Show(work, fraction * modelBytes, modelBytes, "MB");
        } else {
            progress.ShowShare(work, fraction);
        }
    }

    void Print(const std::string& text) {
        if (quiet) return;
        progress.Clear();
        WriteMessage(text);
    }

    void Finish() { progress.Clear(); }

  private:
    bool quiet;
    Progress progress;
    double modelBytes;
};

/// All files that are read, as far as their names are known before; an OBJ has its materials
/// beside it.
std::vector<std::string> InputsOf(const PackArguments& arguments) {
    std::vector<std::string> inputs = {arguments.model, arguments.settings, arguments.preview};
    if (ExtensionOf(arguments.model) == "obj") {
        const std::filesystem::path model(arguments.model);
        inputs.push_back(std::filesystem::path(model).replace_extension(".mtl").string());
    }
    return inputs;
}

PackOptions PackOptionsOf(const PackArguments& arguments, Listener& listener) {
    PackOptions options;
    options.settingsPath = arguments.settings;
    options.previewPath = arguments.preview;
    options.drawPreview = !arguments.noPreview;
    options.geosPerBlock = arguments.geosPerBlock;
    options.formatVersion = arguments.formatVersion;
    options.fast = arguments.fast;
    options.threads = arguments.threads;
    options.seal = arguments.seal;
    options.strict = arguments.strict;
    constexpr double metresInMillimetre = 0.001;
    options.tolerance = arguments.tolerance * metresInMillimetre;
    options.maxMemory = arguments.maxMemory;
    options.maxSeconds = arguments.maxTime;
    options.progress = [&listener](const std::string& work, double fraction) {
        listener.Show(work, fraction);
        return true;
    };
    options.warn = [&listener](const std::string& text) { listener.Print("warning: " + text); };
    return options;
}

std::string Counted(std::size_t count, const char* noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

std::string WrittenText(const PackReport& report) {
    return Counted(report.components, "component") + " on " + Counted(report.floors, "floor") +
           ", " + Counted(report.shapes, "shape") + " in " + Counted(report.placements, "place");
}

/// A mistyped class name sets nothing; this number is what tells.
std::string SettingsText(int descriptor) {
    const std::size_t rows = CountDisplacedClasses(descriptor);
    return ", settings set " + std::to_string(rows) + (rows == 1 ? " class row" : " class rows");
}

/// What a strict packing refuses is reported as well; a model that was not read is not.
void WriteReport(const PackArguments& arguments, const PackReport& report) {
    if (arguments.report.empty() || report.schema.empty()) return;
    OutputFile output(arguments.report, arguments.target.force, InputsOf(arguments));
    const std::string line = ReportLine(report, arguments.model) + '\n';
    output.Fill(
        [&line](ZVSmartFormat::CZVFTOutStream& sink) { sink.Write(line.data(), line.size()); });
    output.Commit();
}

void Pack(const PackArguments& arguments, const CommonOptions& common) {
    if (arguments.model == "-") {
        throw Error(Status::Usage, "a model is read from a file, not standard input");
    }
    std::error_code unknown;  // a model that is not there is told by packing
    const std::uintmax_t bytes = std::filesystem::file_size(arguments.model, unknown);
    Listener listener(unknown ? 0 : static_cast<double>(bytes), common.quiet);
    OutputFile output(arguments.target.path, arguments.target.force, InputsOf(arguments));
    PackReport report;
    try {
        PackModelFile(arguments.model, output.Descriptor(), TargetName(arguments.target.path),
                      PackOptionsOf(arguments, listener), &report);
    } catch (const Error&) {
        listener.Finish();
        WriteReport(arguments, report);
        throw;
    }
    listener.Finish();
    WriteReport(arguments, report);
    if (!report.lost.empty()) listener.Print("warning: not everything arrived: " + report.lost);
    const std::string set = arguments.settings.empty() ? "" : SettingsText(output.Descriptor());
    output.Commit();
    listener.Print(TargetName(arguments.target.path) + ": " + WrittenText(report) + set + ", " +
                   std::to_string(output.Bytes()) + " bytes");
}

}  // namespace

void RegisterPack(CLI::App& app, CommonOptions& common) {
    auto arguments = std::make_shared<PackArguments>();
    CLI::App* command = app.add_subcommand("pack", "Pack a building model into a block file");
    command
        ->add_option("model", arguments->model,
                     "The model: IFC, glTF, OBJ, STL, PLY, FBX or Collada")
        ->required();
    AddTargetOptions(*command, "The block file to write; - is standard output", arguments->target)
        ->required();
    command
        ->add_option("--geos-per-block", arguments->geosPerBlock,
                     "Geometries per compressed block (chosen by their sizes unless given)")
        ->check(CLI::Range(1U, 0xFFFFFFFFU));
    command->add_flag("--fast", arguments->fast, "Compress faster and weaker");
    command
        ->add_option("--format-version", arguments->formatVersion,
                     "Format version, 0 to 4 (default 4)")
        ->check(CLI::Range(0U, 4U));
    command->add_option("--settings", arguments->settings,
                        "Component displacement settings (CompDisplacement.ini)");
    command
        ->add_option("--preview", arguments->preview,
                     "A PNG image to show for the file (default: a picture of the model is drawn)")
        ->excludes(command->add_flag("--no-preview", arguments->noPreview,
                                     "Store no picture of the model"));
    command->add_flag("--seal", arguments->seal,
                      "Write a checksum of the whole file behind its end; zvg verify checks it");
    command
        ->add_option("--max-memory", arguments->maxMemory,
                     "Memory that importing may take, such as 512M or 8G (default: half of the "
                     "machine's)")
        ->option_text("SIZE")
        ->transform(CLI::AsSizeValue(false))
        ->check(CLI::PositiveNumber);
    constexpr double longestTime = 1e9;
    command
        ->add_option("--max-time", arguments->maxTime,
                     "Seconds that importing may take in all (default: no limit but a minute "
                     "without progress, more for large models)")
        ->option_text("SECONDS")
        ->check(CLI::Range(0.001, longestTime));
    command
        ->add_option("--tolerance", arguments->tolerance,
                     "Millimetres that lines may be off the circles of an IFC model (default 1)")
        ->check([](const std::string& text) {
            const double tolerance = std::strtod(text.c_str(), nullptr);  // which may be no number
            return tolerance >= 0.01 && tolerance <= 1000 ? ""
                                                          : text + " is not within 0.01 and 1000";
        });
    AddThreadsOption(*command, arguments->threads);
    command->add_option("--report", arguments->report,
                        "Write what arrived and what was lost, and where, to this file as JSON");
    command->add_flag("--strict", arguments->strict,
                      "Pack nothing, with exit status 4, where anything is lost");
    command->footer("Example:\n  zvg pack house.ifc -o house.zvg --preview house.png");
    command->callback([arguments, &common] { Pack(*arguments, common); });
}

}  // namespace ZVSmartModel::Tool
