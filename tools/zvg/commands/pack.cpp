#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/import/ChildProcess.h"
#include "tools/zvg/output/OutputFile.h"
#include "tools/zvg/pack/DisplacedClasses.h"
#include "tools/zvg/pack/PackJob.h"
#include "tools/zvg/text/Progress.h"
#include "tools/zvg/text/StandardOutput.h"

namespace {

struct Arguments {
    std::string model, settings, preview, report;
    Target target;
    unsigned int geosPerBlock = 0;
    unsigned int formatVersion = 4;
    bool fast = false;
    bool noPreview = false;
    bool seal = false;
    std::uint64_t maxMemory = 0;  ///< bytes; 0 where not given
    double maxTime = 0;           ///< seconds; 0 where not given
    double tolerance = 1;
    bool strict = false;
};

/// Prints what the child says: warnings up to a number that a person reads, progress on a
/// terminal only.
class Listener {
  public:
    Listener(unsigned long long modelBytes, bool quiet)
        : quiet(quiet), progress(quiet), modelBytes(static_cast<double>(modelBytes)) {}

    void Take(ChildMessage kind, const std::string& text) {
        switch (kind) {
            case ChildMessage::Warning:
                Warn(text);
                break;
            case ChildMessage::Progress:
                ShowProgress(text);
                break;
            case ChildMessage::Report:
                report += text;
                break;
            case ChildMessage::Result:
            case ChildMessage::Failure:
                lastWords = text;
                break;
            case ChildMessage::NoMemory:
            case ChildMessage::Open:
                break;  // answered before
        }
    }

    /// Removes the progress and tells how many warnings were not printed.
    void Finish() {
        progress.Clear();
        if (warnings <= mostWarnings) return;
        Print("warning: " + std::to_string(warnings - mostWarnings) + " more warnings");
    }

    void Print(const std::string& text) {
        if (quiet) return;
        progress.Clear();
        WriteMessage(text);
    }

    const std::string& LastWords() const { return lastWords; }
    /// What the child said of the model; empty where it did not come so far.
    const std::string& Report() const { return report; }

  private:
    static constexpr int mostWarnings = 20;

    void Warn(const std::string& text) {
        if (++warnings <= mostWarnings) Print("warning: " + text);
    }

    /// Importing is told in percent of the model, packing in components.
    void ShowProgress(const std::string& text) {
        double done = 0;
        double total = 0;
        const std::size_t blank = text.find(' ');
        if (std::sscanf(text.c_str(), "%lf/%lf", &done, &total) != 2) return;
        const std::string work = blank == std::string::npos ? "" : text.substr(blank + 1);
        if (total == 0) {
            progress.Show(work);
        } else if (work == "importing") {
            progress.Show(work, done / total * modelBytes, modelBytes, "MB");
        } else {
            progress.Show(work, done, total, "components");
        }
    }

    bool quiet;
    Progress progress;
    double modelBytes;
    int warnings = 0;
    std::string lastWords, report;
};

/// Tells of a missing input before anything is made.
void CheckReadable(const std::string& path) {
    if (path.empty() || access(path.c_str(), R_OK) == 0) return;
    throw ToolError(ExitStatus::InputOutput, path + ": " + std::strerror(errno));
}

/// All files that are read, as far as their names are known before; an OBJ has its materials
/// beside it.
std::vector<std::string> InputsOf(const Arguments& arguments) {
    std::vector<std::string> inputs = {arguments.model, arguments.settings, arguments.preview};
    const std::filesystem::path model(arguments.model);
    if (model.extension() == ".obj" || model.extension() == ".OBJ") {
        inputs.push_back(std::filesystem::path(model).replace_extension(".mtl").string());
    }
    return inputs;
}

PackJob JobOf(const Arguments& arguments) {
    PackJob job;
    job.modelPath = arguments.model;
    job.outputPath = TargetName(arguments.target.path);
    job.settingsPath = arguments.settings;
    job.previewPath = arguments.preview;
    job.geosPerBlock = arguments.geosPerBlock;
    job.formatVersion = arguments.formatVersion;
    job.fast = arguments.fast;
    job.drawPreview = !arguments.noPreview;
    job.seal = arguments.seal;
    job.tolerance = arguments.tolerance;
    job.strict = arguments.strict;
    return job;
}

/// A time that the user gives is instead of the one without progress: some models need it.
ImportLimits LimitsOf(const Arguments& arguments, unsigned long long modelBytes) {
    ImportLimits limits = ImportLimits::For(modelBytes);
    if (arguments.maxMemory != 0) limits.memoryBytes = arguments.maxMemory;
    if (std::isnan(arguments.maxTime)) throw ToolError(ExitStatus::Usage, "--max-time: no number");
    if (arguments.maxTime > 0) {
        limits.silence = {};
        limits.time = std::chrono::milliseconds(std::llround(arguments.maxTime * 1000));
    }
    return limits;
}

int Import(const Arguments& arguments, const ModelFolder& folder, int descriptor,
           Listener& listener) {
    try {
        return RunInChild(
            PackJobArguments(JobOf(arguments)), descriptor, folder,
            LimitsOf(arguments, folder.ModelBytes()),
            [&](ChildMessage kind, const std::string& text) { listener.Take(kind, text); });
    } catch (const ToolError& error) {
        listener.Finish();
        throw ToolError(error.Status(), arguments.model + ": " + error.what());
    }
}

/// A library may end the child in its own way, without a word.
ToolError ImportFailure(const Arguments& arguments, int status, const std::string& lastWords) {
    if (lastWords.empty() || status > static_cast<int>(ExitStatus::NotFound)) {
        return {ExitStatus::InputOutput, arguments.model + ": the importer failed"};
    }
    return {static_cast<ExitStatus>(status), lastWords};
}

/// A mistyped class name sets nothing; this number is what tells.
std::string SettingsText(int descriptor) {
    const std::size_t rows = CountDisplacedClasses(descriptor);
    return ", settings set " + std::to_string(rows) + (rows == 1 ? " class row" : " class rows");
}

/// What a strict packing refuses is reported as well.
void WriteReport(const Arguments& arguments, const std::string& report) {
    if (arguments.report.empty() || report.empty()) return;
    OutputFile output(arguments.report, arguments.target.force, InputsOf(arguments));
    const std::string line = report + '\n';
    output.Fill(
        [&line](ZVSmartFormat::CZVFTOutStream& sink) { sink.Write(line.data(), line.size()); });
    output.Commit();
}

void Pack(const Arguments& arguments, const CommonOptions& common) {
    if (arguments.model == "-") {
        throw ToolError(ExitStatus::Usage, "a model is read from a file, not standard input");
    }
    const ModelFolder folder(arguments.model);
    CheckReadable(arguments.settings);
    CheckReadable(arguments.preview);
    OutputFile output(arguments.target.path, arguments.target.force, InputsOf(arguments));
    Listener listener(folder.ModelBytes(), common.quiet);
    const int status = Import(arguments, folder, output.Descriptor(), listener);
    listener.Finish();
    WriteReport(arguments, listener.Report());
    if (status != 0) throw ImportFailure(arguments, status, listener.LastWords());
    const std::string set = arguments.settings.empty() ? "" : SettingsText(output.Descriptor());
    output.Commit();
    listener.Print(TargetName(arguments.target.path) + ": " + listener.LastWords() + set + ", " +
                   std::to_string(output.Bytes()) + " bytes");
}

}  // namespace

void RegisterPack(CLI::App& app, CommonOptions& common) {
    auto arguments = std::make_shared<Arguments>();
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
    command->add_option("--report", arguments->report,
                        "Write what arrived and what was lost, and where, to this file as JSON");
    command->add_flag("--strict", arguments->strict,
                      "Pack nothing, with exit status 4, where anything is lost");
    command->footer("Example:\n  zvg pack house.ifc -o house.zvg --preview house.png");
    command->callback([arguments, &common] { Pack(*arguments, common); });
}
