#pragma once

#include <pybind11/pybind11.h>
#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Values.h"

namespace ZVSmartModel::Python {

namespace py = pybind11;

/// A block file that a Python program has open, from a path, from bytes or from a file object. A
/// process that was forked opens it again when it first asks, since another thread may have held
/// the file's lock at the fork. All with the interpreter's lock.
class OpenModel : public std::enable_shared_from_this<OpenModel> {
  public:
    /// Opens it. `cacheBytes` are kept of what a file object gave, `threads` is as in OpenOptions.
    OpenModel(const py::object& source, std::uint64_t cacheBytes, bool unlimited,
              unsigned int threads);

    /// The file, which stays as long as the answer does. Throws ValueError where it was closed.
    std::shared_ptr<const BlockFile> Use();
    void Close() { opened.reset(); }
    bool IsClosed() const { return opened == nullptr; }
    /// Whether it is read from a file object, which may have to ask for each piece of it.
    bool IsFarAway() const { return file != nullptr; }

    /// Checks all of it, as VerifyFile does.
    std::vector<Damage> Verify(const Progress& progress) const;

    /// What opens it again in another process. Throws TypeError for a file object.
    py::tuple Arguments() const;
    /// Its path, or what messages call it.
    py::str Name() const;
    /// The same, as the library's messages have it.
    std::string Path() const;

  private:
    struct Opened;

    void Open();
    std::unique_ptr<ZVSmartFormat::CZVFTInStream> NewStream() const;
    bool IsPath() const { return py::isinstance<py::str>(source); }
    bool IsBytes() const { return py::isinstance<py::bytes>(source); }

    py::object source;
    std::shared_ptr<class FileObject> file;  ///< null for paths and bytes
    std::uint64_t cacheBytes;
    bool unlimited;
    unsigned int threads;
    std::shared_ptr<Opened> opened;
    pid_t process = 0;
};

}  // namespace ZVSmartModel::Python
