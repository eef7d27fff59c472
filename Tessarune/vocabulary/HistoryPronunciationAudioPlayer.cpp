#include "Tessarune/vocabulary/HistoryPronunciationAudioPlayer.h"

#include "Tessarune/vocabulary/VocabularyAddresses.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/host/RunOn.h"

#include <algorithm>
#include <stop_token>
#include <utility>

namespace tessarune {

namespace {

constexpr const char* pronunciationUserAgent = "Mozilla/5.0 Tessarune";

std::optional<std::string> fetchedSound(const WebFetch& fetch, const std::string& url,
                                        const std::stop_token& stop) {
    auto answer = fetch(url, pronunciationUserAgent, stop);
    if (!answer || !answer->contentType.starts_with("audio"))
        return std::nullopt;
    return std::move(answer->body);
}

/// Tries the likely addresses first, then the address on the word's page. Blocks.
std::optional<std::string> fetchAudioData(const WebFetch& fetch,
                                          VocabularyPronunciationSource source,
                                          const std::string& word, const std::stop_token& stop) {
    namespace Sounds = VocabularyPronunciationAudioSource;
    for (const auto& url : Sounds::directURLs(source, word)) {
        if (auto sound = fetchedSound(fetch, url, stop))
            return sound;
    }
    for (const auto& page : Sounds::lookupURLs(source, word)) {
        const auto answer = fetch(page, pronunciationUserAgent, stop);
        if (!answer)
            continue;
        const auto url = Sounds::firstAudioURL(answer->body, page, Sounds::accentDirectory(source));
        if (!url)
            continue;
        if (auto sound = fetchedSound(fetch, *url, stop))
            return sound;
    }
    return std::nullopt;
}

void logFailure(const std::exception& error) {
    TessaruneLog::storage.notice(
        [&] { return std::string("pronunciation failed: ") + error.what(); });
}

} // namespace

struct HistoryPronunciationAudioPlayer::State {
    State(Host& itsHost, WebFetch itsFetch, PlaySound itsPlaySound)
        : host(itsHost),
          fetch(std::move(itsFetch)),
          playSound(std::move(itsPlaySound)),
          queue(host.serialQueue("Tessarune.Pronunciation", QueuePriority::userInitiated)) {}

    Host& host;
    const WebFetch fetch;
    const PlaySound playSound;
    const std::shared_ptr<SerialQueue> queue;
    Published<std::optional<std::string>> activeKey;
    Published<std::optional<std::string>> loadingKey;
    Block stopPlayer;
    int soundNumber = 0;             ///< changes when a sound begins or is stopped
    std::stop_source currentRequest; ///< cancels the fetching

    void stopPlaying() {
        ++soundNumber;
        if (const Block stop = std::exchange(stopPlayer, {}))
            stop();
        if (*activeKey)
            activeKey = std::nullopt;
    }

    static Task<void> run(std::shared_ptr<State> state, VocabularyPronunciationSource source,
                          std::string word, std::string key, std::stop_token stop);
};

Task<void> HistoryPronunciationAudioPlayer::State::run(std::shared_ptr<State> state,
                                                       VocabularyPronunciationSource source,
                                                       std::string word, std::string key,
                                                       std::stop_token stop) {
    std::optional<std::string> sound;
    try {
        sound = co_await runOn(Executor::queue(state->host, state->queue),
                               [&] { return fetchAudioData(state->fetch, source, word, stop); });
    } catch (const std::exception& error) { // treated like a missing sound
        logFailure(error);
    }
    if (stop.stop_requested())
        co_return;
    state->loadingKey = std::nullopt;
    if (!sound)
        co_return;
    state->stopPlaying();
    state->activeKey = key;
    const std::weak_ptr<State> weakState = state;
    const auto ended = [weakState, number = state->soundNumber] {
        const auto current = weakState.lock();
        if (!current || current->soundNumber != number)
            return;
        current->stopPlayer = {};
        current->activeKey = std::nullopt;
    };
    try {
        state->stopPlayer = state->playSound(std::move(*sound), ended);
    } catch (const std::exception& error) { // no sound output, or the sound cannot be played
        logFailure(error);
        ended();
    }
}

HistoryPronunciationAudioPlayer::HistoryPronunciationAudioPlayer(Host& host, WebFetch fetch,
                                                                 PlaySound playSound)
    : state_(std::make_shared<State>(host, std::move(fetch), std::move(playSound))) {}

HistoryPronunciationAudioPlayer::~HistoryPronunciationAudioPlayer() {
    stop();
}

std::string HistoryPronunciationAudioPlayer::key(VocabularyPronunciationSource source,
                                                 std::string_view word) {
    const auto* stored =
        std::ranges::find(vocabularyPronunciationSources, source,
                          &std::pair<VocabularyPronunciationSource, std::string_view>::first);
    return std::string(stored->second) + "|" + std::string(word);
}

void HistoryPronunciationAudioPlayer::play(VocabularyPronunciationSource source,
                                           std::string_view word) {
    const std::string newKey = key(source, word);
    if (*state_->activeKey == newKey) {
        stop();
        return;
    }
    state_->currentRequest.request_stop();
    state_->currentRequest = std::stop_source();
    state_->loadingKey = newKey;
    spawn(Executor::main(state_->host), State::run(state_, source, std::string(word), newKey,
                                                   state_->currentRequest.get_token()));
}

void HistoryPronunciationAudioPlayer::stop() {
    state_->currentRequest.request_stop();
    if (*state_->loadingKey)
        state_->loadingKey = std::nullopt;
    state_->stopPlaying();
}

const Published<std::optional<std::string>>& HistoryPronunciationAudioPlayer::activeKey() const {
    return state_->activeKey;
}

const Published<std::optional<std::string>>& HistoryPronunciationAudioPlayer::loadingKey() const {
    return state_->loadingKey;
}

} // namespace tessarune
