#include "bench/session/LongSession.h"

#include "Tessarune/audio/AudioSessionRecorder.h"
#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/media/M4ATranscoder.h"
#include "Tessarune/platform/media/SwresampleConverter.h"
#include "bench/replay/HourLog.h"
#include "bench/session/RepeatedSound.h"
#include "bench/support/CPUClock.h"

#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace tessarune {

namespace {

constexpr double startTime = 1760000000;
/// Limits that no start and no stop reaches, in simulated seconds.
constexpr double longestStart = 5;
constexpr double longestStop = 60;

std::size_t heapBytes(const std::string& text) {
    // A short text is stored in the string object.
    const bool isInside = text.capacity() < sizeof(std::string) / 2;
    return isInside ? 0 : text.capacity() + 1;
}

} // namespace

LongSession::LongSession(std::filesystem::path sound, double seconds, bool makesM4A,
                         const MakeDiagnostics& makeDiagnostics)
    : host_(startTime),
      paths_{folder_.path()},
      logger_(host_, files_, paths_),
      settings_(defaults_),
      catalog_(host_, files_, paths_, logger_, notifications_),
      exporter_(host_, transcodeToM4A),
      compressor_(host_, files_, catalog_, logger_, exporter_, openFFmpegMediaFile, createM4A),
      engine_(host_),
      assets_(host_),
      server_(host_,
              {[open = repeatedSound(seconds + longestStart)](
                   const std::filesystem::path& path, std::stop_token) { return open(path); },
               makeSwresampleConverter},
              std::move(sound), FileSoundServer::Pace::realTime(), [](std::exception_ptr) {}),
      permissions_(host_, server_, defaults_, SystemAuthorization::ofServer(host_, server_)),
      hour_(HourLog::make(HourLog::Language::english)) {
    settings_.recordLosslessAudio = !makesM4A;
    makeStore(makeDiagnostics);
}

LongSession::~LongSession() {
    store_.reset();
    host_.runUntilIdle(host_.now() + longestStop);
}

void LongSession::makeStore(const MakeDiagnostics& makeDiagnostics) {
    struct Watch final : SessionDiagnostics {
        explicit Watch(LongSession& its) : session(its) {}
        void lifecycle(const LifecycleEntry& entry) override { session.noteStep(entry); }
        LongSession& session;
    };
    store_ = LiveTranscriptStore::make(
        {.speech = {host_, engine_.engine(), assets_, makeSwresampleConverter, logger_},
         .sound = server_,
         .files = files_,
         .settings = settings_,
         .permissions = permissions_,
         .catalog = catalog_,
         .recorder = AudioSessionRecorder::create(host_, files_, logger_, catalog_.forRecorder(),
                                                  makeSwresampleConverter),
         .compressor = compressor_,
         .translation = {},
         .diagnostics = makeDiagnostics
                            ? makeDiagnostics(host_, files_, paths_, settings_, logger_, catalog_)
                            : std::make_shared<Watch>(*this),
         .scheduleHistoryRefinement = [](const auto&) {},
         .returnMemory = [] { malloc_trim(0); }});
}

void LongSession::start() {
    spawn(Executor::main(host_), server_.connect(Executor::main(host_)));
    host_.advanceBy(0);
    store_->startListening(LiveSessionControlTrigger::programmatic());
    const double limit = host_.now() + longestStart;
    while (*store_->view().sessionPhase != LiveSessionPhase::listening && host_.step(limit)) {
    }
    if (*store_->view().sessionPhase != LiveSessionPhase::listening)
        throw std::runtime_error("the session did not start");
    startedAt_ = host_.now();
}

void LongSession::runUntil(double seconds) {
    constexpr double hourSeconds =
        HourLog::utteranceSeconds * static_cast<double>(HourLog::utterancesPerHour);
    const double logBegins = hour_.back().t - hourSeconds;
    for (;;) {
        const ASREventRecord& record = hour_[said_ % hour_.size()];
        const double hours = std::floor(static_cast<double>(said_ / hour_.size()));
        const double at = hours * hourSeconds + record.t - logBegins;
        if (at > seconds)
            break;
        host_.advanceTo(startedAt_ + at);
        say(record);
        ++said_;
        engine_.session().inputs.clear(); // the scripted engine would keep all sound
    }
    host_.advanceTo(startedAt_ + seconds);
}

void LongSession::say(const ASREventRecord& record) {
    const std::size_t utterance = said_ / (HourLog::partialsPerUtterance + 1);
    const double begin = static_cast<double>(utterance) * HourLog::utteranceSeconds;
    const auto blanks = std::count(record.text.begin(), record.text.end(), ' ');
    const double aWord = (host_.now() - startedAt_ - begin) / static_cast<double>(blanks + 1);
    const bool isFinal = record.words.has_value();
    engine_.session().give(simulation::spoken(isFinal, record.text, begin, aWord));
}

void LongSession::stop() {
    const std::size_t rows = store_->view().captions.committedSegments->size();
    store_->stopListening(LiveSessionControlTrigger::programmatic());
    host_.runUntilIdle(host_.now() + longestStop);
    const auto& saved = store_->recordingTracker().lastSavedID();
    if (store_->isStopping() || !saved || rows == 0 ||
        !files_.exists(catalog_.transcriptURL(*saved)))
        throw std::runtime_error("the session was not saved");
}

LongSession::Kept LongSession::kept() const {
    Kept kept;
    for (const CaptionSegment& row : *store_->view().captions.committedSegments) {
        kept.text += row.sourceText.size();
        kept.total += sizeof row + heapBytes(row.sourceText);
    }
    for (const auto& [id, words] : store_->view().captions.wordEvents) {
        kept.words += words.size();
        kept.total += sizeof id + sizeof words + words.size() * sizeof(WordEvent);
        for (const WordEvent& word : words)
            kept.total += heapBytes(word.word);
    }
    return kept;
}

void LongSession::noteStep(const SessionDiagnostics::LifecycleEntry& entry) {
    const Step clocks{entry.name, CPUClock::read(CLOCK_MONOTONIC), CPUClock::process()};
    if (entry.phase == LifecyclePhase::start) {
        begun_.push_back(clocks);
        return;
    }
    const auto begun = std::ranges::find(begun_, entry.name, &Step::name);
    if (entry.phase == LifecyclePhase::instant || begun == begun_.end())
        return;
    steps_.push_back({entry.name, clocks.wall - begun->wall, clocks.processor - begun->processor});
    begun_.erase(begun);
}

} // namespace tessarune
