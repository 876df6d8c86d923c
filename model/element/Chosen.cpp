#include "model/element/Chosen.h"

#include <algorithm>

#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"

namespace ZVSmartModel {

Chosen::Chosen(const Selection& selection) : selection(selection), elements(selection.elements) {
    for (const std::string& name : selection.classNames) classes.push_back(FromUtf8(name));
    std::sort(elements.begin(), elements.end());
}

bool Chosen::MayHold(unsigned int floor) const {
    if (elements.empty()) return true;
    const auto first = std::lower_bound(elements.begin(), elements.end(), ElementIndex{floor, 0});
    return first != elements.end() && first->floor == floor;
}

bool Chosen::Holds(ElementIndex index, const ZVSmartZvg::SZVLGZvgComp& comp) const {
    if (!elements.empty()) return std::binary_search(elements.begin(), elements.end(), index);
    if (classes.empty()) return selection.rooms || !IsRoomClass(comp.classLevel2Name);
    return std::any_of(classes.begin(), classes.end(),
                       [&](const std::wstring& name) { return IsOfClass(comp, name); });
}

}  // namespace ZVSmartModel
