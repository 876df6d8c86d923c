#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Error.h"
#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// The files that `paths` name, in this order and each once: folders stand for all files in and
/// below them whose names end in ".zvg", by name. Whether other files are there is not looked at.
/// Throws Error, InputOutput, for a folder that cannot be read.
ZVSM_API std::vector<std::string> FindBlockFiles(const std::vector<std::string>& paths);

/// Whether this build answers SQL; it needs SQLite.
ZVSM_API bool CanQuery();

/// Null, integer, real or text, which is UTF-8.
using QueryValue = std::variant<std::monostate, std::int64_t, double, std::string>;
/// The values of a row, one a column.
using QueryRow = std::vector<QueryValue>;

/// A file that cannot be read, or not in all its parts.
struct FileFault {
    /// Which it is.
    std::string path;
    /// InputOutput or Damaged.
    Status status = Status::Damaged;
    /// In one line, which names the file.
    std::string reason;
};

/// How to answer a query.
struct QueryOptions {
    /// How files are opened; a single file takes `threads` from below where it says 1 here.
    OpenOptions open;
    /// How many files are read at once, or how many threads decode ahead in a single one of 32 KiB
    /// or more; 0 for as many as the machine has processors.
    unsigned int threads = 0;
};

/// An SQL query over block files, whose rows are read one by one. SQLite's dialect, over tables
/// that stand for the files themselves:
///
///     files(path, title, version, bytes, error)
///     floors(file, idx, name, elevation, height)
///     elements(file, floor, idx, guid, name, class, type, material, colour, parent, id)
///     properties(file, element, set, name, value, number, unit)
///     materials(file, element, idx, name, category, thickness)
///     relations(file, element, kind, target)
///     shapes(file, key, points, triangles, places)
///     boxes(file, element, xmin, ymin, zmin, xmax, ymax, zmax, area, volume, closed)
///
/// `file` is a path as in `files`, `floor` the `idx` of a floor, `element` the `id` of an element,
/// which is also its rowid and one number for all files of a query; `set` is a word of SQL and
/// wants quotes. docs/GUIDE.md tells more of the columns. Nothing is stored, here or elsewhere:
/// each scan decodes what its columns and its conditions ask for. Equality with a file, a floor, an
/// `id`, a GUID, a class, a name or a set is looked at while reading; files and floors that no row
/// can come from are not decoded, and geometry is decoded for `shapes` and `boxes` alone. Scans
/// read ahead in threads.
///
/// What cannot be read is left out and told by Faults. The SQL may only ask: it cannot write files,
/// attach databases or load extensions. Objects may be moved, not copied; one thread at a time asks
/// one.
class ZVSM_API Query {
  public:
    /// Prepares a query over `paths`, which FindBlockFiles explains. `sql` is one statement, UTF-8.
    /// `progress` may cancel what follows. Throws Error: Usage for SQL that cannot be answered and
    /// where this build answers none; InputOutput for a folder that cannot be read; Internal.
    Query(const std::vector<std::string>& paths, const std::string& sql,
          const QueryOptions& options = {}, const Progress& progress = {});
    ~Query();
    /// One that was moved from may only be destroyed or assigned to.
    /// @{
    Query(Query&&) noexcept;
    Query& operator=(Query&&) noexcept;
    /// @}

    /// The names of the columns.
    const std::vector<std::string>& Columns() const;
    /// Replaces `row` by the next one. False, with `row` unchanged, behind the last. Throws Error:
    /// Usage where the SQL cannot be answered after all, Cancelled, Internal; the query is over
    /// then.
    bool Next(QueryRow& row);
    /// The files that could not be read so far, or not in all their parts, each once and in order.
    std::vector<FileFault> Faults() const;

  private:
    class Imp;
    std::unique_ptr<Imp> imp;
};

/// All that a query says.
struct QueryTable {
    /// Their names.
    std::vector<std::string> columns;
    /// As many values each as there are columns.
    std::vector<QueryRow> rows;
    /// What could not be read.
    std::vector<FileFault> faults;
};

/// Asks a query and keeps all its rows. Throws as Query does.
ZVSM_API QueryTable AskQuery(const std::vector<std::string>& paths, const std::string& sql,
                             const QueryOptions& options = {}, const Progress& progress = {});

}  // namespace ZVSmartModel
