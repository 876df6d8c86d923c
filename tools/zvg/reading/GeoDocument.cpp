#include "tools/zvg/reading/GeoDocument.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "model/element/GeoExtent.h"
#include "model/element/RecordBytes.h"
#include "model/element/Utf8.h"
#include "tools/zvg/reading/RecordDocument.h"

namespace ZVSmartModel::Tool {

using namespace ZVSmartZvg;

namespace {

Document CountsDocument(const SZVLGZvgGeo& geo) {
    Document counts = Document::object();
    const auto add = [&counts](const char* name, std::size_t count) {
        if (count != 0) counts[name] = count;
    };
    add("blobs", geo.blobs.size());
    add("visualShells", geo.visualShells.size());
    add("renderMeshes", geo.renderMeshes.size());
    add("lineSegments", geo.lineSegments.size());
    add("boundArcs", geo.boundArcs.size());
    add("polylines", geo.polylines.size());
    add("circles", geo.circles.size());
    add("shells", geo.shells.size());
    add("meshes", geo.meshes.size());
    add("polyFaceMeshes", geo.polyFaceMeshes.size());
    add("namedTransfs", geo.namedTransfs.size());
    add("pointLists", geo.pointLists.size());
    add("images", geo.images.size());
    add("namedTransfs2", geo.namedTransfs2.size());
    add("subGeos", geo.subGeos.size());
    return counts;
}

void AddExtent(Document& document, const GeoExtent& extent) {
    document["points"] = extent.points;
    document["faces"] = extent.faces;
    if (extent.IsBoxEmpty()) return;
    document["boundingBox"] = {{extent.low[0], extent.low[1], extent.low[2]},
                               {extent.high[0], extent.high[1], extent.high[2]}};
}

void AddNamedTransfs(Document& document, const char* field,
                     const std::vector<SZVLGZvgGeoNamedTransf>& list) {
    for (const SZVLGZvgGeoNamedTransf& named : list) {
        document[field].push_back(
            {{"name", ToUtf8(named.name)}, {"transf", TransfDocument(named.transf)}});
    }
}

void AddBytes(Document& document, const SZVLGZvgGeo& geo) {
    for (const SZVLGZvgGeoBlob& blob : geo.blobs) {
        document["blobs"].push_back({{"str1", ToUtf8(blob.str1)},
                                     {"str2", ToUtf8(blob.str2)},
                                     {"str3", ToUtf8(blob.str3)},
                                     {"dataSize", blob.dataSize},
                                     {"transf", TransfDocument(blob.transf)}});
    }
    for (const SZVLGZvgGeoImage& image : geo.images) {
        document["images"].push_back({{"name", ToUtf8(image.name)},
                                      {"width", image.width},
                                      {"height", image.height},
                                      {"transf", TransfDocument(image.transf)}});
    }
}

/// A record that waits for its turn.
struct PendingRecord {
    const SZVLGZvgGeo* geo;
    const SZVLGZvgDisplayAttr* attr;  ///< null for the outermost record
    std::size_t parent;               ///< position in the list of records
    std::size_t level;
};

Document RecordDocument(const PendingRecord& pending, const GeoExtent& extent) {
    Document document;
    document["level"] = pending.level;
    if (pending.attr != nullptr) {
        document["parent"] = pending.parent;
        document["attr"] = DisplayAttrDocument(*pending.attr);
    }
    document["counts"] = CountsDocument(*pending.geo);
    AddExtent(document, extent);
    AddNamedTransfs(document, "namedTransfs", pending.geo->namedTransfs);
    AddNamedTransfs(document, "namedTransfs2", pending.geo->namedTransfs2);
    AddBytes(document, *pending.geo);
    return document;
}

/// Whether the document may grow by a record.
bool HasRoomFor(const PendingRecord& pending, Budget& limits) {
    const SZVLGZvgGeo& geo = *pending.geo;
    const std::size_t described =
        geo.namedTransfs.size() + geo.namedTransfs2.size() + geo.blobs.size() + geo.images.size();
    u64 bytes = 3000 + 1500 * described;
    for (const auto* list : {&geo.namedTransfs, &geo.namedTransfs2}) {
        for (const SZVLGZvgGeoNamedTransf& named : *list) bytes += 2 * named.name.size();
    }
    if (pending.attr != nullptr) bytes += 10 * BytesOf(*pending.attr);
    try {
        limits.Memory(bytes);
        limits.Work(bytes / 2);
        return true;
    } catch (const BudgetUsedUp&) {
        return false;
    }
}

}  // namespace

Document GeoDocument(const SZVLGZvgGeo& geo, Budget& limits) {
    GeoExtent total;
    std::size_t leftOut = 0;
    Document records = Document::array();
    std::vector<PendingRecord> stack = {{&geo, nullptr, 0, 0}};
    while (!stack.empty()) {
        const PendingRecord pending = stack.back();
        stack.pop_back();
        const GeoExtent extent = MeasureGeo(*pending.geo);
        const std::size_t position = records.size();
        if (leftOut != 0 || !HasRoomFor(pending, limits)) {
            ++leftOut;
        } else {
            records.push_back(RecordDocument(pending, extent));
        }
        total.Add(extent);
        const std::vector<SZVLGZvgSubGeo>& subGeos = pending.geo->subGeos;
        for (std::size_t i = subGeos.size(); i > 0; --i) {
            const SZVLGZvgSubGeo& sub = subGeos[i - 1];
            stack.push_back({&sub.geo, &sub.attr, position, pending.level + 1});
        }
    }
    Document document;
    AddExtent(document["total"], total);
    if (leftOut != 0) document["recordsLeftOut"] = leftOut;
    document["records"] = std::move(records);
    return document;
}

}  // namespace ZVSmartModel::Tool
