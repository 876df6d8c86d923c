#pragma once

#include <sqlite3.h>

#include <string>

#include "bench/Coder.h"

namespace bench {

/// One SQLite database; ends the program on any failure.
class Database {
  public:
    /// Opens `path`, for writing with no journal.
    Database(const std::string& path, bool forWrite);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    void Run(const char* sql);
    sqlite3* Handle() { return handle; }

  private:
    sqlite3* handle = nullptr;
};

/// One prepared statement.
class Statement {
  public:
    Statement(Database& database, const char* sql);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    Statement& Bind(int column, sqlite3_int64 value);
    Statement& Bind(int column, const std::wstring& text);
    Statement& Bind(int column, View blob);
    /// True while there is a row.
    bool Step();
    /// Runs a statement that has no rows and makes it ready for new values.
    void Execute();
    sqlite3_int64 Integer(int column) { return sqlite3_column_int64(statement, column); }
    std::wstring Text(int column);
    View Blob(int column);

  private:
    Database& database;
    sqlite3_stmt* statement = nullptr;
};

}  // namespace bench
