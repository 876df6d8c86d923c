#include "tools/zvg/reading/OpenedBlock.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <vector>

#include "ZVSmartFormat/FileStream.h"
#include "ZVSmartZvg/BlockVerifier.h"
#include "tools/zvg/output/OutOfMemory.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Utf8.h"

using ZVSmartFormat::CZVFTStreamException;

namespace {

std::unique_ptr<ZVSmartFormat::CZVFTInStream> Opened(const std::string& path) {
    if (path == "-") return std::make_unique<StandardInput>();
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        throw ToolError(ExitStatus::InputOutput, path + ": is a directory");
    }
    errno = 0;
    auto stream = std::make_unique<ZVSmartFormat::CZVFTFileInStream>(path);
    if (stream->Open()) return stream;
    const std::string reason = errno != 0 ? std::strerror(errno) : "cannot be opened";
    throw ToolError(ExitStatus::InputOutput, path + ": " + reason);
}

}  // namespace

OpenedFile::OpenedFile(const std::string& path)
    : path(path == "-" ? "standard input" : path), stream(Opened(path)) {}

OpenedBlock::OpenedBlock(const std::string& path) : file(path) {
    try {
        if (reader.Init(&file.Stream())) return;
    } catch (const CZVFTStreamException& exception) {
        throw Error(ExitStatus::Damaged, "head: " + DamageOf(exception));
    }
    throw Error(ExitStatus::Damaged,
                "the index does not decode: the file is damaged or incomplete");
}

unsigned int OpenedBlock::FindFloor(const std::string& text) {
    const unsigned int floors = reader.GetFloorNum();
    const std::optional<unsigned int> number = ParseNumber(text);
    if (number && *number < floors) return *number;
    const std::wstring name = FromUtf8(text);
    for (unsigned int floor = 0; floor < floors; ++floor) {
        if (reader.GetFloorNameByIndex(floor) == name) return floor;
    }
    throw Error(ExitStatus::NotFound, "no floor '" + text + "'");
}

std::pair<unsigned int, unsigned int> OpenedBlock::FindFloors(
    const std::optional<std::string>& text) {
    if (!text) return {0, reader.GetFloorNum()};
    const unsigned int floor = FindFloor(*text);
    return {floor, floor + 1};
}

unsigned int OpenedBlock::FloorCompNum(unsigned int floor) {
    const unsigned int count = reader.GetFloorCompNum(floor);
    if (count == 0) CheckEmpty("floor " + std::to_string(floor));
    return count;
}

unsigned int OpenedBlock::GeoNumInBlock(unsigned int block) {
    const unsigned int count = reader.GetGeoNumInBlock(block);
    if (count == 0) CheckEmpty("geometry block " + std::to_string(block));
    return count;
}

bool OpenedBlock::ReadComp(const ZVSmartZvg::SZVLGCompIndex& index,
                           ZVSmartZvg::SZVLGZvgComp& comp) {
    const std::string place = "component " + PlaceText(index.floorIndex, index.compIndex);
    try {
        if (reader.GetCompByIndex(index, comp)) return true;
        RememberDamage(place + ": cannot be read");
    } catch (const CZVFTStreamException& exception) {
        RememberDamage(place + ": " + DamageOf(exception));
    }
    return false;
}

void OpenedBlock::ReadGeo(const ZVSmartZvg::SZVLGZvgGeoIndex& index, ZVSmartZvg::SZVLGZvgGeo& geo) {
    const std::string place = "geometry " + PlaceText(index.blockIndex, index.indexInBlock) + ": ";
    try {
        if (reader.GetGeoByIndex(index, geo)) return;
    } catch (const CZVFTStreamException& exception) {
        throw Error(ExitStatus::Damaged, place + DamageOf(exception));
    }
    throw Error(ExitStatus::Damaged, place + "cannot be read");
}

std::optional<ZVSmartZvg::SZVLGZvgGeoImage> OpenedBlock::ReadPreview() {
    ZVSmartZvg::SZVLGZvgGeoImage image;
    try {
        if (reader.GetPreviewImage(image)) return image;
    } catch (const CZVFTStreamException& exception) {
        RememberDamage("preview image: " + DamageOf(exception));
    }
    return std::nullopt;
}

void OpenedBlock::ThrowIfDamaged() const {
    if (damages == 0) return;
    const std::string others = " (and " + std::to_string(damages - 1) + " more)";
    throw Error(ExitStatus::Damaged, firstDamage + (damages > 1 ? others : ""));
}

ToolError OpenedBlock::Error(ExitStatus status, const std::string& reason) const {
    return ToolError(status, Path() + ": " + reason);
}

void OpenedBlock::RememberDamage(const std::string& reason) {
    if (damages++ == 0) firstDamage = reason;
}

// The reader counts 0 for what does not decode. A whole check, at most one per run, tells that
// from what is truly empty.
void OpenedBlock::CheckEmpty(const std::string& what) {
    if (emptinessChecked) return;
    emptinessChecked = true;
    std::vector<ZVSmartZvg::SZVLGBlockFinding> findings;
    if (ZVSmartZvg::CZVLGBlockVerifier().Verify(&file.Stream(), findings)) return;
    const std::string reason = findings.empty() ? "" : ": " + findings.front().reason;
    RememberDamage(what + " cannot be read" + reason);
}

std::string DamageOf(const CZVFTStreamException& exception) {
    if (IsOutOfMemory(exception)) throw;
    return exception.what();
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
