// Plans and exports: what is made of a model for other programs.

#include <pybind11/stl.h>

#include <cstdlib>

#include "Classes.h"
#include "ElementMesh.h"
#include "Finding.h"
#include "OpenModel.h"
#include "PythonCalls.h"
#include "PythonText.h"
#include "ZVSmartFormat/MemoryStream.h"
#include "ZVSmartModel/Exports.h"
#include "ZVSmartModel/Plan.h"

namespace ZVSmartModel::Python {

namespace {

using ModelPointer = std::shared_ptr<OpenModel>;

/// A plan and what was drawn.
struct DrawnPlan {
    std::string document;
    PlanFormat format;
    PlanSummary summary;
};

/// Bytes in memory, freed with it.
struct GrowingBytes : ZVSmartFormat::AllocBuffer {
    GrowingBytes() = default;
    ~GrowingBytes() { std::free(data); }
    GrowingBytes(const GrowingBytes&) = delete;
    GrowingBytes& operator=(const GrowingBytes&) = delete;
};

PlanFormat FormatNamed(const std::string& name) {
    if (name == "svg") return PlanFormat::Svg;
    if (name == "pdf") return PlanFormat::Pdf;
    if (name == "dxf") return PlanFormat::Dxf;
    throw py::value_error("format is \"svg\", \"pdf\" or \"dxf\"");
}

DrawnPlan DrawPlan(const ModelPointer& model, const py::object& floor, const Text& title,
                   const py::object& progress, double cutHeight, double depth, bool all, bool roof,
                   bool zones, const Text& paper, double scale, const std::string& format) {
    PlanOptions options;
    if (!floor.is_none()) options.floor = Utf8Of(py::str(floor));
    options.title = title.utf8;
    options.cutHeight = cutHeight;
    options.depth = depth;
    options.all = all;
    options.roof = roof;
    options.zones = zones;
    options.paper = paper.utf8;
    options.scale = scale;
    options.format = FormatNamed(format);
    const auto file = model->Use();
    return Freely([&] {
        GrowingBytes bytes;
        ZVSmartFormat::CZVFTAllocBufferOutStream out(&bytes);
        DrawnPlan plan;
        plan.format = options.format;
        plan.summary = WritePlan(*file, out, options, ProgressFor(progress));
        plan.document.assign(reinterpret_cast<const char*>(bytes.data), out.GetPos());
        return plan;
    });
}

Text SvgOf(const DrawnPlan& plan) {
    if (plan.format != PlanFormat::Svg) throw py::value_error("this plan is not SVG");
    return Text{plan.document};
}

ExportSummary Export(const ModelPointer& model, const FilePath& path, const py::object& cls,
                     const py::object& floor, const py::object& where, bool rooms, bool salvage,
                     bool merge, bool properties, const py::object& normals, double creaseAngle,
                     bool edges, bool instances, bool quantize, bool compress,
                     const py::object& progress) {
    const BodyOptions surfaces = BodyOptionsOf(normals, creaseAngle, false, 0.001);
    const Wanted wanted(cls, floor, where, rooms);
    const std::string modelPath = model->Path();
    const auto file = model->Use();
    return Freely([&] {
        ExportOptions options;
        options.selection = wanted.SelectionIn(*file, modelPath);
        options.salvage = salvage;
        options.merge = merge;
        options.properties = properties;
        options.normals = surfaces.normals;
        options.creaseAngle = surfaces.creaseAngle;
        options.edges = edges;
        options.instances = instances;
        options.quantize = quantize;
        options.compress = compress;
        return ExportFile(*file, path.name, options, ProgressFor(progress));
    });
}

void AddPlanFloor(py::module_& module) {
    using Floor = PlanFloorSummary;
    py::class_<Floor>(module, "PlanFloor",
                      R"(What became of the elements of one floor in a plan.

Those that are drawn count in cut, symbols, below or overhead; the others that are filed under the floor
in left_..., by why they are not.)")
        .def_property_readonly(
            "name", [](const Floor& floor) { return Text{floor.name}; }, "May be empty.")
        .def_readonly("elevation", &Floor::elevation, "Metres.")
        .def_readonly("plane", &Floor::plane,
                      "Metres: where bodies are cut; infinite for the roof.")
        .def_readonly("cut", &Floor::cut, "Drawn as the section of their bodies.")
        .def_readonly("visiting", &Floor::visiting, "Of these, filed under other floors.")
        .def_readonly("symbols", &Floor::symbols, "Drawn by their own outlines or curves.")
        .def_readonly("below", &Floor::below, "Seen below the plane.")
        .def_readonly("overhead", &Floor::overhead, "Dashed, above the plane.")
        .def_readonly("refused", &Floor::refused,
                      "Of all these, whose own outlines lie elsewhere than their bodies.")
        .def_readonly("left_below", &Floor::leftBelow, "Too far below the floor.")
        .def_readonly("left_above", &Floor::leftAbove,
                      "Above the plane, and hidden or on the floor above.")
        .def_readonly("left_gaps", &Floor::leftGaps,
                      "Above and below, with nothing in the plane; of any floor.")
        .def_readonly("left_empty", &Floor::leftEmpty, "Without anything that can be drawn.")
        .def_readonly("left_far", &Floor::leftFar, "Strays, of any floor.")
        .def_property_readonly(
            "strays",
            [](const Floor& floor) {
                py::list strays;
                for (const std::string& stray : floor.strays) strays.append(StrOf(stray));
                return strays;
            },
            "The first ten strays: their GUIDs and names.")
        .def_readonly("rooms", &Floor::rooms, "A list of PlanRoom: those filed under the floor.")
        .def("__repr__", [](const Floor& floor) {
            return py::str("<zvg.PlanFloor {!r}: {} cut, {} symbols, {} below, {} overhead>")
                .format(Text{floor.name}, floor.cut, floor.symbols, floor.below, floor.overhead);
        });
}

void AddPlanRoom(py::module_& module) {
    py::class_<PlanRoom>(module, "PlanRoom", "A room in a plan.")
        .def_property_readonly(
            "guid", [](const PlanRoom& room) { return Text{room.guid}; }, "May be empty.")
        .def_property_readonly(
            "number", [](const PlanRoom& room) { return Text{room.number}; }, "May be empty.")
        .def_property_readonly(
            "name", [](const PlanRoom& room) { return Text{room.name}; }, "May be empty.")
        .def_property_readonly(
            "zone", [](const PlanRoom& room) { return Text{room.zone}; },
            "The name of its first zone; may be empty.")
        .def_readonly("stated", &PlanRoom::stated,
                      "Square metres by the file's quantities, or None.")
        .def_readonly("measured", &PlanRoom::measured,
                      "Square metres of what is drawn of it, or None.")
        .def("__repr__", [](const PlanRoom& room) {
            return py::str("<zvg.PlanRoom {!r} {!r}>").format(Text{room.number}, Text{room.name});
        });
}

}  // namespace

void AddDocumentClasses(py::module_& module) {
    AddPlanRoom(module);
    AddPlanFloor(module);
    py::class_<DrawnPlan>(module, "Plan",
                          "A floor plan; str(plan) is the document where it is SVG.")
        .def_property_readonly(
            "document", [](const DrawnPlan& plan) { return py::bytes(plan.document); },
            "The document as bytes, whatever its format.")
        .def_property_readonly("svg", SvgOf,
                               "The document as text; ValueError where it is none of SVG.")
        .def_property_readonly(
            "scale", [](const DrawnPlan& plan) { return plan.summary.scale; }, "100 for 1:100.")
        .def_property_readonly(
            "floors", [](const DrawnPlan& plan) { return plan.summary.floors; },
            "How many floors were drawn.")
        .def_property_readonly(
            "elements", [](const DrawnPlan& plan) { return plan.summary.elements; },
            "How many elements were drawn.")
        .def_property_readonly(
            "lost", [](const DrawnPlan& plan) { return Text{plan.summary.lost}; },
            "What could not be read; empty where all was.")
        .def_property_readonly(
            "per_floor", [](const DrawnPlan& plan) { return plan.summary.perFloor; },
            "A list of PlanFloor: all floors that were looked at.")
        .def("__str__", SvgOf)
        .def("_repr_svg_",
             [](const DrawnPlan& plan) -> py::object {
                 if (plan.format != PlanFormat::Svg) return py::none();
                 return py::cast(SvgOf(plan));
             })
        .def("__repr__", [](const DrawnPlan& plan) {
            return py::str("<zvg.Plan: {} floors, {} elements>")
                .format(plan.summary.floors, plan.summary.elements);
        });
    py::class_<ExportSummary>(module, "ExportSummary", "What was exported.")
        .def_readonly("elements", &ExportSummary::elements, "How many elements were written.")
        .def_readonly("meshes", &ExportSummary::meshes, "How many bodies differ.")
        .def_readonly("missing", &ExportSummary::missing,
                      "How many names lead to no geometry in the file.")
        .def_property_readonly(
            "lost", [](const ExportSummary& summary) { return Text{summary.lost}; },
            "What was left out by salvage; empty where nothing was.")
        .def("__repr__", [](const ExportSummary& summary) {
            return py::str("<zvg.ExportSummary: {} elements, {} meshes>")
                .format(summary.elements, summary.meshes);
        });

    // The methods of a class that another file has made.
    const py::object model = module.attr("Model");
    const auto addMethod = [&model](const char* name, auto call, const auto&... rest) {
        model.attr(name) = py::cpp_function(call, py::name(name), py::is_method(model), rest...);
    };
    addMethod("plan", DrawPlan, py::arg("floor") = py::none(), py::arg("title") = Text{""},
              py::arg("progress") = py::none(), py::kw_only(),
              py::arg("cut_height") = PlanOptions().cutHeight,
              py::arg("depth") = PlanOptions().depth, py::arg("all") = false,
              py::arg("roof") = false, py::arg("zones") = false, py::arg("paper") = Text{""},
              py::arg("scale") = 0.0, py::arg("format") = "svg",
              R"(plan(floor=None, title="", progress=None, *, cut_height=1.2, depth=0.5, all=False,
     roof=False, zones=False, paper="", scale=0.0, format="svg") -> Plan

Draws a floor, by its name or number, or all floors: what the plane cut_height metres above the
floor cuts, what is seen from there down to depth metres below the floor, and dashed what hangs
above. roof adds all as seen from above, zones gives rooms their zones' colours. paper is "A0" to "A4", a sheet for each floor; without,
one sheet as large as it takes. scale is 100 for 1:100, 0 the largest usual one that fits.
format is "svg", "pdf" or "dxf". Strays, which are far from all others, are left out unless all
is set. Raises KeyError for a floor that is not there, Error for a paper or a scale that cannot
be, ValueError for another format.)");
    addMethod("export", Export, py::arg("path"), py::kw_only(), py::arg("cls") = py::none(),
              py::arg("floor") = py::none(), py::arg("where") = py::none(),
              py::arg("rooms") = false, py::arg("salvage") = false, py::arg("merge") = false,
              py::arg("properties") = true, py::arg("normals") = py::none(),
              py::arg("crease_angle") = ExportOptions().creaseAngle, py::arg("edges") = false,
              py::arg("instances") = false, py::arg("quantize") = false,
              py::arg("compress") = false, py::arg("progress") = py::none(),
              R"(export(path, *, cls=None, floor=None, where=None, rooms=False, salvage=False,
       merge=False, properties=True, normals=None, crease_angle=0.5236, edges=False,
       instances=False, quantize=False, compress=False, progress=None) -> ExportSummary

Writes a .glb file, or an .obj file with an .mtl file beside it, whole or not at all. The
first arguments choose as those of find(). merge makes one mesh for each floor and look. For
GLB alone: properties=False leaves them out; normals is "flat" or "smooth"; edges adds lines,
from crease_angle on, in radians; instances places what is alike (EXT_mesh_gpu_instancing);
quantize and compress make the file small (KHR_mesh_quantization, EXT_meshopt_compression).
What cannot be read raises DamagedError, unless salvage leaves it out; KeyError where nothing
is chosen; Error for instances with edges.)");
}

}  // namespace ZVSmartModel::Python
