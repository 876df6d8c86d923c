#pragma once

#include <tuple>

#include "component/ComponentFields.h"

// The classification tables, nested indexed sections:
//   level-2 row   name, id, section of level-3 rows, section of level-2b rows
//   level-3 row   name, id, section of level-4 rows
//   level-4 row   name, id, attributes, section of owner rows
//   level-2b row  name, id, attributes

/// The tables, told once for those who write, read and check them. Each has
/// - `name`, its own;
/// - `row`, where a component's entry keeps the number of its row;
/// - `Below`, the tables under each of its rows, in the order of their sections;
/// - `Identity(comp)`, which tells its rows apart;
/// - `VisitRow(visitor, comp, version)`, a row without what is below it.
namespace ZVSmartZvg::ClassLevel {

/// Rows of a class's name and id, which are members of a component.
template <auto nameOf, auto idOf>
struct Named {
    static const std::wstring& Identity(const SZVLGZvgComp& comp) { return comp.*nameOf; }
    template <class Visitor, class Comp>
    static void VisitRow(Visitor& visitor, Comp& comp, unsigned int /*version*/) {
        visitor.Text(comp.*nameOf);
        visitor.U32(comp.*idOf);
    }
};

/// The same with attributes.
template <auto nameOf, auto idOf, auto attrOf>
struct Styled : Named<nameOf, idOf> {
    template <class Visitor, class Comp>
    static void VisitRow(Visitor& visitor, Comp& comp, unsigned int version) {
        Named<nameOf, idOf>::VisitRow(visitor, comp, version);
        VisitDisplayAttr(visitor, comp.*attrOf, version);
    }
};

struct Owner {
    static constexpr const char* name = "owner table";
    static constexpr auto row = &EntryRows::owner;
    using Below = std::tuple<>;

    static const SerialKey& Identity(const SZVLGZvgComp& comp) { return comp.ownerGuidName; }
    template <class Visitor, class Comp>
    static void VisitRow(Visitor& visitor, Comp& comp, unsigned int /*version*/) {
        VisitOwnerRow(visitor, comp);
    }
};

struct Level4 : Styled<&SZVLGZvgComp::classLevel4Name, &SZVLGZvgComp::classLevel4Id,
                       &SZVLGZvgComp::classLevel4Attr> {
    static constexpr const char* name = "level-4 table";
    static constexpr auto row = &EntryRows::level4;
    using Below = std::tuple<Owner>;
};

struct Level3 : Named<&SZVLGZvgComp::classLevel3Name, &SZVLGZvgComp::classLevel3Id> {
    static constexpr const char* name = "level-3 table";
    static constexpr auto row = &EntryRows::level3;
    using Below = std::tuple<Level4>;
};

struct Level2b : Styled<&SZVLGZvgComp::classLevel2bName, &SZVLGZvgComp::classLevel2bId,
                        &SZVLGZvgComp::classLevel2bAttr> {
    static constexpr const char* name = "level-2b table";
    static constexpr auto row = &EntryRows::level2b;
    using Below = std::tuple<>;
};

struct Level2 : Named<&SZVLGZvgComp::classLevel2Name, &SZVLGZvgComp::classLevel2Id> {
    static constexpr const char* name = "level-2 table";
    static constexpr auto row = &EntryRows::level2;
    using Below = std::tuple<Level3, Level2b>;
};

/// Calls `visit` with each of some levels, the last one first: it is the one that has nothing
/// below it.
template <class Visit>
void ForEach(std::tuple<> /*levels*/, Visit /*visit*/) {}
template <class Level, class... Next, class Visit>
void ForEach(std::tuple<Level, Next...> /*levels*/, Visit visit) {
    ForEach(std::tuple<Next...>(), visit);
    visit(Level());
}

/// What `Of` has for each of some levels.
template <template <class> class Of, class Levels>
struct EachHelper;
template <template <class> class Of, class... Levels>
struct EachHelper<Of, std::tuple<Levels...>> {
    using Type = std::tuple<Of<Levels>...>;
};
template <template <class> class Of, class Levels>
using Each = typename EachHelper<Of, Levels>::Type;

}  // namespace ZVSmartZvg::ClassLevel
