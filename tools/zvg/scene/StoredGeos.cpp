#include "tools/zvg/scene/StoredGeos.h"

using namespace ZVSmartZvg;

bool StoredGeos::Read(const std::wstring& identification, SZVLGZvgGeo& geo) {
    return block.ReadGeo(identification, geo);
}
