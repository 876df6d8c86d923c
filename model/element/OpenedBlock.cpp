#include "model/element/OpenedBlock.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstring>
#include <thread>
#include <utility>

#include "model/element/LackOfMemory.h"
#include "model/element/RecordBytes.h"
#include "model/element/Utf8.h"

namespace ZVSmartModel {

using ZVSmartFormat::CZVFTStreamException;
using ZVSmartFormat::u64;
using ZVSmartZvg::EZVLGMiss;

namespace {

Damage DamageOf(const ZVSmartZvg::SZVLGBlockFinding& finding) {
    return {finding.position, finding.reason};
}

std::string DamageText(const Damage& damage) {
    return damage.reason + ", at position " + std::to_string(damage.position);
}

/// Lack of memory says nothing about a file: throws on the exception that is being handled.
void PassOnLackOfMemory(const CZVFTStreamException& exception) {
    if (IsOutOfMemory(exception)) throw;
}

}  // namespace

void OpenedFile::ThrowIfUnread() const {
    if (!file || file->Failure() == 0) return;
    throw Error(Status::InputOutput, path + ": " + std::strerror(file->Failure()), path);
}

void OpenedFile::ThrowUnread() const {
    ThrowIfUnread();
    throw Error(Status::InputOutput, path + ": became shorter while it was read", path);
}

OpenedBlock::OpenedBlock(OpenedFile opened, Budget& limits, const OpenOptions& options)
    : file(std::move(opened)),
      limits(limits),
      threads(options.threads != 0 ? options.threads : std::thread::hardware_concurrency()) {
    limits.AddFile(file.Path(), FileBytes());
    reader.SetDecodedBlockLimit(limits.BlockLimit(FileBytes()));
    reader.SetCacheBytes(options.cacheBytes);
    bool isOpen = false;
    try {
        isOpen = reader.Init(&file.Stream());
    } catch (const CZVFTStreamException& exception) {
        PassOnLackOfMemory(exception);
        if (!LastDamage()) ThrowForeign(exception.what());
    }
    const std::optional<Damage> damage = LastDamage();
    if (!isOpen) {
        throw ErrorAbout(Status::Damaged,
                         "damaged or incomplete: " + (damage ? DamageText(*damage) : ""),
                         damage ? damage->position : Error::noPosition);
    }
    if (damage) RememberDamage(*damage);
    ZVSmartZvg::SZVLGBlockFinding misfit;
    if (reader.GetStructureFinding(misfit)) RememberDamage(DamageOf(misfit));
    metAtOpening = metNow;
}

void OpenedBlock::ThrowForeign(const std::string& reason) {
    if (FileBytes() == 0) throw ErrorAbout(Status::Damaged, "the file is empty, no block file");
    throw ErrorAbout(Status::Damaged, "head: " + reason);
}

/// Runs a query; what its answer or its exception hides is remembered. False where anything is.
template <class Query>
bool OpenedBlock::Ask(Query query) {
    try {
        query();
    } catch (const CZVFTStreamException& exception) {
        PassOnLackOfMemory(exception);
    }
    const std::optional<Damage> damage = LastDamage();
    isAnswerWhole = !damage;
    if (!damage) return true;
    RememberDamage(*damage);
    latestDamage = *damage;
    return false;
}

/// What the last query hid; what it could not read is no damage.
std::optional<Damage> OpenedBlock::LastDamage() {
    ZVSmartZvg::SZVLGBlockFinding finding;
    const EZVLGMiss miss = reader.GetLastMiss(finding);
    if (miss == EZVLGMiss::Unread) file.ThrowUnread();
    if (miss == EZVLGMiss::TooLarge) limits.EndMemory();
    if (miss != EZVLGMiss::Damaged) return std::nullopt;
    return DamageOf(finding);
}

std::wstring OpenedBlock::FloorName(unsigned int floor) {
    std::wstring name;
    Ask([&] { name = reader.GetFloorNameByIndex(floor); });
    return name;
}

unsigned int OpenedBlock::FloorOrder(unsigned int floor) {
    unsigned int order = ZVSmartZvg::ZVLG_NONE;
    Ask([&] { order = reader.GetFloorOrderByIndex(floor); });
    return order;
}

std::pair<unsigned long long, unsigned long long> OpenedBlock::FloorData(unsigned int floor) {
    std::pair<unsigned long long, unsigned long long> data;
    Ask([&] { reader.GetFloorDataByIndex(floor, data.first, data.second); });
    return data;
}

std::pair<double, double> OpenedBlock::FloorMetres(unsigned int floor) {
    const auto realOf = [](u64 bits) {
        const auto value = std::bit_cast<double>(bits);
        return value == value ? value : 0;  // no number at all says nothing
    };
    const auto [elevation, height] = FloorData(floor);
    return {realOf(elevation), realOf(height)};
}

unsigned int OpenedBlock::FindFloor(const std::string& text) {
    const unsigned int floors = reader.GetFloorNum();
    const std::optional<unsigned int> number = ParseNumber(text);
    if (number && *number < floors) return *number;
    const std::wstring name = FromUtf8(text);
    for (unsigned int floor = 0; floor < floors; ++floor) {
        const std::wstring found = FloorName(floor);
        limits.Work(100 + found.size());
        if (found == name) return floor;
    }
    ThrowIfDamaged();
    throw ErrorAbout(Status::NotFound, "no floor '" + text + "'");
}

std::pair<unsigned int, unsigned int> OpenedBlock::FindFloors(
    const std::optional<std::string>& text) {
    if (!text) return {0, reader.GetFloorNum()};
    const unsigned int floor = FindFloor(*text);
    return {floor, floor + 1};
}

unsigned int OpenedBlock::FloorCompNum(unsigned int floor) {
    return Counted("floor", floor, [&] { return reader.GetFloorCompNum(floor); });
}

unsigned int OpenedBlock::GeoNumInBlock(unsigned int block) {
    return Counted("geometry block", block, [&] { return reader.GetGeoNumInBlock(block); });
}

void OpenedBlock::BeginWalk(bool geometry, const GeoBlockUse& use) {
    if (walks == 0) {
        if (use) {
            reader.SetGeoReadAhead(threads, use);
        } else {
            reader.SetReadAhead(threads, geometry);
        }
    }
    ++walks;
}

void OpenedBlock::EndWalk() {
    if (--walks == 0) reader.SetReadAhead(0);
}

/// Does `act`, which may decode, and charges what that takes.
template <class Act>
auto OpenedBlock::Decoding(Act act) {
    return IsReadAhead() ? limits.TimedWithThreads(act) : limits.Timed(act);
}

void OpenedBlock::AwaitGeoBlock(unsigned int number, const std::function<std::uint64_t()>& apart) {
    lastGeoBlock = number;
    limits.TimedWithThreads(
        [&] {
            try {
                return reader.GetGeoNumInBlock(number);
            } catch (const CZVFTStreamException&) {
                return 0U;
            }
        },
        apart);
}

/// What `count()` says of the records of `what`; decoding them may take much.
template <class Count>
unsigned int OpenedBlock::Counted(const char* what, unsigned int number, Count count) {
    unsigned int counted = 0;
    const bool within = Within(what + (' ' + std::to_string(number)),
                               [&] { Decoding([&] { return Ask([&] { counted = count(); }); }); });
    return within ? counted : 0;
}

bool OpenedBlock::ReadComp(const ZVSmartZvg::SZVLGCompIndex& index,
                           ZVSmartZvg::SZVLGZvgComp& comp) {
    limits.Work(100);
    const u64 begun = Budget::ProcessorSteps();
    bool isRead = false;
    Ask([&] { isRead = reader.GetCompByIndex(index, comp); });
    // A record may turn out to be damaged at its very end, and nothing of it is there to count.
    limits.Work(isRead ? BytesOf(comp) / 8 : Budget::ProcessorSteps() - begun);
    return isRead;
}

bool OpenedBlock::ReadComp(const ZVSmartZvg::SZVLGCompIndex& index,
                           const ZVSmartZvg::SZVLGCompParts& parts,
                           ZVSmartZvg::SZVLGZvgComp& comp) {
    if (parts.properties && parts.propertyNameEnd.empty()) return ReadComp(index, comp);
    limits.Work(100);
    bool isRead = false;
    // What is passed takes time, too, and is not there to count.
    limits.Timed(
        [&] { return Ask([&] { isRead = reader.GetCompPartsByIndex(index, parts, comp); }); });
    return isRead;
}

bool OpenedBlock::ReadView(const ZVSmartZvg::SZVLGCompIndex& index,
                           const ZVSmartZvg::SZVLGCompParts& parts,
                           ZVSmartZvg::SZVLGCompView& view) {
    constexpr u64 bytesPerStep = 16;  // of the shortest texts; long ones are passed in one go
    limits.Work(50);
    bool isRead = false;
    Ask([&] { isRead = reader.GetCompViewByIndex(index, parts, view); });
    limits.Work(view.byteCount / bytesPerStep);  // also of what is damaged at its very end
    return isRead;
}

void OpenedBlock::ReadElement(const ZVSmartZvg::SZVLGCompIndex& index,
                              ZVSmartZvg::SZVLGZvgComp& comp) {
    ReadElement(index, [&] { return ReadComp(index, comp); });
}

void OpenedBlock::ReadElement(const ZVSmartZvg::SZVLGCompIndex& index,
                              const std::function<bool()>& read) {
    const std::string place = "element " + PlaceText(index.floorIndex, index.compIndex);
    latestDamage = {};
    const bool isThere = index.floorIndex < reader.GetFloorNum() &&
                         index.compIndex < FloorCompNum(index.floorIndex) && read();
    if (isThere) return;
    ThrowIfCutShort();
    if (!latestDamage.reason.empty()) ThrowLatestDamage();
    throw ErrorAbout(Status::NotFound, "no " + place);
}

void OpenedBlock::ThrowLatestDamage() const {
    throw ErrorAbout(Status::Damaged, "damaged: " + DamageText(latestDamage),
                     latestDamage.position);
}

/// Reads a record by `read` and charges what it takes. Asking the system for the time that each one
/// took would take as long as reading a small one; only one that ends in damage cannot be counted.
template <class Read>
bool OpenedBlock::Charged(const ZVSmartZvg::SZVLGZvgGeo& geo, Read read) {
    constexpr u64 bytesPerStep = 8;
    const u64 begun = Budget::ClockSteps();
    const bool isWhole = read();
    limits.Work(isWhole ? BytesOf(geo) / bytesPerStep : Budget::ClockSteps() - begun);
    return isWhole;
}

void OpenedBlock::ReadGeo(const ZVSmartZvg::SZVLGZvgGeoIndex& index, ZVSmartZvg::SZVLGZvgGeo& geo) {
    const bool isDecoded = lastGeoBlock == index.blockIndex;
    lastGeoBlock = index.blockIndex;
    bool isRead = false;
    const auto ask = [&] { return Ask([&] { isRead = reader.GetGeoByIndex(index, geo); }); };
    if (!(isDecoded ? Charged(geo, ask) : Decoding(ask))) ThrowLatestDamage();
    if (isRead) return;
    const std::string place = PlaceText(index.blockIndex, index.indexInBlock);
    throw ErrorAbout(Status::Damaged, "damaged: geometry " + place + " has no bytes");
}

bool OpenedBlock::ReadGeo(const std::wstring& identification, ZVSmartZvg::SZVLGZvgGeo& geo) {
    bool isRead = false;
    const auto query = [&] { isRead = reader.GetGeoByIdentification(identification, geo); };
    if (!limits.Timed([&] { return Ask(query); })) ThrowLatestDamage();
    return isRead;
}

std::optional<ZVSmartZvg::SZVLGZvgGeoImage> OpenedBlock::ReadPreview() {
    ZVSmartZvg::SZVLGZvgGeoImage image;
    bool isRead = false;
    Ask([&] { isRead = reader.GetPreviewImage(image); });
    if (!isRead) return std::nullopt;
    return image;
}

unsigned int OpenedBlock::DecodedBytes() {
    unsigned int bytes = 0;
    Ask([&] { bytes = reader.GetEstimatedDataSize(); });
    return bytes;
}

void OpenedBlock::ThrowIfCutShort() const {
    if (!leftOut.empty()) throw ErrorAbout(Status::Damaged, leftOut);
}

/// What a query meets says more than what does not fit together in the file.
std::optional<Error> OpenedBlock::Verdict() const {
    if (!leftOut.empty()) return ErrorAbout(Status::Damaged, leftOut);
    const std::vector<Damage>& met = metNow.All();
    if (met.empty()) return std::nullopt;
    const Damage& first = met[HasMetDamage() ? metAtOpening.All().size() : 0];
    std::string text = "damaged: " + DamageText(first);
    if (met.size() > 1) {
        const std::string most = met.size() == DamageList::most ? "at least " : "";
        text += " (and " + most + std::to_string(met.size() - 1) + " more)";
    }
    return ErrorAbout(Status::Damaged, text, first.position);
}

void OpenedBlock::ThrowIfDamaged() const {
    if (const std::optional<Error> verdict = Verdict()) throw Error(*verdict);
}

Error OpenedBlock::ErrorAbout(Status status, const std::string& reason,
                              std::uint64_t position) const {
    return Error(status, Path() + ": " + reason, Path(), position);
}

void OpenedBlock::RememberDamage(const Damage& damage) {
    damages.Add(damage);
    metNow.Add(damage);
}

void OpenedBlock::Renew() {
    limits.Renew();
    limits.AddFile(file.Path(), FileBytes());
    leftOut.clear();
    metNow = metAtOpening;
}

void OpenedBlock::LeaveOut(const std::string& what, const BudgetUsedUp& end) {
    if (leftOut.empty()) leftOut = what + " and what follows are left out: " + end.Reason();
}

std::string PlaceText(unsigned int table, unsigned int position) {
    return std::to_string(table) + ':' + std::to_string(position);
}

std::optional<unsigned int> ParseNumber(std::string_view text) {
    unsigned int number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end) return std::nullopt;
    return number;
}

}  // namespace ZVSmartModel
