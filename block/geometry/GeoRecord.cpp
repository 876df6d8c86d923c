#include "ZVSmartZvg/Geo.h"

#include <cstdlib>
#include <cstring>
#include <tuple>
#include <utility>

#include "stream/Failures.h"

namespace ZVSmartZvg {

namespace {

/// A copy from `malloc`; null where there is nothing to copy.
u8* CopyOfBuffer(const u8* bytes, u32 byteCount) {
    if (bytes == nullptr || byteCount == 0) return nullptr;
    void* const copy = std::malloc(byteCount);
    if (copy == nullptr) ZVSmartFormat::ThrowNotAllocated();
    std::memcpy(copy, bytes, byteCount);
    return static_cast<u8*>(copy);
}

}  // namespace

SZVLGZvgGeoBlob::SZVLGZvgGeoBlob() = default;

SZVLGZvgGeoBlob::SZVLGZvgGeoBlob(const SZVLGZvgGeoBlob& other)
    : str1(other.str1),
      str2(other.str2),
      str3(other.str3),
      dataSize(other.dataSize),
      data(CopyOfBuffer(other.data, other.dataSize)),
      transf(other.transf) {}

SZVLGZvgGeoBlob::SZVLGZvgGeoBlob(SZVLGZvgGeoBlob&& other) noexcept
    : str1(std::move(other.str1)),
      str2(std::move(other.str2)),
      str3(std::move(other.str3)),
      dataSize(std::exchange(other.dataSize, 0)),
      data(std::exchange(other.data, nullptr)),
      transf(other.transf) {}

SZVLGZvgGeoBlob& SZVLGZvgGeoBlob::operator=(const SZVLGZvgGeoBlob& other) {
    return *this = SZVLGZvgGeoBlob(other);
}

SZVLGZvgGeoBlob& SZVLGZvgGeoBlob::operator=(SZVLGZvgGeoBlob&& other) noexcept {
    SZVLGZvgGeoBlob taken(std::move(other));
    str1.swap(taken.str1);
    str2.swap(taken.str2);
    str3.swap(taken.str3);
    std::swap(dataSize, taken.dataSize);
    std::swap(data, taken.data);
    transf = taken.transf;
    return *this;
}

SZVLGZvgGeoBlob::~SZVLGZvgGeoBlob() {
    std::free(data);
}

SZVLGZvgGeoImage::SZVLGZvgGeoImage() = default;

SZVLGZvgGeoImage::SZVLGZvgGeoImage(const SZVLGZvgGeoImage& other)
    : width(other.width),
      height(other.height),
      name(other.name),
      pixels(CopyOfBuffer(other.pixels, other.PixelBytes())),
      transf(other.transf) {}

SZVLGZvgGeoImage::SZVLGZvgGeoImage(SZVLGZvgGeoImage&& other) noexcept
    : width(std::exchange(other.width, 0)),
      height(std::exchange(other.height, 0)),
      name(std::move(other.name)),
      pixels(std::exchange(other.pixels, nullptr)),
      transf(other.transf) {}

SZVLGZvgGeoImage& SZVLGZvgGeoImage::operator=(const SZVLGZvgGeoImage& other) {
    return *this = SZVLGZvgGeoImage(other);
}

SZVLGZvgGeoImage& SZVLGZvgGeoImage::operator=(SZVLGZvgGeoImage&& other) noexcept {
    SZVLGZvgGeoImage taken(std::move(other));
    std::swap(width, taken.width);
    std::swap(height, taken.height);
    name.swap(taken.name);
    std::swap(pixels, taken.pixels);
    transf = taken.transf;
    return *this;
}

SZVLGZvgGeoImage::~SZVLGZvgGeoImage() {
    std::free(pixels);
}

u32 SZVLGZvgGeoImage::PixelBytes() const {
    return width * height * 4U;
}

namespace {

/// All lists but `subGeos`.
template <class Geo>
auto FlatLists(Geo& geo) {
    return std::tie(geo.blobs, geo.visualShells, geo.renderMeshes, geo.lineSegments, geo.boundArcs,
                    geo.polylines, geo.circles, geo.shells, geo.meshes, geo.polyFaceMeshes,
                    geo.namedTransfs, geo.pointLists, geo.images, geo.namedTransfs2);
}

/// Copies a tree of records, one level's flat lists at a time.
void CopyTree(const SZVLGZvgGeo& source, SZVLGZvgGeo& copy) {
    struct Pair {
        const SZVLGZvgGeo* source;
        SZVLGZvgGeo* copy;
    };
    std::vector<Pair> pending = {{&source, &copy}};
    while (!pending.empty()) {
        const Pair pair = pending.back();
        pending.pop_back();
        FlatLists(*pair.copy) = FlatLists(*pair.source);
        pair.copy->subGeos.resize(pair.source->subGeos.size());
        for (std::size_t i = 0; i < pair.source->subGeos.size(); ++i) {
            pair.copy->subGeos[i].attr = pair.source->subGeos[i].attr;
            pending.push_back({&pair.source->subGeos[i].geo, &pair.copy->subGeos[i].geo});
        }
    }
}

/// Destroys a tree of sub-geometries without recursion and without allocating. While it is among
/// the children of a list's last element, that element's own list, moved from, holds the list
/// above: the way back up (after Schorr and Waite's link inversion, CACM 10(8), 1967).
void DestroyTree(std::vector<SZVLGZvgSubGeo>&& root) noexcept {
    std::vector<SZVLGZvgSubGeo> current = std::move(root);
    std::vector<SZVLGZvgSubGeo> above;
    for (;;) {
        if (!current.empty() && !current.back().geo.subGeos.empty()) {
            std::vector<SZVLGZvgSubGeo>& link = current.back().geo.subGeos;
            std::vector<SZVLGZvgSubGeo> below = std::move(link);
            link = std::move(above);
            above = std::move(current);
            current = std::move(below);
        } else if (!current.empty()) {
            current.pop_back();
        } else if (!above.empty()) {
            current = std::move(above);
            above = std::move(current.back().geo.subGeos);
            current.pop_back();
        } else {
            return;
        }
    }
}

}  // namespace

SZVLGZvgGeo::SZVLGZvgGeo() = default;

SZVLGZvgGeo::SZVLGZvgGeo(const SZVLGZvgGeo& other) : SZVLGZvgGeo() {
    CopyTree(other, *this);
}

SZVLGZvgGeo::SZVLGZvgGeo(SZVLGZvgGeo&& other) noexcept = default;

SZVLGZvgGeo& SZVLGZvgGeo::operator=(const SZVLGZvgGeo& other) {
    return *this = SZVLGZvgGeo(other);
}

SZVLGZvgGeo& SZVLGZvgGeo::operator=(SZVLGZvgGeo&& other) noexcept {
    if (this == &other) return *this;
    // `other` may lie inside this record: take it out before anything is destroyed.
    SZVLGZvgGeo taken(std::move(other));
    auto mine = FlatLists(*this);
    auto theirs = FlatLists(taken);
    mine.swap(theirs);
    subGeos.swap(taken.subGeos);
    return *this;
}

SZVLGZvgGeo::~SZVLGZvgGeo() {
    if (!subGeos.empty()) DestroyTree(std::move(subGeos));
}

bool SZVLGZvgGeo::IsEmpty() const {
    return subGeos.empty() &&
           std::apply([](const auto&... list) { return (list.empty() && ...); }, FlatLists(*this));
}

}  // namespace ZVSmartZvg
