#include "model/query/ComponentScan.h"

#include <algorithm>
#include <utility>

#include "model/element/BlockFileImp.h"

namespace ZVSmartModel {

namespace {

/// Cuts numbers from `first` to before `end` down to the one that is wanted.
void Narrow(unsigned int& first, unsigned int& end, std::optional<std::int64_t> wanted) {
    if (!wanted) return;
    if (*wanted < first || *wanted >= end) {
        end = first;
    } else {
        first = static_cast<unsigned int>(*wanted);
        end = first + 1;
    }
}

}  // namespace

ComponentScan::ComponentScan(QueriedFiles& files, unsigned int file, const Request& request,
                             RowsOf rowsOf, ElementReader::Wants wants)
    : files(files),
      file(file),
      request(request),
      rowsOf(rowsOf),
      reader(std::move(wants)),
      itself(files.Open(file)) {}

ComponentScan::~ComponentScan() {
    if (walk) itself->Internals().GoOn([this](OpenedBlock&) { walk.reset(); });
}

bool ComponentScan::Next(RowBatch& rows) {
    if (!itself) return false;
    const auto read = [&](OpenedBlock& block) {
        if (!isBegun) Begin(block);
        const std::string from = "what begins at component " + PlaceText(floor, position);
        const auto readSome = [&] { only ? ReadOnly(block, rows) : ReadSome(block, rows); };
        if (!block.Within(from, readSome)) isOver = true;
        if (const std::optional<Error> verdict = block.Verdict()) files.NoteFault(file, *verdict);
        return !isOver;
    };
    // A budget for the whole file; those who ask it meanwhile have their own.
    return isBegun ? itself->Internals().GoOn(read) : itself->Internals().Ask(read);
}

void ComponentScan::Begin(OpenedBlock& block) {
    isBegun = true;
    endOfFloors = block.Reader().GetFloorNum();
    if (endOfFloors > ElementId::mostFloors) {
        NoteTooMany(block, "floors");
        endOfFloors = ElementId::mostFloors;
    }
    Narrow(floor, endOfFloors, request.floor);
    if (request.element) Narrow(floor, endOfFloors, request.element->index.floor);
    if (!only && endOfFloors - floor > 1) walk.emplace(block, FileWalk::Through::Elements);
}

void ComponentScan::ReadOnly(OpenedBlock& block, RowBatch& rows) {
    for (; nextOnly < only->size() && !rows.IsFull(); ++nextOnly) {
        const ElementIndex index = (*only)[nextOnly];
        const bool isWanted = index.floor >= floor && index.floor < endOfFloors &&
                              request.position.value_or(index.position) == index.position;
        if (isWanted) Read(block, index, rows);
    }
    isOver = nextOnly == only->size();
}

void ComponentScan::ReadSome(OpenedBlock& block, RowBatch& rows) {
    while (!rows.IsFull()) {
        if (!FindFloor(block)) {
            isOver = true;
            return;
        }
        for (; position < endOfPositions && !rows.IsFull(); ++position) {
            Read(block, {floor, position}, rows);
        }
    }
}

/// The floor that is being read, or the next one. False behind the last.
bool ComponentScan::FindFloor(OpenedBlock& block) {
    while (!isOnFloor || position == endOfPositions) {
        if (isOnFloor) ++floor;
        isOnFloor = false;
        if (floor >= endOfFloors) return false;
        position = 0;
        endOfPositions = block.FloorCompNum(floor);
        if (endOfPositions > ElementId::mostPositions) {
            NoteTooMany(block, "components on a floor");
            endOfPositions = ElementId::mostPositions;
        }
        Narrow(position, endOfPositions, request.position);
        if (request.element) Narrow(position, endOfPositions, request.element->index.position);
        isOnFloor = true;
    }
    return true;
}

void ComponentScan::Read(OpenedBlock& block, ElementIndex index, RowBatch& rows) {
    const ElementView* const element = reader.Read(block, index);
    if (element == nullptr) return;
    const bool hasBody = !reader.Stored().geoRefs.empty();
    rowsOf({files.Path(file), index, ElementId{file, index}.Number(), *element, hasBody}, request,
           rows);
}

void ComponentScan::NoteTooMany(const OpenedBlock& block, const char* what) {
    const std::string reason = std::string("more ") + what + " than a query numbers";
    files.NoteFault(file, block.ErrorAbout(Status::Damaged, reason));
}

}  // namespace ZVSmartModel
