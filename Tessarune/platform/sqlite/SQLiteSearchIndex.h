#pragma once

#include "Tessarune/platform/sqlite/SQLiteDatabase.h"
#include "Tessarune/search/SearchIndex.h"

#include <memory>

namespace tessarune {

/// A search index in an SQLite file, which uses SQLite's full-text extension FTS5. Several programs
/// may use the same file.
class SQLiteSearchIndex final : public SearchIndex {
  public:
    /// Opens or creates the file. Throws SearchIndexFailed, also for a file of another version.
    explicit SQLiteSearchIndex(const std::filesystem::path& path);

    std::map<UUID, std::string> stamps() override;
    void replace(const std::vector<IndexedTexts>& texts) override;
    void remove(const std::vector<UUID>& ids) override;
    bool eraseTraces() override;
    std::vector<UUID> find(const SearchQuery& query) override;

  private:
    /// Checks the version of the file and creates missing tables.
    class Schema {
      public:
        explicit Schema(SQLiteDatabase& database);
    };
    bool removeRow(const UUID& id);

    bool isErasing_ = false;
    SQLiteDatabase database_;
    Schema schema_; // initialised before the statements, which need its tables
    SQLiteDatabase::Statement rowOf_;
    SQLiteDatabase::Statement deleteRecording_;
    SQLiteDatabase::Statement deleteTexts_;
    SQLiteDatabase::Statement addRecording_;
    SQLiteDatabase::Statement addTexts_;
    SQLiteDatabase::Statement find_;
};

/// Implements `OpenSearchIndex`.
std::unique_ptr<SearchIndex> openSQLiteSearchIndex(const std::filesystem::path& path);

} // namespace tessarune
