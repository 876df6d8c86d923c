#include "PythonText.h"

namespace ZVSmartModel::Python {

py::str StrOf(const std::string& utf8) {
    for (const char* const errors : {"surrogatepass", "surrogateescape"}) {
        PyObject* const text =
            PyUnicode_DecodeUTF8(utf8.data(), static_cast<ssize_t>(utf8.size()), errors);
        if (text != nullptr) return py::reinterpret_steal<py::str>(text);
        if (PyErr_ExceptionMatches(PyExc_UnicodeDecodeError) == 0) break;
        PyErr_Clear();
    }
    throw py::error_already_set();
}

std::string Utf8Of(py::handle str) {
    Py_ssize_t size = 0;
    if (const char* const utf8 = PyUnicode_AsUTF8AndSize(str.ptr(), &size)) {
        return std::string(utf8, static_cast<std::size_t>(size));
    }
    if (PyErr_ExceptionMatches(PyExc_UnicodeEncodeError) == 0) throw py::error_already_set();
    PyErr_Clear();
    // As UTF-16 the halves of a pair find each other.
    const py::object units = str.attr("encode")("utf-16-le", "surrogatepass");
    const py::object text = units.attr("decode")("utf-16-le", "replace");
    return std::string(py::bytes(text.attr("encode")("utf-8")));
}

}  // namespace ZVSmartModel::Python
