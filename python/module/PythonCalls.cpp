#include "PythonCalls.h"

#include "PythonText.h"

namespace ZVSmartModel::Python {

namespace {

thread_local std::optional<py::error_already_set> kept;

/// The class of zvg that stands for the error.
const char* ClassOf(const Error& error) {
    if (error.GetStatus() == Status::Damaged) return "DamagedError";
    if (error.GetStatus() == Status::NotFound) return "NotFoundError";
    return "Error";
}

void Raise(const char* className, const Error& error) {
    const py::object type = py::module_::import("zvg._errors").attr(className);
    py::object position = py::none();
    if (error.Position() != Error::noPosition) position = py::int_(error.Position());
    const py::object raised = type(StrOf(error.what()), static_cast<int>(error.GetStatus()),
                                   FilePath{error.Path()}, position);
    PyErr_SetObject(type.ptr(), raised.ptr());
}

bool Tell(py::handle callback, const std::string& work, double fraction) {
    const py::gil_scoped_acquire locked;
    try {
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        if (callback.is_none()) return true;
        py::object done = py::none();
        if (fraction >= 0) done = py::float_(fraction);
        return !callback(StrOf(work), done).is(py::bool_(false));
    } catch (const py::error_already_set& error) {
        Raised::Keep(error);
        return false;
    }
}

}  // namespace

void Raised::Keep(const py::error_already_set& error) {
    if (!kept) kept = error;
}

bool Raised::IsKept() {
    return kept.has_value();
}

Raised::Raised() : outer(std::exchange(kept, std::nullopt)) {}

Raised::~Raised() {
    kept = std::move(outer);
}

void Raised::Throw() {
    if (kept) throw py::error_already_set(*kept);
}

Progress ProgressFor(py::handle callback) {
    return [callback](const std::string& work, double fraction) {
        return Tell(callback, work, fraction);
    };
}

void RegisterErrors() {
    py::register_exception_translator([](std::exception_ptr thrown) {
        try {
            if (thrown) std::rethrow_exception(thrown);
        } catch (const Error& error) {
            Raise(ClassOf(error), error);
        }
    });
}

void RaiseAsIndex(const Error& error) {
    Raise(error.GetStatus() == Status::NotFound ? "NoSuchPlaceError" : ClassOf(error), error);
    throw py::error_already_set();
}

}  // namespace ZVSmartModel::Python
