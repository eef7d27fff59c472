#include "tests/simulation/translation/TranslationSimulation.h"

#include "TessaruneCore/translation/CommittedTranslationUnitPlanner.h"
#include "TessaruneCore/translation/TranslationSegmentMutator.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <algorithm>

namespace tessarune::simulation {

namespace {

using Answer = testing::ScriptedTranslationService::Answer;
using Strings = std::vector<std::string>;

constexpr double neverSeconds = 1000;
/// A hanging engine call is abandoned after this time, together with its `TranslationSession`.
constexpr double givenUpSeconds = 20;
constexpr double loadGivenUpSeconds = 30;
/// A low sample rate suffices here.
constexpr double coarseRate = 160;

} // namespace

TranslationSimulation::TranslationSimulation(std::uint64_t seed) : random_(seed), seed_(seed) {
    std::mt19937_64 script(seed);
    const auto below = [&](std::size_t limit) { return script() % limit; };
    for (std::size_t i = 0, count = 5 + below(12); i < count; ++i)
        events_.push_back({static_cast<double>(below(20)) / 10, below(12), script()});
}

/// Runs a session through the events to its end, with or without translation.
class TranslationSimulation::Session : public TranslatedLiveSession {
  public:
    Session(TranslationSimulation& scene, bool translates)
        : TranslatedLiveSession(scene.seed_, coarseRate), scene_(scene), translates_(translates) {
        TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::off);
        settings.translationBackend = translates ? "苹果" : "关闭";
        service->answer = [this](auto&) { return troubledAnswer(); };
        if (scene.seed_ % 4 == 0)
            service->pairs["en-US->fr-FR"].load = givenUpLoad();
    }

    /// The captions with their times, then the saved transcript and the recording.
    Strings course;
    double stopSeconds = 0;

    void run() {
        begin();
        watch();
        server.keepDelivering(0.5F, 0.5);
        int number = 0;
        for (const Event& event : scene_.events_) {
            advance(event.pause);
            if (event.kind < firstTrouble)
                speak(event, ++number);
            else if (translates_)
                trouble(event);
            checkLanguages();
            checkFrame();
        }
        if (scene_.seed_ % 2 == 0)
            calmDown();
        end();
        if (!translates_)
            return;
        checkReported();
        endWell();
        anotherSession();
    }

  private:
    void require(bool holds, const std::string& what) {
        if (!holds && scene_.violation_.empty())
            scene_.violation_ = what;
    }
    void note(const std::string& what) {
        if (translates_)
            scene_.trace_.push_back(Text::fixed(host.now() - 1000000000, 3) + "  " + what);
    }

    void watch() {
        store->view().captions.committedSegments.onWillChange(
            [this](const auto& rows) { before_ = rows; });
        store->view().captions.committedSegments.onDidChange(
            [this](const CaptionCore::Rows& rows) { checkChange(rows); });
        store->view().sessionPhase.onDidChange([this](LiveSessionPhase phase) {
            if (phase == LiveSessionPhase::idle && !hasEnded_)
                stopSeconds += host.now();
        });
    }

    void advance(double seconds) {
        const double limit = host.now() + seconds;
        while (host.step(limit))
            checkFrame();
        host.advanceTo(limit);
    }

    void checkFrame() {
        const std::string stale = staleInFrame();
        require(stale.empty(), "the frame is out of date: " + stale);
    }

    void checkChange(const CaptionCore::Rows& rows) {
        for (std::size_t i = before_.size(); i < rows.size() && !hasEnded_; ++i)
            course.push_back(std::to_string(host.now()) + " " + rows[i].sourceText);
        for (std::size_t i = 0; i < std::min(rows.size(), before_.size()); ++i) {
            require(rows[i].sourceText == before_[i].sourceText, "a caption changed");
            const bool isNews =
                rows[i].translatedText && rows[i].translatedText != before_[i].translatedText;
            if (isNews)
                note("-> " + *rows[i].translatedText);
            require(!isNews || TranslationSegmentMutator::isPending(before_[i]),
                    "translated twice: " + rows[i].sourceText);
        }
    }

    void speak(const Event& event, int number) {
        const std::string text = "Sentence " + std::to_string(number) + " is here";
        const bool isFinal = event.kind < 4;
        note(isFinal ? "final" : "guess");
        say(isFinal, text + (event.choice % 3 == 0 ? "" : "."));
    }

    Answer troubledAnswer() {
        const auto below = [this](std::size_t limit) { return scene_.random_() % limit; };
        Answer answer{static_cast<double>(below(20)) / 10, std::nullopt};
        if (below(3) == 0)
            answer.error =
                testing::serviceError(static_cast<TranslationError>(below(8)), "went wrong");
        if (below(25) == 0)
            answer = {neverSeconds, std::nullopt};
        if (below(25) == 0)
            answer = {givenUpSeconds, testing::serviceError(TranslationError::alreadyCancelled)};
        return answer;
    }

    static Answer givenUpLoad() {
        return {loadGivenUpSeconds,
                testing::serviceError(TranslationError::alreadyCancelled, "given up")};
    }

    void trouble(const Event& event) {
        static const Strings targets = {"fr", "de", "en"};
        static const Strings backends = {"关闭", "苹果", "苹果", "苹果", "X"};
        LiveTranscriptTranslation& commands = *live;
        auto& pair = service->pairs[event.choice % 2 == 0 ? "en-US->fr-FR" : "en-US->de-DE"];
        switch (event.kind) {
        case 6:
            note("target " + targets[event.choice % targets.size()]);
            return commands.setTranslationTarget(targets[event.choice % targets.size()]);
        case 7:
            note("backend " + backends[event.choice % backends.size()]);
            return commands.setTranslationBackend(backends[event.choice % backends.size()]);
        case 8:
            note("previews");
            return commands.setSoftTranslationEnabled(event.choice % 2 == 0);
        case 9:
            note("retry");
            return commands.retryIncompleteTranslations();
        default:
            note("language files");
            pair.status = static_cast<TranslationAvailabilityStatus>(event.choice / 2 % 3);
            pair.isReady = event.choice / 6 % 3 != 0;
            pair.load = event.choice / 18 % 3 == 0 ? givenUpLoad() : Answer{};
            sawUnsupported_ |= pair.status == TranslationAvailabilityStatus::unsupported;
        }
    }

    void wellAgain() {
        service->answer = [](auto&) { return Answer{0.01, std::nullopt}; };
        service->pairs.clear();
    }

    /// The failures end while the session runs; only calls that hang for ever remain.
    void calmDown() {
        if (translates_)
            wellAgain();
        advance(2 * loadGivenUpSeconds);
        // An unsupported pair is remembered until the session ends.
        const bool isChecked =
            translates_ && service->translationsInFlight == 0 && !sawUnsupported_;
        if (isChecked) {
            live->setTranslationBackend("苹果");
            note("retry during the session");
            live->retryIncompleteTranslations();
        }
        advance(10);
        if (isChecked)
            checkAllTranslated();
    }

    void checkAllTranslated() {
        checkLanguages();
        for (const CaptionSegment& row : rows())
            require(!row.translationError, "not translated: " + row.translationError.value_or(""));
        require(!CommittedTranslationUnitPlanner::nextPendingUnit(rows()), "a row is pending");
        require(!live->isCommittedTranslating(), "a translation run does not end");
    }

    void end() {
        const UUID id = recordingID();
        note("stop");
        server.keepDelivering(std::nullopt);
        stopSeconds = -host.now();
        stop();
        advance(60);
        require(phase() == LiveSessionPhase::idle, "the stop does not end");
        hasEnded_ = true;
        course.push_back(transcript(id));
        course.push_back(files.contentsOf(catalog->recordings().at(0).filePath));
    }

    /// Checks that no row shows a translation into another language than the chosen one.
    void checkLanguages() {
        if (TranslationSupport::isDisabledBackend(*settings.translationBackend))
            return; // existing translations stay until it is enabled again
        const std::string& target = *settings.translationTargetLanguage;
        const std::string mark =
            target == "en" ? "" : TranslationSupport::appleLanguageIdentifier(target) + ":";
        for (const CaptionSegment& row : rows()) {
            const std::string text = row.translatedText.value_or("");
            require(text.empty() || text.starts_with(mark + "Sentence"),
                    "the language is not " + target + ": " + text);
        }
    }

    /// Checks that an untranslated row has its failure, or that the status line reports pending
    /// rows.
    void checkReported() {
        checkLanguages();
        if (!TranslationSupport::isAppleBackend(*settings.translationBackend))
            return;
        for (const CaptionSegment& row : rows())
            require(!TranslationSegmentMutator::isPending(row) || !translationStatus().empty(),
                    "neither translated nor reported: " + row.sourceText);
    }

    /// The failures end, and the user retries.
    void endWell() {
        wellAgain();
        live->setTranslationBackend("苹果");
        note("retry after the failures");
        live->retryIncompleteTranslations();
        advance(60);
        checkAllTranslated();
        const std::string saved = bilingual(recordingID());
        for (const CaptionSegment& row : rows()) {
            const std::string text = row.translatedText.value_or("");
            require(saved.find(text) != std::string::npos, "translation not saved: " + text);
        }
    }

    /// Hanging calls return now, during another session.
    void anotherSession() {
        start();
        hear(2);
        say(true, "Sentence 1 is another.");
        advance(2);
        const Strings before = shown();
        require(before.size() == 1 && before[0].ends_with("Sentence 1 is another."),
                "the next session is not translated");
        host.advanceBy(1.1 * neverSeconds);
        checkFrame();
        require(shown() == before, "a late answer changed a row");
    }

    TranslationSimulation& scene_;
    bool translates_;
    bool sawUnsupported_ = false;
    bool hasEnded_ = false;
    CaptionCore::Rows before_;
};

std::string TranslationSimulation::run() {
    Session translated(*this, true);
    translated.run();
    Session plain(*this, false);
    plain.run();
    if (violation_.empty() && translated.course != plain.course)
        violation_ = "captions or recording differ from those without translation";
    if (violation_.empty() &&
        translated.stopSeconds >
            plain.stopSeconds + *translated.settings.translationDrainTimeoutSeconds + 0.1)
        violation_ = "the stop took too long: " + Text::fixed(translated.stopSeconds, 3) + " s";
    return violation_;
}

} // namespace tessarune::simulation
