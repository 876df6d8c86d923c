#include "geometry/GeoSerial.h"

#include "geometry/GeoFields.h"
#include "geometry/MemoryMeter.h"

namespace ZVSmartZvg {

void WriteGeo(ZVSmartFormat::CZVFTOutStream& out, const SZVLGZvgGeo& geo, unsigned int version) {
    RecordWriter writer(out);
    VisitGeo(writer, geo, version);
}

void ReadGeo(ZVSmartFormat::RecordInStream& in, SZVLGZvgGeo& geo, unsigned int version,
             u64 mostMemory) {
    ZVSmartFormat::MemoryBudget budget(mostMemory);
    RecordReader reader(in, budget);
    VisitGeo(reader, geo, version);
}

void CheckGeo(const SZVLGZvgGeo& geo, unsigned int version) {
    constexpr u64 limit = ZVSmartFormat::defaultRecordMemory;
    const auto visit = [&](MemoryMeter& meter) { VisitGeo(meter, geo, version); };
    if (MeasureMemory(limit, visit) > limit) ZVSmartFormat::ThrowNotWritten();
}

}  // namespace ZVSmartZvg
