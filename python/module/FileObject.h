#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <mutex>

namespace ZVSmartModel::Python {

namespace py = pybind11;

/// A file object of Python, of which the library reads. It is asked by one thread at a time, with
/// the interpreter's lock, whatever thread that is.
class FileObject {
  public:
    /// Takes a seekable binary file, and asks its size. Throws py::error_already_set.
    explicit FileObject(py::object file);
    ~FileObject();
    FileObject(const FileObject&) = delete;
    FileObject& operator=(const FileObject&) = delete;

    std::uint64_t Size() const { return size; }

    /// Reads at `position` and returns how much came; what the file raises is kept (see Raised).
    /// To be called without the interpreter's lock.
    std::uint64_t ReadAt(std::uint64_t position, void* buffer, std::uint64_t byteCount);

  private:
    std::uint64_t ReadHere(std::uint8_t* buffer, std::uint64_t byteCount);

    py::object file;
    std::uint64_t size;
    std::mutex alone;  ///< seeking and reading belong together
};

}  // namespace ZVSmartModel::Python
