#pragma once

#include "TessaruneCore/translation/TranslationSupport.h"
#include "tests/ui/StagedCaptions.h"

#include <QQuickItem>
#include <QTest>
#include <functional>

namespace tessarune {

using Kind = SessionStatus::Kind;

/// A state of the caption window. A name that begins with "large-desktop" doubles the desktop's
/// font; a name that ends with "white" has a white backdrop.
struct CaptionPicture {
    const char* name;
    std::function<void(StagedCaptions&)> stage;    ///< before the window opens
    std::function<void(StagedCaptions&)> act = {}; ///< with the window open
    bool hasLayouts = true;                        ///< the picture depends on the layout
};

inline void talk(StagedCaptions& captions) {
    captions.enter(LiveSessionPhase::listening, Kind::none);
    captions.session.audioLevel = 0.5;
    captions.session.sessionDuration = 83.0;
    captions.settle("It was the best of times, it was the worst of times.",
                    "那是最美好的时代，那是最糟糕的时代。");
    captions.settle("It was the age of wisdom, it was the age of foolishness.",
                    "那是智慧的年代，那是愚昧的年代。");
    captions.settle(
        "It was the epoch of belief, it was the epoch of incredulity, and nobody in the "
        "whole of the city could have told you which of the two would win.",
        "那是信仰的时期，那是怀疑的时期，全城没有一个人能告诉你两者之中哪一个会取胜。");
    captions.settle("We had everything before us.", "我们面前应有尽有。");
    captions.speak("We had nothing before us, we were all going");
    captions.frame.ghostTranslationText = "我们面前一无所有，我们全都";
    captions.frame.ghostTranslationSourceText = captions.frame.livePartialRow->sourceText;
}

inline void wantEverything(StagedCaptions& captions) {
    captions.showAllButtons();
    captions.session.inputDevices = std::vector<AudioInputDevices::Device>{
        {"usb", "USB Microphone", true},
        {"long", "Sennheiser SC 165 USB Headset Analog Stereo (front left, front right)", false}};
}

inline void talkWithEverything(StagedCaptions& captions) {
    wantEverything(captions);
    talk(captions);
}

/// Sets whether the pointer is over the window, which then shows its toolbar.
inline void setHovered(StagedCaptions& captions, bool hovered) {
    captions.window->window().property("model").value<CaptionWindowModel*>()->setHovered(hovered);
}

inline void press(StagedCaptions& captions, Qt::MouseButton button, QPoint point) {
    QTest::mouseClick(&captions.window->window(), button, {}, point);
}

inline void pressInSmallWindow(StagedCaptions& captions, Qt::MouseButton button, QPoint point) {
    captions.window->window().resize(380, 180);
    runFor(100);
    press(captions, button, point);
}

inline const CaptionPicture pictures[] = {
    {"idle", [](auto&) {}, {}, false},
    {"checking", [](auto& c) { c.enter(LiveSessionPhase::loading, Kind::checking); }, {}, false},
    {"silent", [](auto& c) { c.enter(LiveSessionPhase::listening, Kind::silent); }, {}, false},
    {"waiting",
     [](auto& c) {
         c.soundName = std::string("radio.fifo");
         c.waiting = localized("Waiting for sound from %@.", {"radio.fifo"});
     },
     {},
     false},
    {"failed",
     [](auto& c) {
         c.session.presentedError = localized("麦克风设备不可用。");
         c.enter(LiveSessionPhase::failed, Kind::none);
         c.speak(*c.session.presentedError);
     },
     {},
     false},
    {"cleared",
     [](auto& c) {
         c.enter(LiveSessionPhase::listening, Kind::none);
         c.session.clearedSegmentIDs = std::unordered_set<UUID>{UUID::random()};
     },
     {},
     false},
    {"bilingual", talk},
    {"hidden-toolbar", talk, [](auto& c) { setHovered(c, false); }, false},
    {"bilingual-swapped",
     [](auto& c) {
         c.settings.swapCaptionOrder = true;
         talk(c);
     }},
    {"source-only",
     [](auto& c) {
         c.settings.translationBackend = "关闭";
         talk(c);
     },
     {},
     false},
    {"quiet",
     [](auto& c) {
         talk(c);
         c.session.audioLevel = 0;
     },
     [](auto&) { runFor(4500); }, false},
    {"behind",
     [](auto& c) {
         talk(c);
         c.secondsBehind = 14;
     }},
    {"stopped",
     [](auto& c) {
         talk(c);
         c.speak("");
         c.frame.ghostTranslationText.clear();
         c.enter(LiveSessionPhase::idle, Kind::idle);
     }},
    {"selected", talk,
     [](auto& c) {
         runFor(400);
         auto* const stage = c.window->window()
                                 .template findChild<QQuickItem*>("sourceList")
                                 ->parentItem()
                                 ->parentItem();
         QMetaObject::invokeMethod(stage, "selectAll");
     }},
    {"reading-back",
     [](auto& c) {
         for (int i = 0; i < 12; ++i)
             talk(c);
     },
     [](auto& c) {
         runFor(400);
         auto* const list = c.window->window()
                                .template findChild<QQuickItem*>("sourceList")
                                ->template findChild<QQuickItem*>("list");
         QMetaObject::invokeMethod(list, "flick", Q_ARG(double, 0), Q_ARG(double, 1500));
     }},
    {"large-type",
     [](auto& c) {
         c.settings.sourceFontSize = 44;
         c.settings.translationFontSize = 36;
         talk(c);
     }},
    {"narrow", talk, [](auto& c) { c.window->window().resize(400, 420); }},
    {"wide", talk, [](auto& c) { c.window->window().resize(1600, 300); }},
    {"compact-toolbar",
     [](auto& c) {
         c.settings.compactToolbar = true;
         c.settings.showHistoryInSubtitleToolbar = true;
         talk(c);
     },
     {},
     false},
    {"file",
     [](auto& c) {
         c.soundName = std::string("A talk about the age of wisdom, 3 March.mp3");
         talk(c);
     },
     {},
     false},
    {"translucent",
     [](auto& c) {
         c.settings.bgOpacity = 40;
         talk(c);
     }},
    {"translucent-over-white",
     [](auto& c) {
         c.settings.bgOpacity = 40;
         talk(c);
     }},
    {"stopping",
     [](auto& c) {
         talk(c);
         c.enter(LiveSessionPhase::stopping, Kind::saving);
     }},
    {"compressing",
     [](auto& c) {
         talk(c);
         c.speak("");
         c.enter(LiveSessionPhase::idle, Kind::compressing);
     },
     {},
     false},
    {"stopped-after-silence",
     [](auto& c) {
         talk(c);
         c.speak("");
         c.enter(LiveSessionPhase::stopping, Kind::inactive);
         c.session.status = SessionStatus{Kind::inactive, {}, 10};
     },
     {},
     false},
    {"no-translation-model",
     [](auto& c) {
         talk(c);
         c.lacksModel = true;
         c.frame.translationStatus = {
             std::string(TranslationSupport::languageResourceNotReadyMessage("zh-Hans")), true,
             true};
     },
     {},
     false},
    {"interrupted",
     [](auto& c) {
         talk(c);
         c.enter(LiveSessionPhase::listening, Kind::interrupted);
     }},
    {"incomplete",
     [](auto& c) {
         talk(c);
         c.settle("It was the spring of hope.");
         c.settle("It was the winter of despair.");
         c.frame.translationStatus = {
             localized("连续 %lld 条译文未完成，Apple 翻译可能暂不可用", {"3"}), true, true};
     }},
    {"notice",
     [](auto& c) {
         c.notice = CaptionNotice{
             localized("There is no sound server: %@", {"Connection refused"}) + "\n" +
                 localized("Nothing can be recorded: %@",
                           {"/home/somebody/.local/share/Tessarune: no space left on device"}),
             true};
     },
     {},
     false},
    {"menu",
     [](auto& c) {
         c.settings.showCopyBilingualInSubtitleToolbar = true;
         c.settings.showClearSubtitlesInSubtitleToolbar = true;
         c.session.hasVisibleSourceTextFlag = true;
         c.session.inputDevices =
             std::vector<AudioInputDevices::Device>{{"usb", "USB Microphone", true}};
         talk(c);
     },
     [](StagedCaptions& c) {
         press(c, Qt::RightButton, {300, 20});
     }},
    {"small", talkWithEverything,
     [](StagedCaptions& c) {
         pressInSmallWindow(c, Qt::RightButton, {200, 120});
     },
     false},
    {"small-sources", talkWithEverything,
     [](StagedCaptions& c) {
         pressInSmallWindow(c, Qt::LeftButton, {140, 22});
     },
     false},
    {"half", wantEverything, [](auto& c) { c.window->window().resize(520, 260); }, false},
    {"large-desktop-text", talk, {}, false},
    {"large-desktop-text-notice",
     [](auto& c) {
         wantEverything(c);
         talk(c);
         c.notice = CaptionNotice{
             localized("Nothing can be recorded: %@", {"/home/somebody: no space left"}), true};
     },
     {},
     false},
    {"first-words",
     [](auto& c) {
         c.enter(LiveSessionPhase::listening, Kind::none);
         c.speak("It was the best");
     }},
};

} // namespace tessarune
