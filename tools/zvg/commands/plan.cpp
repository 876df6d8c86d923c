#include <charconv>
#include <cmath>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "ZVSmartModel/Plan.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/output/OutputFile.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

namespace {

struct Arguments {
    std::string file;
    Target target;
    std::optional<std::string> floor;
    double cutHeight = PlanOptions().cutHeight;
    bool all = false;
    std::string paper, scale;
};

std::string Told(const PlanSummary& summary) {
    return std::to_string(summary.elements) +
           (summary.elements == 1 ? " component on " : " components on ") +
           std::to_string(summary.floors) + (summary.floors == 1 ? " floor" : " floors") +
           ", 1:" + std::to_string(std::llround(summary.scale));
}

/// The counts that are not 0, with what they count behind them.
class Counts {
  public:
    void Add(std::size_t count, const std::string& what) {
        if (count == 0) return;
        text += (text.empty() ? "" : ", ") + std::to_string(count) + ' ' + what;
    }
    const std::string& Text() const { return text; }

  private:
    std::string text;
};

std::string Told(const PlanFloorSummary& floor) {
    Counts drawn, left;
    const std::string visiting = std::to_string(floor.visiting) + " from other floors";
    drawn.Add(floor.cut, floor.visiting == 0 ? "cut" : "cut (" + visiting + ")");
    drawn.Add(floor.symbols, "by their own outlines");
    drawn.Add(floor.below, "below by their outlines");
    left.Add(floor.leftBelow, "below without outlines");
    left.Add(floor.leftAbove, "above");
    left.Add(floor.leftGaps, "with a gap at the cut");
    left.Add(floor.leftEmpty, "without a shape");
    left.Add(floor.leftFar, "far away, which --all draws");
    std::string text = floor.name + ": " + (drawn.Text().empty() ? "nothing" : drawn.Text());
    if (!left.Text().empty()) text += "; left out: " + left.Text();
    for (const std::string& stray : floor.strays) {
        text += (&stray == &floor.strays.front() ? ": " : ", ") + stray;
    }
    return text;
}

/// "1:100" or "100".
double ScaleOf(const std::string& text) {
    if (text.empty()) return 0;
    const std::string number = text.starts_with("1:") ? text.substr(2) : text;
    double scale = 0;
    const char* const end = number.data() + number.size();
    const auto [last, error] = std::from_chars(number.data(), end, scale);
    if (error == std::errc() && last == end && scale > 0) return scale;
    throw Error(Status::Usage, text + ": a scale looks like 1:100");
}

void CheckName(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    if (path.empty() || path == "-" || extension == ".svg" || extension == ".SVG") return;
    throw Error(Status::Usage, path + ": the name must end in .svg, as a plan is SVG");
}

void ThrowIfPartial(const PlanSummary& summary) {
    if (!summary.lost.empty()) throw Error(Status::Damaged, summary.lost);
}

PlanSummary PlanToFile(const BlockFile& file, const PlanOptions& options,
                       const Arguments& arguments) {
    OutputFile output(arguments.target.path, arguments.target.force, {arguments.file});
    PlanSummary summary;
    output.Fill(
        [&](ZVSmartFormat::CZVFTOutStream& sink) { summary = WritePlan(file, sink, options); });
    if (output.Replaces()) ThrowIfPartial(summary);  // what stands there may be whole
    output.Commit();
    return summary;
}

void Plan(const Arguments& arguments, const CommonOptions& common) {
    CheckName(arguments.target.path);
    const BlockFile file = OpenBlockFile(arguments.file, common);
    const bool isPrinted = arguments.target.path.empty();
    PlanOptions options;
    options.floor = arguments.floor;
    options.cutHeight = arguments.cutHeight;
    options.all = arguments.all;
    options.paper = arguments.paper;
    options.scale = ScaleOf(arguments.scale);
    options.title = std::filesystem::path(arguments.file).filename().string();
    PlanSummary summary;
    if (isPrinted) {
        OutputStream output;
        summary = WritePlan(file, output, options);
        FinishOutput();  // who cannot take the plan is not told of it
    } else {
        summary = PlanToFile(file, options, arguments);
    }
    if (!isPrinted && !common.quiet) {
        WriteMessage(TargetName(arguments.target.path) + ": " + Told(summary));
    }
    if (!common.quiet) {
        for (const PlanFloorSummary& floor : summary.perFloor) WriteMessage(Told(floor));
    }
    ThrowIfPartial(summary);
}

}  // namespace

void RegisterPlan(CLI::App& app, CommonOptions& common) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* const command = AddReadingCommand(
        app, "plan",
        "Draw floors as an SVG plan: outlines, and sections of all that reaches through a plane "
        "1.2 m above the floor; lengths are metres, as pack writes them",
        "zvg plan house.zvg --floor 0 -o ground.svg", arguments->file);
    AddTargetOptions(*command, "The SVG file to write; - and the default are standard output",
                     arguments->target);
    AddFloorOption(*command, arguments->floor);
    command
        ->add_option("--cut", arguments->cutHeight,
                     "How far above each floor's elevation bodies are cut, in metres")
        ->type_name("HEIGHT")
        ->capture_default_str();
    command->add_flag("--all", arguments->all,
                      "Draw strays as well: what lies further from the rest than ten times its "
                      "diagonal, and than 100 m");
    command
        ->add_option("--paper", arguments->paper,
                     "A0 to A4: a sheet of this paper for each floor; else one sheet as large as "
                     "it takes")
        ->type_name("NAME");
    command
        ->add_option("--scale", arguments->scale,
                     "Such as 1:100; the default is the largest usual scale that fits")
        ->type_name("SCALE");
    AddLimitOption(*command, common);
    command->callback([arguments, &common] { Plan(*arguments, common); });
}

}  // namespace ZVSmartModel::Tool
