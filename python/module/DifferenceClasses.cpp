#include <pybind11/stl.h>

#include "Classes.h"
#include "OpenModel.h"
#include "PythonCalls.h"
#include "PythonText.h"
#include "ZVSmartModel/Diff.h"

namespace ZVSmartModel::Python {

namespace {

using ModelPointer = std::shared_ptr<OpenModel>;

const char* NameOf(Difference::Kind kind) {
    switch (kind) {
        case Difference::Kind::Added:
            return "added";
        case Difference::Kind::Removed:
            return "removed";
        case Difference::Kind::Moved:
            return "moved";
        case Difference::Kind::Renamed:
            return "renamed";
        case Difference::Kind::Changed:
            break;
    }
    return "changed";
}

py::object PlaceOrNone(const std::optional<ElementIndex>& index) {
    if (!index) return py::none();
    return py::make_tuple(index->floor, index->position);
}

py::object StrOrNone(const std::optional<std::string>& text) {
    if (!text) return py::none();
    return StrOf(*text);
}

template <class Value>
void PutPair(py::dict& changes, const char* name, const std::optional<Changed<Value>>& change) {
    if (!change) return;
    if constexpr (std::is_same_v<Value, std::string>) {
        changes[name] = py::make_tuple(StrOf(change->a), StrOf(change->b));
    } else {
        changes[name] = py::make_tuple(change->a, change->b);
    }
}

py::dict PairsOf(const std::vector<ValueChange>& changes) {
    py::dict pairs;
    for (const ValueChange& change : changes) {
        pairs[StrOf(change.name)] = py::make_tuple(StrOrNone(change.a), StrOrNone(change.b));
    }
    return pairs;
}

py::dict ChangesOf(const Difference& difference) {
    py::dict changes;
    if (difference.floor) {
        PutPair(changes, "name", difference.floor->renamed);
        PutPair(changes, "order", difference.floor->order);
        PutPair(changes, "elevation", difference.floor->elevation);
        PutPair(changes, "height", difference.floor->height);
    } else if (difference.element) {
        PutPair(changes, "floor", difference.element->floor);
    }
    return changes;
}

/// What `take` has of an element's difference; an empty one for a floor.
template <class Take>
auto OfElement(Take take) {
    return [take](const Difference& difference) {
        return take(difference.element ? *difference.element : ElementDifference());
    };
}

template <class Index>
auto SideOf(std::optional<unsigned int> FloorDifference::*floor, Index element) {
    return [floor, element](const Difference& difference) -> py::object {
        if (difference.floor) return py::cast((*difference.floor).*floor);
        return PlaceOrNone((*difference.element).*element);
    };
}

std::vector<Difference> Diff(const ModelPointer& a, const ModelPointer& b,
                             const py::object& progress) {
    const auto fileA = a->Use(), fileB = b->Use();
    return Freely([&] {
        std::vector<Difference> found;
        Compare(
            *fileA, *fileB,
            [&found](const Difference& difference) {
                found.push_back(difference);
                return true;
            },
            ProgressFor(progress));
        return found;
    });
}

}  // namespace

void AddDifferenceClasses(py::module_& module) {
    py::class_<Difference>(module, "Difference",
                           "What differs between two models: a floor's or "
                           "an element's difference.")
        .def_property_readonly(
            "kind", [](const Difference& difference) { return NameOf(difference.kind); },
            R"("added", "removed", "changed", "moved" (an element to another floor) or "renamed"
(a floor). What was moved or renamed may have changed as well.)")
        .def_property_readonly(
            "subject",
            [](const Difference& difference) { return difference.floor ? "floor" : "element"; },
            "\"floor\" or \"element\".")
        .def_property_readonly("in_a", SideOf(&FloorDifference::inA, &ElementDifference::inA),
                               R"(Where it is in the first model; None where it is not there.

A floor's number, or an element's (floor, position).)")
        .def_property_readonly("in_b", SideOf(&FloorDifference::inB, &ElementDifference::inB),
                               "Where it is in the second model, likewise.")
        .def_property_readonly(
            "name",
            [](const Difference& difference) {
                return Text{difference.floor ? difference.floor->name : difference.element->name};
            },
            "In the first model that has it; may be empty.")
        .def_property_readonly(
            "guid", OfElement([](const ElementDifference& element) { return Text{element.guid}; }),
            "Of the element; empty for a floor.")
        .def_property_readonly("cls", OfElement([](const ElementDifference& element) {
                                   return Text{element.className};
                               }),
                               "Of the element; empty for a floor.")
        .def_property_readonly("changes", ChangesOf, R"(A dict from a name to (a, b).

"name", "order", "elevation" and "height" of a floor, "floor" of an element that moved.)")
        .def_property_readonly(
            "properties",
            OfElement([](const ElementDifference& element) { return PairsOf(element.properties); }),
            "A dict from \"SET.NAME\" to (a, b), with units; None on a side that has none.")
        .def_property_readonly(
            "classes",
            OfElement([](const ElementDifference& element) { return PairsOf(element.classes); }),
            "A dict from a level of the classification, \"2\", \"3\", \"4\" or \"2b\", to (a, b).")
        .def_property_readonly(
            "fields", OfElement([](const ElementDifference& element) { return element.fields; }),
            R"(What else of the element differs: "owner", "groupGuidName", "relatedGuidNames",
"appearance", "materials" or "geoIds".)")
        .def_property_readonly("field_values", OfElement([](const ElementDifference& element) {
                                   return PairsOf(element.fieldValues);
                               }),
                               R"(What of fields people can read: a dict from their names to (a, b).

Colours are "#RRGGBBAA".)")
        .def_property_readonly("geometry", OfElement([](const ElementDifference& element) {
                                   return element.geometry;
                               }),
                               "Whether the element's body differs, in its form or in its place.")
        .def_property_readonly(
            "distance",
            OfElement([](const ElementDifference& element) { return element.distance; }),
            "Metres by which the element's body was moved; None where that was not all.")
        .def("__repr__", [](const Difference& difference) {
            const std::string name =
                difference.floor ? difference.floor->name
                                 : difference.element->className + ' ' + difference.element->guid;
            return py::str("<zvg.Difference {} {}>").format(NameOf(difference.kind), Text{name});
        });
    module.def("_diff", Diff, py::arg("a"), py::arg("b"), py::arg("progress"));
}

}  // namespace ZVSmartModel::Python
