#include <pybind11/stl.h>

#include <memory>
#include <mutex>
#include <optional>

#include "ArrayView.h"
#include "Classes.h"
#include "ElementClass.h"
#include "ElementMesh.h"
#include "Finding.h"
#include "PythonCalls.h"
#include "PythonText.h"
#include "ZVSmartModel/Preview.h"

namespace ZVSmartModel::Python {

namespace {

using ModelPointer = std::shared_ptr<OpenModel>;

/// A floor of a model; where the file is far away it is read when it is first asked.
class ModelFloor {
  public:
    explicit ModelFloor(Floor values) : values(std::move(values)) {}
    ModelFloor(ModelPointer model, unsigned int number) : model(std::move(model)), number(number) {}

    const Floor& Values() {
        if (!values) {
            const auto file = model->Use();
            values = Freely([&] { return file->ReadFloor(number); });
        }
        return *values;
    }

  private:
    ModelPointer model;
    unsigned int number = 0;
    std::optional<Floor> values;
};

std::vector<ModelFloor> FloorsOf(const ModelPointer& model) {
    const auto file = model->Use();
    std::vector<ModelFloor> floors;
    if (!model->IsFarAway()) {
        for (Floor& floor : Freely([&] { return file->Floors(); })) {
            floors.emplace_back(std::move(floor));
        }
        return floors;
    }
    const unsigned int count = Freely([&] { return file->Head().floors; });
    for (unsigned int number = 0; number < count; ++number) floors.emplace_back(model, number);
    return floors;
}

/// Walks the elements of a model, in the file's order.
class ElementWalk {
  public:
    explicit ElementWalk(ModelPointer model) : model(std::move(model)) {
        const auto file = this->model->Use();
        Freely([&] {
            floors = file->Head().floors;
            elements = file->ElementCount(next.floor);
        });
    }

    /// What cannot be read is left out, as everywhere where a file is walked.
    ModelElement Next() {
        const auto file = model->Use();
        std::optional<Element> element = Freely([&] {
            const std::lock_guard<std::mutex> lock(alone);
            return ReadNext(*file);
        });
        if (!element) throw py::stop_iteration();
        return {model, std::move(*element)};
    }

  private:
    std::optional<Element> ReadNext(const BlockFile& file) {
        while (next.floor < floors) {
            while (next.position < elements) {
                const ElementIndex index = next;
                ++next.position;
                try {
                    return file.Read(index);
                } catch (const Error& error) {
                    if (error.GetStatus() != Status::Damaged) throw;
                }
            }
            elements = file.ElementCount(next.floor + 1);
            next = {next.floor + 1, 0};
        }
        return std::nullopt;
    }

    ModelPointer model;
    unsigned int floors = 0;
    unsigned int elements = 0;  ///< of the floor that `next` is on
    ElementIndex next{0, 0};
    std::mutex alone;  ///< several threads may share a walk
};

ModelElement ElementAtPlace(const ModelPointer& model, const py::tuple& place) {
    if (place.size() != 2) throw py::type_error("an element's place is (floor, position)");
    ElementIndex index;
    try {
        index = {place[0].cast<unsigned int>(), place[1].cast<unsigned int>()};
    } catch (const py::cast_error&) {
        throw py::index_error("an element's place is two numbers, 0 or more");
    }
    try {
        return ElementAt(model, index);
    } catch (const Error& error) {
        RaiseAsIndex(error);
    }
}

ModelElement ElementNamed(const ModelPointer& model, const Text& guid) {
    if (auto element = ElementOfGuid(model, guid.utf8)) return std::move(*element);
    const std::string path = model->Path();
    throw Error(Status::NotFound, path + ": no element '" + guid.utf8 + "'", path);
}

py::object Find(const ModelPointer& model, const std::optional<Text>& guid,
                const std::optional<Text>& name, const py::object& cls, const py::object& floor,
                const py::object& where) {
    if (guid) {
        if (name || !cls.is_none() || !floor.is_none() || !where.is_none()) {
            throw py::type_error("find() takes a guid alone");
        }
        return py::cast(ElementNamed(model, *guid));
    }
    Wanted wanted(cls, floor, where);
    if (name) wanted.SetName(name->utf8);
    const auto file = model->Use();
    py::list found;
    for (Element& element : Freely([&] { return wanted.In(*file); })) {
        found.append(ModelElement(model, std::move(element)));
    }
    return found;
}

std::shared_ptr<Shapes> ShapesOf(const ModelPointer& model, const py::object& cls,
                                 const py::object& floor, const py::object& where, bool rooms,
                                 const py::object& normals, double creaseAngle, bool curves,
                                 double chordError, const py::object& progress) {
    const Wanted wanted(cls, floor, where, rooms);
    const BodyOptions options = BodyOptionsOf(normals, creaseAngle, curves, chordError);
    const std::string path = model->Path();
    const auto file = model->Use();
    return Freely([&] {
        return std::make_shared<Shapes>(
            ReadShapes(*file, wanted.SelectionIn(*file, path), options, ProgressFor(progress)));
    });
}

py::object PreviewOf(const ModelPointer& model) {
    const auto file = model->Use();
    Picture picture = Freely([&] { return file->Preview(); });
    if (picture.width == 0) return py::none();
    return ViewOf(std::move(picture));
}

py::array Render(const ModelPointer& model, unsigned int width, unsigned int height, bool rooms,
                 bool unlimited, const py::object& progress) {
    const RenderOptions options{width, height, rooms, unlimited};
    const auto file = model->Use();
    return ViewOf(Freely([&] { return RenderPicture(*file, options, ProgressFor(progress)); }));
}

py::bytes PngOfArray(const py::array_t<std::uint8_t, py::array::c_style>& pixels) {
    const Picture picture = PictureOf(pixels);
    return Freely([&] { return PngOf(picture); });
}

/// The picture of the model as an <img>; empty where there is none to show.
std::string ImageOf(const BlockFile& file) try {
    const Picture picture = file.Preview();
    return picture.width == 0 ? "" : PngOf(picture);
} catch (const Error&) {
    return "";  // a page shows what there is; asking for the picture tells why there is none
}

py::str HtmlOf(const ModelPointer& model) {
    const auto file = model->Use();
    const auto [png, title, floors, elements] = Freely([&] {
        const FileInfo info = file->Head();
        return std::make_tuple(ImageOf(*file), info.firstText, info.floors, file->ElementCount());
    });
    py::str image("");
    if (!png.empty()) {
        const py::object encoded = py::module_::import("base64").attr("b64encode")(py::bytes(png));
        image = py::str("<img src=\"data:image/png;base64,{}\">").format(encoded.attr("decode")());
    }
    const py::object escaped = py::module_::import("html").attr("escape")(StrOf(title));
    return py::str("<figure>{}<figcaption>{}: {} floors, {} elements</figcaption></figure>")
        .format(image, escaped, floors, elements);
}

/// A value of what the file says of itself.
template <class Value>
auto InfoOf(Value FileInfo::*member) {
    return [member](const ModelPointer& model) {
        const auto file = model->Use();
        const FileInfo info = Freely([&] { return file->Head(); });
        if constexpr (std::is_same_v<Value, std::string>) {
            return Text{info.*member};
        } else {
            return info.*member;
        }
    };
}

template <class Value>
auto FloorValue(Value Floor::*member) {
    return [member](ModelFloor& floor) { return floor.Values().*member; };
}

void AddFloorAndDamage(py::module_& module) {
    py::class_<ModelFloor>(module, "Floor", "A floor of a model.")
        .def_property_readonly(
            "name", [](ModelFloor& floor) { return Text{floor.Values().name}; }, "May be empty.")
        .def_property_readonly("order", FloorValue(&Floor::order),
                               "As the host numbered it; lower is further down in packed files.")
        .def_property_readonly("elevation", FloorValue(&Floor::elevation), "Metres.")
        .def_property_readonly("height", FloorValue(&Floor::height),
                               "Metres up to the next floor; 0 for the topmost.")
        .def_property_readonly("elements", FloorValue(&Floor::elements),
                               "How many elements stand on it.")
        .def("__repr__", [](ModelFloor& floor) {
            return py::str("<zvg.Floor {!r}: {} elements>")
                .format(Text{floor.Values().name}, floor.Values().elements);
        });
    py::class_<Damage>(module, "Damage", "Something of a file that cannot be read.")
        .def_readonly("position", &Damage::position, "The byte in the file.")
        .def_property_readonly(
            "reason", [](const Damage& damage) { return Text{damage.reason}; },
            "What is wrong there.")
        .def("__repr__", [](const Damage& damage) {
            return py::str("<zvg.Damage at {}: {}>").format(damage.position, Text{damage.reason});
        });
}

using ModelType = py::class_<OpenModel, ModelPointer>;

void AddWhatItSays(ModelType& type) {
    type.def_property_readonly("title", InfoOf(&FileInfo::firstText), "Where it comes from.")
        .def_property_readonly("remark", InfoOf(&FileInfo::secondText),
                               "What the host says besides.")
        .def_property_readonly("version", InfoOf(&FileInfo::version), "Of the format, 0 to 4.")
        .def_property_readonly("bytes", InfoOf(&FileInfo::bytes), "The size of the file.")
        .def_property_readonly("path", &OpenModel::Name, "The file, or what stands for it.")
        .def_property_readonly("floors", FloorsOf, R"(A list of Floor, in the file's order.

Of a file object each floor is read when it is first asked for a value.)")
        .def_property_readonly(
            "classes",
            [](const ModelPointer& model) {
                const auto file = model->Use();
                py::dict counts;
                for (const ClassCount& count : Freely([&] { return file->Classes(); })) {
                    counts[StrOf(count.className)] = count.elements;
                }
                return counts;
            },
            "A dict from the name of each class to the number of its elements.")
        .def_property_readonly(
            "damage",
            [](const ModelPointer& model) {
                const auto file = model->Use();
                return Freely([&] { return file->DamageMet(); });
            },
            R"(A list of Damage: what was met so far that cannot be read.

Walking and finding leave it out and go on; verify() looks for all there is.)")
        .def(
            "verify",
            [](const ModelPointer& model, const py::object& progress) {
                model->Use();
                return model->Verify(ProgressFor(progress));
            },
            py::arg("progress") = py::none(), R"(verify(progress=None) -> list[Damage]

Decodes and checks everything; the list is empty for a sound file.)");
}

void AddFinding(ModelType& type) {
    type.def("__len__",
             [](const ModelPointer& model) {
                 const auto file = model->Use();
                 return Freely([&] { return file->ElementCount(); });
             })
        .def("__iter__",
             [](const ModelPointer& model) { return std::make_unique<ElementWalk>(model); })
        .def("__getitem__", ElementAtPlace, R"(model[guid] or model[floor, position] -> Element

Raises KeyError for a GUID and IndexError for a place that is not there.)")
        .def("__getitem__", ElementNamed)
        .def("__contains__",
             [](const ModelPointer& model, const Text& guid) {
                 return ElementOfGuid(model, guid.utf8).has_value();
             })
        .def("find", Find, py::kw_only(), py::arg("guid") = py::none(),
             py::arg("name") = py::none(), py::arg("cls") = py::none(),
             py::arg("floor") = py::none(), py::arg("where") = py::none(),
             R"(find(*, guid) -> Element
find(*, name=None, cls=None, floor=None, where=None) -> list[Element]

The element of a GUID, or all elements that are as the arguments say, in the file's order.

cls: the name of a class, such as "IfcWall", or several; types and materials count as well
floor: a floor's name or number
where: a dict from "SET.NAME" to what that property is: a str is its value, a bool is
    "true" or "false", a number is compared as a number

Raises KeyError for a GUID or a floor that is not there. What is damaged is left out, and
told by damage; where it may be what the GUID names, DamagedError is raised.)")
        .def("shapes", ShapesOf, py::kw_only(), py::arg("cls") = py::none(),
             py::arg("floor") = py::none(), py::arg("where") = py::none(), py::arg("rooms") = true,
             py::arg("normals") = py::none(), py::arg("crease_angle") = BodyOptions().creaseAngle,
             py::arg("curves") = false, py::arg("chord_error") = BodyOptions().chordError,
             py::arg("progress") = py::none(),
             R"(shapes(*, cls=None, floor=None, where=None, rooms=True, normals=None,
       crease_angle=0.5236, curves=False, chord_error=0.001, progress=None) -> Shapes

The shapes of elements, each once, and where they stand, as renderers want them. The first
three arguments choose as those of find(), the others ask as those of Element.mesh().)");
}

void AddPictures(ModelType& type) {
    type.def("preview", PreviewOf, R"(preview() -> numpy.ndarray | None

The picture that the file carries: height x width x 4 uint8 (red, green, blue, alpha). None
where it has none. zvg.png() makes a file of it.)")
        .def("render", Render, py::kw_only(), py::arg("width") = RenderOptions().width,
             py::arg("height") = RenderOptions().height, py::arg("rooms") = false,
             py::arg("unlimited") = false, py::arg("progress") = py::none(),
             R"(render(*, width=640, height=480, rooms=False, unlimited=False, progress=None)

Draws a picture of all elements in a three-quarter view, as preview() gives one.)")
        .def("_repr_html_", HtmlOf);
}

}  // namespace

void AddModelClass(py::module_& module) {
    AddFloorAndDamage(module);
    py::class_<ElementWalk>(module, "_ElementWalk")
        .def("__iter__", [](const py::object& self) { return self; })
        .def("__next__", &ElementWalk::Next);
    ModelType type(module, "Model", R"(A building model in a block file, opened by zvg.open().

len(model) is the number of its elements; iterating walks them in the file's order. Several
threads may use one model; a process that was forked may go on with one that was opened by
its path or from bytes, and such a model can be pickled. After close() every call raises
ValueError; elements keep their values, arrays their numbers.)");
    type.def(py::init<const py::object&, std::uint64_t, bool, unsigned int>(), py::arg("source"),
             py::arg("cache"), py::arg("unlimited"), py::arg("threads") = 1)
        .def("close", &OpenModel::Close, "Closes the file.")
        .def_property_readonly("closed", &OpenModel::IsClosed, "Whether close() was called.")
        .def("__enter__", [](const py::object& self) { return self; })
        .def("__exit__", [](OpenModel& model, const py::args&) { model.Close(); })
        .def("__reduce__",
             [](const py::object& self) {
                 return py::make_tuple(self.attr("__class__"), self.cast<OpenModel&>().Arguments());
             })
        .def("__repr__", [](const OpenModel& model) {
            return py::str("<zvg.Model {}{}>")
                .format(model.Name(), model.IsClosed() ? ", closed" : "");
        });
    AddWhatItSays(type);
    AddFinding(type);
    AddPictures(type);
    module.def("png", PngOfArray, py::arg("picture"), R"(png(picture) -> bytes

A picture (height x width x 4 uint8) as the bytes of a PNG file.)");
}

}  // namespace ZVSmartModel::Python
