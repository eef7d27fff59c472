#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace tessarune {

/// A connection to a database file that is private to the user. One thread at a time. Operations
/// throw SearchIndexFailed.
class SQLiteDatabase {
  public:
    /// Opens the file, or creates it for this user only.
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

        /// Resets the statement and binds the values to its `?`. Texts are not copied: they must
        /// stay valid until the last step.
        template <typename... Values>
        Statement& bind(const Values&... values) {
            reset();
            int index = 0;
            (bindOne(++index, values), ...);
            return *this;
        }
        /// Advances to the next row. Returns false after the last one.
        bool step();
        /// A column of the current row.
        std::int64_t integer(int column);
        /// A column of the current row; valid until the next step.
        std::string_view text(int column);

      private:
        void reset();
        void bindOne(int index, std::string_view text);
        void bindOne(int index, std::int64_t value);

        SQLiteDatabase& database_;
        sqlite3_stmt* handle_ = nullptr;
    };

    void run(const std::string& sql);
    /// The first column of the first row; 0 if there is no row.
    std::int64_t integer(const std::string& sql);
    /// The number of the row that was inserted last.
    std::int64_t lastRow() const;
    /// The number of rows changed since the connection was opened.
    std::int64_t changes() const;

    /// Changes that take effect together; the destructor rolls them back unless they were
    /// committed.
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
