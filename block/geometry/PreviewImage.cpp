#include "geometry/PreviewImage.h"

#include <utility>

namespace ZVSmartZvg {

bool AddPreview(GeoBlockStore& geos, const SZVLGZvgGeoImage& image) {
    if (image.pixels == nullptr || geos.Has(previewIdentification)) return false;
    SZVLGZvgGeo record;
    record.images.push_back(image);
    record.images.front().name = previewIdentification;
    geos.Add(previewIdentification, record);
    return true;
}

bool TakePreview(SZVLGZvgGeo&& record, SZVLGZvgGeoImage& image) {
    if (record.images.empty()) return false;
    image = std::move(record.images.front());
    return true;
}

}  // namespace ZVSmartZvg
