#include "geometry/GeoSerial.h"

#include "geometry/GeoFields.h"

namespace ZVSmartZvg {

void WriteGeo(ZVSmartFormat::CZVFTOutStream& out, const SZVLGZvgGeo& geo, unsigned int version) {
    RecordWriter writer(out);
    VisitGeo(writer, geo, version);
}

void ReadGeo(ZVSmartFormat::RecordInStream& in, SZVLGZvgGeo& geo, unsigned int version) {
    RecordReader reader(in);
    VisitGeo(reader, geo, version);
}

void CheckBuffers(const SZVLGZvgGeo& geo) {
    std::vector<const SZVLGZvgGeo*> pending = {&geo};
    while (!pending.empty()) {
        const SZVLGZvgGeo& current = *pending.back();
        pending.pop_back();
        for (const SZVLGZvgGeoBlob& blob : current.blobs)
            if (blob.dataSize != 0 && blob.data == nullptr) ZVSmartFormat::ThrowNotWritten();
        for (const SZVLGZvgGeoImage& image : current.images)
            if (image.PixelBytes() != 0 && image.pixels == nullptr)
                ZVSmartFormat::ThrowNotWritten();
        for (const SZVLGZvgSubGeo& sub : current.subGeos) pending.push_back(&sub.geo);
    }
}

}  // namespace ZVSmartZvg
