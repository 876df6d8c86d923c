// Plans and exports: what is made of a model for other programs.

#include <pybind11/stl.h>

#include <cstdlib>

#include "Classes.h"
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
    std::string svg;
    PlanSummary summary;
};

/// Bytes in memory, freed with it.
struct GrowingBytes : ZVSmartFormat::AllocBuffer {
    GrowingBytes() = default;
    ~GrowingBytes() { std::free(data); }
    GrowingBytes(const GrowingBytes&) = delete;
    GrowingBytes& operator=(const GrowingBytes&) = delete;
};

DrawnPlan DrawPlan(const ModelPointer& model, const py::object& floor, const Text& title,
                   const py::object& progress) {
    PlanOptions options;
    if (!floor.is_none()) options.floor = Utf8Of(py::str(floor));
    options.title = title.utf8;
    const auto file = model->Use();
    return Freely([&] {
        GrowingBytes bytes;
        ZVSmartFormat::CZVFTAllocBufferOutStream out(&bytes);
        DrawnPlan plan;
        plan.summary = WritePlan(*file, out, options, ProgressFor(progress));
        plan.svg.assign(reinterpret_cast<const char*>(bytes.data), out.GetPos());
        return plan;
    });
}

ExportSummary Export(const ModelPointer& model, const FilePath& path, const py::object& cls,
                     const py::object& floor, const py::object& where, bool rooms, bool salvage,
                     const py::object& progress) {
    const Wanted wanted(cls, floor, where, rooms);
    const std::string modelPath = model->Path();
    const auto file = model->Use();
    return Freely([&] {
        const ExportOptions options{wanted.SelectionIn(*file, modelPath), salvage};
        return ExportFile(*file, path.name, options, ProgressFor(progress));
    });
}

}  // namespace

void AddDocumentClasses(py::module_& module) {
    py::class_<DrawnPlan>(module, "Plan", "A floor plan as SVG; str(plan) is the document.")
        .def_property_readonly(
            "svg", [](const DrawnPlan& plan) { return Text{plan.svg}; }, "The document.")
        .def_property_readonly(
            "floors", [](const DrawnPlan& plan) { return plan.summary.floors; },
            "How many floors were drawn.")
        .def_property_readonly(
            "elements", [](const DrawnPlan& plan) { return plan.summary.elements; },
            "How many elements were drawn.")
        .def_property_readonly(
            "lost", [](const DrawnPlan& plan) { return Text{plan.summary.lost}; },
            "What could not be read; empty where all was.")
        .def("__str__", [](const DrawnPlan& plan) { return Text{plan.svg}; })
        .def("_repr_svg_", [](const DrawnPlan& plan) { return Text{plan.svg}; })
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
              py::arg("progress") = py::none(), R"(plan(floor=None, title="", progress=None) -> Plan

Draws a floor, by its name or number, or all floors: the outlines of the elements or, where
they have none, sections of what reaches the plane 1.2 m above the floor. Raises KeyError for a floor that is not there.)");
    addMethod("export", Export, py::arg("path"), py::kw_only(), py::arg("cls") = py::none(),
              py::arg("floor") = py::none(), py::arg("where") = py::none(),
              py::arg("rooms") = false, py::arg("salvage") = false,
              py::arg("progress") = py::none(),
              R"(export(path, *, cls=None, floor=None, where=None, rooms=False, salvage=False,
       progress=None) -> ExportSummary

Writes a .glb file, or an .obj file with an .mtl file beside it, whole or not at all. The
first arguments choose as those of find(). What cannot be read raises DamagedError, unless
salvage leaves it out; KeyError where nothing is chosen.)");
}

}  // namespace ZVSmartModel::Python
