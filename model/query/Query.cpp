#include "ZVSmartModel/Query.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <new>
#include <system_error>
#include <thread>

#include "model/element/ProgressPace.h"
#include "model/query/VirtualTable.h"

namespace ZVSmartModel {

namespace {

struct Closing {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, Closing>;
using Statement = std::unique_ptr<sqlite3_stmt, Closing>;

/// Lets statements ask and nothing else.
int Authorize(void* session, int action, const char*, const char* name, const char*, const char*) {
    if (static_cast<QuerySession*>(session)->isDeclaring) return SQLITE_OK;
    switch (action) {
        case SQLITE_SELECT:
        case SQLITE_READ:
        case SQLITE_RECURSIVE:
            return SQLITE_OK;
        case SQLITE_FUNCTION:
            return std::strcmp(name, "load_extension") == 0 ? SQLITE_DENY : SQLITE_OK;
        default:
            return SQLITE_DENY;
    }
}

unsigned int ThreadsOf(const QueryOptions& options) {
    constexpr unsigned int most = 64;
    const unsigned int wanted =
        options.threads != 0 ? options.threads : std::thread::hardware_concurrency();
    return std::clamp(wanted, 1U, most);
}

/// Threads that have no other file to read decode ahead in the one there is, unless to begin them
/// takes longer than that.
OpenOptions OpenOptionsOf(const QueryOptions& options, const std::vector<std::string>& files) {
    constexpr std::uintmax_t least = 32 << 10;
    OpenOptions open = options.open;
    if (files.size() != 1 || open.threads != 1) return open;
    std::error_code error;
    const std::uintmax_t bytes = std::filesystem::file_size(files[0], error);
    if (!error && bytes >= least) open.threads = ThreadsOf(options);
    return open;
}

std::vector<Table> AllTables() {
    std::vector<Table> tables = ElementTables();
    for (const Table& table : FileTables()) tables.push_back(table);
    return tables;
}

QueryValue ValueOf(sqlite3_stmt* statement, int column) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_NULL:
            return {};
        case SQLITE_INTEGER:
            return std::int64_t{sqlite3_column_int64(statement, column)};
        case SQLITE_FLOAT:
            return sqlite3_column_double(statement, column);
        default: {
            const auto* const text =
                reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
            if (text == nullptr) return std::string();
            return std::string(text,
                               static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
        }
    }
}

}  // namespace

bool CanQuery() {
    return true;
}

class Query::Imp {
  public:
    Imp(const std::vector<std::string>& found, const std::string& sql, const QueryOptions& options,
        const Progress& given)
        : progress(given),
          pace(progress),
          tables(AllTables()),
          files(found, OpenOptionsOf(options, found), 2 * ThreadsOf(options) + 2),
          session{files, ThreadsOf(options), [this](unsigned int done) { Tell(done); }} {
        Open();
        Prepare(sql);
        for (int i = 0; i < sqlite3_column_count(statement.get()); ++i) {
            columns.emplace_back(sqlite3_column_name(statement.get(), i));
        }
    }

    bool Next(QueryRow& row) {
        if (!statement) return false;
        const int result = sqlite3_step(statement.get());
        if (result == SQLITE_ROW) {
            row.resize(columns.size());
            for (std::size_t i = 0; i < columns.size(); ++i) {
                row[i] = ValueOf(statement.get(), static_cast<int>(i));
            }
            return true;
        }
        if (result != SQLITE_DONE) Fail(result);
        statement.reset();
        return false;
    }

    const std::vector<std::string>& Columns() const { return columns; }
    std::vector<FileFault> Faults() const { return files.Faults(); }

  private:
    void Tell(unsigned int filesDone) {
        done = filesDone;
        pace.Tell("asking", done, files.Count());
    }

    void Open() {
        sqlite3* opened = nullptr;
        const int result = sqlite3_open_v2(":memory:", &opened,
                                           SQLITE_OPEN_READWRITE | SQLITE_OPEN_MEMORY, nullptr);
        database.reset(opened);
        if (result != SQLITE_OK) throw Error(Status::Internal, "SQLite does not begin");
        for (const Table& table : tables) {
            if (AddVirtualTable(opened, table, session) != SQLITE_OK) throw std::bad_alloc();
        }
        // What is sorted stays in memory.
        sqlite3_exec(opened, "PRAGMA temp_store = MEMORY", nullptr, nullptr, nullptr);
        sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
        sqlite3_db_config(opened, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
        sqlite3_limit(opened, SQLITE_LIMIT_ATTACHED, 0);
        sqlite3_set_authorizer(opened, Authorize, &session);
        constexpr int steps = 10'000;
        sqlite3_progress_handler(opened, steps, &Imp::IsCancelled, this);
    }

    static int IsCancelled(void* itself) {
        auto& query = *static_cast<Imp*>(itself);
        try {
            query.Tell(query.done);
            return 0;
        } catch (...) {
            query.session.failure = std::current_exception();
            return 1;
        }
    }

    void Prepare(const std::string& sql) {
        sqlite3_stmt* prepared = nullptr;
        const char* rest = sql.c_str();
        const int result = sqlite3_prepare_v2(database.get(), sql.c_str(), -1, &prepared, &rest);
        statement.reset(prepared);
        if (result != SQLITE_OK) Fail(result);
        if (!statement) throw Error(Status::Usage, "SQL: there is no statement");
        sqlite3_stmt* second = nullptr;
        const int behind = sqlite3_prepare_v2(database.get(), rest, -1, &second, nullptr);
        const Statement closing(second);
        if (behind == SQLITE_OK && second == nullptr) return;  // blanks and comments
        throw Error(Status::Usage, "SQL: there is more than one statement");
    }

    /// Throws what a call of the tables threw, else what SQLite says.
    [[noreturn]] void Fail(int result) {
        const std::string said = sqlite3_errmsg(database.get());
        statement.reset();
        if (session.failure) std::rethrow_exception(std::exchange(session.failure, nullptr));
        const bool isInternal = result == SQLITE_NOMEM || result == SQLITE_INTERNAL;
        throw Error(isInternal ? Status::Internal : Status::Usage, "SQL: " + said);
    }

    Progress progress;
    ProgressPace pace;
    std::vector<Table> tables;
    QueriedFiles files;
    QuerySession session;
    unsigned int done = 0;
    Database database;
    Statement statement;  // ends before the database
    std::vector<std::string> columns;
};

Query::Query(const std::vector<std::string>& paths, const std::string& sql,
             const QueryOptions& options, const Progress& progress)
    : imp(std::make_unique<Imp>(FindBlockFiles(paths), sql, options, progress)) {}

Query::~Query() = default;
Query::Query(Query&&) noexcept = default;
Query& Query::operator=(Query&&) noexcept = default;

const std::vector<std::string>& Query::Columns() const {
    return imp->Columns();
}

bool Query::Next(QueryRow& row) {
    return imp->Next(row);
}

std::vector<FileFault> Query::Faults() const {
    return imp->Faults();
}

QueryTable AskQuery(const std::vector<std::string>& paths, const std::string& sql,
                    const QueryOptions& options, const Progress& progress) {
    Query query(paths, sql, options, progress);
    QueryTable table;
    table.columns = query.Columns();
    for (QueryRow row; query.Next(row);) table.rows.push_back(std::move(row));
    table.faults = query.Faults();
    return table;
}

}  // namespace ZVSmartModel
