#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "model/element/OwnedDescriptor.h"

namespace ZVSmartModel::Tool {

/// A file that is open to be sent.
struct OpenedServedFile {
    OwnedDescriptor descriptor;
    std::uint64_t bytes = 0;
    std::string tag;  ///< an entity tag: it changes with the file
};

/// The files that a server gives away, each under a name of its own, and no others: what is asked
/// for is compared with these names and never becomes a path. Threads may share it.
class ServedFiles {
  public:
    /// Adds a file that is opened anew each time; returns the name that it got, which is the last
    /// part of its path, or that with a number.
    std::string AddPath(const std::string& path);
    /// Adds an open file under a name like `name`; returns the name that it got.
    std::string AddOpen(const std::string& name, OwnedDescriptor descriptor);

    /// None where no file has that name, or it cannot be opened any more.
    std::optional<OpenedServedFile> Open(const std::string& name) const;
    std::size_t Count() const;

  private:
    struct Entry {
        std::string path;  ///< absolute; empty for an open file
        OwnedDescriptor descriptor;
    };
    std::string Add(const std::string& name, Entry entry);

    mutable std::mutex mutex;
    std::map<std::string, Entry> entries;
};

/// Where a browser finds the file of this name on its server, such as "/files/a%20b.zvg".
std::string AddressOf(const std::string& name);

/// The same in the value of an address's parameter.
std::string EscapedParameter(const std::string& text);

/// Bytes `first` to `first + count`.
struct ByteRange {
    std::uint64_t first = 0, count = 0;
};

/// What a request's header `Range` asks of a file. All of it where the header is not one range of
/// bytes, which a server may leave unheeded; none where the range lies behind the file's end.
struct AskedRange {
    std::optional<ByteRange> range;
    bool isPart = false;
};
AskedRange AskedOf(const std::string& header, std::uint64_t bytes);

}  // namespace ZVSmartModel::Tool
