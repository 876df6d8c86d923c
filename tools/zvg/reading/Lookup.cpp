#include "tools/zvg/reading/Lookup.h"

#include <optional>

#include "model/element/BlockFileImp.h"
#include "tools/zvg/reading/StandardInput.h"

namespace ZVSmartModel::Tool {

namespace {

/// None where the text is no FLOOR:POS; floors' names may hold colons, so the last one ends the
/// floor. Throws Error, NotFound, where nothing stands there.
std::optional<ElementIndex> FindPlace(const BlockFile& file, const std::string& text) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos) return std::nullopt;
    const std::optional<unsigned int> position = ParseNumber(text.substr(colon + 1));
    if (!position) return std::nullopt;
    return file.Internals().Ask([&](OpenedBlock& block) {
        const unsigned int floor = block.FindFloor(text.substr(0, colon));
        if (*position < block.FloorCompNum(floor)) return ElementIndex{floor, *position};
        block.ThrowIfDamaged();
        throw block.ErrorAbout(Status::NotFound, "no component " + text);
    });
}

std::vector<ElementIndex> FindByName(const BlockFile& file, const std::string& text) {
    if (const std::optional<ElementIndex> index = file.FindGuid(text)) return {*index};
    return file.FindName(text);
}

}  // namespace

std::vector<ElementIndex> FindElements(const BlockFile& file, const std::string& path,
                                       const std::string& text) {
    std::optional<Error> nothingThere;  // where the text is a place
    try {
        if (const std::optional<ElementIndex> place = FindPlace(file, text)) return {*place};
    } catch (const Error& error) {
        if (error.GetStatus() != Status::NotFound) throw;
        nothingThere.emplace(error);
    }
    std::vector<ElementIndex> named = FindByName(file, text);
    if (!named.empty()) return named;
    if (nothingThere) throw Error(*nothingThere);
    throw Error(Status::NotFound, InputName(path) + ": no component '" + text + "'");
}

ElementIndex FindElement(const BlockFile& file, const std::string& path, const std::string& text) {
    const std::vector<ElementIndex> found = FindElements(file, path, text);
    if (found.size() == 1) return found.front();
    constexpr std::size_t mostTold = 5;
    std::string places;
    for (std::size_t i = 0; i < found.size() && i < mostTold; ++i) {
        places += (i == 0 ? "" : ", ") + PlaceText(found[i].floor, found[i].position);
    }
    if (found.size() > mostTold) places += " ...";
    throw Error(Status::Usage, InputName(path) + ": " + std::to_string(found.size()) +
                                   " components are called '" + text + "': " + places);
}

void ThrowIfDamaged(const BlockFile& file) {
    file.Internals().GoOn([](OpenedBlock& block) { block.ThrowIfDamaged(); });
}

}  // namespace ZVSmartModel::Tool
