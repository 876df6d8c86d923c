#include "bench/Database.h"

#include <cstdio>
#include <cstdlib>

namespace bench {

namespace {

void Check(bool good, sqlite3* handle) {
    if (good) return;
    std::fprintf(stderr, "bench: sqlite failed: %s\n", sqlite3_errmsg(handle));
    std::exit(1);
}

std::string ToUtf8(const std::wstring& text) {
    std::string bytes;
    for (const wchar_t wide : text) {
        const auto c = static_cast<unsigned>(wide);
        const auto put = [&bytes](unsigned byte) { bytes.push_back(static_cast<char>(byte)); };
        if (c < 0x80) {
            put(c);
        } else if (c < 0x800) {
            put(0xC0 | c >> 6);
            put(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            put(0xE0 | c >> 12);
            put(0x80 | (c >> 6 & 0x3F));
            put(0x80 | (c & 0x3F));
        } else {
            put(0xF0 | c >> 18);
            put(0x80 | (c >> 12 & 0x3F));
            put(0x80 | (c >> 6 & 0x3F));
            put(0x80 | (c & 0x3F));
        }
    }
    return bytes;
}

/// `bytes` were written by `ToUtf8`.
std::wstring FromUtf8(const unsigned char* bytes, int count) {
    std::wstring text;
    for (int i = 0; i < count;) {
        const unsigned lead = bytes[i++];
        const int more = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
        unsigned c = more == 0 ? lead : lead & (0x3FU >> more);
        for (int k = 0; k < more; ++k) c = c << 6 | (bytes[i++] & 0x3FU);
        text.push_back(static_cast<wchar_t>(c));
    }
    return text;
}

}  // namespace

Database::Database(const std::string& path, bool forWrite) {
    const int flags = forWrite ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READONLY;
    Check(sqlite3_open_v2(path.c_str(), &handle, flags, nullptr) == SQLITE_OK, handle);
    if (forWrite) Run("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA page_size=4096");
}

Database::~Database() {
    sqlite3_close(handle);
}

void Database::Run(const char* sql) {
    Check(sqlite3_exec(handle, sql, nullptr, nullptr, nullptr) == SQLITE_OK, handle);
}

Statement::Statement(Database& database, const char* sql) : database(database) {
    Check(sqlite3_prepare_v2(database.Handle(), sql, -1, &statement, nullptr) == SQLITE_OK,
          database.Handle());
}

Statement::~Statement() {
    sqlite3_finalize(statement);
}

Statement& Statement::Bind(int column, sqlite3_int64 value) {
    Check(sqlite3_bind_int64(statement, column, value) == SQLITE_OK, database.Handle());
    return *this;
}

Statement& Statement::Bind(int column, const std::wstring& text) {
    const std::string bytes = ToUtf8(text);
    Check(sqlite3_bind_text(statement, column, bytes.data(), static_cast<int>(bytes.size()),
                            SQLITE_TRANSIENT) == SQLITE_OK,
          database.Handle());
    return *this;
}

Statement& Statement::Bind(int column, View blob) {
    Check(sqlite3_bind_blob(statement, column, blob.data(), static_cast<int>(blob.size()),
                            SQLITE_TRANSIENT) == SQLITE_OK,
          database.Handle());
    return *this;
}

bool Statement::Step() {
    const int result = sqlite3_step(statement);
    Check(result == SQLITE_ROW || result == SQLITE_DONE, database.Handle());
    return result == SQLITE_ROW;
}

void Statement::Execute() {
    Step();
    sqlite3_reset(statement);
}

std::wstring Statement::Text(int column) {
    const unsigned char* const bytes = sqlite3_column_text(statement, column);
    return FromUtf8(bytes, sqlite3_column_bytes(statement, column));
}

View Statement::Blob(int column) {
    const void* const bytes = sqlite3_column_blob(statement, column);
    return {static_cast<const ZVSmartFormat::u8*>(bytes),
            static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
}

}  // namespace bench
