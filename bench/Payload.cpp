#include "bench/Payload.h"

#include <algorithm>
#include <tuple>

#include "bench/OpenFile.h"

namespace bench {

using ZVSmartZvg::CZVLGBlockReader;
using ZVSmartZvg::CZVLGBlockSaver;
using ZVSmartZvg::SZVLGCompIndex;

namespace {

Payload GeneratedPayload(u32 componentCount) {
    Payload payload;
    payload.name = "building-" + std::to_string(componentCount);
    const Building building(componentCount);
    for (u32 i = 0; i < building.ShapeCount(); ++i)
        payload.geos.emplace_back(Building::ShapeKey(i), Building::Shape(i));
    for (u32 i = 0; i < componentCount; ++i) payload.comps.push_back(building.Component(i));
    return payload;
}

void LoadGeos(CZVLGBlockReader& reader, Payload& payload) {
    for (const auto& [place, identification] : IdentificationsByPlace(reader)) {
        auto& [name, geo] = payload.geos.emplace_back();
        name = identification;
        reader.GetGeoByIndex({place.first, place.second}, geo);
    }
    if (reader.GetGeoBlockNum() > 1) payload.geosPerBlock = reader.GetGeoNumInBlock(0);
}

Payload StoredPayload(const std::string& path) {
    Payload payload;
    const std::string file = path.substr(path.rfind('/') + 1);
    payload.name = file.substr(0, file.rfind('.'));
    OpenFile opened(ReadWholeFile(path));
    CZVLGBlockReader& reader = opened.reader;
    LoadGeos(reader, payload);
    for (u32 floor = 0; floor < reader.GetFloorNum(); ++floor)
        for (u32 i = 0; i < reader.GetFloorCompNum(floor); ++i)
            reader.GetCompByIndex({floor, i}, payload.comps.emplace_back());
    return payload;
}

}  // namespace

Payload LoadPayload(const std::string& source) {
    const std::string generated = "building:";
    if (!source.starts_with(generated)) return StoredPayload(source);
    return GeneratedPayload(static_cast<u32>(std::stoul(source.substr(generated.size()))));
}

const char* PartName(Part part) {
    if (part == Part::both) return "both";
    return part == Part::geometry ? "geometry" : "components";
}

MemorySink::MemorySink(std::size_t capacity) : stream(&buffer) {
    stream.Reserve(capacity);
    std::fill_n(buffer.data, capacity, u8{1});  // its pages are there from now on
}

MemorySink::~MemorySink() {
    std::free(buffer.data);
}

void WritePayload(const Payload& payload, Part part, ZVSmartFormat::CZVFTOutStream& out,
                  unsigned int threads) {
    CZVLGBlockSaver saver;
    saver.SetThreads(threads);
    saver.Init(&out, {}, "", payload.geosPerBlock);
    if (part != Part::components)
        for (const auto& [identification, geo] : payload.geos)
            saver.AddIdentificationGeo(identification, geo);
    if (part != Part::geometry)
        for (const SZVLGZvgComp& comp : payload.comps) saver.AddComp(comp);
    saver.WriteEnd();
}

Bytes Written(const Payload& payload, Part part, unsigned int threads) {
    MemorySink sink(1 << 20);
    WritePayload(payload, part, sink.Stream(), threads);
    const View view = sink.Written();
    return Bytes(view.begin(), view.end());
}

void WriteBuilding(const Building& building, ZVSmartFormat::CZVFTOutStream& out, u32 geosPerBlock,
                   unsigned int threads) {
    CZVLGBlockSaver saver;
    saver.SetThreads(threads);
    saver.Init(&out, {}, "", geosPerBlock);
    u32 shapes = 0;
    for (u32 i = 0; i < building.ComponentCount(); ++i) {
        for (; shapes <= building.ShapeOf(i); ++shapes)
            saver.AddIdentificationGeo(Building::ShapeKey(shapes), Building::Shape(shapes));
        saver.AddComp(building.Component(i));
    }
    saver.WriteEnd();
}

}  // namespace bench
