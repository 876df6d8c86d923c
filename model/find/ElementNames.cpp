#include "model/find/ElementNames.h"

#include "model/element/BlockFileImp.h"
#include "model/element/ElementReader.h"
#include "model/element/ElementRecord.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

ElementNames::ElementNames(OpenedBlock& block) {
    const FileWalk walk(block, FileWalk::Through::Elements);
    const unsigned int floors = block.Reader().GetFloorNum();
    Budget& limits = block.Limits();
    const auto note = [&limits](Table& table, std::string_view key, ElementIndex index) {
        limits.Memory(100 + key.size());
        table[std::string(key)].push_back(index);
    };
    ElementReader reader({NameAlone(), false});
    for (unsigned int floor = 0; floor < floors; ++floor) {
        reader.ForEach(block, floor, [&](const ElementView& element) {
            note(byGuid, element.guid, element.index);
            if (!element.name.empty()) note(byName, element.name, element.index);
            for (const std::string_view parent : element.parents) {
                note(byParent, parent, element.index);
            }
        });
    }
    block.ThrowIfCutShort();
    if (block.HasMetDamage()) damage = block.Verdict();
}

void ElementNames::ThrowIfPartial() const {
    if (damage) throw Error(*damage);
}

const ElementNames::Places& ElementNames::Find(const Table& table, const std::string& key) {
    static const Places none;
    const auto found = table.find(key);
    return found == table.end() ? none : found->second;
}

const ElementNames& NamesOf(BlockFile::Imp& imp, OpenedBlock& block) {
    if (!imp.names) imp.names = std::make_shared<ElementNames>(block);
    return *imp.names;
}

namespace {

/// Who is not found may be among those that cannot be read.
const ElementNames::Places& Told(const ElementNames& names, const ElementNames::Places& found) {
    if (found.empty()) names.ThrowIfPartial();
    return found;
}

}  // namespace

std::optional<ElementIndex> BlockFile::FindGuid(const std::string& guid) const {
    return imp->Ask([&](OpenedBlock& block) -> std::optional<ElementIndex> {
        const ElementNames& names = NamesOf(*imp, block);
        const ElementNames::Places& found = Told(names, names.OfGuid(guid));
        if (found.empty()) return std::nullopt;
        return found.front();
    });
}

std::vector<ElementIndex> BlockFile::FindName(const std::string& name) const {
    return imp->Ask([&](OpenedBlock& block) {
        const ElementNames& names = NamesOf(*imp, block);
        return Told(names, names.OfName(name));
    });
}

std::vector<ElementIndex> BlockFile::PartsOf(const std::string& guid) const {
    return imp->Ask([&](OpenedBlock& block) {
        const ElementNames& names = NamesOf(*imp, block);
        return Told(names, names.OfParent(guid));
    });
}

}  // namespace ZVSmartModel
