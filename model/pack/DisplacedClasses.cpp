#include "model/pack/DisplacedClasses.h"

#include <sys/stat.h>
#include <unistd.h>

#include <set>
#include <string>

#include "ZVSmartZvg/BlockReader.h"
#include "model/element/InputStream.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

std::size_t CountDisplacedClasses(int descriptor) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) return 0;
    InputStream stream(dup(descriptor), 0, static_cast<u64>(status.st_size));
    CZVLGBlockReader reader;
    if (!reader.Init(&stream)) return 0;
    constexpr u32 hasZBufferSize = 0x40;
    std::set<std::wstring> classes;
    SZVLGZvgComp comp;
    const unsigned int floors = reader.GetFloorNum();
    for (SZVLGCompIndex index = {0, 0}; index.floorIndex < floors; ++index.floorIndex) {
        const unsigned int components = reader.GetFloorCompNum(index.floorIndex);
        for (index.compIndex = 0; index.compIndex < components; ++index.compIndex) {
            if (!reader.GetCompByIndex(index, comp)) continue;
            if (comp.classLevel4Attr.flags & hasZBufferSize) classes.insert(comp.classLevel4Name);
        }
    }
    return classes.size();
}

}  // namespace ZVSmartModel
