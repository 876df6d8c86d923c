#include "model/diff/GeometryDigests.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <utility>

#include "model/diff/Digest.h"
#include "model/element/RecordBytes.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;
using ZVSmartSerial::CZVFTSerialWriter;

namespace {

template <class Elements>
void WriteAll(CZVFTSerialWriter& writer, const Elements& elements) {
    writer.WriteU64(elements.size());
    for (const auto& element : elements) element.WriteSerial(&writer, 1);
}

void WriteAll(CZVFTSerialWriter& writer, const std::vector<u32>& numbers) {
    writer.WriteU64(numbers.size());
    writer.WriteU32Array(numbers.data(), numbers.size());
}

void WriteBlobs(CZVFTSerialWriter& writer, const SZVLGZvgGeo& geo) {
    writer.WriteU64(geo.blobs.size());
    for (const SZVLGZvgGeoBlob& blob : geo.blobs) {
        for (const std::wstring* text : {&blob.str1, &blob.str2, &blob.str3}) {
            writer.WriteWString(*text);
        }
        writer.WriteU32(blob.dataSize);
        if (blob.data) writer.WriteBytes(blob.data, blob.dataSize);
        blob.transf.WriteSerial(&writer, 1);
    }
    writer.WriteU64(geo.images.size());
    for (const SZVLGZvgGeoImage& image : geo.images) {
        writer.WriteU32(image.width);
        writer.WriteU32(image.height);
        writer.WriteWString(image.name);
        if (image.pixels) writer.WriteBytes(image.pixels, image.PixelBytes());
        image.transf.WriteSerial(&writer, 1);
    }
}

void WriteMeshes(CZVFTSerialWriter& writer, const SZVLGZvgGeo& geo) {
    writer.WriteU64(geo.renderMeshes.size());
    for (const SZVLGZvgGeoRenderMesh& mesh : geo.renderMeshes) {
        WriteAll(writer, mesh.points);
        WriteAll(writer, mesh.pointIndices);
        writer.WriteU64(mesh.coordPairs.size());
        for (const auto& [first, second] : mesh.coordPairs) {
            writer.WriteF64(first);
            writer.WriteF64(second);
        }
        WriteAll(writer, mesh.vectors);
        WriteAll(writer, mesh.extraIndices);
    }
    writer.WriteU64(geo.pointLists.size());
    for (const SZVLGZvgGeoPointList& list : geo.pointLists) {
        WriteAll(writer, list.points);
        writer.WriteU64(list.valueA);
        writer.WriteU64(list.valueB);
    }
}

/// A record without those nested in it. The names of what it places go to `places`.
void WriteOwn(CZVFTSerialWriter& writer, const SZVLGZvgGeo& geo,
              std::vector<std::wstring>& places) {
    WriteBlobs(writer, geo);
    WriteMeshes(writer, geo);
    WriteAll(writer, geo.visualShells);
    WriteAll(writer, geo.lineSegments);
    WriteAll(writer, geo.boundArcs);
    WriteAll(writer, geo.polylines);
    WriteAll(writer, geo.circles);
    WriteAll(writer, geo.shells);
    WriteAll(writer, geo.meshes);
    WriteAll(writer, geo.polyFaceMeshes);
    writer.WriteU64(geo.namedTransfs.size());
    for (const SZVLGZvgGeoNamedTransf& named : geo.namedTransfs) {
        named.transf.WriteSerial(&writer, 1);
        places.push_back(named.name);
    }
    writer.WriteU64(geo.namedTransfs2.size());
    for (const SZVLGZvgGeoNamedTransf& named : geo.namedTransfs2) {
        writer.WriteWString(named.name);
        named.transf.WriteSerial(&writer, 1);
    }
}

/// Outer records before inner ones, each with the number of those nested in it. A loop: records
/// may nest deeper than the stack is.
u64 DigestOf(const SZVLGZvgGeo& outermost, std::vector<std::wstring>& places) {
    Digest digest;
    CZVFTSerialWriter& writer = digest.Writer();
    std::vector<const SZVLGZvgGeo*> waiting = {&outermost};
    while (!waiting.empty()) {
        const SZVLGZvgGeo& geo = *waiting.back();
        waiting.pop_back();
        WriteOwn(writer, geo, places);
        writer.WriteU64(geo.subGeos.size());
        for (const SZVLGZvgSubGeo& sub : geo.subGeos) {
            WriteAttributes(writer, sub.attr);
            waiting.push_back(&sub.geo);
        }
    }
    return digest.Value();
}

struct Place {
    SZVLGZvgGeoIndex index;
    std::wstring identification;
};

/// In the order of the blocks, so that each is decoded once.
std::vector<Place> PlacesOf(OpenedBlock& block) {
    std::vector<Place> places;
    block.ForEachIdentification([&](const std::wstring& name, const SZVLGZvgGeoIndex& index) {
        block.Limits().Memory(4 * sizeof(Place) + 2 * name.size() * sizeof(wchar_t));
        places.push_back({index, name});
    });
    std::sort(places.begin(), places.end(), [](const Place& a, const Place& b) {
        return std::tie(a.index.blockIndex, a.index.indexInBlock) <
               std::tie(b.index.blockIndex, b.index.indexInBlock);
    });
    return places;
}

bool IsSame(const SZVLGZvgGeoIndex& a, const SZVLGZvgGeoIndex& b) {
    return a.blockIndex == b.blockIndex && a.indexInBlock == b.indexInBlock;
}

u64 MemoryOf(const std::vector<std::wstring>& names) {
    u64 bytes = names.capacity() * sizeof(std::wstring);
    for (const std::wstring& name : names) bytes += name.size() * sizeof(wchar_t);
    return bytes;
}

}  // namespace

GeometryDigests::GeometryDigests(OpenedBlock& block, ProgressPace& pace) : limits(block.Limits()) {
    std::optional<SZVLGZvgGeoIndex> last;
    std::vector<Place> places = PlacesOf(block);
    for (std::size_t i = 0; i < places.size(); ++i) {
        pace.Tell("reading geometry", i, places.size());
        Place& place = places[i];
        if (!last || !IsSame(*last, place.index)) {
            SZVLGZvgGeo geo;
            block.ReadGeo(place.index, geo);
            const u64 bytes = BytesOf(geo);
            HeldMemory held(limits);
            held.Add(bytes);
            limits.Work(bytes / 4);
            Stored& stored = records.emplace_back();
            stored.digest = DigestOf(geo, stored.places);
            limits.Memory(sizeof stored + MemoryOf(stored.places));
            last = place.index;
        }
        storedByName.emplace(std::move(place.identification), &records.back());
    }
}

u64 GeometryDigests::Of(const SZVLGZvgComp& comp) {
    Digest digest;
    digest.Writer().WriteU64(comp.geoRefs.size());
    for (const SZVLGZvgCompGeoRef& ref : comp.geoRefs) {
        digest.Writer().WriteU8(ref.refKind);
        digest.Writer().WriteU32(ref.refValueA);
        digest.Writer().WriteU32(ref.refValueB);
        digest.Writer().WriteU64(ref.geoIds.size());
        for (const SZVLGZvgGeoId& row : ref.geoIds) {
            const std::wstring name = GetGeoIdentification(row);
            limits.Work(20 + name.size());
            Resolve(name);
            digest.Writer().WriteU64(Of(name));
        }
    }
    return digest.Value();
}

/// What is not there is known by its name.
u64 GeometryDigests::Of(const std::wstring& name) {
    const auto found = storedByName.find(name);
    if (found != storedByName.end()) return found->second->digest;
    Digest digest;
    digest.Writer().WriteWString(name);
    return digest.Value();
}

/// Combines what is placed before what places it. A record that places itself over others, as in
/// a hostile file, counts there without what it places.
void GeometryDigests::Resolve(const std::wstring& name) {
    std::vector<Stored*> open;
    const auto begin = [&](const std::wstring& next) {
        limits.Work(10 + next.size());
        const auto found = storedByName.find(next);
        if (found == storedByName.end() || found->second->begun) return;
        found->second->begun = true;
        open.push_back(found->second);
    };
    begin(name);
    while (!open.empty()) {
        Stored& stored = *open.back();
        if (stored.met < stored.places.size()) {
            begin(stored.places[stored.met++]);
            continue;
        }
        Combine(stored);
        open.pop_back();
    }
}

void GeometryDigests::Combine(Stored& stored) {
    if (stored.places.empty()) return;
    Digest digest;
    digest.Writer().WriteU64(stored.digest);
    for (const std::wstring& place : stored.places) digest.Writer().WriteU64(Of(place));
    stored.digest = digest.Value();
    limits.GiveBack(MemoryOf(stored.places));
    stored.places = {};
}

}  // namespace ZVSmartModel
