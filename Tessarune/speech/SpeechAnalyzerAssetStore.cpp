#include "Tessarune/speech/SpeechAnalyzerAssetStore.h"

#include <utility>

namespace tessarune {

using Kind = SpeechAnalyzerAssetStatus::Kind;

SpeechAnalyzerAssetStore::~SpeechAnalyzerAssetStore() {
    for (auto& [locale, task] : tasks_)
        task.cancel();
}

void SpeechAnalyzerAssetStore::prepare(const std::string& localeIdentifier) {
    if (const auto former = tasks_.find(localeIdentifier); former != tasks_.end()) {
        former->second.cancel();
        tasks_.erase(former);
    }
    setStatus(localeIdentifier, {Kind::checking, ""});
    std::stop_source stop;
    tasks_.emplace(
        localeIdentifier,
        spawn(Executor::main(host_), install(*this, localeIdentifier, stop.get_token()), stop));
}

void SpeechAnalyzerAssetStore::preheat(const std::string& localeIdentifier) {
    const auto known = statuses->find(localeIdentifier);
    if (known != statuses->end()) {
        const Kind kind = known->second.kind;
        if (kind == Kind::checking || kind == Kind::installed || kind == Kind::downloading)
            return;
    }
    prepare(localeIdentifier);
}

/// Uses the store only while the task has not been cancelled. The store's destructor cancels the
/// tasks, on the queue on which they run.
Task<void> SpeechAnalyzerAssetStore::install(SpeechAnalyzerAssetStore& store,
                                             std::string localeIdentifier, std::stop_token stop) {
    if (stop.stop_requested())
        co_return;
    const std::function<void(AssetProgress)> progress = [&store, localeIdentifier,
                                                         stop](AssetProgress) {
        if (!stop.stop_requested() &&
            store.statuses->at(localeIdentifier).kind != Kind::downloading)
            store.setStatus(localeIdentifier, {Kind::downloading, ""});
    };
    SpeechAnalyzerAssetStatus status{Kind::installed, ""};
    try {
        Task<void> installing = installAssetsIfNeeded(store.assets_, store.logger_,
                                                      localeIdentifier, "settings", progress, stop);
        co_await installing;
    } catch (const UnsupportedSpeechLocale&) {
        status = {Kind::unsupported, ""};
    } catch (const std::exception& error) {
        status = SpeechAnalyzerAssetStatus::failed(error.what());
    }
    if (!stop.stop_requested())
        store.setStatus(localeIdentifier, std::move(status));
}

void SpeechAnalyzerAssetStore::setStatus(const std::string& localeIdentifier,
                                         SpeechAnalyzerAssetStatus status) {
    statuses.mutate([&](auto& all) { all[localeIdentifier] = std::move(status); });
}

} // namespace tessarune
