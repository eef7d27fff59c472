#pragma once

#include "Tessarune/platform/qt-host/QtHost.h"
#include "Tessarune/session/LiveCaptionCoreFactory.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/ui/captions/CaptionWindow.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/ui/OffscreenApplication.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tessarune {

/// A caption window over scripted frames and a scripted session.
class StagedCaptions {
  public:
    StagedCaptions() {
        settings.softTranslationEnabled = true;
        settings.translationBackend = "苹果";
        settings.translationTargetLanguage = "zh-Hans";
    }
    ~StagedCaptions() { window.reset(); }

    CaptionWindowEnvironment environment() {
        return {.host = host,
                .settings = settings,
                .session = session,
                .soundName = soundName,
                .notice = notice,
                .store = defaults,
                .commands = {
                    .toggleListening = [this](const auto&) { asked.emplace_back("toggle"); },
                    .selectSource =
                        [this](const AudioSource& source) { asked.push_back(source.logName()); },
                    .refreshInputDevices = asks("refresh"),
                    .retryTranslation = asks("retry"),
                    .clearCaptions = asks("clear"),
                    .visibleText =
                        [] {
                            return TranscriptSnapshot{"Said.", "Said.\n说过。"};
                        },
                    .dismissNotice = [this] { notice = CaptionNotice{}; },
                    .close = asks("close"),
                    .toggleWindow = asks("toggleWindow"),
                    .quit = asks("quit"),
                    .showHistory = asks("history"),
                    .showSettings =
                        [this](const std::string& pane) { asked.push_back("settings " + pane); },
                    .openDesktopSettings =
                        [this](PermissionsManager::Key kind) {
                            asked.emplace_back(storageName(kind));
                        }},
                .lacksTranslationModel = looksForModel,
                .secondsBehind = [this] { return secondsBehind; },
                .reducesMotion = reducesMotion,
                .recordFollow = recordsFollow,
                .otherWayToTop = otherWayToTop,
                .waiting = &waiting};
    }
    void open() {
        window = std::make_unique<CaptionWindow>(environment());
        window->show();
        runUntil([this] { return window->window().property("isComplete").toBool(); });
    }

    /// Adds a settled sentence.
    void settle(const std::string& source, const std::string& translation = "") {
        frame.sourceTextTail.push_back(row(source, translation, CaptionSegmentState::final));
        frame.mergedBilingualSourceTail = frame.sourceTextTail;
        if (!translation.empty())
            frame.translationTail.push_back(translation);
    }
    void translate(std::size_t index, const std::string& translation) {
        LiveCaptionDisplaySegment changed = frame.sourceTextTail[index];
        changed.translatedText = translation;
        frame.sourceTextTail.set(index, changed);
        frame.mergedBilingualSourceTail = frame.sourceTextTail;
        frame.translationTail.push_back(translation);
    }
    void speak(const std::string& partial) {
        frame.livePartialRow = partial.empty() ? std::optional<LiveCaptionDisplaySegment>()
                                               : row(partial, "", CaptionSegmentState::partial);
    }
    /// Adds a sentence that may open again.
    void leave(const std::string& source) {
        frame.liveTailRows.push_back(row(source, "", CaptionSegmentState::final));
        frame.mergedBilingualLiveTailRows = frame.liveTailRows;
    }
    void enter(LiveSessionPhase phase, SessionStatus::Kind status) {
        frame.sessionPhase = phase;
        session.status = SessionStatus{status};
        frame.statusMessage = session.status->text();
        session.isListening = phase == LiveSessionPhase::listening;
        session.sessionPhase = phase;
    }
    /// Puts every button into the toolbar.
    void showAllButtons() {
        for (auto* const button : {&settings.showSwapCaptionOrderInSubtitleToolbar,
                                   &settings.showLayoutModeInSubtitleToolbar,
                                   &settings.showCopyBilingualInSubtitleToolbar,
                                   &settings.showCopyOriginalInSubtitleToolbar,
                                   &settings.showClearSubtitlesInSubtitleToolbar,
                                   &settings.showHistoryInSubtitleToolbar})
            *button = true;
    }
    void publish() {
        ++frame.sourceRevision;
        display.update(frame);
    }

    QGuiApplication& application = offscreenApplication();
    QtHost host;
    testing::MemoryUserDefaults defaults;
    AppSettings settings{defaults};
    LiveCaptionDisplayStore display{[] { return 0.0; }};
    SessionTranslation noTranslation;
    CaptionCore core = LiveCaptionCoreFactory::make(host, settings);
    SessionView session{display, core, noTranslation.view()};
    Published<CaptionNotice> notice;
    Published<std::string> soundName;
    Published<bool> reducesMotion{false};
    Published<std::optional<std::string>> waiting;
    bool lacksModel = false; ///< whether the target language has a model that is not installed
    double secondsBehind = 0;
    std::string otherWayToTop; ///< set it before the window is opened
    LiveCaptionDisplayFrame frame = LiveCaptionDisplayFrame::empty();
    std::vector<std::string> asked;    ///< the commands that the window called
    std::vector<std::string> followed; ///< the events that the lists of captions recorded
    std::unique_ptr<CaptionWindow> window;

  private:
    const std::function<bool()> looksForModel = [this] { return lacksModel; };
    const CaptionFollowDriver::Recorder recordsFollow =
        [this](const std::string& name, const LogFields&, bool) { followed.push_back(name); };
    std::function<void()> asks(const char* command) {
        return [this, command] { asked.emplace_back(command); };
    }
    static LiveCaptionDisplaySegment row(const std::string& source, const std::string& translation,
                                         CaptionSegmentState state) {
        CaptionSegment segment;
        segment.id = UUID::random();
        segment.sourceText = source;
        if (!translation.empty())
            segment.translatedText = translation;
        segment.state = state;
        return *LiveCaptionDisplaySegment::from(segment);
    }
};

} // namespace tessarune
