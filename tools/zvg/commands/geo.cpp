#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "model/element/BlockFileImp.h"
#include "model/element/Utf8.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/reading/GeoDocument.h"
#include "tools/zvg/reading/Lookup.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Document.h"

namespace ZVSmartModel::Tool {

using namespace ZVSmartZvg;

namespace {

std::optional<SZVLGZvgGeoIndex> FindIdentification(OpenedBlock& block, const std::wstring& wanted) {
    std::optional<SZVLGZvgGeoIndex> found;
    block.ForEachIdentification([&](const std::wstring& name, const SZVLGZvgGeoIndex& index) {
        if (!found && name == wanted) found = index;
    });
    return found;
}

std::optional<SZVLGZvgGeoIndex> ParseIndex(const std::string& text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) return std::nullopt;
    const std::optional<unsigned int> block = ParseNumber(text.substr(0, colon));
    const std::optional<unsigned int> position = ParseNumber(text.substr(colon + 1));
    if (!block || !position) return std::nullopt;
    return SZVLGZvgGeoIndex{*block, *position};
}

bool IsThere(OpenedBlock& block, const SZVLGZvgGeoIndex& index) {
    if (index.blockIndex >= block.Reader().GetGeoBlockNum()) return false;
    return index.indexInBlock < block.GeoNumInBlock(index.blockIndex);
}

/// The stored geometries of an element, each once. Throws Error, NotFound, where it has none.
std::vector<SZVLGZvgGeoIndex> GeosOfElement(OpenedBlock& block, const ElementIndex& place) {
    SZVLGZvgComp comp;
    block.ReadElement({place.floor, place.position}, comp);
    std::set<std::wstring> names;
    for (const SZVLGZvgCompGeoRef& ref : comp.geoRefs) {
        for (const SZVLGZvgGeoId& row : ref.geoIds) names.insert(GetGeoIdentification(row));
    }
    std::vector<SZVLGZvgGeoIndex> geos;
    std::set<std::pair<unsigned int, unsigned int>> known;
    block.ForEachIdentification([&](const std::wstring& name, const SZVLGZvgGeoIndex& index) {
        const bool isNew = names.count(name) != 0 && IsThere(block, index) &&
                           known.emplace(index.blockIndex, index.indexInBlock).second;
        if (isNew) geos.push_back(index);
    });
    block.ThrowIfDamaged();
    if (!geos.empty()) return geos;
    throw block.ErrorAbout(Status::NotFound,
                           "no geometry of component " + PlaceText(place.floor, place.position));
}

/// The geometry that `key` names; none where it names none. An identification may look like
/// BLOCK:POS; it goes first.
std::optional<SZVLGZvgGeoIndex> FindGeo(OpenedBlock& block, const std::string& key) {
    const auto stored = FindIdentification(block, FromUtf8(key));
    const auto index = stored ? stored : ParseIndex(key);
    if (index && IsThere(block, *index)) return index;
    block.ThrowIfDamaged();
    if (!stored) return std::nullopt;
    throw block.ErrorAbout(Status::Damaged,
                           "damaged: the identification '" + key + "' leads nowhere");
}

Document IdentificationsOf(OpenedBlock& block, const SZVLGZvgGeoIndex& wanted) {
    Document list = Document::array();
    block.ForEachIdentification([&](const std::wstring& name, const SZVLGZvgGeoIndex& index) {
        const bool leadsHere =
            index.blockIndex == wanted.blockIndex && index.indexInBlock == wanted.indexInBlock;
        if (!leadsHere) return;
        block.Limits().Memory(100 + 10 * name.size());
        list.push_back(ToUtf8(name));
    });
    return list;
}

void PrintGeo(OpenedBlock& block, const SZVLGZvgGeoIndex& index, const std::string& file,
              bool asJson) {
    SZVLGZvgGeo geo;
    block.ReadGeo(index, geo);
    Document document = NewDocument(file);
    document["geometry"] = PlaceText(index.blockIndex, index.indexInBlock);
    document["identifications"] = IdentificationsOf(block, index);
    document.update(GeoDocument(geo, block.Limits()));
    PrintDocument(document, asJson);
    block.ThrowIfDamaged();
    if (!document.contains("recordsLeftOut")) return;
    throw block.ErrorAbout(Status::Damaged,
                           document["recordsLeftOut"].dump() +
                               " of its records are left out: more memory than the file's size "
                               "accounts for (--no-limit takes it)");
}

void Geo(const std::string& path, const std::string& key, const CommonOptions& common) {
    const BlockFile file = OpenBlockFile(path, common);
    std::vector<SZVLGZvgGeoIndex> geos;
    file.Internals().Ask([&](OpenedBlock& block) {
        if (const auto index = FindGeo(block, key)) geos = {*index};
        if (!geos.empty()) PrintGeo(block, geos.front(), path, common.json);
    });
    if (!geos.empty()) return;
    std::optional<ElementIndex> place;
    try {
        place = FindElement(file, path, key);
    } catch (const Error& error) {
        if (error.GetStatus() != Status::NotFound) throw;
        throw Error(Status::NotFound, InputName(path) + ": no geometry '" + key + "'");
    }
    file.Internals().Ask([&](OpenedBlock& block) {
        for (const SZVLGZvgGeoIndex& index : GeosOfElement(block, *place)) {
            PrintGeo(block, index, path, common.json);
        }
    });
}

}  // namespace

void RegisterGeo(CLI::App& app, CommonOptions& common) {
    const auto file = std::make_shared<std::string>();
    const auto key = std::make_shared<std::string>();
    CLI::App* const command = AddReadingCommand(
        app, "geo",
        "Print what a stored geometry holds; named transforms and display attributes are shown, "
        "not applied",
        "zvg geo house.zvg 0:12", *file);
    command
        ->add_option("KEY|BLOCK:POS|GUID|NAME", *key,
                     "The geometry: its identification, or its block and its position there; or "
                     "all of one component, by its GUID name or what it is called")
        ->required();
    AddLimitOption(*command, common);
    command->callback([file, key, &common] { Geo(*file, *key, common); });
}

}  // namespace ZVSmartModel::Tool
