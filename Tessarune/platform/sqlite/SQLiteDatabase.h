#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace tessarune {

/// A connection to a database file of the user's own. One thread at a time. Everything throws
/// SearchIndexFailed.
class SQLiteDatabase {
  public:
    /// Opens the file, or makes it, for this user alone.
    explicit SQLiteDatabase(const std::filesystem::path& path);
    ~SQLiteDatabase();
    SQLiteDatabase(const SQLiteDatabase&) = delete;
    SQLiteDatabase& operator=(const SQLiteDatabase&) = delete;

    /// A statement that is prepared once and run many times.
    class Statement {
      public:
        Statement(SQLiteDatabase& database, std::string_view sql);
        ~Statement();
        Statement(const Statement&) = delete;
        Statement& operator=(const Statement&) = delete;

        /// Begins anew, with these values for the statement's `?`. Texts are not copied.
        template <typename... Values>
        Statement& bind(const Values&... values) {
            reset();
            int place = 0;
            (bindOne(++place, values), ...);
            return *this;
        }
        /// The next row; false after the last.
        bool step();
        std::int64_t integer(int column);
        /// Of the current row.
        std::string_view text(int column);

      private:
        void reset();
        void bindOne(int place, std::string_view text);
        void bindOne(int place, std::int64_t value);

        SQLiteDatabase& database_;
        sqlite3_stmt* handle_ = nullptr;
    };

    void run(const std::string& sql);
    std::int64_t integer(const std::string& sql);
    std::int64_t lastRow() const;
    std::int64_t changes() const;

    /// Changes that are made together; those that were not committed are taken back.
    class Transaction {
      public:
        explicit Transaction(SQLiteDatabase& database);
        ~Transaction();
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;
        void commit();

      private:
        SQLiteDatabase& database_;
        bool isOpen_ = true;
    };

  private:
    [[noreturn]] void fail(std::string_view what) const;

    sqlite3* handle_ = nullptr;
};

} // namespace tessarune
