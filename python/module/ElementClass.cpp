#include "ElementClass.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include "Classes.h"
#include "ElementMesh.h"
#include "PythonCalls.h"
#include "PythonText.h"

namespace ZVSmartModel::Python {

namespace {

/// A property of type str.
template <class Owner>
auto TextOf(std::string Owner::*member) {
    return [member](const Owner& owner) { return Text{owner.*member}; };
}

auto ElementText(std::string Element::*member) {
    return [member](const ModelElement& element) { return Text{element.values.*member}; };
}

py::dict DictOf(const std::vector<Property>& properties) {
    py::dict dict;
    for (const Property& property : properties) {
        const py::str name = StrOf(property.FullName());
        if (!dict.contains(name)) dict[name] = py::cast(property);
    }
    return dict;
}

const py::object& PropertiesOf(ModelElement& element) {
    if (!element.properties) element.properties = DictOf(element.values.properties);
    return element.properties;
}

Measures MeasuresOf(ModelElement& element) {
    if (!element.measures) {
        const auto file = element.model->Use();
        element.measures = Freely([&] { return Measure(ReadBody(*file, element.values.index)); });
    }
    return *element.measures;
}

std::shared_ptr<ElementMesh> MeshOf(const ModelElement& element, const py::object& normals,
                                    double creaseAngle, bool curves, double chordError) {
    const BodyOptions options = BodyOptionsOf(normals, creaseAngle, curves, chordError);
    const auto file = element.model->Use();
    return Freely([&] {
        return std::make_shared<ElementMesh>(ReadBody(*file, element.values.index, options));
    });
}

py::object BoxOf(ModelElement& element) {
    const Box box = MeasuresOf(element).box;
    if (box.IsEmpty()) return py::none();
    py::array_t<double> corners({2, 3});
    for (int i = 0; i < 3; ++i) {
        corners.mutable_at(0, i) = box.low[static_cast<std::size_t>(i)];
        corners.mutable_at(1, i) = box.high[static_cast<std::size_t>(i)];
    }
    return corners;
}

std::optional<ModelElement> ParentOf(const ModelElement& element) {
    for (const std::string& guid : element.values.parents) {
        if (auto parent = ElementOfGuid(element.model, guid)) return parent;
    }
    return std::nullopt;
}

std::vector<ModelElement> ChildrenOf(const ModelElement& element) {
    const auto file = element.model->Use();
    const auto found = Freely([&] {
        std::vector<Element> parts;
        for (const ElementIndex index : file->PartsOf(element.values.guid)) {
            parts.push_back(file->Read(index));
        }
        return parts;
    });
    std::vector<ModelElement> children;
    for (const Element& part : found) children.emplace_back(element.model, part);
    return children;
}

bool IsSame(const ModelElement& a, const ModelElement& b) {
    return a.model == b.model && a.values.index == b.values.index;
}

py::tuple PlaceOf(const ModelElement& element) {
    return py::make_tuple(element.values.index.floor, element.values.index.position);
}

void AddPropertyClasses(py::module_& module) {
    const auto newProperty = [](const Text& set, const Text& name, const Text& value,
                                const Text& kind, const Text& unit) {
        return Property{set.utf8, name.utf8, value.utf8, kind.utf8, unit.utf8};
    };
    py::class_<Property>(module, "Property", R"(What is said of an element or a material.

Property(set, name, value, kind="text", unit="") makes one for a Writer.
str(property) is the value with its unit.)")
        .def(py::init(newProperty), py::arg("set"), py::arg("name"), py::arg("value"),
             py::arg("kind") = Text{"text"}, py::arg("unit") = Text{""})
        .def_property_readonly("set", TextOf(&Property::set),
                               "Such as \"Pset_WallCommon\"; empty for what is in no set.")
        .def_property_readonly("name", TextOf(&Property::name), "Such as \"IsExternal\".")
        .def_property_readonly("value", TextOf(&Property::value), "As the model's author wrote it.")
        .def_property_readonly("kind", TextOf(&Property::kind),
                               "What the value is, such as \"boolean\" or \"length\".")
        .def_property_readonly("unit", TextOf(&Property::unit),
                               "Its symbol, such as \"mm\"; empty where there is none.")
        .def_property_readonly("number", &Property::Number,
                               "The value as a float, in the unit; None for texts and the like.")
        .def("__str__",
             [](const Property& property) {
                 const std::string& unit = property.unit;
                 return Text{property.value + (unit.empty() ? "" : ' ' + unit)};
             })
        .def("__repr__", [](const Property& property) {
            return py::str("Property({!r}, {!r}, {!r}, {!r}, {!r})")
                .format(Text{property.set}, Text{property.name}, Text{property.value},
                        Text{property.kind}, Text{property.unit});
        });
    py::class_<Material>(module, "Material",
                         "What an element consists of; several of one element are its layers.")
        .def_property_readonly("name", TextOf(&Material::name), "Such as Brick; may be empty.")
        .def_property_readonly("category", TextOf(&Material::category),
                               "Such as masonry; may be empty.")
        .def_readonly("thickness", &Material::thickness, "Metres; None for what is no layer.")
        .def_property_readonly(
            "properties", [](const Material& material) { return DictOf(material.properties); },
            "A dict from \"SET.NAME\" to Property.")
        .def("__repr__", [](const Material& material) {
            return py::str("<zvg.Material {!r}>").format(Text{material.name});
        });
}

}  // namespace

ModelElement ElementAt(const std::shared_ptr<OpenModel>& model, ElementIndex index) {
    const auto file = model->Use();
    return {model, Freely([&] { return file->Read(index); })};
}

std::optional<ModelElement> ElementOfGuid(const std::shared_ptr<OpenModel>& model,
                                          const std::string& guid) {
    const auto file = model->Use();
    const auto place = Freely([&] { return file->FindGuid(guid); });
    if (!place) return std::nullopt;
    return ElementAt(model, *place);
}

void AddElementClass(py::module_& module) {
    AddPropertyClasses(module);
    py::class_<ModelElement>(module, "Element", R"(One element of a building model.

Its values are there at once; its body is read when it is asked for, which needs the model open.)")
        .def_property_readonly("guid", ElementText(&Element::guid),
                               "Its GlobalId, or the name that it is known by.")
        .def_property_readonly("name", ElementText(&Element::name),
                               "What people call it; may be empty.")
        .def_property_readonly("cls", ElementText(&Element::className), "Such as \"IfcWall\".")
        .def_property_readonly("predefined_type", ElementText(&Element::predefinedType),
                               "Such as \"SOLIDWALL\"; may be empty.")
        .def_property_readonly("type", ElementText(&Element::typeName),
                               "The name of its type; may be empty.")
        .def_property_readonly("floor", ElementText(&Element::floorName),
                               "The name of its floor; may be empty.")
        .def_property_readonly("material", ElementText(&Element::materialName),
                               "Its main material or style; may be empty.")
        .def_property_readonly("building", ElementText(&Element::buildingName), "May be empty.")
        .def_property_readonly("site", ElementText(&Element::siteName), "May be empty.")
        .def_property_readonly("group", ElementText(&Element::group),
                               "The GUID of the first group or zone it is in; may be empty.")
        .def_property_readonly("index", PlaceOf,
                               "(floor, position): model[element.index] is the element.")
        .def_property_readonly("properties", PropertiesOf, R"(A dict from "SET.NAME" to Property.

In the file's order; the first of several of one name.)")
        .def_property_readonly(
            "materials", [](const ModelElement& element) { return element.values.materials; },
            "A list of Material: its layers, or what else it consists of.")
        .def_property_readonly(
            "colour",
            [](const ModelElement& element) -> py::object {
                const auto& colour = element.values.colour;
                if (!colour) return py::none();
                return py::make_tuple(colour->red, colour->green, colour->blue, colour->alpha);
            },
            "(red, green, blue, alpha), 0 to 255; None where nobody says. Bodies may differ.")
        .def_property_readonly("parent", ParentOf,
                               "The Element that hosts it or that it is a part of; None without.")
        .def_property_readonly("children", ChildrenOf,
                               "A list of the Elements that have it as their host or whole.")
        .def("mesh", MeshOf, py::kw_only(), py::arg("normals") = py::none(),
             py::arg("crease_angle") = BodyOptions().creaseAngle, py::arg("curves") = false,
             py::arg("chord_error") = BodyOptions().chordError,
             R"(mesh(*, normals=None, crease_angle=0.5236, curves=False, chord_error=0.001) -> Mesh

Its body, in the model's coordinates and metres; empty where it has none.

normals: None, "flat" (of each triangle; points are repeated), or "smooth" (averaged over
    triangles that meet at less than crease_angle radians)
curves: read the curves beside the body as well
chord_error: how far chords of arcs and circles may be off, metres

Raises DamagedError for a body that cannot be read.)")
        .def_property_readonly("box", BoxOf,
                               R"(The box around its body: a (2, 3) array of low and high, metres.

None where it has no body.)")
        .def_property_readonly(
            "area", [](ModelElement& element) { return MeasuresOf(element).area; },
            "The area of all its surfaces, square metres.")
        .def_property_readonly(
            "volume", [](ModelElement& element) { return MeasuresOf(element).volume; },
            "The volume of its body, cubic metres; right where it is closed.")
        .def_property_readonly(
            "closed", [](ModelElement& element) { return MeasuresOf(element).closed; },
            "Whether every edge of its body has its other side.")
        .def("__eq__",
             [](const ModelElement& a, const py::object& b) {
                 return py::isinstance<ModelElement>(b) && IsSame(a, b.cast<ModelElement&>());
             })
        .def("__hash__", [](const ModelElement& element) { return py::hash(PlaceOf(element)); })
        .def("__reduce__",
             [](const ModelElement& element) {
                 const py::object get = py::module_::import("operator").attr("getitem");
                 return py::make_tuple(get, py::make_tuple(element.model, PlaceOf(element)));
             })
        .def("__repr__", [](const ModelElement& element) {
            const Element& values = element.values;
            return py::str("<zvg.Element {} {!r} {!r}>")
                .format(Text{values.className}, Text{values.guid}, Text{values.name});
        });
}

}  // namespace ZVSmartModel::Python
