#include <pybind11/stl.h>

#include <memory>

#include "Classes.h"
#include "PythonCalls.h"
#include "PythonText.h"
#include "ZVSmartModel/Pack.h"

namespace ZVSmartModel::Python {

namespace {

/// What came of a model, with what a person should know besides.
struct Packed {
    PackReport report;
    std::vector<std::string> notes;
};

struct PackArguments {
    FilePath model, block;
    std::optional<FilePath> settings, preview, importer;
};

void Pack(const PackArguments& paths, PackOptions options, const py::object& progress,
          Packed& packed) {
    if (paths.settings) options.settingsPath = paths.settings->name;
    if (paths.preview) options.previewPath = paths.preview->name;
    if (paths.importer) options.importer = paths.importer->name;
    options.progress = ProgressFor(progress);
    packed = {};
    options.warn = [&packed](const std::string& message) { packed.notes.push_back(message); };
    // Others may look at the report meanwhile: it is filled at once, at the end.
    PackReport report;
    const auto pack = [&] { PackModelFile(paths.model.name, paths.block.name, options, &report); };
    try {
        Freely(pack);
    } catch (...) {
        packed.report = report;
        throw;
    }
    packed.report = std::move(report);
}

std::vector<std::string> FormatsOf(const std::optional<FilePath>& importer) {
    return Freely([&] { return ImportFormats(importer ? importer->name : ""); });
}

template <class Member>
auto Of(Member PackReport::*member) {
    return [member](const Packed& packed) { return packed.report.*member; };
}

void AddReport(py::module_& module) {
    py::class_<PackWarning>(module, "PackWarning",
                            "One thing that a model's author may want to know.")
        .def_readonly("kind", &PackWarning::kind, "One word, such as \"openingNotCut\".")
        .def_property_readonly(
            "text", [](const PackWarning& one) { return Text{one.text}; }, "A sentence for people.")
        .def_readonly("lost", &PackWarning::lost, "Whether something of the model did not arrive.")
        .def_readonly("count", &PackWarning::count, "How often it occurs.")
        .def_property_readonly(
            "where",
            [](const PackWarning& one) {
                py::list where;
                for (const std::string& place : one.where) where.append(Text{place});
                return where;
            },
            "The first GlobalIds, or entity numbers as \"#12\".")
        .def("__repr__", [](const PackWarning& one) {
            return py::str("<zvg.PackWarning {} x {}: {}>")
                .format(Text{one.kind}, one.count, Text{one.text});
        });
    py::class_<Packed>(module, "PackReport", R"(What came of packing a model.

PackReport() makes an empty one, which pack() fills.)")
        .def(py::init<>())
        .def_property_readonly(
            "schema", [](const Packed& packed) { return Text{packed.report.schema}; },
            "Of the model, such as \"IFC2X3\"; empty before it was read.")
        .def_property_readonly("warnings", Of(&PackReport::warnings), "A list of PackWarning.")
        .def_property_readonly(
            "types",
            [](const Packed& packed) {
                py::dict types;
                for (const PackTypeCount& count : packed.report.types) {
                    types[StrOf(count.type)] =
                        py::make_tuple(count.inModel, count.arrived, count.withBody);
                }
                return types;
            },
            "A dict from each type to (how many the model has, how many arrived, with a body).")
        .def_property_readonly(
            "lost", [](const Packed& packed) { return Text{packed.report.lost}; },
            "The first things that did not arrive; empty where all did.")
        .def_property_readonly("floors", Of(&PackReport::floors), "How many were written.")
        .def_property_readonly("elements", Of(&PackReport::components), "How many were written.")
        .def_property_readonly("shapes", Of(&PackReport::shapes), "How many were written.")
        .def_property_readonly("placements", Of(&PackReport::placements), "How many were written.")
        .def_property_readonly(
            "notes",
            [](const Packed& packed) {
                py::list notes;
                for (const std::string& note : packed.notes) notes.append(Text{note});
                return notes;
            },
            "What else a person should know, such as why no preview was drawn.")
        .def("__repr__", [](const Packed& packed) {
            return py::str("<zvg.PackReport: {} elements, {} warnings>")
                .format(packed.report.components, packed.report.warnings.size());
        });
}

}  // namespace

void AddPacking(py::module_& module) {
    AddReport(module);
    const PackOptions defaults;
    module.def(
        "_pack",
        [](const FilePath& model, const FilePath& block, const py::object& progress, Packed& report,
           const std::optional<FilePath>& settings, const std::optional<FilePath>& preview,
           bool drawPreview, bool strict, double tolerance, bool fast, bool seal,
           unsigned int formatVersion, unsigned int geosPerBlock, std::uint64_t maxMemory,
           double maxSeconds, const std::optional<FilePath>& importer) {
            PackOptions options;
            options.drawPreview = drawPreview;
            options.strict = strict;
            options.tolerance = tolerance;
            options.fast = fast;
            options.seal = seal;
            options.formatVersion = formatVersion;
            options.geosPerBlock = geosPerBlock;
            options.maxMemory = maxMemory;
            options.maxSeconds = maxSeconds;
            Pack({model, block, settings, preview, importer}, options, progress, report);
        },
        py::arg("model"), py::arg("block"), py::arg("progress"), py::arg("report"), py::kw_only(),
        py::arg("settings") = py::none(), py::arg("preview") = py::none(),
        py::arg("draw_preview") = defaults.drawPreview, py::arg("strict") = defaults.strict,
        py::arg("tolerance") = defaults.tolerance, py::arg("fast") = defaults.fast,
        py::arg("seal") = defaults.seal, py::arg("format_version") = defaults.formatVersion,
        py::arg("geos_per_block") = defaults.geosPerBlock,
        py::arg("max_memory") = defaults.maxMemory, py::arg("max_seconds") = defaults.maxSeconds,
        py::arg("importer") = py::none());
    module.def("import_formats", FormatsOf, py::arg("importer") = py::none(),
               R"(import_formats(importer=None) -> list[str]

The formats that pack() reads, such as "IFC" and "glTF"; empty where there is no importer.)");
}

}  // namespace ZVSmartModel::Python
