#include "tests/simulation/session/SessionSimulation.h"

#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/translation/TranslationSegmentMutator.h"

#include <iterator>
#include <limits>

namespace tessarune::simulation {

namespace {

using Trigger = LiveSessionControlTrigger;

/// For each spoken word of a text, the part that the word shares with its misheard form.
std::set<std::string> wordsOf(const std::string& text) {
    std::set<std::string> words;
    for (const auto word : Text::splitOnWhiteSpace(text)) {
        if (ScriptedLooks::isSaid(word))
            words.emplace(ScriptedLooks::key(word));
    }
    return words;
}

const std::map<LiveSessionPhase, std::set<LiveSessionPhase>>& followers() {
    using Phase = LiveSessionPhase;
    static const std::map<Phase, std::set<Phase>> all{
        {Phase::idle, {Phase::idle, Phase::preparing, Phase::stopping}},
        {Phase::preparing, {Phase::loading, Phase::failed, Phase::stopping}},
        {Phase::loading, {Phase::listening, Phase::failed, Phase::stopping}},
        {Phase::listening, {Phase::stopping}},
        {Phase::stopping, {Phase::stopping, Phase::idle}},
        {Phase::failed, {Phase::preparing, Phase::stopping}}};
    return all;
}

} // namespace

SessionSimulation::SessionSimulation(std::uint64_t seed) : random_(seed), session_(seed + 1) {
    TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::off);
    session_.diagnostics->onASREvent = [this](const ASREvent& event) {
        const auto* final = std::get_if<ASREvent::Final>(&event.value);
        if (violation_.empty() && final &&
            (*session_.store->view().isListening || session_.phase() == Phase::stopping))
            finalWords_.merge(wordsOf(final->text));
    };
    session_.onPhase = [this](Phase phase) { checkPhase(phase); };
    session_.diagnostics->onLifecycle = [this](const auto& entry) { checkLifecycle(entry); };
    session_.launch();
    watch();
}

std::string SessionSimulation::run() {
    const std::uint64_t actions = 10 + upTo(40);
    for (std::uint64_t i = 0; i < actions && violation_.empty(); ++i) {
        act();
        advance(chance(30) ? 0 : seconds(chance(10) ? 8 : 0.6));
    }
    if (violation_.empty()) {
        if (chance(15)) {
            endKilled();
        } else {
            endWell();
        }
    }
    return violation_;
}

// What happens

void SessionSimulation::act() {
    const std::uint64_t dice = upTo(99);
    if (dice < 12) {
        actOnSession("start");
    } else if (dice < 17) {
        actOnSession("stop");
    } else if (dice < 21) {
        actOnSession("toggle");
    } else if (dice < 25) {
        actOnSession("source");
    } else if (dice < 28) {
        actOnSession("option");
    } else if (dice < 32) {
        landTranslation();
    } else if (dice < 34) {
        askToTerminate();
    } else if (dice < 39) {
        changeSetting();
    } else if (dice < 44) {
        disturbDisk();
    } else if (dice < 60) {
        disturb();
    } else {
        speak();
    }
}

void SessionSimulation::actOnSession(const std::string& action) {
    LiveTranscriptStore& store = *session_.store;
    note(action);
    if (action == "start") {
        // A result that the recogniser delivers only at the end of the sound.
        session_.engine.script.lines.clear();
        if (chance(40))
            session_.engine.script.lines.push_back(
                {std::numeric_limits<double>::infinity(), spoken(true, newWords() + ".", 0, 0.1)});
        session_.server.keepDelivering(0.5F, 0.1);
        store.startListening(Trigger::toolbarPill());
    } else if (action == "stop") {
        store.stopListening(Trigger::programmatic());
    } else if (action == "toggle") {
        store.toggleListening(Trigger::keyboardShortcut());
    } else if (action == "source") {
        store.selectSource(
            oneOf<AudioSource>({AudioSource::systemAudio(), AudioSource::microphone(),
                                AudioSource::microphone("usb")}));
    } else {
        const std::string said = store.texts().exportTranscriptSnapshot().sourceText;
        const std::string before = *session_.settings.selectedRecognitionOptionID;
        const bool isListening = *store.view().isListening;
        store.selectRecognitionOption(oneOf(ModelCatalog::recognitionOptions()).id);
        // This empties the captions, but not the transcript.
        if (isListening && !said.empty() &&
            *session_.settings.selectedRecognitionOptionID != before)
            said_ += said + "\n";
    }
}

void SessionSimulation::disturb() {
    SpeechScript& script = session_.engine.script;
    const std::string what = oneOf<std::string>(
        {"calm", "calm", "slow engine", "damaged model", "engine refuses", "endless drain",
         "engine dies", "slow dialog", "permissions change", "slow server", "stream refused",
         "unplugged", "other output", "server gone", "silence", "sound", "slow translation",
         "clock set", "computer sleeps"});
    note(what);
    if (what == "calm") {
        const auto lines = script.lines;
        session_.calm();
        session_.server.comeBack();
        script.lines = lines;
    } else if (what == "slow engine") {
        script.prepareSeconds = seconds(2);
    } else if (what == "damaged model") {
        script.prepareFailure = "damaged";
    } else if (what == "engine refuses") {
        script.startFailure = "refused";
    } else if (what == "endless drain") {
        script.finishNeverEnds = true;
    } else if (what == "engine dies") {
        if (!session_.engine.sessions.empty())
            session_.engine.session().fail("died");
    } else if (what == "slow dialog") {
        session_.desktop.microphoneSeconds = seconds(4);
    } else if (what == "permissions change") {
        session_.desktop.grantsMicrophone = chance(50);
        session_.desktop.speech = chance(50) ? SystemAuthorization::Status::denied
                                             : SystemAuthorization::Status::authorized;
    } else if (what == "slow server") {
        session_.server.connectDelay = seconds(1);
        session_.server.openDelay = seconds(3);
    } else if (what == "stream refused") {
        session_.server.openFailure.emplace(SoundServerError::accessDenied, "refused");
    } else if (what == "unplugged") {
        session_.setOutputs({}, {"mic"});
    } else if (what == "other output") {
        session_.setOutputs({chance(50) ? "a" : "b"});
    } else if (what == "server gone") {
        session_.server.goDown();
    } else if (what == "silence") {
        session_.server.keepDelivering(std::nullopt);
        advance(chance(20) ? 70 : 1);
    } else if (what == "sound") {
        session_.server.keepDelivering(0.5F, 0.1);
    } else if (what == "slow translation") {
        session_.translator->drainSeconds = seconds(8);
        session_.translator->drainCompletes = chance(50);
    } else if (what == "computer sleeps") {
        session_.host.sleepComputer(chance(50) ? 3600 : 2);
    } else {
        session_.host.shiftWallClock(chance(50) ? 3600 : -3600);
    }
}

void SessionSimulation::disturbDisk() {
    const std::string what = oneOf<std::string>(
        {"one fault", "dead disk", "full disk", "refused path", "disk recovers"});
    note(what);
    session_.files.recover();
    if (what == "disk recovers")
        return;
    diskWasFaulty_ = true;
    if (what == "one fault") {
        session_.files.failAt = session_.files.operations + 1 + upTo(30);
    } else if (what == "dead disk") {
        session_.files.failFrom = session_.files.operations + 1 + upTo(30);
    } else if (what == "full disk") {
        session_.files.capacity = session_.files.usedSpace() + upTo(2000);
    } else {
        session_.files.refused =
            oneOf<std::string>({".txt", ".words.json", "recordings.json", "Recordings", ".live."});
    }
}

void SessionSimulation::changeSetting() {
    note("setting");
    AppSettings& settings = session_.settings;
    settings.recordWhileCaptioning = chance(85);
    settings.recordLosslessAudio = chance(20);
    settings.sessionDiagnosticsEnabled = chance(20);
    settings.audioInactivityAutoStopMinutes = static_cast<std::int64_t>(upTo(1));
    settings.translationDrainTimeoutSeconds = seconds(6);
}

/// Says words; the recogniser then revises its guess or settles what it has.
void SessionSimulation::speak() {
    if (session_.engine.sessions.empty())
        return;
    ScriptedAnalyzer& analyzer = session_.engine.session();
    if (speaker_ != &analyzer)
        looks_.emplace(random_());
    speaker_ = &analyzer;
    const bool endsLine = chance(40);
    const std::string words = newWords() + (endsLine ? "." : "");
    note("says " + words);
    looks_->say(words, analyzer.heardSeconds);
    std::vector<SpeechResult> results = looks_->look(chance(90));
    if (endsLine)
        std::ranges::move(looks_->endLine(), std::back_inserter(results));
    for (SpeechResult& result : results) {
        note((result.isFinal ? "final " : "guess ") + result.text());
        analyzer.give(std::move(result));
    }
    require(looks_->violation().empty(), looks_->violation());
}

void SessionSimulation::landTranslation() {
    LiveTranscriptStore& store = *session_.store;
    if (store.view().captions.committedSegments->empty())
        return;
    note("translation");
    const std::size_t row = upTo(store.view().captions.committedSegments->size() - 1);
    const UUID id = (*store.view().captions.committedSegments)[row].id;
    const LiveCaptionDisplayTranslationPatch patch{UUID::random(), {id}, id, "译文"};
    TranslatedCaptions& captions = *session_.translator->captions;
    captions.changeCommittedSegments([&](std::span<CaptionSegment> rows) {
        TranslationSegmentMutator::applySuccess(patch.translationUnitID, patch.segmentIDs, id,
                                                *patch.translatedText, rows);
    });
    captions.refreshCaptionDisplay("translation.committed.success", &patch);
    captions.updatePersistedTranscriptIfStopped();
}

void SessionSimulation::askToTerminate() {
    note("terminate");
    if (handler_->applicationShouldTerminate() ==
        TessaruneListeningLifecycleHandler::TerminateReply::later)
        ++awaitedReplies_;
}

void SessionSimulation::advance(double seconds) {
    const double limit = session_.host.now() + seconds;
    while (violation_.empty() && session_.host.step(limit))
        checkStep();
    if (violation_.empty())
        session_.host.advanceTo(limit);
}

void SessionSimulation::endWell() {
    note("regular end");
    session_.calm();
    session_.server.comeBack();
    advance(8); // dialogs and slow servers have answered
    session_.store->stopListening(Trigger::programmatic());
    session_.server.keepDelivering(std::nullopt);
    advance(40);
    if (!violation_.empty())
        return;
    checkRest();
    if (diskWasFaulty_)
        session_.launch(); // repairs what could not be written
    checkFiles();
}

/// Kills the program and starts it again.
void SessionSimulation::endKilled() {
    session_.calm();
    advance(0);
    note("killed");
    const auto id = session_.store->recordingTracker().currentID();
    const bool isJournaled =
        id && !diskWasFaulty_ && session_.files.has(session_.catalog->journalURL(*id));
    std::vector<std::string> rows;
    for (const CaptionSegment& row : *session_.store->view().captions.committedSegments)
        rows.push_back(row.sourceText);
    session_.files.failFrom = session_.files.operations + 1;
    session_.store->stopListening(Trigger::programmatic());
    session_.server.keepDelivering(std::nullopt);
    advance(40);
    session_.files.recover();
    session_.launch();
    checkFiles();
    if (!isJournaled || rows.empty())
        return;
    const std::string text = session_.transcript(*id);
    for (const std::string& row : rows)
        require(text.find(row) != std::string::npos, "the crash lost '" + row + "'");
}

// What must hold

void SessionSimulation::watch() {
    LiveTranscriptStore& store = *session_.store;
    store.view().captions.committedSegments.onDidChange(
        [this](const auto& rows) { checkCommitted(rows); });
    session_.diagnostics->onRefresh = [this](const std::string& reason) {
        if (reason == "asr.final")
            checkFinals();
    };
    handler_ = std::make_unique<TessaruneListeningLifecycleHandler>(
        session_.host, session_.logger, session_.store, [this] { --awaitedReplies_; });
}

void SessionSimulation::checkPhase(Phase phase) {
    note("-> " + std::string(name(phase)));
    require(followers().at(lastPhase_).contains(phase) || phase == lastPhase_,
            std::string(name(lastPhase_)) + " was followed by " + std::string(name(phase)));
    lastPhase_ = phase;
    if (phase == Phase::preparing)
        said_.clear();
}

void SessionSimulation::checkStep() {
    const Phase phase = session_.phase();
    const bool isUnderWay =
        phase == Phase::preparing || phase == Phase::loading || phase == Phase::listening;
    require(*session_.store->view().isListening == isUnderWay, "isListening contradicts the phase");
    require(phase != Phase::stopping || session_.store->isStopping(), "stopping, but no stop runs");
    const std::string stale = session_.staleInFrame();
    require(stale.empty(), "the frame is out of date: " + stale);
}

void SessionSimulation::checkCommitted(const CaptionCore::Rows& rows) {
    // After a violation, the run is only torn down.
    if (!violation_.empty())
        return;
    if (rows.size() < committedRows_) { // another session or recogniser begins
        committedRows_ = 0;
        committedWords_.clear();
        finalWords_.clear();
    }
    require(rows.size() == committedRows_ || *session_.store->view().isListening ||
                session_.phase() == Phase::stopping,
            "a row was committed after the stop");
    for (; committedRows_ < rows.size(); ++committedRows_) {
        for (const std::string& word : wordsOf(rows[committedRows_].sourceText))
            require(committedWords_.insert(word).second, "'" + word + "' was committed twice");
    }
}

void SessionSimulation::checkFinals() {
    for (const std::string& word : finalWords_)
        require(committedWords_.contains(word), "the final '" + word + "' was lost");
    finalWords_.clear();
}

void SessionSimulation::checkLifecycle(const SessionDiagnostics::LifecycleEntry& entry) {
    if (!violation_.empty())
        return;
    if (entry.phase == LifecyclePhase::start) {
        if (entry.name == "listen.stop.engineDrain")
            require(openSpans_.empty(), "two stops run at the same time");
        require(openSpans_.insert(entry.name).second, entry.name + " began twice");
    } else if (entry.phase != LifecyclePhase::instant) {
        require(openSpans_.erase(entry.name) == 1, entry.name + " ended without having begun");
    }
    if (entry.name != "listen.stop.persist" || entry.phase != LifecyclePhase::finish)
        return;
    for (const auto& [key, value] : entry.fields) {
        if (key == "transcriptPersisted" && std::get<bool>(value))
            checkSaved();
    }
}

std::string SessionSimulation::committedText() const {
    std::string text;
    for (const CaptionSegment& row : *session_.store->view().captions.committedSegments)
        text += (text.empty() ? "" : "\n") + row.sourceText;
    return text;
}

void SessionSimulation::checkSaved() {
    const auto& id = session_.store->recordingTracker().lastSavedID();
    if (!id)
        return;
    std::string text = said_ + committedText();
    if (text.ends_with('\n'))
        text.pop_back();
    require(session_.transcript(*id) == text,
            "saved '" + session_.transcript(*id) + "' instead of '" + text + "'");
    savedTexts_[*id] = text;
}

/// Checks that a program without a session does nothing and holds no resources.
void SessionSimulation::checkRest() {
    const Phase phase = session_.phase();
    require(phase == Phase::idle || phase == Phase::failed, "a session did not end");
    require(!session_.store->isStopping() && openSpans_.empty(), "a stop did not end");
    require(session_.server.openSources().empty(), "a stream is still open");
    for (const auto& analyzer : session_.engine.sessions)
        require(analyzer->finished || analyzer->cancelled, "a recogniser has not ended");
    require(awaitedReplies_ == 0, "a request to end the program got no reply");
    require(!session_.host.step(session_.host.now() + 1000), "work is still pending");
}

void SessionSimulation::checkFiles() {
    std::set<std::string> audio;
    for (const auto& recording : session_.catalog->recordings()) {
        require(session_.files.has(recording.filePath), recording.filePath + " is missing");
        require(recording.endedAt.has_value(), recording.filePath + " has no end");
        require(!session_.files.has(session_.catalog->journalURL(recording.id)),
                "a journal was left behind");
        audio.insert(std::filesystem::path(recording.filePath).filename().string());
    }
    for (const auto& [id, text] : savedTexts_)
        require(session_.transcript(id) == text, "the saved text '" + text + "' is missing");
    for (const auto& file : session_.files.list(session_.paths.recordings()))
        require(diskWasFaulty_ || audio.contains(file), file + " belongs to no recording");
}

void SessionSimulation::require(bool holds, const std::string& what) {
    if (!holds && violation_.empty())
        violation_ = what;
}

void SessionSimulation::note(const std::string& what) {
    trace_.push_back(Text::fixed(session_.host.now() - 1000000000, 3) + "  " + what);
}

std::string SessionSimulation::newWords() {
    std::string words;
    for (std::uint64_t count = 1 + upTo(3); count > 0; --count) {
        std::string word = "w";
        for (std::uint64_t number = ++lastWord_; number > 0; number /= 20)
            word += static_cast<char>('a' + number % 20);
        words += (words.empty() ? "" : " ") + word + (count > 1 && chance(15) ? "." : "");
    }
    return words;
}

} // namespace tessarune::simulation
