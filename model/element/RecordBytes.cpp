#include "model/element/RecordBytes.h"

#include <vector>

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

template <class... Texts>
u64 TextBytes(const Texts&... texts) {
    return (texts.size() + ...) * sizeof(wchar_t);
}

u64 BytesOf(const PropertyList& properties) {
    u64 bytes = properties.size() * sizeof(PropertyList::value_type);
    for (const auto& [name, value] : properties) bytes += TextBytes(name, value);
    return bytes;
}

u64 BytesOf(const SZVLGZvgCompGeoRef& ref) {
    u64 bytes = sizeof ref + ref.geoIds.size() * sizeof(SZVLGZvgGeoId);
    for (const SZVLGZvgGeoId& row : ref.geoIds) {
        bytes += TextBytes(row.guidName.name, row.textA, row.textB);
    }
    for (const auto& [key, material] : ref.materials) {
        bytes += sizeof material + BytesOf(material.properties) +
                 TextBytes(material.guidName.name, material.textA, material.textB);
    }
    return bytes;
}

template <class Element>
u64 ListBytes(const std::vector<Element>& list) {
    return list.size() * sizeof(Element);
}

u64 BytesOf(const CZVIMShell& shell) {
    return ListBytes(shell.GetPoints()) + ListBytes(shell.GetFacesIndex());
}

u64 BytesOf(const std::vector<SZVLGZvgGeoNamedTransf>& list) {
    u64 bytes = ListBytes(list);
    for (const SZVLGZvgGeoNamedTransf& named : list) bytes += TextBytes(named.name);
    return bytes;
}

u64 SurfaceBytes(const SZVLGZvgGeo& geo) {
    u64 bytes = ListBytes(geo.visualShells) + ListBytes(geo.renderMeshes) + ListBytes(geo.shells) +
                ListBytes(geo.meshes) + ListBytes(geo.polyFaceMeshes);
    for (const CZVIMVisualShell& visual : geo.visualShells) bytes += BytesOf(visual.shell);
    for (const CZVIMShell& shell : geo.shells) bytes += BytesOf(shell);
    for (const CZVIMMesh& mesh : geo.meshes) bytes += ListBytes(mesh.GetPoints());
    for (const CZVIMVisualPolyFaceMesh& mesh : geo.polyFaceMeshes) {
        bytes += ListBytes(mesh.points) + ListBytes(mesh.facesIndex);
    }
    for (const SZVLGZvgGeoRenderMesh& mesh : geo.renderMeshes) {
        bytes += ListBytes(mesh.points) + ListBytes(mesh.pointIndices) +
                 ListBytes(mesh.coordPairs) + ListBytes(mesh.vectors) +
                 ListBytes(mesh.extraIndices);
    }
    return bytes;
}

}  // namespace

u64 BytesOf(const SZVLGZvgDisplayAttr& attr) {
    return BytesOf(attr.properties) +
           TextBytes(attr.styleName, attr.name2, attr.name3, attr.fillName, attr.hatchName);
}

u64 BytesOf(const SZVLGZvgComp& comp) {
    u64 bytes = sizeof comp + BytesOf(comp.compProperties) + BytesOf(comp.compAttr) +
                BytesOf(comp.classLevel4Attr) + BytesOf(comp.classLevel2bAttr) +
                TextBytes(comp.classLevel1Name, comp.classLevel2Name, comp.classLevel3Name,
                          comp.classLevel4Name, comp.classLevel2bName, comp.compGuidName.name,
                          comp.groupGuidName.name, comp.ownerGuidName.name, comp.ownerTextA,
                          comp.ownerTextB, comp.ownerSecondGuidName.name, comp.ownerTextC);
    for (const SerialKey& key : comp.relatedGuidNames) bytes += sizeof key + TextBytes(key.name);
    for (const SZVLGZvgCompGeoRef& ref : comp.geoRefs) bytes += BytesOf(ref);
    return bytes;
}

u64 OwnBytesOf(const SZVLGZvgGeo& geo) {
    u64 bytes = sizeof geo + SurfaceBytes(geo) + ListBytes(geo.lineSegments) +
                ListBytes(geo.boundArcs) + ListBytes(geo.polylines) + ListBytes(geo.circles) +
                BytesOf(geo.namedTransfs) + BytesOf(geo.namedTransfs2) + ListBytes(geo.pointLists) +
                ListBytes(geo.blobs) + ListBytes(geo.images);
    for (const CZVIMPolyline3D& polyline : geo.polylines) {
        bytes += u64{polyline.CountOfPoint()} * sizeof(CZVIMPosition);
    }
    for (const SZVLGZvgGeoPointList& list : geo.pointLists) bytes += ListBytes(list.points);
    for (const SZVLGZvgGeoBlob& blob : geo.blobs) {
        bytes += blob.dataSize + TextBytes(blob.str1, blob.str2, blob.str3);
    }
    for (const SZVLGZvgGeoImage& image : geo.images) bytes += image.PixelBytes();
    return bytes;
}

u64 BytesOf(const SZVLGZvgGeo& geo) {
    u64 bytes = 0;
    std::vector<const SZVLGZvgGeo*> waiting = {&geo};
    while (!waiting.empty()) {
        const SZVLGZvgGeo& next = *waiting.back();
        waiting.pop_back();
        bytes += OwnBytesOf(next);
        for (const SZVLGZvgSubGeo& sub : next.subGeos) {
            bytes += BytesOf(sub.attr) + sizeof sub.attr;
            waiting.push_back(&sub.geo);
        }
    }
    return bytes;
}

}  // namespace ZVSmartModel
