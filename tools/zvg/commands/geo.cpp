#include <memory>
#include <optional>
#include <string>

#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/reading/GeoDocument.h"
#include "tools/zvg/reading/OpenedBlock.h"
#include "tools/zvg/text/Document.h"
#include "tools/zvg/text/Utf8.h"

using namespace ZVSmartZvg;

namespace {

std::optional<SZVLGZvgGeoIndex> FindIdentification(CZVLGBlockReader& reader,
                                                   const std::wstring& wanted) {
    std::wstring identification;
    SZVLGZvgGeoIndex index;
    const unsigned int count = reader.GetGeoIdentificationNum();
    for (unsigned int i = 0; i < count; ++i) {
        if (!reader.GetGeoIdentificationByIndex(i, identification, index)) break;
        if (identification == wanted) return index;
    }
    return std::nullopt;
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

/// An identification may look like BLOCK:POS; it goes first.
SZVLGZvgGeoIndex FindGeo(OpenedBlock& block, const std::string& key) {
    const auto stored = FindIdentification(block.Reader(), FromUtf8(key));
    const auto index = stored ? stored : ParseIndex(key);
    if (index && IsThere(block, *index)) return *index;
    block.ThrowIfDamaged();
    if (!stored) throw block.Error(ExitStatus::NotFound, "no geometry '" + key + "'");
    throw block.Error(ExitStatus::Damaged,
                      "damaged: the identification '" + key + "' leads nowhere");
}

Document IdentificationsOf(CZVLGBlockReader& reader, const SZVLGZvgGeoIndex& wanted) {
    Document list = Document::array();
    std::wstring identification;
    SZVLGZvgGeoIndex index;
    const unsigned int count = reader.GetGeoIdentificationNum();
    for (unsigned int i = 0; i < count; ++i) {
        if (!reader.GetGeoIdentificationByIndex(i, identification, index)) break;
        const bool leadsHere =
            index.blockIndex == wanted.blockIndex && index.indexInBlock == wanted.indexInBlock;
        if (leadsHere) list.push_back(ToUtf8(identification));
    }
    return list;
}

void Geo(const std::string& file, const std::string& key, bool asJson) {
    OpenedBlock block(file);
    const SZVLGZvgGeoIndex index = FindGeo(block, key);
    SZVLGZvgGeo geo;
    block.ReadGeo(index, geo);
    Document document = NewDocument(file);
    document["geometry"] = PlaceText(index.blockIndex, index.indexInBlock);
    document["identifications"] = IdentificationsOf(block.Reader(), index);
    document.update(GeoDocument(geo));
    PrintDocument(document, asJson);
    block.ThrowIfDamaged();
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
        ->add_option("KEY|BLOCK:POS", *key,
                     "The geometry: its identification, or its block and its position there")
        ->required();
    command->callback([file, key, &common] { Geo(*file, *key, common.json); });
}
