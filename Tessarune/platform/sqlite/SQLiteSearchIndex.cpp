#include "Tessarune/platform/sqlite/SQLiteSearchIndex.h"

#include <string>

namespace tessarune {

namespace {

/// Must be increased whenever tables or tokens change: the file is then rebuilt.
constexpr std::int64_t indexVersion = 1;

/// The query in FTS5's syntax. Tokens consist of letters and digits, so they need no escaping.
std::string matchExpression(const SearchQuery& query) {
    std::string expression;
    for (const auto& phrase : query.phrases) {
        if (!expression.empty())
            expression += " AND ";
        expression += '"';
        for (const auto& token : phrase.tokens)
            expression += token + ' ';
        expression.back() = '"';
        if (phrase.lastIsPrefix)
            expression += " *";
    }
    return expression;
}

} // namespace

SQLiteSearchIndex::Schema::Schema(SQLiteDatabase& database) {
    const std::int64_t version = database.integer("PRAGMA user_version");
    if (version != 0 && version != indexVersion)
        throw SearchIndexFailed("search index: of another version", true);
    // With WAL, readers and a writer in different programs do not block each other. A power failure
    // may lose data, which is rebuilt.
    database.run("PRAGMA journal_mode=WAL");
    database.run("PRAGMA synchronous=NORMAL");
    database.run("PRAGMA secure_delete=ON");
    if (version == indexVersion)
        return;
    SQLiteDatabase::Transaction transaction(database);
    database.run("CREATE TABLE IF NOT EXISTS recordings("
                 "row INTEGER PRIMARY KEY, id TEXT NOT NULL UNIQUE, stamp TEXT NOT NULL)");
    // Texts are already split into tokens and folded, so the tokenizer "ascii" suffices: it regards
    // all non-ASCII characters as parts of tokens.
    database.run("CREATE VIRTUAL TABLE IF NOT EXISTS texts USING fts5("
                 "source, translation, tokenize='ascii', prefix='2 3')");
    // Has a row while the file may still contain words of deleted recordings.
    database.run("CREATE TABLE IF NOT EXISTS traces(there INTEGER PRIMARY KEY)");
    database.run("PRAGMA user_version=" + std::to_string(indexVersion));
    transaction.commit();
}

SQLiteSearchIndex::SQLiteSearchIndex(const std::filesystem::path& path)
    : database_(path),
      schema_(database_),
      rowOf_(database_, "SELECT row FROM recordings WHERE id = ?"),
      deleteRecording_(database_, "DELETE FROM recordings WHERE row = ?"),
      deleteTexts_(database_, "DELETE FROM texts WHERE rowid = ?"),
      addRecording_(database_, "INSERT INTO recordings(id, stamp) VALUES(?, ?)"),
      addTexts_(database_, "INSERT INTO texts(rowid, source, translation) VALUES(?, ?, ?)"),
      find_(database_, "SELECT id FROM texts JOIN recordings ON row = texts.rowid "
                       "WHERE texts MATCH ?") {}

std::map<UUID, std::string> SQLiteSearchIndex::stamps() {
    SQLiteDatabase::Statement all(database_, "SELECT id, stamp FROM recordings");
    std::map<UUID, std::string> found;
    while (all.step()) {
        if (const auto id = UUID::parse(all.text(0)))
            found.emplace(*id, all.text(1));
    }
    return found;
}

bool SQLiteSearchIndex::removeRow(const UUID& id) {
    const std::string key = id.text();
    if (!rowOf_.bind(std::string_view(key)).step())
        return false;
    const std::int64_t row = rowOf_.integer(0);
    rowOf_.bind(); // ends the query
    deleteRecording_.bind(row).step();
    deleteTexts_.bind(row).step();
    return true;
}

void SQLiteSearchIndex::replace(const std::vector<IndexedTexts>& texts) {
    SQLiteDatabase::Transaction transaction(database_);
    for (const auto& text : texts) {
        removeRow(text.id);
        const std::string key = text.id.text();
        addRecording_.bind(std::string_view(key), std::string_view(text.stamp)).step();
        addTexts_
            .bind(database_.lastRow(), std::string_view(text.source),
                  std::string_view(text.translation))
            .step();
    }
    transaction.commit();
}

void SQLiteSearchIndex::remove(const std::vector<UUID>& ids) {
    SQLiteDatabase::Transaction transaction(database_);
    for (const UUID& id : ids)
        removeRow(id);
    database_.run("INSERT OR IGNORE INTO traces VALUES(1)");
    transaction.commit();
}

bool SQLiteSearchIndex::eraseTraces() {
    if (database_.integer("SELECT count(*) FROM traces") == 0)
        return false;
    // Merges the parts of the index into one, some pages at a time, which drops deleted texts. A
    // negative number starts the merge; a call without remaining work changes at most one row.
    const std::string pages = isErasing_ ? "200" : "-200";
    const std::int64_t before = database_.changes();
    database_.run("INSERT INTO texts(texts, rank) VALUES('merge', " + pages + ")");
    isErasing_ = database_.changes() - before >= 2;
    if (!isErasing_) {
        database_.run("DELETE FROM traces");
        database_.run("PRAGMA wal_checkpoint(TRUNCATE)");
    }
    return isErasing_;
}

std::vector<UUID> SQLiteSearchIndex::find(const SearchQuery& query) {
    std::vector<UUID> found;
    if (query.isEmpty())
        return found;
    const std::string expression = matchExpression(query);
    find_.bind(std::string_view(expression));
    while (find_.step()) {
        if (const auto id = UUID::parse(find_.text(0)))
            found.push_back(*id);
    }
    return found;
}

std::unique_ptr<SearchIndex> openSQLiteSearchIndex(const std::filesystem::path& path) {
    return std::make_unique<SQLiteSearchIndex>(path);
}

} // namespace tessarune
