#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>

#include "ArrayView.h"
#include "Classes.h"
#include "ElementMesh.h"
#include "PythonCalls.h"
#include "PythonText.h"
#include "ZVSmartModel/Builder.h"

namespace ZVSmartModel::Python {

namespace {

/// A builder that several threads may use, and that is gone once it was left.
class Writer {
  public:
    Writer(const FilePath& path, const BuilderOptions& options)
        : builder(Freely([&] { return std::make_unique<Builder>(path.name, options); })) {}

    /// Does `act(builder)` without the interpreter's lock. Throws ValueError once it is closed.
    template <class Act>
    auto Do(Act act) {
        if (closed) throw py::value_error("the writer is closed");
        return Freely([&] {
            const std::lock_guard<std::mutex> alone(mutex);
            if (!builder) throw Error(Status::Usage, "the writer was closed meanwhile");
            return act(*builder);
        });
    }
    bool IsOpen() const { return !closed; }
    void Finish() {
        Do([](Builder& itself) { itself.Finish(); });
        closed = true;
    }
    /// Gives up what was not finished: no file comes of it.
    void Abandon() {
        if (closed) return;
        closed = true;
        Freely([this] {
            const std::lock_guard<std::mutex> alone(mutex);
            builder.reset();
        });
    }

  private:
    std::mutex mutex;
    std::unique_ptr<Builder> builder;
    bool closed = false;
};

/// An array-like of numbers as rows of three. Throws ValueError for another form, TypeError for
/// what is no array of such numbers.
template <class Scalar>
py::array_t<Scalar, py::array::c_style | py::array::forcecast> RowsOfThree(const py::object& given,
                                                                           const char* what,
                                                                           const char* kinds) {
    const py::array array = py::array::ensure(given);
    if (!array) throw py::type_error(std::string(what) + " are an array of numbers");
    const bool fits = array.ndim() == 2 && array.shape(1) == 3;
    if (!fits && array.size() != 0) {
        throw py::value_error(std::string(what) + " are rows of three");
    }
    if (array.size() != 0 && std::string(kinds).find(array.dtype().kind()) == std::string::npos) {
        throw py::type_error(std::string(what) + " are of another type of numbers");
    }
    return array;
}

std::vector<Point> PointsOf(const py::object& given) {
    const auto rows = RowsOfThree<double>(given, "points", "fiu");
    std::vector<Point> points(static_cast<std::size_t>(rows.size()) / 3);
    if (!points.empty()) std::memcpy(points.data(), rows.data(), points.size() * sizeof(Point));
    return points;
}

std::vector<std::array<std::uint32_t, 3>> TrianglesOf(const py::object& given) {
    const auto rows = RowsOfThree<std::int64_t>(given, "triangles", "iu");
    std::vector<std::array<std::uint32_t, 3>> triangles(static_cast<std::size_t>(rows.size()) / 3);
    const std::int64_t* next = rows.data();
    for (auto& triangle : triangles) {
        for (std::uint32_t& corner : triangle) {
            if (*next < 0 || *next > 0xFFFFFFFF) throw py::index_error("no point has this number");
            corner = static_cast<std::uint32_t>(*next++);
        }
    }
    return triangles;
}

/// A mesh's surfaces, one for each of its looks.
std::vector<Triangles> SurfacesOf(const ElementMesh& mesh) {
    std::vector<Triangles> surfaces(mesh.looks.size());
    for (std::size_t i = 0; i < surfaces.size(); ++i) {
        surfaces[i].look = mesh.looks[i];
        surfaces[i].points = mesh.points;
    }
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        surfaces[mesh.lookOf[i]].triangles.push_back(mesh.triangles[i]);
    }
    return surfaces;
}

std::size_t AddShape(Writer& writer, const py::object& points, const py::object& triangles,
                     const std::optional<Look>& look) {
    NewShape shape;
    if (py::isinstance<ElementMesh>(points)) {
        const ElementMesh& mesh = points.cast<ElementMesh&>();
        shape.surfaces = SurfacesOf(mesh);
        shape.curves = mesh.curves;
    } else {
        Triangles& surface = shape.surfaces.emplace_back();
        surface.points = PointsOf(points);
        surface.triangles = TrianglesOf(triangles);
        surface.look = look;
    }
    return writer.Do([&](Builder& builder) { return builder.AddShape(shape); });
}

/// A shape's number, or a pair of it and where it is placed (3 x 4 numbers).
NewPlacement PlacementOf(py::handle given) {
    NewPlacement placement;
    if (!py::isinstance<py::tuple>(given)) {
        placement.shape = given.cast<std::size_t>();
        return placement;
    }
    const auto [shape, transform] = given.cast<std::pair<std::size_t, py::object>>();
    const auto numbers =
        py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(transform);
    if (!numbers || numbers.ndim() != 2 || numbers.shape(0) < 3 || numbers.shape(1) != 4) {
        throw py::value_error("a placement is 3 rows of 4 numbers");
    }
    placement.shape = shape;
    std::copy_n(numbers.data(), placement.toWorld.size(), placement.toWorld.begin());
    return placement;
}

/// A value of Python as a property; `name` is split at its first dot.
Property PropertyOf(const std::string& name, py::handle value) {
    Property property;
    const std::size_t dot = name.find('.');
    if (dot != std::string::npos) property.set = name.substr(0, dot);
    property.name = dot == std::string::npos ? name : name.substr(dot + 1);
    if (py::isinstance<py::bool_>(value)) {
        property.kind = "boolean";
        property.value = value.cast<bool>() ? "true" : "false";
    } else if (py::isinstance<py::int_>(value)) {
        property.kind = "integer";
        property.value = Utf8Of(py::str(value));
    } else if (py::isinstance<py::float_>(value)) {
        property.kind = "real";
        property.value = Utf8Of(py::repr(py::float_(value.cast<double>())));
    } else if (py::isinstance<py::str>(value)) {
        property.value = Utf8Of(value);
    } else {
        throw py::type_error("a property is a str, a bool, an int, a float or a zvg.Property");
    }
    return property;
}

/// A dict from "SET.NAME" to values or Property, or a list of Property.
std::vector<Property> GivenProperties(const py::object& given) {
    std::vector<Property> properties;
    if (given.is_none()) return properties;
    if (!py::isinstance<py::dict>(given)) return given.cast<std::vector<Property>>();
    for (const auto& [name, value] : given.cast<py::dict>()) {
        const bool isWhole = py::isinstance<Property>(value);
        properties.push_back(isWhole ? value.cast<Property>()
                                     : PropertyOf(name.cast<Text>().utf8, value));
    }
    return properties;
}

void AddElement(Writer& writer, const Text& guid, const Text& cls, const Text& name,
                std::optional<std::size_t> floor, const py::iterable& shapes,
                const py::object& properties, const std::vector<Material>& materials,
                const Text& type, const Text& predefinedType, const std::vector<Text>& parents,
                const Text& group) {
    NewElement element;
    element.guid = guid.utf8;
    element.className = cls.utf8;
    element.name = name.utf8;
    element.floor = floor;
    for (const py::handle shape : shapes) element.shapes.push_back(PlacementOf(shape));
    element.properties = GivenProperties(properties);
    element.materials = materials;
    element.typeName = type.utf8;
    element.predefinedType = predefinedType.utf8;
    for (const Text& parent : parents) element.parents.push_back(parent.utf8);
    element.group = group.utf8;
    writer.Do([&](Builder& builder) { builder.AddElement(element); });
}

void SetPreview(Writer& writer, const py::array_t<std::uint8_t, py::array::c_style>& pixels) {
    const Picture picture = PictureOf(pixels);
    writer.Do([&](Builder& builder) { builder.SetPreview(picture); });
}

std::unique_ptr<Writer> NewWriter(const FilePath& path, const Text& title, const Text& remark,
                                  const Text& building, const Text& buildingGuid, const Text& site,
                                  const Text& siteGuid, unsigned int formatVersion, bool fast,
                                  bool seal) {
    BuilderOptions options;
    options.title = title.utf8;
    options.remark = remark.utf8;
    options.building = {buildingGuid.utf8, building.utf8, "", siteGuid.utf8, site.utf8};
    options.formatVersion = formatVersion;
    options.fast = fast;
    options.seal = seal;
    return std::make_unique<Writer>(path, options);
}

}  // namespace

void AddWriterClass(py::module_& module) {
    const BuilderOptions defaults;
    py::class_<Writer>(module, "Writer",
                       R"(Writer(path, *, title="", remark=..., building="", building_guid="",
       site="", site_guid="", format_version=4, fast=False, seal=False)

Writes a model as a block file, in one pass.

    with zvg.Writer("new.zvg") as w:
        ground = w.floor("Ground floor", elevation=0, height=3)
        s = w.shape(points, triangles)
        w.element("slab", "IfcSlab", floor=ground, shapes=[s])

The file appears whole at the end of the block; where the block raises, none does and one that
was there stays. What refers to a floor or a shape comes after it. A mistake raises zvg.Error
with Status.USAGE, stores nothing, and the writer goes on.)")
        .def(py::init(&NewWriter), py::arg("path"), py::kw_only(), py::arg("title") = Text{""},
             py::arg("remark") = Text{defaults.remark}, py::arg("building") = Text{""},
             py::arg("building_guid") = Text{""}, py::arg("site") = Text{""},
             py::arg("site_guid") = Text{""}, py::arg("format_version") = defaults.formatVersion,
             py::arg("fast") = false, py::arg("seal") = false)
        .def(
            "floor",
            [](Writer& writer, const Text& name, double elevation, double height) {
                const NewFloor floor{name.utf8, elevation, height};
                return writer.Do([&](Builder& builder) { return builder.AddFloor(floor); });
            },
            py::arg("name"), py::arg("elevation") = 0.0, py::arg("height") = 0.0,
            R"(floor(name, elevation=0, height=0) -> int

Adds a floor, the lowest first, and gives its number; metres.)")
        .def("shape", AddShape, py::arg("points"), py::arg("triangles") = py::none(),
             py::arg("look") = py::none(), R"(shape(points, triangles, look=None) -> int
shape(mesh) -> int

Stores a body in coordinates of its own, and gives its number; one that was stored before
has the number that it had.

points: (n, 3), metres, rounded to 2^-24 m
triangles: (m, 3), numbers of points, counter-clockwise as seen from outside
look: a Look, or None for light grey
mesh: a Mesh of an element, with its looks and curves)")
        .def("element", AddElement, py::arg("guid"), py::arg("cls"), py::arg("name") = Text{""},
             py::kw_only(), py::arg("floor") = py::none(), py::arg("shapes") = py::tuple(),
             py::arg("properties") = py::none(), py::arg("materials") = std::vector<Material>(),
             py::arg("type") = Text{""}, py::arg("predefined_type") = Text{""},
             py::arg("parents") = std::vector<Text>(), py::arg("group") = Text{""},
             R"(element(guid, cls, name="", *, floor=None, shapes=(), properties=None,
        materials=(), type="", predefined_type="", parents=(), group="")

Stores an element.

guid: its GlobalId, or any name that no other element has
cls: its class; the names of IFC, such as "IfcWall", serve well
floor: its number, as floor() gave it
shapes: numbers as shape() gave them, each alone or as (number, placement), where a placement
    is 3 rows of (X axis, Y axis, Z axis, origin)
properties: a dict from "SET.NAME" to a str, bool, int, float or Property, or a list of Property
materials: a list of Material of another element
parents: GUIDs of its host and of what it is a part of
group: the GUID of the group it is in)")
        .def("preview", SetPreview, py::arg("picture"), R"(preview(picture)

Stores the picture that the file shows: height x width x 4 uint8.)")
        .def("finish", &Writer::Finish, R"(finish()

Ends the file, which appears now. The end of a with block does it.)")
        .def("__enter__", [](const py::object& self) { return self; })
        .def("__exit__", [](Writer& writer, const py::object& type, const py::args&) {
            // What was finished within the block is finished.
            if (type.is_none() && writer.IsOpen()) return writer.Finish();
            writer.Abandon();
        });
}

}  // namespace ZVSmartModel::Python
