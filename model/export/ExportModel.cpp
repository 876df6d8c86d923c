#include "model/export/ExportModel.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <map>
#include <utility>

#include "model/element/Chosen.h"
#include "model/element/PropertyKinds.h"
#include "model/element/RecordBytes.h"
#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"
#include "model/scene/SceneReader.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

std::string UniqueNames::Of(const std::string& wanted) {
    int& times = timesSeen[wanted];
    std::string free = wanted;
    if (++times > 1) free += " (" + std::to_string(times) + ')';
    while (!taken.insert(free).second) free = wanted + " (" + std::to_string(++times) + ')';
    return free;
}

namespace {

constexpr std::uint64_t bytesOfComponent = 2000;  // as a node, besides what it says
constexpr std::uint64_t stepsOfComponent = 3000;

bool IsNamed(const SerialKey& key) {
    return KeyText(key) != KeyText(SerialKey());
}

void AddText(Extras& document, const char* name, const std::wstring& text) {
    if (!text.empty()) document[name] = ToUtf8(text);
}

/// A floor's value, which is a length in files that this library wrote, and else may be anything.
void AddMetres(Extras& document, const char* name, u64 bits) {
    const auto metres = std::bit_cast<double>(bits);
    if (std::isnormal(metres)) document[name] = metres;
}

/// A text as it is, anything else with what it is.
Extras ValueOf(const StoredProperty& property) {
    if (property.kind == textKind && property.unit.empty()) return ToUtf8(property.value);
    Extras value = {{"value", ToUtf8(property.value)}, {"kind", ToUtf8(property.kind)}};
    AddText(value, "unit", property.unit);
    return value;
}

Extras PropertiesObject(const PropertyList& properties) {
    Extras object = Extras::object();
    UniqueNames names;
    for (const StoredProperty& property : PropertiesOfPairs(properties)) {
        object[names.Of(ToUtf8(property.name))] = ValueOf(property);
    }
    return object;
}

Extras MaterialNames(const SZVLGZvgComp& comp) {
    Extras names = Extras::array();
    for (const SZVLGZvgCompGeoRef& ref : comp.geoRefs) {
        for (const auto& [number, material] : ref.materials) {
            names.push_back(KeyText(material.guidName));
        }
    }
    return names;
}

}  // namespace

Extras ComponentExtras(const SZVLGCompIndex& index, const SZVLGZvgComp& comp, bool all) {
    Extras extras;
    extras["component"] = PlaceText(index.floorIndex, index.compIndex);
    extras["globalId"] = KeyText(comp.compGuidName);
    Extras& classes = extras["classification"];
    classes["level2"] = ToUtf8(comp.classLevel2Name);
    if (!all) return extras;
    AddText(classes, "level2b", comp.classLevel2bName);
    AddText(classes, "level3", comp.classLevel3Name);
    AddText(classes, "level4", comp.classLevel4Name);
    for (const SerialKey& related : comp.relatedGuidNames) {
        extras["relatedTo"].push_back(KeyText(related));
    }
    if (IsNamed(comp.groupGuidName)) extras["group"] = KeyText(comp.groupGuidName);
    Extras materials = MaterialNames(comp);
    if (!materials.empty()) extras["materials"] = std::move(materials);
    if (!comp.compProperties.empty()) extras["properties"] = PropertiesObject(comp.compProperties);
    return extras;
}

std::string ComponentName(const SZVLGZvgComp& comp) {
    for (const auto& [name, value] : comp.compProperties) {
        if (name == L"Element.Name" && !value.empty()) return ToUtf8(value);
    }
    const std::string type = ToUtf8(comp.classLevel3Name);
    return (type.empty() ? ToUtf8(comp.classLevel2Name) : type) + ' ' + KeyText(comp.compGuidName);
}

namespace {

/// Makes each group when the first component in it comes.
class Groups {
  public:
    explicit Groups(ExportModel& model) : model(model) {}

    /// The group of the component's class, within its floor, building and site.
    std::size_t Of(unsigned int floor, const std::wstring& floorName, const SZVLGZvgComp& comp) {
        std::optional<std::size_t> at;
        const std::string site = KeyText(comp.ownerSecondGuidName);
        if (IsNamed(comp.ownerSecondGuidName) || !comp.ownerTextC.empty()) {
            Extras extras = {{"globalId", site}};
            AddText(extras, "name", comp.ownerTextC);
            at = Group(at, "site " + site + '\n' + ToUtf8(comp.ownerTextC),
                       NameOr(comp.ownerTextC, "site"), extras);
        }
        const std::string building = KeyText(comp.ownerGuidName);
        if (IsNamed(comp.ownerGuidName) || !comp.ownerTextA.empty()) {
            Extras extras = {{"globalId", building}};
            AddText(extras, "name", comp.ownerTextA);
            AddText(extras, "longName", comp.ownerTextB);
            const std::wstring& name = comp.ownerTextA.empty() ? comp.ownerTextB : comp.ownerTextA;
            at = Group(at, "building " + building + '\n' + ToUtf8(comp.ownerTextA),
                       NameOr(name, "building"), extras);
        }
        const std::string number = std::to_string(floor);
        Extras extras = {{"floor", floor}, {"order", comp.classLevel1Id}};
        AddMetres(extras, "elevation", comp.classLevel1DataA);
        AddMetres(extras, "height", comp.classLevel1DataB);
        at = Group(at, "floor " + number, NameOr(floorName, "floor " + number), extras);
        return Group(at, "class " + ToUtf8(comp.classLevel2Name),
                     NameOr(comp.classLevel2Name, "no class"), nullptr);
    }

  private:
    static std::string NameOr(const std::wstring& name, const std::string& other) {
        return name.empty() ? other : ToUtf8(name);
    }

    std::size_t Group(std::optional<std::size_t> parent, const std::string& key,
                      const std::string& name, const Extras& extras) {
        const auto [place, added] = known.emplace(std::make_pair(parent, key), model.groups.size());
        if (added) model.groups.push_back({parent, name, extras});
        return place->second;
    }

    ExportModel& model;
    std::map<std::pair<std::optional<std::size_t>, std::string>, std::size_t> known;
};

/// Who names what he wants is not content with nothing.
void ThrowIfNamed(const Selection& selection, const OpenedBlock& block) {
    if (!selection.elements.empty()) {
        throw block.ErrorAbout(Status::NotFound, "none of the elements that are wanted");
    }
    if (!selection.properties.empty()) {
        throw block.ErrorAbout(Status::NotFound,
                               "no component with the properties that are wanted");
    }
    if (selection.classNames.empty()) return;
    std::string names;
    for (const std::string& name : selection.classNames) {
        names += (names.empty() ? "'" : " or '") + name + '\'';
    }
    throw block.ErrorAbout(Status::NotFound, "no component of class " + names);
}

}  // namespace

std::size_t ForEachChosen(OpenedBlock& block, const ExportOptions& options, ProgressPace& pace,
                          const GeoBlockUse& ahead,
                          const std::function<void(const ChosenComponent&)>& use) {
    const Chosen chosen(options.selection);
    const std::pair floors = block.FindFloors(options.selection.floor);
    const unsigned int first = floors.first, end = floors.second;  // clang captures no bindings
    const auto through = ahead ? FileWalk::Through::Bodies : FileWalk::Through::Elements;
    const FileWalk walk(block, chosen.IsWalk() ? through : FileWalk::Through::Nothing,
                        chosen.IsWhole() ? ahead : nullptr);
    std::size_t taken = 0;
    for (unsigned int floor = first; floor < end; ++floor) {
        const std::wstring floorName = block.FloorName(floor);
        if (!chosen.MayHold(floor)) continue;
        const std::size_t count = block.FloorCompNum(floor);
        block.ForEachComp(floor, [&](const SZVLGCompIndex& index, const SZVLGZvgComp& comp) {
            pace.Tell("exporting", (floor - first) * count + index.compIndex,
                      (end - first) * count);
            if (!chosen.Holds({index.floorIndex, index.compIndex}, comp)) return;
            block.Limits().Work(stepsOfComponent + BytesOf(comp) - sizeof comp);
            use({index, floorName, comp});
            ++taken;
        });
    }
    if (!options.salvage || taken == 0) block.ThrowIfDamaged();
    if (taken == 0) ThrowIfNamed(options.selection, block);
    return taken;
}

std::string SourceOf(OpenedBlock& block) {
    SZVLGZvgBlockHeadInfo head;
    block.Reader().GetHeadInfo(head);
    return ToUtf8(head.firstText);
}

ExportModel ReadExport(OpenedBlock& block, const ExportOptions& options, ProgressPace& pace) {
    ExportModel model;
    model.name = std::filesystem::path(block.Path()).stem().string();
    model.name = ToUtf8(FromUtf8(model.name));
    model.source = SourceOf(block);
    SceneReader scene(block, options.salvage);
    Groups groups(model);
    ForEachChosen(block, options, pace, scene.Ahead(), [&](const ChosenComponent& chosen) {
        const auto& [index, floorName, comp] = chosen;
        block.Limits().Memory(bytesOfComponent + 5 * (BytesOf(comp) - sizeof comp));
        scene.Add(comp);
        model.components.push_back({groups.Of(index.floorIndex, floorName, comp),
                                    ComponentName(comp),
                                    ComponentExtras(index, comp, options.properties)});
    });
    model.missingGeometries = scene.MissingGeometries();
    model.scene = scene.Take();
    return model;
}

}  // namespace ZVSmartModel
