#include "container/ClassCheck.h"

#include <tuple>

#include "container/IdentityCheck.h"

namespace ZVSmartZvg {

using ZVSmartFormat::RecordInStream;

void ClassCheck::Read(RecordInStream& index, const Place& place) {
    Read(index, place, level2);
}

template <class Level>
void ClassCheck::Read(RecordInStream& index, const Place& place, Table<Level>& table) {
    const u64 start = index.GetPos();
    ZVSmartSerial::FieldReader<RecordInStream> reader(index);
    Identities identities;
    const auto visit = [&](u32 i) {
        SZVLGZvgComp row;
        Level::VisitRow(reader, row, version);
        identities.Meet(i, Level::Identity(row));
        typename Table<Level>::Below tables;
        std::apply([&](auto&... below) { (Read(index, place, below), ...); }, tables);
        table.rows[i] = std::move(tables);
    };
    const Section section = CheckSection(index, place, Level::name, findings, visit);
    identities.Tell(
        place.Of(start), [&] { return place.Name(Level::name, start); }, findings);
    table.count = section.Count();
    table.isKnown = true;
}

}  // namespace ZVSmartZvg
