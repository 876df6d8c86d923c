#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "ZVSmartModel/Plan.h"
#include "model/element/FileName.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/output/OutputFile.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Document.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

namespace {

struct PlanArguments {
    std::string file;
    Target target;
    std::optional<std::string> floor;
    double cutHeight = PlanOptions().cutHeight;
    double depth = PlanOptions().depth;
    bool all = false, roof = false, zones = false;
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

std::string Told(const PlanRoom& room) {
    const auto area = [](double squareMetres) {
        char text[32];
        std::snprintf(text, sizeof text, "%.2f", squareMetres);
        return std::string(text);
    };
    const std::string name = room.name.empty() ? room.number : room.name;
    return name + ' ' + area(*room.stated) + " m² by the file, " + area(*room.measured) +
           " m² as drawn";
}

std::string Told(const PlanFloorSummary& floor) {
    Counts drawn, left;
    const std::string visiting = std::to_string(floor.visiting) + " from other floors";
    drawn.Add(floor.cut, floor.visiting == 0 ? "cut" : "cut (" + visiting + ")");
    drawn.Add(floor.symbols, "by their own outlines");
    drawn.Add(floor.below, "seen below");
    drawn.Add(floor.overhead, "overhead");
    left.Add(floor.leftBelow, "too far below");
    left.Add(floor.leftAbove, "above");
    left.Add(floor.leftGaps, "with a gap at the cut");
    left.Add(floor.leftEmpty, "without a shape");
    left.Add(floor.leftFar, "far away, which --all draws");
    std::string text = floor.name + ": " + (drawn.Text().empty() ? "nothing" : drawn.Text());
    if (floor.refused != 0) {
        text += "; symbols beside their bodies, not used: " + std::to_string(floor.refused);
    }
    if (!left.Text().empty()) text += "; left out: " + left.Text();
    for (const std::string& stray : floor.strays) {
        text += (&stray == &floor.strays.front() ? ": " : ", ") + stray;
    }
    bool isFirst = true;
    for (const PlanRoom& room : floor.rooms) {
        if (!room.Differs()) continue;
        text += (isFirst ? "; areas that differ: " : ", ") + Told(room);
        isFirst = false;
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

PlanFormat PlanFormatOf(const std::string& path) {
    const std::string extension = ExtensionOf(path);
    if (path.empty() || path == "-" || extension == "svg") return PlanFormat::Svg;
    if (extension == "pdf") return PlanFormat::Pdf;
    if (extension == "dxf") return PlanFormat::Dxf;
    throw Error(Status::Usage, path + ": the name must end in .svg, .pdf or .dxf");
}

Document DocumentOf(const PlanFloorSummary& floor) {
    Document rooms = Document::array();
    for (const PlanRoom& room : floor.rooms) {
        Document entry = {
            {"guid", room.guid}, {"number", room.number}, {"name", room.name}, {"zone", room.zone}};
        entry["stated"] = room.stated ? Document(*room.stated) : Document();
        entry["measured"] = room.measured ? Document(*room.measured) : Document();
        entry["differs"] = room.Differs();
        rooms.push_back(std::move(entry));
    }
    return {{"name", floor.name},
            {"elevation", RealNumber(floor.elevation)},
            {"plane", RealNumber(floor.plane)},
            {"cut", floor.cut},
            {"visiting", floor.visiting},
            {"symbols", floor.symbols},
            {"below", floor.below},
            {"overhead", floor.overhead},
            {"refused", floor.refused},
            {"leftOut",
             {{"below", floor.leftBelow},
              {"above", floor.leftAbove},
              {"gaps", floor.leftGaps},
              {"empty", floor.leftEmpty},
              {"far", floor.leftFar}}},
            {"strays", floor.strays},
            {"rooms", std::move(rooms)}};
}

Document DocumentOf(const std::string& path, const PlanSummary& summary) {
    Document document = NewDocument(path);
    document["floors"] = summary.floors;
    document["elements"] = summary.elements;
    document["scale"] = RealNumber(summary.scale);
    document["axes"] = summary.axes;
    document["labelsLeft"] = summary.labelsLeft;
    document["perFloor"] = Document::array();
    for (const PlanFloorSummary& floor : summary.perFloor) {
        document["perFloor"].push_back(DocumentOf(floor));
    }
    return document;
}

void ThrowIfPartial(const PlanSummary& summary) {
    if (!summary.lost.empty()) throw Error(Status::Damaged, summary.lost);
}

PlanSummary PlanToFile(const BlockFile& file, const PlanOptions& options,
                       const PlanArguments& arguments) {
    OutputFile output(arguments.target.path, arguments.target.force, {arguments.file});
    PlanSummary summary;
    output.Fill(
        [&](ZVSmartFormat::CZVFTOutStream& sink) { summary = WritePlan(file, sink, options); });
    if (output.Replaces()) ThrowIfPartial(summary);  // what stands there may be whole
    output.Commit();
    return summary;
}

void Plan(const PlanArguments& arguments, const CommonOptions& common) {
    const PlanFormat format = PlanFormatOf(arguments.target.path);
    const bool asDocument = common.json;
    if (asDocument && (arguments.target.path.empty() || arguments.target.path == "-")) {
        throw Error(Status::Usage, "--json tells what was drawn: the plan needs -o FILE");
    }
    const BlockFile file = OpenBlockFile(arguments.file, common);
    const bool isPrinted = arguments.target.path.empty();
    PlanOptions options;
    options.floor = arguments.floor;
    options.cutHeight = arguments.cutHeight;
    options.depth = arguments.depth;
    options.all = arguments.all;
    options.roof = arguments.roof;
    options.zones = arguments.zones;
    options.paper = arguments.paper;
    options.scale = ScaleOf(arguments.scale);
    options.format = format;
    options.title = std::filesystem::path(arguments.file).filename().string();
    PlanSummary summary;
    if (isPrinted) {
        OutputStream output;
        summary = WritePlan(file, output, options);
        FinishOutput();  // who cannot take the plan is not told of it
    } else {
        summary = PlanToFile(file, options, arguments);
    }
    if (asDocument) PrintDocument(DocumentOf(arguments.file, summary), true);
    if (!isPrinted && !common.quiet && !asDocument) {
        WriteMessage(TargetName(arguments.target.path) + ": " + Told(summary));
    }
    if (!common.quiet && !asDocument) {
        for (const PlanFloorSummary& floor : summary.perFloor) WriteMessage(Told(floor));
        if (summary.labelsLeft != 0) {
            WriteMessage("texts left out for want of room: " + std::to_string(summary.labelsLeft));
        }
    }
    ThrowIfPartial(summary);
}

}  // namespace

void RegisterPlan(CLI::App& app, CommonOptions& common) {
    const auto arguments = std::make_shared<PlanArguments>();
    CLI::App* const command = AddReadingCommand(
        app, "plan",
        "Draw floors as a plan: what a plane 1.2 m above the floor cuts, what is seen below it, "
        "and "
        "dashed what hangs above; rooms, axes and dimensions. Lengths are metres, as pack writes "
        "them",
        "zvg plan house.zvg --floor 0 -o ground.svg", arguments->file);
    AddTargetOptions(*command,
                     "The file to write, .svg, .pdf or .dxf; - and the default are SVG on standard "
                     "output",
                     arguments->target);
    AddFloorOption(*command, arguments->floor);
    command
        ->add_option("--cut", arguments->cutHeight,
                     "How far above each floor's elevation bodies are cut, in metres")
        ->type_name("HEIGHT")
        ->capture_default_str();
    command
        ->add_option("--depth", arguments->depth,
                     "How far below each floor's elevation things are still seen, in metres")
        ->type_name("DEPTH")
        ->capture_default_str();
    command->add_flag("--roof", arguments->roof, "Add a sheet of all as seen from above");
    command->add_flag("--zones", arguments->zones,
                      "Give rooms a colour for each zone, and its name");
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
    AddThreadsOption(*command, common.threads);
    command->callback([arguments, &common] { Plan(*arguments, common); });
}

}  // namespace ZVSmartModel::Tool
