#include <pybind11/stl.h>

#include <algorithm>

#include "ArrowTable.h"
#include "Classes.h"
#include "PythonCalls.h"
#include "PythonText.h"
#include "ZVSmartModel/Query.h"

namespace ZVSmartModel::Python {

namespace {

using Table = std::shared_ptr<QueryTable>;

std::vector<std::string> NamesOf(const std::vector<FilePath>& paths) {
    std::vector<std::string> names;
    for (const FilePath& path : paths) names.push_back(path.name);
    return names;
}

py::object ValueOf(const QueryValue& value) {
    if (const auto* integer = std::get_if<std::int64_t>(&value)) return py::int_(*integer);
    if (const auto* real = std::get_if<double>(&value)) return py::float_(*real);
    if (const auto* text = std::get_if<std::string>(&value)) return StrOf(*text);
    return py::none();
}

py::tuple TupleOf(const QueryRow& row) {
    py::tuple tuple(row.size());
    for (std::size_t i = 0; i < row.size(); ++i) tuple[i] = ValueOf(row[i]);
    return tuple;
}

py::tuple RowAt(const Table& table, py::ssize_t number) {
    const auto count = static_cast<py::ssize_t>(table->rows.size());
    const py::ssize_t at = number < 0 ? number + count : number;
    if (at < 0 || at >= count)
        throw py::index_error("there are " + std::to_string(count) + " rows");
    return TupleOf(table->rows[static_cast<std::size_t>(at)]);
}

py::list ColumnOf(const Table& table, const Text& name) {
    const auto& columns = table->columns;
    const auto found = std::find(columns.begin(), columns.end(), name.utf8);
    if (found == columns.end()) throw py::key_error(name.utf8);
    const auto number = static_cast<std::size_t>(found - columns.begin());
    py::list values(table->rows.size());
    for (std::size_t i = 0; i < table->rows.size(); ++i)
        values[i] = ValueOf(table->rows[i][number]);
    return values;
}

py::list Columns(const Table& table) {
    py::list columns;
    for (const std::string& name : table->columns) columns.append(StrOf(name));
    return columns;
}

py::capsule StreamOf(const Table& table, const py::object&) {
    return py::capsule(NewArrowStream(table), "arrow_array_stream", [](PyObject* capsule) {
        void* const stream = PyCapsule_GetPointer(capsule, "arrow_array_stream");
        DeleteArrowStream(static_cast<ArrowArrayStream*>(stream));
    });
}

Table Ask(const Text& sql, const std::vector<FilePath>& paths, unsigned int threads,
          const py::object& progress) {
    return Freely([&] {
        return std::make_shared<QueryTable>(
            AskQuery(NamesOf(paths), sql.utf8, {{}, threads}, ProgressFor(progress)));
    });
}

}  // namespace

void AddQueryClasses(py::module_& module) {
    py::class_<FileFault>(module, "FileFault",
                          "A file that cannot be read, or not in all its parts.")
        .def_property_readonly(
            "path", [](const FileFault& fault) { return Text{fault.path}; }, "Which it is.")
        .def_property_readonly(
            "is_damaged", [](const FileFault& fault) { return fault.status == Status::Damaged; },
            "Whether the file is damaged; else it cannot be opened or read.")
        .def_property_readonly(
            "reason", [](const FileFault& fault) { return Text{fault.reason}; },
            "In one line, which names the file.")
        .def("__repr__", [](const FileFault& fault) {
            return py::str("<zvg.FileFault {}>").format(Text{fault.reason});
        });
    py::class_<QueryTable, Table>(module, "Table",
                                  R"(Rows of values: None, int, float or str.

Iterable; table[0] is a row, a tuple, and table["name"] a column, a list. Arrow's PyCapsule
interface hands it to other libraries: polars.DataFrame(table), pyarrow.table(table), and DuckDB
finds it by its name.)")
        .def_property_readonly("columns", Columns, "Their names.")
        .def_property_readonly(
            "faults", [](const Table& table) { return table->faults; },
            "A list of FileFault: what could not be read. The rows are those of all the rest.")
        .def("__len__", [](const Table& table) { return table->rows.size(); })
        .def("__getitem__", RowAt, py::arg("row"))
        .def("__getitem__", ColumnOf, py::arg("column"))
        .def("__arrow_c_stream__", StreamOf, py::arg("requested_schema") = py::none(),
             "A capsule with an ArrowArrayStream of one batch.")
        .def(
            "to_pandas",
            [](const Table& table) {
                py::dict columns;
                for (const std::string& name : table->columns) {
                    columns[StrOf(name)] = ColumnOf(table, Text{name});
                }
                return py::module_::import("pandas").attr("DataFrame")(columns);
            },
            "A pandas.DataFrame; needs pandas.")
        .def("__repr__", [](const Table& table) {
            return py::str("<zvg.Table of {} rows: {}>")
                .format(table->rows.size(), py::str(", ").attr("join")(Columns(table)));
        });
    module.def("_query", Ask, py::arg("sql"), py::arg("paths"), py::arg("threads"),
               py::arg("progress"));
}

}  // namespace ZVSmartModel::Python
