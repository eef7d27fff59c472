#include "Tessarune/search/SearchIndexKeeper.h"

#include "Tessarune/search/SearchTokens.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace tessarune {

namespace {

/// The number of recordings read in one step. A search that arrives meanwhile waits for the end of
/// the step.
constexpr std::size_t recordingsPerStep = 8;

} // namespace

SearchIndexKeeper::SearchIndexKeeper(FileSystem& files, const RecordingCatalog& catalog,
                                     TessaruneFileLogger& logger, OpenSearchIndex open)
    : files_(files),
      logger_(logger),
      transcripts_(files, catalog),
      path_(indexPath(catalog.paths())),
      open_(std::move(open)) {}

SearchIndexKeeper::~SearchIndexKeeper() = default;

std::filesystem::path SearchIndexKeeper::indexPath(const TessarunePaths& paths) {
    return paths.appSupportBase() / "Search.sqlite";
}

void SearchIndexKeeper::log(const char* event, const std::exception& error) {
    logger_.important(event, {{"path", path_.string()}, {"error", std::string(error.what())}});
}

void SearchIndexKeeper::discardIndex() {
    index_.reset();
    try {
        for (const char* suffix : {"", "-wal", "-shm"})
            files_.remove(path_.string() + suffix);
    } catch (const std::exception& error) {
        log("search.index.remove.failed", error);
    }
}

bool SearchIndexKeeper::withIndex(const std::function<void(SearchIndex&)>& work) {
    for (const bool isFirstAttempt : {true, false}) {
        try {
            if (!index_)
                index_ = open_(path_);
            work(*index_);
            return true;
        } catch (const SearchIndexFailed& failure) {
            log("search.index.failed", failure);
            if (!failure.isDamaged || !isFirstAttempt)
                return false;
            discardIndex();
            wasChecked_ = false;
        }
    }
    return false;
}

void SearchIndexKeeper::noteChange(const UUID& id) {
    changed_.push_back(id);
}

void SearchIndexKeeper::check() {
    wasChecked_ = false;
    try {
        compare();
    } catch (const std::exception& error) { // the disk failed
        log("search.check.failed", error);
    }
}

void SearchIndexKeeper::compare() {
    auto current = transcripts_.stamps();
    if (current.empty() && !files_.exists(path_)) {
        wasChecked_ = true;
        return; // no recordings, no index
    }
    std::vector<UUID> deleted;
    std::vector<IndexedTexts> outdated;
    const bool isUsable = withIndex([&](SearchIndex& index) {
        auto known = index.stamps();
        for (const UUID& id : changed_)
            known[id].clear(); // differs from every current stamp
        deleted.clear();
        outdated.clear();
        for (const auto& [id, stamp] : known) {
            if (!current.contains(id))
                deleted.push_back(id);
        }
        for (const auto& [id, stamp] : current) {
            const auto found = known.find(id);
            if (found == known.end() || found->second != stamp)
                outdated.push_back({id, stamp, {}, {}});
        }
        if (!deleted.empty())
            index.remove(deleted);
    });
    if (!isUsable)
        return;
    wasChecked_ = true;
    isBehind_ = false;
    changed_.clear();
    outdatedAtCheck_ = outdated.size();
    unreadable_ = 0;
    outdated_ = std::move(outdated);
}

bool SearchIndexKeeper::step() {
    if (!wasChecked_)
        return false;
    if (!outdated_.empty()) {
        readSome();
        return true;
    }
    const bool hasMore = eraseSome();
    if (!wasChecked_) // a damaged index was discarded: begin again
        check();
    return hasMore || !outdated_.empty();
}

bool SearchIndexKeeper::eraseSome() {
    bool hasMore = false;
    if (wasChecked_ && index_)
        withIndex([&](SearchIndex& index) { hasMore = index.eraseTraces(); });
    return hasMore;
}

void SearchIndexKeeper::readSome() {
    const std::size_t count = std::min(recordingsPerStep, outdated_.size());
    std::vector<IndexedTexts> read(outdated_.end() - static_cast<std::ptrdiff_t>(count),
                                   outdated_.end());
    outdated_.resize(outdated_.size() - count);
    std::vector<IndexedTexts> indexed;
    for (auto& entry : read) {
        // An unreadable recording keeps its entry in the index.
        const auto texts = transcripts_.texts(entry.id);
        if (!texts) {
            ++unreadable_;
            continue;
        }
        entry.source = SearchTokens::joined(texts->source);
        entry.translation = SearchTokens::joined(texts->translation);
        indexed.push_back(std::move(entry));
    }
    const bool isDone = withIndex([&](SearchIndex& index) { index.replace(indexed); });
    if (!wasChecked_)
        check(); // a damaged index was discarded: begin again
    else if (!isDone)
        giveUp();
}

/// Stops updating until the next check.
void SearchIndexKeeper::giveUp() {
    isBehind_ = true;
    outdated_.clear();
}

SearchIndexKeeper::State SearchIndexKeeper::state() const {
    return {outdatedAtCheck_ - outdated_.size(), outdatedAtCheck_, unreadable_};
}

std::vector<UUID> SearchIndexKeeper::find(const SearchQuery& query) {
    if (query.isEmpty())
        return {};
    if (!wasChecked_)
        check();
    std::vector<UUID> found;
    if (wasChecked_ && !index_)
        return found; // no recordings
    const bool isUsable =
        !isBehind_ && withIndex([&](SearchIndex& index) { found = index.find(query); });
    if (isUsable && wasChecked_)
        return found;
    if (!wasChecked_) // a damaged index was discarded, and the new one is empty
        check();
    return findInFiles(query);
}

std::vector<UUID> SearchIndexKeeper::findInFiles(const SearchQuery& query) {
    std::vector<UUID> found;
    try {
        for (const auto& [id, stamp] : transcripts_.stamps()) {
            const auto texts = transcripts_.texts(id);
            if (texts && query.matches({texts->source, texts->translation}))
                found.push_back(id);
        }
    } catch (const std::exception& error) {
        log("search.files.failed", error);
    }
    return found;
}

} // namespace tessarune
