#include "Tessarune/search/SearchIndexKeeper.h"

#include "Tessarune/search/SearchTokens.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace tessarune {

namespace {

/// Recordings read in one step: a search that arrives meanwhile waits no longer than that.
constexpr std::size_t recordingsAStep = 8;

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

bool SearchIndexKeeper::overIndex(const std::function<void(SearchIndex&)>& work) {
    for (const bool isFirstTry : {true, false}) {
        try {
            if (!index_)
                index_ = open_(path_);
            work(*index_);
            return true;
        } catch (const SearchIndexFailed& failure) {
            log("search.index.failed", failure);
            if (!failure.isDamaged || !isFirstTry)
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
    try {
        compare();
    } catch (const std::exception& error) { // the disk
        log("search.check.failed", error);
    }
}

void SearchIndexKeeper::compare() {
    auto current = transcripts_.stamps();
    if (current.empty() && !files_.exists(path_)) {
        wasChecked_ = true;
        return; // no recordings, no index
    }
    std::vector<UUID> gone;
    std::vector<IndexedTexts> outdated;
    const bool isThere = overIndex([&](SearchIndex& index) {
        auto known = index.stamps();
        for (const UUID& id : changed_)
            known[id].clear();
        gone.clear();
        outdated.clear();
        for (const auto& [id, stamp] : known) {
            if (!current.contains(id))
                gone.push_back(id);
        }
        for (const auto& [id, stamp] : current) {
            const auto found = known.find(id);
            if (found == known.end() || found->second != stamp)
                outdated.push_back({id, stamp, {}, {}});
        }
        if (!gone.empty())
            index.remove(gone);
    });
    if (!isThere)
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
    const bool isMore = eraseSome();
    if (!wasChecked_) // it was damaged
        check();
    return isMore || !outdated_.empty();
}

bool SearchIndexKeeper::eraseSome() {
    bool isMore = false;
    if (wasChecked_ && index_)
        overIndex([&](SearchIndex& index) { isMore = index.eraseTraces(); });
    return isMore;
}

void SearchIndexKeeper::readSome() {
    const std::size_t count = std::min(recordingsAStep, outdated_.size());
    std::vector<IndexedTexts> read(outdated_.end() - static_cast<std::ptrdiff_t>(count),
                                   outdated_.end());
    outdated_.resize(outdated_.size() - count);
    std::vector<IndexedTexts> indexed;
    for (auto& entry : read) {
        // An unreadable one keeps its entry in the index, and is retried at the next check.
        const auto texts = transcripts_.texts(entry.id);
        if (!texts) {
            ++unreadable_;
            continue;
        }
        entry.source = SearchTokens::joined(texts->source);
        entry.translation = SearchTokens::joined(texts->translation);
        indexed.push_back(std::move(entry));
    }
    const bool isDone = overIndex([&](SearchIndex& index) { index.replace(indexed); });
    if (!wasChecked_)
        check(); // over a new index
    else if (!isDone)
        giveUp();
}

/// Until the next check.
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
    const bool isThere =
        !isBehind_ && overIndex([&](SearchIndex& index) { found = index.find(query); });
    if (!isThere)
        return findInFiles(query);
    if (!wasChecked_)
        check();
    return found;
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
