#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ZVSmartModel/Body.h"
#include "ZVSmartModel/ElementView.h"
#include "ZVSmartZvg/CompView.h"
#include "model/element/KnownTexts.h"
#include "model/element/OpenedBlock.h"

namespace ZVSmartModel {

/// Reads elements one after the other, in UTF-8, straight from where their floor was decoded. What
/// they have in common, names of properties and classes, is kept once.
class ElementReader {
  public:
    /// What of elements is wanted beside themselves.
    struct Wants {
        ZVSmartZvg::SZVLGCompParts parts = {};
        bool materials = true;
    };

    ElementReader() : ElementReader(Wants()) {}
    explicit ElementReader(Wants wants) : wants(std::move(wants)) {}
    ElementReader(const ElementReader&) = delete;
    ElementReader& operator=(const ElementReader&) = delete;

    /// The element at `index`, which is within the floor's number of components, without the name
    /// of its floor; all else holds until the next call. Null, remembered by `block` as damage,
    /// where it cannot be read.
    ElementView* Read(OpenedBlock& block, ElementIndex index);

    /// The look of what the element read last places without one; see OwnLook.
    Look OwnLook() const;

    /// The component that was read last; its texts hold until `block` is asked for something else.
    const ZVSmartZvg::SZVLGCompView& Stored() const { return stored; }

    /// Hands every readable element of a floor to `use`, in order, until the budget is used up.
    template <class Use>
    void ForEach(OpenedBlock& block, unsigned int floor, Use use) {
        ForEach(block, floor, {0, ElementIndex::none}, use);
    }
    /// The same of those from the first number of `span` to before the second.
    template <class Use>
    void ForEach(OpenedBlock& block, unsigned int floor,
                 const std::pair<unsigned int, unsigned int>& span, Use use) {
        const unsigned int count = std::min(block.FloorCompNum(floor), span.second);
        for (ElementIndex index{floor, span.first}; index.position < count; ++index.position) {
            try {
                if (const ElementView* const read = Read(block, index)) use(*read);
            } catch (const BudgetUsedUp& end) {
                return block.LeaveOut("component " + PlaceText(floor, index.position), end);
            }
        }
    }

  private:
    /// What components of the same classes and owner have in common.
    struct Common {
        std::string className, predefinedType, typeName, materialName, buildingName, siteName;
        std::optional<Rgba> colour;  ///< of the class
        std::optional<Look> look;    ///< the same
    };
    struct RowsHash {
        std::size_t operator()(const ZVSmartZvg::SZVLGCompRows& rows) const;
    };
    struct RowsEqual {
        bool operator()(const ZVSmartZvg::SZVLGCompRows& a,
                        const ZVSmartZvg::SZVLGCompRows& b) const;
    };

    const Common* CommonOf(OpenedBlock& block, const ZVSmartZvg::SZVLGCompIndex& index);
    const Common* ReadCommon(OpenedBlock& block, const ZVSmartZvg::SZVLGCompIndex& index);
    void Fill();
    void FillMaterials();
    void FillProperties(const ZVSmartZvg::SZVLGViewRange& range, KnownText& before,
                        std::vector<PropertyView>& properties);
    void MakeRoom();
    std::string_view Kept(const ZVSmartZvg::SZVLGTextView& text);
    std::string_view KeyOf(const ZVSmartZvg::SZVLGKeyView& key);
    std::string_view NameOrNothing(const ZVSmartZvg::SZVLGKeyView& key);

    Wants wants;
    ZVSmartZvg::SZVLGCompView stored;
    ElementView element;
    KnownTexts texts;
    std::unique_ptr<char[]> own;  ///< texts of the element that nothing else keeps
    std::size_t room = 0;         ///< in `own`
    char* end = nullptr;          ///< of what is used of it
    std::unordered_map<ZVSmartZvg::SZVLGCompRows, Common, RowsHash, RowsEqual> commons;
    ZVSmartZvg::SZVLGCompRows lastRows;
    const Common* lastCommon = nullptr;
    const Common* common = nullptr;  ///< of the element
    Common damaged;                  ///< of a component whose classes are not all there
};

}  // namespace ZVSmartModel
