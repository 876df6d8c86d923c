#include "geometry/GeoBlockStore.h"

#include <algorithm>

#include "geometry/GeoSerial.h"
#include "geometry/LeadingBytes.h"
#include "stream/Failures.h"
#include "stream/FieldWriter.h"
#include "stream/WideText.h"

namespace ZVSmartZvg {

using ZVSmartFormat::AllocBuffer;
using ZVSmartFormat::CZVFTAllocBufferOutStream;
using ZVSmartFormat::CZVFTOutStream;
using ZVSmartFormat::KeyTable;

namespace {

std::string KeyOf(const std::wstring& identification) {
    std::string key;
    ZVSmartFormat::AppendUtf16(identification, key);
    return key;
}

}  // namespace

GeoBlockStore::GeoBlockStore(CZVFTOutStream& out, ZVSmartFormat::BlockQueue& blocks,
                             AllocBuffer& scratch, unsigned int version, u32 geosPerBlock)
    : blocks(blocks),
      scratch(scratch),
      version(version),
      geosPerBlock(geosPerBlock),
      section(out) {}

void GeoBlockStore::Add(const std::wstring& identification, const SZVLGZvgGeo& geo) {
    if (identification.empty()) return;
    CheckOpen();
    CheckGeo(geo, version);
    const u32 block = geoCount / geosPerBlock;
    if (block != currentBlock) {
        WriteBlock();
        currentBlock = block;
    }

    const std::string key = KeyOf(identification);
    u32 position = blockKeys.Find(key);
    if (position == KeyTable::none) {
        position = blockKeys.Count();
        AppendToBlock(key, geo);
    }
    if (keys.Find(key) != KeyTable::none) return;
    indices.resize(keys.Count() + std::size_t{1});  // one more, or what a throw below left behind
    indices.back() = {block, position};
    keys.Add(key);
}

void GeoBlockStore::AppendToBlock(const std::string& key, const SZVLGZvgGeo& geo) {
    if (geoCount == KeyTable::none) ZVSmartFormat::ThrowNotWritten();
    CZVFTAllocBufferOutStream bytes(&scratch);
    WriteGeo(bytes, geo, version);
    blockRows.Append(
        {reinterpret_cast<const char*>(scratch.data), static_cast<std::size_t>(bytes.GetPos())});
    try {
        blockKeys.Add(key);
    } catch (...) {
        blockRows.RemoveLast();
        throw;
    }
    ++geoCount;
}

bool GeoBlockStore::AddPreview(const SZVLGZvgGeoImage& image) {
    if (image.pixels == nullptr || Has(previewIdentification)) return false;
    SZVLGZvgGeo record;
    record.images.push_back(image);
    record.images.front().name = previewIdentification;
    Add(previewIdentification, record);
    return true;
}

bool GeoBlockStore::Has(const std::wstring& identification) const {
    return !identification.empty() && keys.Find(KeyOf(identification)) != KeyTable::none;
}

void GeoBlockStore::WriteBlock() {
    CZVFTAllocBufferOutStream content(&scratch);
    SectionWriter records(content);
    ZVSmartSerial::CZVFTSerialWriter writer(&content);
    for (u32 i = 0; i < blockRows.Count(); ++i) {
        const std::string_view row = blockRows.Row(i);
        records.BeginRecord();
        writer.WriteU32(static_cast<u32>(row.size()));
        writer.WriteBytes(row.data(), row.size());
    }
    records.End();

    closed = true;
    blockRows.Clear();  // before the coder takes memory of its own
    blockKeys.Clear();
    blocks.Do([this] { section.BeginRecord(); });
    blocks.Write(scratch.data, content.GetPos());
    closed = false;
}

void GeoBlockStore::Finish() {
    CheckOpen();
    if (geoCount != 0) WriteBlock();
    closed = true;
    blocks.Do([this] { section.End(); });
}

std::vector<GeoBlockStore::KeyPlace> GeoBlockStore::PlacesInKeyOrder() const {
    std::size_t common = keys.Count() == 0 ? 0 : keys.Key(0).size();
    for (u32 i = 1; i < keys.Count(); ++i)
        common = std::min(common, CommonBytes(keys.Key(0), keys.Key(i)));
    std::vector<KeyPlace> places(keys.Count());
    for (u32 i = 0; i < keys.Count(); ++i) places[i] = {LeadingBytes(keys.Key(i), common), i};
    // char_traits<char> compares bytes as unsigned, so this is the order of the units.
    std::sort(places.begin(), places.end(), [this](const KeyPlace& a, const KeyPlace& b) {
        return a.leading != b.leading ? a.leading < b.leading
                                      : keys.Key(a.number) < keys.Key(b.number);
    });
    return places;
}

void GeoBlockStore::WriteIdentifications(CZVFTOutStream& stream) const {
    ZVSmartSerial::CZVFTSerialWriter writer(&stream);
    writer.WriteU32(keys.Count());
    for (const auto& [leading, number] : PlacesInKeyOrder()) {
        const std::string_view key = keys.Key(number);
        writer.WriteU32(static_cast<u32>(key.size() / 2));
        writer.WriteBytes(key.data(), key.size());
        writer.WriteU32(indices[number].blockIndex);
        writer.WriteU32(indices[number].indexInBlock);
    }
}

}  // namespace ZVSmartZvg
