#pragma once

#include <sqlite3.h>

#include <exception>
#include <functional>

#include "model/query/QueriedFiles.h"
#include "model/query/Tables.h"

namespace ZVSmartModel {

/// What all tables of a query share.
struct QuerySession {
    QueriedFiles& files;
    unsigned int threads;
    /// Told how many files are done; throws where the caller does not want more.
    std::function<void(unsigned int done)> tell;
    /// What a call threw: SQLite passes on numbers alone.
    std::exception_ptr failure = nullptr;
    /// While a table tells SQLite its columns, in words that no user may say.
    bool isDeclaring = false;
};

/// Makes `table` a table of `database`. Both are borrowed, and so is `session`. Returns SQLite's
/// number of what went wrong, or SQLITE_OK.
int AddVirtualTable(sqlite3* database, const Table& table, QuerySession& session);

}  // namespace ZVSmartModel
