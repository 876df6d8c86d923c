#pragma once

#include <pybind11/pybind11.h>

#include <string>

namespace ZVSmartModel::Python {

namespace py = pybind11;

/// Text on its way between Python and the library, which speaks UTF-8. The two halves of a
/// surrogate pair become the character that they stand for; a half alone, which is no text, becomes
/// U+FFFD on the way in, as the library would make of it, and passes on the way out.
struct Text {
    std::string utf8;
};

/// A str, bytes or os.PathLike as the name of a file.
struct FilePath {
    std::string name;
};

/// What the library says, as a str; bytes that are no UTF-8 pass as Python passes them in names of
/// files.
py::str StrOf(const std::string& utf8);
/// The UTF-8 of a str, as above. Throws py::error_already_set.
std::string Utf8Of(py::handle str);

}  // namespace ZVSmartModel::Python

namespace pybind11::detail {

template <>
struct type_caster<ZVSmartModel::Python::Text> {
    PYBIND11_TYPE_CASTER(ZVSmartModel::Python::Text, const_name("str"));

    bool load(handle source, bool) {
        if (!PyUnicode_Check(source.ptr())) return false;
        value.utf8 = ZVSmartModel::Python::Utf8Of(source);
        return true;
    }
    static handle cast(const ZVSmartModel::Python::Text& text, return_value_policy, handle) {
        return ZVSmartModel::Python::StrOf(text.utf8).release();
    }
};

template <>
struct type_caster<ZVSmartModel::Python::FilePath> {
    PYBIND11_TYPE_CASTER(ZVSmartModel::Python::FilePath, const_name("str | os.PathLike"));

    bool load(handle source, bool) {
        PyObject* encoded = nullptr;
        if (PyUnicode_FSConverter(source.ptr(), &encoded) == 0) {
            if (PyErr_ExceptionMatches(PyExc_TypeError) == 0) throw error_already_set();
            PyErr_Clear();
            return false;
        }
        value.name = reinterpret_steal<bytes>(encoded);
        return true;
    }
    static handle cast(const ZVSmartModel::Python::FilePath& path, return_value_policy, handle) {
        return PyUnicode_DecodeFSDefaultAndSize(path.name.data(),
                                                static_cast<ssize_t>(path.name.size()));
    }
};

}  // namespace pybind11::detail
