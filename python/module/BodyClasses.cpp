#include <pybind11/stl.h>

#include "ArrayView.h"
#include "Classes.h"
#include "ElementMesh.h"
#include "PythonText.h"

namespace ZVSmartModel::Python {

namespace {

/// An array of a member of `Owner`, which it keeps.
template <class Owner, class Rows>
auto ArrayOf(Rows Owner::*member) {
    return [member](const py::object& self) { return ViewOf(self.cast<Owner&>().*member, self); };
}

/// Normals are there for each point, or not at all.
template <class Owner>
py::object NormalsOf(const py::object& self) {
    const Owner& owner = self.cast<Owner&>();
    if (owner.normals.empty() && !owner.points.empty()) return py::none();
    return ViewOf(owner.normals, self);
}

/// A list of a member's items, each of which keeps the owner.
template <class Owner, class Items>
auto ListOf(Items Owner::*member) {
    return [member](const py::object& self) {
        py::list list;
        for (auto& item : self.cast<Owner&>().*member) {
            list.append(py::cast(&item, py::return_value_policy::reference_internal, self));
        }
        return list;
    };
}

void AddLookAndCurve(py::module_& module) {
    const auto newLook = [](const Text& name, const std::vector<int>& colour) {
        if (colour.size() != 3 && colour.size() != 4) {
            throw py::value_error("a colour is (red, green, blue) or (red, green, blue, alpha)");
        }
        Look look{name.utf8, {}};
        std::uint8_t* const parts[] = {&look.colour.red, &look.colour.green, &look.colour.blue,
                                       &look.colour.alpha};
        for (std::size_t i = 0; i < colour.size(); ++i) {
            if (colour[i] < 0 || colour[i] > 255) throw py::value_error("colours are 0 to 255");
            *parts[i] = static_cast<std::uint8_t>(colour[i]);
        }
        return look;
    };
    py::class_<Look>(module, "Look", R"(How a surface looks.

Look(name, colour) makes one for a Writer; colour is three or four numbers, 0 to 255.)")
        .def(py::init(newLook), py::arg("name"), py::arg("colour"))
        .def_property_readonly(
            "name", [](const Look& look) { return Text{look.name}; },
            "Of its style or material; may be empty.")
        .def_property_readonly(
            "colour",
            [](const Look& look) {
                const Rgba& colour = look.colour;
                return py::make_tuple(colour.red, colour.green, colour.blue, colour.alpha);
            },
            "(red, green, blue, alpha), 0 to 255; alpha 255 is opaque.")
        .def("__eq__",
             [](const Look& a, const py::object& b) {
                 return py::isinstance<Look>(b) && a == b.cast<Look&>();
             })
        .def("__hash__", [](const Look& look) { return py::hash(StrOf(look.name)); })
        .def("__repr__", [](const Look& look) {
            const Rgba& colour = look.colour;
            return py::str("Look({!r}, ({}, {}, {}, {}))")
                .format(Text{look.name}, colour.red, colour.green, colour.blue, colour.alpha);
        });
    py::class_<Polyline>(module, "Curve", "A line beside a body: a plan symbol, an axis.")
        .def_property_readonly(
            "role", [](const Polyline& curve) { return Text{curve.role}; },
            "What it shows, such as \"FootPrint\" or \"Axis\"; may be empty.")
        .def_property_readonly("points", ArrayOf(&Polyline::points), "(n, 3) float64, metres.")
        .def_readonly("closed", &Polyline::closed, "Whether the last point leads to the first.");
}

void AddShapes(py::module_& module) {
    py::class_<Triangles>(module, "Surface", "Triangles of a shape that look the same.")
        .def_readonly("look", &Triangles::look,
                      "A Look; None takes the look of what is placed (see Shapes.looks).")
        .def_property_readonly("points", ArrayOf(&Triangles::points), "(n, 3) float64, metres.")
        .def_property_readonly("triangles", ArrayOf(&Triangles::triangles),
                               "(m, 3) uint32, numbers of points.")
        .def_property_readonly("normals", NormalsOf<Triangles>,
                               "(n, 3) float32; None where they were not asked for.");
    py::class_<Shape>(module, "Shape", "A body that stands once, in coordinates of its own.")
        .def_property_readonly(
            "key", [](const Shape& shape) { return Text{shape.key}; },
            "The name under which the file stores it.")
        .def_property_readonly("surfaces", ListOf(&Shape::surfaces),
                               "A list of Surface, one for each look.")
        .def_property_readonly("curves", ListOf(&Shape::curves),
                               "A list of Curve, where they were asked for.");
    const auto placementColumn = [](const auto& rows, const py::object& self, auto* first,
                                    std::vector<std::size_t> shape,
                                    std::vector<std::size_t> strides) {
        using Scalar = std::remove_cv_t<std::remove_reference_t<decltype(*first)>>;
        shape.insert(shape.begin(), rows.size());
        strides.insert(strides.begin(), sizeof(Placement));
        return py::array_t<Scalar>(shape, strides, first, self);
    };
    py::class_<Shapes, std::shared_ptr<Shapes>>(module, "Shapes", R"(What a renderer draws.

Each shape stands once. Placement i puts shape shape_of[i] at placements[i], as a part of the
element at model[tuple(element_of[i])].)")
        .def_property_readonly("shapes", ListOf(&Shapes::shapes), "A list of Shape.")
        .def_property_readonly(
            "placements",
            [placementColumn](const py::object& self) {
                const auto& rows = self.cast<Shapes&>().placements;
                const double* const first = rows.empty() ? nullptr : rows[0].toWorld.data();
                return placementColumn(rows, self, first, {3, 4},
                                       {4 * sizeof(double), sizeof(double)});
            },
            "(k, 3, 4) float64: rows of X axis, Y axis, Z axis, origin, to the model's metres.")
        .def_property_readonly(
            "shape_of",
            [placementColumn](const py::object& self) {
                const auto& rows = self.cast<Shapes&>().placements;
                return placementColumn(rows, self, rows.empty() ? nullptr : &rows[0].shape, {}, {});
            },
            "(k,) uint32: for each placement the number of its shape.")
        .def_property_readonly(
            "element_of",
            [placementColumn](const py::object& self) {
                const auto& rows = self.cast<Shapes&>().placements;
                const unsigned int* const first = rows.empty() ? nullptr : &rows[0].element.floor;
                return placementColumn(rows, self, first, {2}, {sizeof(unsigned int)});
            },
            "(k, 2) uint32: for each placement the (floor, position) of its element.")
        .def_property_readonly(
            "looks",
            [](const Shapes& shapes) {
                py::list looks;
                for (const Placement& placement : shapes.placements) looks.append(placement.look);
                return looks;
            },
            "For each placement the Look of the shape's surfaces that have none.")
        .def_readonly("missing", &Shapes::missing,
                      "How many names lead to no geometry in the file.")
        .def("__repr__", [](const Shapes& shapes) {
            return py::str("<zvg.Shapes: {} shapes, {} placements>")
                .format(shapes.shapes.size(), shapes.placements.size());
        });
}

}  // namespace

void AddBodyClasses(py::module_& module) {
    AddLookAndCurve(module);
    AddShapes(module);
    py::class_<ElementMesh, std::shared_ptr<ElementMesh>>(module, "Mesh",
                                                          R"(The body of an element.

Its arrays are views, which live on without the mesh and the model.)")
        .def_property_readonly("points", ArrayOf(&ElementMesh::points),
                               "(n, 3) float64, metres, in the model's coordinates; Z is up.")
        .def_property_readonly("triangles", ArrayOf(&ElementMesh::triangles),
                               R"((m, 3) uint32, numbers of points.

Counter-clockwise as seen from outside where the model is right.)")
        .def_property_readonly("normals", NormalsOf<ElementMesh>,
                               "(n, 3) float32 of length 1; None where they were not asked for.")
        .def_readonly("looks", &ElementMesh::looks, "A list of Look.")
        .def_property_readonly("look_of", ArrayOf(&ElementMesh::lookOf),
                               "(m,) uint32: for each triangle its number in looks.")
        .def_property_readonly("curves", ListOf(&ElementMesh::curves),
                               "A list of Curve, where they were asked for.")
        .def("__bool__", [](const ElementMesh& mesh) { return !mesh.triangles.empty(); })
        .def("__repr__", [](const ElementMesh& mesh) {
            return py::str("<zvg.Mesh: {} points, {} triangles>")
                .format(mesh.points.size(), mesh.triangles.size());
        });
}

}  // namespace ZVSmartModel::Python
