#pragma once

#include <memory>
#include <string>
#include <vector>

#include "model/query/QueriedFiles.h"
#include "model/query/Request.h"
#include "model/query/RowBatch.h"

namespace ZVSmartModel {

/// Reads what is asked of a table out of one file, some rows at a time.
class FileScan {
  public:
    virtual ~FileScan() = default;
    /// Adds rows, or none, to `rows`. False where there are no more.
    virtual bool Next(RowBatch& rows) = 0;
};

/// What equality with a column tells a scan; see Request.
enum class Meaning { Nothing, Path, Element, Floor, Position, Text };

struct Column {
    const char* name;
    const char* type;
    Meaning meaning = Meaning::Nothing;
};

/// What it takes to read a file for a table, about, where opening it is 1.
namespace Work {
constexpr double open = 1, decodeFloors = 100, decodeShapes = 1000, measureBodies = 5000;
}

/// A table of queries.
struct Table {
    const char* name;
    std::vector<Column> columns;
    bool rowIsElement;   ///< its rowid is an element's id
    double rowsPerFile;  ///< about
    double work;         ///< of Work
    /// Begins to read a file; `files` and `request` are borrowed.
    std::unique_ptr<FileScan> (*scan)(QueriedFiles& files, unsigned int file,
                                      const Request& request);
};

/// All there are: those whose rows come from elements' records, and the others.
/// @{
std::vector<Table> ElementTables();
std::vector<Table> FileTables();
/// @}

}  // namespace ZVSmartModel
