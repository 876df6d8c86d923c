#include "model/export/ObjExport.h"

#include <charconv>
#include <cstdint>
#include <string_view>

#include "ZVSmartModel/Error.h"
#include "model/element/FileSink.h"
#include "model/element/Utf8.h"
#include "model/export/MergedScene.h"

namespace ZVSmartModel {

namespace {

/// Names end at blanks, and lines at line ends.
std::string Word(const std::string& name) {
    std::string word = EscapeControls(name);
    for (char& c : word) {
        if (c == ' ' || c == '#') c = '_';
    }
    return word.empty() ? "_" : word;
}

/// Numbers keep names apart that are equal.
std::string MaterialName(const Scene& scene, std::size_t look) {
    return Word(scene.looks[look].name) + '.' + std::to_string(look);
}

/// A number to the sixth decimal, whatever the locale.
void AppendNumber(std::string& text, double value) {
    char digits[64];
    constexpr int decimals = 6;
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
    const char* last = end.ptr;
    while (last[-1] == '0') --last;
    if (last[-1] == '.') --last;
    text += ' ';
    text.append(static_cast<const char*>(digits), last);
}

class ObjWriter {
  public:
    ObjWriter(const Scene& scene, ZVSmartFormat::CZVFTOutStream& out) : scene(scene), out(out) {}

    void Add(const std::string& line) {
        text += line;
        text += '\n';
    }

    void AddPart(const ScenePart& part, const Transform& placement) {
        const SceneSurface& surface = scene.surfaces[part.surface];
        for (const auto& point : surface.points) {
            const auto placed = Placed(placement, {point[0], point[1], point[2]});
            text += 'v';
            AppendNumber(text, placed[0]);
            AppendNumber(text, placed[2]);
            AppendNumber(text, -placed[1]);
            text += '\n';
        }
        Add("usemtl " + MaterialName(scene, part.look));
        const bool mirrored = Mirrors(placement);
        for (const auto& [a, b, c] : surface.triangles) {
            text += 'f';
            for (const std::uint64_t corner : {a, mirrored ? c : b, mirrored ? b : c}) {
                text += ' ' + std::to_string(first + corner);
            }
            text += '\n';
        }
        first += surface.points.size();
        Flush();
    }

    void Flush() {
        WriteWhole(out, text);
        text.clear();
    }

  private:
    const Scene& scene;
    ZVSmartFormat::CZVFTOutStream& out;
    std::string text;
    std::uint64_t first = 1;
};

std::string ObjectName(const ExportModel& model, const ExportComponent& component) {
    const ExportGroup& classGroup = model.groups[component.group];
    std::string name = Word(classGroup.name) + '/' + Word(component.name);
    if (classGroup.parent) name = Word(model.groups[*classGroup.parent].name) + '/' + name;
    return name;
}

}  // namespace

void EncodeObj(const ExportModel& model, const std::string& materialFile, Budget& limits,
               ZVSmartFormat::CZVFTOutStream& out, ProgressPace& pace) {
    ChargePlacedPoints(model.scene, limits, false);
    ObjWriter writer(model.scene, out);
    writer.Add("# zvg " ZVG_VERSION ", Y is up");
    writer.Add("mtllib " + materialFile);
    for (std::size_t i = 0; i < model.components.size(); ++i) {
        pace.Tell("writing", i, model.components.size());
        const auto& placements = model.scene.components[i].placements;
        if (placements.empty()) continue;
        writer.Add("o " + ObjectName(model, model.components[i]));
        for (const ScenePlacement& placement : placements) {
            for (const ScenePart& part : model.scene.meshes[placement.mesh].parts) {
                writer.AddPart(part, placement.toModel);
            }
        }
    }
    writer.Flush();
}

void EncodeMtl(const ExportModel& model, ZVSmartFormat::CZVFTOutStream& out) {
    std::string text = "# zvg " ZVG_VERSION "\n";
    for (std::size_t i = 0; i < model.scene.looks.size(); ++i) {
        const Rgba& colour = model.scene.looks[i].colour;
        text += "newmtl " + MaterialName(model.scene, i) + "\nKd";
        for (const std::uint8_t part : {colour.red, colour.green, colour.blue}) {
            AppendNumber(text, part / 255.0);
        }
        text += "\nd";
        AppendNumber(text, colour.alpha / 255.0);
        text += "\nillum 1\n";
    }
    WriteWhole(out, text);
}

}  // namespace ZVSmartModel
