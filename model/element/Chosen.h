#pragma once

#include <string>
#include <utility>
#include <vector>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/ElementView.h"
#include "ZVSmartZvg/Comp.h"

namespace ZVSmartModel {

/// Which components a selection means, its floor aside.
class Chosen {
  public:
    /// `selection` is borrowed.
    explicit Chosen(const Selection& selection);

    /// Whether any component of the floor may be meant.
    bool MayHold(unsigned int floor) const;
    /// Between which positions of the floor they are: the first, and the one behind the last.
    std::pair<unsigned int, unsigned int> Span(unsigned int floor) const;
    bool Holds(ElementIndex index, const ZVSmartZvg::SZVLGZvgComp& comp) const;
    bool Holds(const ElementView& element) const;

    /// Whether the selection leads through most of the file, in its order.
    bool IsWalk() const { return !selection.floor && elements.empty(); }
    /// Whether it means the whole file, but perhaps for its rooms.
    bool IsWhole() const { return IsWalk() && classes.empty() && properties.empty(); }

  private:
    template <class OfClass>
    bool IsNamed(ElementIndex index, bool isRoom, OfClass isOfClass) const;

    const Selection& selection;
    std::vector<std::wstring> classes;
    std::vector<ElementIndex> elements;                             ///< in order
    std::vector<std::pair<std::wstring, std::wstring>> properties;  ///< names and values
};

}  // namespace ZVSmartModel
