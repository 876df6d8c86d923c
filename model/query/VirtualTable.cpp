#include "model/query/VirtualTable.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "model/element/Utf8.h"
#include "model/query/RowSource.h"

namespace ZVSmartModel {

namespace {

// SQLite asks `BestIndex` what a scan would cost under the conditions that it has, and hands the
// values of those that were chosen to `Filter`. The plan between the two is the bits of the columns
// that are looked at, and a text with a letter for each chosen condition: 'a' for an equality with
// the first column, and so on.

constexpr char firstColumn = 'a';

/// What a table's module knows of it; SQLite owns it.
struct Module {
    const Table& table;
    QuerySession& session;
};

struct TableAtWork : sqlite3_vtab {
    TableAtWork(const Table& table, QuerySession& session)
        : sqlite3_vtab(), table(table), session(session) {}

    const Table& table;
    QuerySession& session;
};

struct Cursor : sqlite3_vtab_cursor {
    explicit Cursor(TableAtWork& of)
        : sqlite3_vtab_cursor(), table(of.table), session(of.session) {}

    const Table& table;
    QuerySession& session;
    Request request;
    RowBatch rows;
    std::unique_ptr<RowSource> source;  // reads by `request`
    std::size_t row = 0;
};

/// Does `act`; what it throws becomes a number.
template <class Act>
int Guarded(QuerySession& session, Act act) {
    try {
        act();
        return SQLITE_OK;
    } catch (...) {
        session.failure = std::current_exception();
        return SQLITE_ERROR;
    }
}

/// The column that says which element a row is about; none for a table that has none.
int ElementColumn(const Table& table) {
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        if (table.columns[i].meaning == Meaning::Element) return static_cast<int>(i);
    }
    return -1;
}

/// The column of a condition that a scan looks at; -1 for any other.
int UsefulColumn(const Table& table, sqlite3_index_info* info, int i) {
    const auto& condition = info->aConstraint[i];
    if (!condition.usable || condition.op != SQLITE_INDEX_CONSTRAINT_EQ) return -1;
    if (condition.iColumn < 0) return table.rowIsElement ? ElementColumn(table) : -1;
    const Meaning meaning = table.columns[static_cast<std::size_t>(condition.iColumn)].meaning;
    const bool isText = meaning == Meaning::Text || meaning == Meaning::Path;
    if (meaning == Meaning::Nothing) return -1;
    if (isText && std::strcmp(sqlite3_vtab_collation(info, i), "BINARY") != 0) return -1;
    return condition.iColumn;
}

/// About what a scan costs and how many rows it gives, where these columns are given.
void Estimate(const TableAtWork& at, const std::string& given, sqlite3_index_info& info) {
    double files = std::max(1.0, static_cast<double>(at.session.files.Count()));
    double rows = at.table.rowsPerFile;
    double work = at.table.work;
    bool isOneElement = false;
    for (const char letter : given) {
        switch (at.table.columns[static_cast<std::size_t>(letter - firstColumn)].meaning) {
            case Meaning::Path:
                files = 1;
                break;
            case Meaning::Element:
                isOneElement = true;
                break;
            case Meaning::Floor:
            case Meaning::Position:
                rows /= 4;
                work /= 2;
                break;
            default:
                rows /= 20;
        }
    }
    if (isOneElement) {
        files = 1;
        rows = at.table.rowIsElement ? 1 : std::min(rows, at.table.rowsPerFile / 200);
        work /= 200;
    }
    info.estimatedRows = static_cast<sqlite3_int64>(files * rows) + 1;
    info.estimatedCost = files * (1 + work) + files * rows / 100;
    if (isOneElement && at.table.rowIsElement) info.idxFlags = SQLITE_INDEX_SCAN_UNIQUE;
}

int BestIndex(sqlite3_vtab* base, sqlite3_index_info* info) {
    auto& at = *static_cast<TableAtWork*>(base);
    return Guarded(at.session, [&] {
        std::string given;
        for (int i = 0; i < info->nConstraint; ++i) {
            const int column = UsefulColumn(at.table, info, i);
            if (column < 0) continue;
            given += static_cast<char>(firstColumn + column);
            info->aConstraintUsage[i].argvIndex = static_cast<int>(given.size());
        }
        info->idxNum = static_cast<int>(info->colUsed & 0xFFFF);
        info->idxStr = sqlite3_mprintf("%s", given.c_str());
        if (info->idxStr == nullptr) throw std::bad_alloc();
        info->needToFreeIdxStr = 1;
        Estimate(at, given, *info);
    });
}

/// Adds what `column = value` tells. SQLite compares once more, so that what is not understood
/// here may be left to it.
void Add(Request& request, const Table& table, int column, sqlite3_value* value) {
    const Meaning meaning = table.columns[static_cast<std::size_t>(column)].meaning;
    const int type = sqlite3_value_type(value);
    if (type == SQLITE_NULL) {
        request.isEmpty = true;
    } else if (type == SQLITE_INTEGER && meaning == Meaning::Element) {
        request.element = ElementId::Of(sqlite3_value_int64(value));
        request.isEmpty = request.isEmpty || !request.element;
    } else if (type == SQLITE_INTEGER && meaning == Meaning::Floor) {
        request.floor = sqlite3_value_int64(value);
    } else if (type == SQLITE_INTEGER && meaning == Meaning::Position) {
        request.position = sqlite3_value_int64(value);
    } else if (type == SQLITE_TEXT && (meaning == Meaning::Text || meaning == Meaning::Path)) {
        const auto* const bytes = reinterpret_cast<const char*>(sqlite3_value_text(value));
        if (bytes == nullptr) throw std::bad_alloc();
        std::string text(bytes, static_cast<std::size_t>(sqlite3_value_bytes(value)));
        if (meaning == Meaning::Path) {
            request.isEmpty = request.isEmpty || request.path.value_or(text) != text;
            request.path = text;
            return;
        }
        const std::wstring wide = FromUtf8(text);
        // What a file's text has no character for is U+FFFD here, whatever it is there.
        if (wide.find(L'\xFFFD') != std::wstring::npos) return;
        request.texts.push_back({column, std::move(text)});
        request.columns |= std::uint64_t{1} << column;
    }
}

/// The one file that may hold what is asked for; none for all of them.
std::optional<unsigned int> OnlyFile(Request& request, const QueriedFiles& files) {
    std::optional<unsigned int> only;
    if (request.path) {
        only = files.NumberOf(*request.path);
        request.isEmpty = request.isEmpty || !only;
    }
    if (request.element) {
        const unsigned int file = request.element->file;
        request.isEmpty = request.isEmpty || file >= files.Count() || only.value_or(file) != file;
        only = file;
    }
    if (files.Count() == 1) only = 0;
    return only;
}

void Begin(Cursor& cursor, int columns, const char* given, sqlite3_value** values) {
    cursor.source.reset();
    Request& request = cursor.request;
    request = {};
    request.columns = static_cast<std::uint64_t>(columns);
    for (int i = 0; given[i] != '\0'; ++i) {
        Add(request, cursor.table, given[i] - firstColumn, values[i]);
    }
    cursor.rows = RowBatch(request);
    QuerySession& session = cursor.session;
    const std::optional<unsigned int> only = OnlyFile(request, session.files);
    if (request.isEmpty || session.files.Count() == 0) return;
    if (only) {
        cursor.source = std::make_unique<OneFile>(cursor.table, session.files, *only, request);
    } else {
        cursor.source = std::make_unique<ScanAhead>(cursor.table, session.files, request,
                                                    session.threads, session.tell);
    }
}

/// Goes on to a batch with rows, or to the end.
void Fetch(Cursor& cursor) {
    cursor.row = 0;
    cursor.rows.Clear();
    while (cursor.source && cursor.rows.Rows() == 0) {
        if (!cursor.source->Next(cursor.rows)) cursor.source.reset();
    }
}

int Filter(sqlite3_vtab_cursor* base, int columns, const char* given, int /*count*/,
           sqlite3_value** values) {
    auto& cursor = *static_cast<Cursor*>(base);
    return Guarded(cursor.session, [&] {
        Begin(cursor, columns, given, values);
        Fetch(cursor);
    });
}

int Next(sqlite3_vtab_cursor* base) {
    auto& cursor = *static_cast<Cursor*>(base);
    if (++cursor.row < cursor.rows.Rows()) return SQLITE_OK;
    return Guarded(cursor.session, [&] { Fetch(cursor); });
}

int IsAtEnd(sqlite3_vtab_cursor* base) {
    const auto& cursor = *static_cast<Cursor*>(base);
    return cursor.row >= cursor.rows.Rows() ? 1 : 0;
}

int Value(sqlite3_vtab_cursor* base, sqlite3_context* context, int column) {
    const auto& cursor = *static_cast<Cursor*>(base);
    const RowBatch::Cell& cell = cursor.rows.At(cursor.row, column);
    switch (cell.kind) {
        case RowBatch::Kind::Null:
            sqlite3_result_null(context);
            break;
        case RowBatch::Kind::Integer:
            sqlite3_result_int64(context, cell.integer);
            break;
        case RowBatch::Kind::Real:
            sqlite3_result_double(context, cell.real);
            break;
        case RowBatch::Kind::Text: {
            const std::string_view text = cursor.rows.TextOf(cell);
            sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
            break;
        }
    }
    return SQLITE_OK;
}

int RowId(sqlite3_vtab_cursor* base, sqlite3_int64* id) {
    const auto& cursor = *static_cast<Cursor*>(base);
    *id = cursor.rows.Id(cursor.row);
    return SQLITE_OK;
}

std::string Declaration(const Table& table) {
    std::string columns;
    for (const Column& column : table.columns) {
        if (!columns.empty()) columns += ", ";
        columns += '"' + std::string(column.name) + "\" " + column.type;
    }
    return "CREATE TABLE t(" + columns + ')';
}

int Connect(sqlite3* database, void* module, int, const char* const*, sqlite3_vtab** made, char**) {
    const auto& [table, session] = *static_cast<Module*>(module);
    return Guarded(session, [&, &table = table, &session = session] {
        session.isDeclaring = true;
        const int result = sqlite3_declare_vtab(database, Declaration(table).c_str());
        session.isDeclaring = false;
        if (result != SQLITE_OK) {
            throw Error(Status::Internal, std::string("SQLite: ") + sqlite3_errmsg(database));
        }
        *made = new TableAtWork(table, session);
    });
}

int Disconnect(sqlite3_vtab* table) {
    delete static_cast<TableAtWork*>(table);
    return SQLITE_OK;
}

int Open(sqlite3_vtab* base, sqlite3_vtab_cursor** made) {
    auto& table = *static_cast<TableAtWork*>(base);
    return Guarded(table.session, [&] { *made = new Cursor(table); });
}

int Close(sqlite3_vtab_cursor* cursor) {
    delete static_cast<Cursor*>(cursor);
    return SQLITE_OK;
}

sqlite3_module CallsOfTables() {
    sqlite3_module calls = {};
    calls.iVersion = 0;  // no xCreate: the tables are there by their names
    calls.xConnect = Connect;
    calls.xBestIndex = BestIndex;
    calls.xDisconnect = Disconnect;
    calls.xOpen = Open;
    calls.xClose = Close;
    calls.xFilter = Filter;
    calls.xNext = Next;
    calls.xEof = IsAtEnd;
    calls.xColumn = Value;
    calls.xRowid = RowId;
    return calls;
}

}  // namespace

int AddVirtualTable(sqlite3* database, const Table& table, QuerySession& session) {
    static const sqlite3_module calls = CallsOfTables();
    return sqlite3_create_module_v2(database, table.name, &calls, new Module{table, session},
                                    [](void* module) { delete static_cast<Module*>(module); });
}

}  // namespace ZVSmartModel
