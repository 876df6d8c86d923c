#include "FileObject.h"

#include <cstring>
#include <utility>

#include "PythonCalls.h"

namespace ZVSmartModel::Python {

namespace {

std::uint64_t SizeOf(const py::object& file) {
    constexpr int fromEnd = 2;
    file.attr("seek")(0, fromEnd);
    return file.attr("tell")().cast<std::uint64_t>();
}

}  // namespace

FileObject::FileObject(py::object given) : file(std::move(given)), size(SizeOf(file)) {}

FileObject::~FileObject() {
    const py::gil_scoped_acquire locked;
    file = py::object();
}

std::uint64_t FileObject::ReadAt(std::uint64_t position, void* buffer, std::uint64_t byteCount) {
    // The file may let others run while it reads; who waits for it must not hold them up.
    const std::lock_guard<std::mutex> lock(alone);
    const py::gil_scoped_acquire locked;
    try {
        file.attr("seek")(position);
        return ReadHere(static_cast<std::uint8_t*>(buffer), byteCount);
    } catch (const py::error_already_set& error) {
        Raised::Keep(error);
    } catch (const py::builtin_exception& error) {
        error.set_error();
        Raised::Keep(py::error_already_set());
    }
    return 0;
}

std::uint64_t FileObject::ReadHere(std::uint8_t* buffer, std::uint64_t byteCount) {
    std::uint64_t done = 0;
    while (done < byteCount) {
        const py::object piece = file.attr("read")(byteCount - done);
        if (!PyObject_CheckBuffer(piece.ptr())) throw py::type_error("read() gave no bytes");
        Py_buffer view = {};
        if (PyObject_GetBuffer(piece.ptr(), &view, PyBUF_SIMPLE) != 0) {
            throw py::error_already_set();
        }
        const auto count = static_cast<std::uint64_t>(view.len);
        const bool fits = count <= byteCount - done;
        if (fits) std::memcpy(buffer + done, view.buf, count);
        PyBuffer_Release(&view);
        if (!fits) throw py::value_error("read() gave more bytes than it was asked for");
        if (count == 0) break;
        done += count;
    }
    return done;
}

}  // namespace ZVSmartModel::Python
