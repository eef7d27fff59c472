#include "Tessarune/platform/sqlite/SQLiteDatabase.h"

#include "Tessarune/search/SearchIndex.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

namespace tessarune {

namespace {

/// Whether the file must be rebuilt; any other failure may be temporary.
bool isDamage(int code) {
    constexpr int primaryCode = 0xFF; // the other bits give details
    switch (code & primaryCode) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_ERROR: // not the expected tables
    case SQLITE_SCHEMA:
    case SQLITE_MISMATCH:
    case SQLITE_CONSTRAINT:
        return true;
    default:
        return false;
    }
}

/// How long to wait while another program writes.
constexpr int busyMilliseconds = 5000;

} // namespace

SQLiteDatabase::SQLiteDatabase(const std::filesystem::path& path) {
    // Created here, so that it is private from the start; SQLite gives its auxiliary files the same
    // permissions.
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (file < 0)
        throw SearchIndexFailed("the search index cannot be opened: " + path.string(), false);
    close(file);
    if (sqlite3_open_v2(path.c_str(), &handle_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX,
                        nullptr) != SQLITE_OK) {
        const std::string reason = handle_ ? sqlite3_errmsg(handle_) : "no memory";
        sqlite3_close(handle_);
        throw SearchIndexFailed("the search index cannot be opened: " + reason, false);
    }
    sqlite3_busy_timeout(handle_, busyMilliseconds);
    // The schema of a damaged or foreign file must not run functions.
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
}

SQLiteDatabase::~SQLiteDatabase() {
    sqlite3_close_v2(handle_);
}

void SQLiteDatabase::fail(std::string_view what) const {
    throw SearchIndexFailed("search index: " + std::string(what) + ": " + sqlite3_errmsg(handle_),
                            isDamage(sqlite3_errcode(handle_)));
}

void SQLiteDatabase::run(const std::string& sql) {
    if (sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        fail(sql);
}

std::int64_t SQLiteDatabase::integer(const std::string& sql) {
    Statement statement(*this, sql);
    return statement.step() ? statement.integer(0) : 0;
}

std::int64_t SQLiteDatabase::lastRow() const {
    return sqlite3_last_insert_rowid(handle_);
}

std::int64_t SQLiteDatabase::changes() const {
    return sqlite3_total_changes64(handle_);
}

SQLiteDatabase::Statement::Statement(SQLiteDatabase& database, std::string_view sql)
    : database_(database) {
    if (sqlite3_prepare_v3(database_.handle_, sql.data(), static_cast<int>(sql.size()),
                           SQLITE_PREPARE_PERSISTENT, &handle_, nullptr) != SQLITE_OK)
        database_.fail(sql);
}

SQLiteDatabase::Statement::~Statement() {
    sqlite3_finalize(handle_);
}

void SQLiteDatabase::Statement::reset() {
    sqlite3_reset(handle_);
    sqlite3_clear_bindings(handle_);
}

bool SQLiteDatabase::Statement::step() {
    const int result = sqlite3_step(handle_);
    if (result == SQLITE_ROW)
        return true;
    // The reset sets the failure's code and text.
    if (sqlite3_reset(handle_) != SQLITE_OK || result != SQLITE_DONE)
        database_.fail(sqlite3_sql(handle_));
    return false;
}

std::int64_t SQLiteDatabase::Statement::integer(int column) {
    return sqlite3_column_int64(handle_, column);
}

std::string_view SQLiteDatabase::Statement::text(int column) {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(handle_, column));
    return bytes ? std::string_view(bytes,
                                    static_cast<std::size_t>(sqlite3_column_bytes(handle_, column)))
                 : std::string_view();
}

void SQLiteDatabase::Statement::bindOne(int index, std::string_view text) {
    if (sqlite3_bind_text64(handle_, index, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8) !=
        SQLITE_OK)
        database_.fail(sqlite3_sql(handle_));
}

void SQLiteDatabase::Statement::bindOne(int index, std::int64_t value) {
    if (sqlite3_bind_int64(handle_, index, value) != SQLITE_OK)
        database_.fail(sqlite3_sql(handle_));
}

SQLiteDatabase::Transaction::Transaction(SQLiteDatabase& database) : database_(database) {
    database_.run("BEGIN IMMEDIATE");
}

SQLiteDatabase::Transaction::~Transaction() {
    if (isOpen_)
        sqlite3_exec(database_.handle_, "ROLLBACK", nullptr, nullptr, nullptr);
}

void SQLiteDatabase::Transaction::commit() {
    database_.run("COMMIT");
    isOpen_ = false;
}

} // namespace tessarune
