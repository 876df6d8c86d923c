#include "tools/zvg/scene/StoredGeos.h"

#include "tools/zvg/text/Utf8.h"

using namespace ZVSmartZvg;

bool StoredGeos::Read(const std::wstring& identification, SZVLGZvgGeo& geo) {
    std::string reason = "cannot be read";
    try {
        if (block.Reader().GetGeoByIdentification(identification, geo)) return true;
        if (!Holds(identification)) return false;
    } catch (const ZVSmartFormat::CZVFTStreamException& exception) {
        reason = DamageOf(exception);
    }
    throw block.Error(ExitStatus::Damaged, "geometry '" + ToUtf8(identification) + "': " + reason);
}

bool StoredGeos::Holds(const std::wstring& identification) {
    if (!identifications) {
        identifications.emplace();
        std::wstring name;
        SZVLGZvgGeoIndex index;
        const unsigned int count = block.Reader().GetGeoIdentificationNum();
        for (unsigned int i = 0; i < count; ++i) {
            if (!block.Reader().GetGeoIdentificationByIndex(i, name, index)) break;
            identifications->insert(name);
        }
    }
    return identifications->contains(identification);
}
