#include "OpenModel.h"

#include <unistd.h>

#include <utility>

#include "FileObject.h"
#include "PythonCalls.h"
#include "PythonText.h"
#include "ZVSmartFormat/CachedStream.h"
#include "ZVSmartFormat/MemoryStream.h"
#include "ZVSmartModel/Verify.h"

namespace ZVSmartModel::Python {

using ZVSmartFormat::CZVFTInStream;
using ZVSmartFormat::u64;

/// What one process has open.
struct OpenModel::Opened {
    std::unique_ptr<CZVFTInStream> stream;  ///< null where there is a path
    BlockFile file;
};

namespace {

/// What is opened, in a form that no one changes: a path that holds in other folders too, bytes,
/// or the file object itself.
py::object Kept(const py::object& source) {
    if (py::isinstance<py::bytes>(source)) return source;
    if (PyObject_CheckBuffer(source.ptr()) != 0) {
        return py::reinterpret_steal<py::object>(PyBytes_FromObject(source.ptr()));
    }
    if (py::hasattr(source, "read") && py::hasattr(source, "seek")) return source;
    const py::module_ os = py::module_::import("os");
    return os.attr("path").attr("abspath")(os.attr("fsdecode")(source));
}

std::string PathOf(const py::object& str) {
    return str.cast<FilePath>().name;
}

}  // namespace

OpenModel::OpenModel(const py::object& given, u64 cacheBytes, bool unlimited, unsigned int threads)
    : source(Kept(given)), cacheBytes(cacheBytes), unlimited(unlimited), threads(threads) {
    if (!IsPath() && !IsBytes()) file = std::make_shared<FileObject>(source);
    Open();
}

/// A stream of the bytes or of the file object, at its beginning.
std::unique_ptr<CZVFTInStream> OpenModel::NewStream() const {
    if (IsBytes()) {
        return std::make_unique<ZVSmartFormat::CZVFTReadBufferInStream>(
            PyBytes_AS_STRING(source.ptr()), static_cast<u64>(PyBytes_GET_SIZE(source.ptr())));
    }
    const auto read = [object = file](u64 position, void* buffer, u64 size) {
        return object->ReadAt(position, buffer, size);
    };
    return std::make_unique<ZVSmartFormat::CZVFTCachedInStream>(read, file->Size(), cacheBytes);
}

void OpenModel::Open() {
    OpenOptions options;
    options.unlimited = unlimited;
    options.threads = threads;
    if (IsPath()) {
        const std::string path = PathOf(source);
        opened = Freely([&] {
            return std::make_shared<Opened>(Opened{nullptr, BlockFile(path, options)});
        });
    } else {
        auto stream = NewStream();
        opened = Freely([&] {
            BlockFile block(*stream, options);
            return std::make_shared<Opened>(Opened{std::move(stream), std::move(block)});
        });
    }
    process = getpid();
}

std::shared_ptr<const BlockFile> OpenModel::Use() {
    if (!opened) throw py::value_error("the model is closed");
    if (process != getpid()) {
        if (file) {
            throw Error(Status::Usage,
                        "a file object is not read by two processes: open it again after a fork");
        }
        // What was open may be locked for ever: it is left where it is.
        new std::shared_ptr<Opened>(opened);
        Open();
    }
    return {opened, &opened->file};
}

std::vector<Damage> OpenModel::Verify(const Progress& progress) const {
    if (IsPath()) {
        return Freely([&, path = PathOf(source)] { return VerifyFile(path, progress); });
    }
    const auto stream = NewStream();
    return Freely([&] { return VerifyFile(*stream, progress); });
}

py::tuple OpenModel::Arguments() const {
    if (file) throw py::type_error("a model from a file object cannot be pickled");
    return py::make_tuple(source, cacheBytes, unlimited, threads);
}

std::string OpenModel::Path() const {
    return PathOf(Name());
}

py::str OpenModel::Name() const {
    if (IsPath()) return source;
    return IsBytes() ? py::str("bytes") : py::str(py::repr(source));
}

}  // namespace ZVSmartModel::Python
