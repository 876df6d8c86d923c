#pragma once

#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Query.h"

namespace ZVSmartModel {

/// The files of a query, opened when they are asked for; a few stay open. Several threads may ask.
class QueriedFiles {
  public:
    /// Throws Error, Usage, for more files than elements are numbered in.
    QueriedFiles(const std::vector<std::string>& paths, const OpenOptions& options,
                 std::size_t kept);

    unsigned int Count() const { return static_cast<unsigned int>(paths.size()); }
    const std::string& Path(unsigned int file) const { return paths[file]; }
    std::optional<unsigned int> NumberOf(const std::string& path) const;

    /// Null, noted as a fault, where it cannot be opened.
    std::shared_ptr<const BlockFile> Open(unsigned int file);

    /// The first fault of a file is the one that is told.
    void NoteFault(unsigned int file, const Error& error);
    std::optional<FileFault> FaultOf(unsigned int file) const;
    std::vector<FileFault> Faults() const;

  private:
    using Opened = std::pair<unsigned int, std::shared_ptr<const BlockFile>>;

    std::vector<std::string> paths;
    std::unordered_map<std::string, unsigned int> numbers;
    OpenOptions options;
    std::size_t kept;

    mutable std::mutex mutex;  ///< of what follows
    std::list<Opened> opened;  ///< the one asked for last in front
    std::map<unsigned int, FileFault> faults;
    std::vector<bool> unopened;  ///< those that were tried in vain
};

}  // namespace ZVSmartModel
