#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/display/CaptionFollowDriver.h"
#include "Tessarune/session/LiveSessionControlTrigger.h"
#include "Tessarune/session/SessionView.h"
#include "Tessarune/session/TranscriptSnapshot.h"
#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/host/Host.h"

#include <functional>
#include <string>

namespace tessarune {

/// What the caption window shows and what it may ask for. All of it outlives the window.
struct CaptionWindowEnvironment {
    struct Commands {
        std::function<void(const LiveSessionControlTrigger&)> toggleListening;
        std::function<void(const AudioSource&)> selectSource;
        std::function<void()> refreshInputDevices;
        std::function<void()> retryTranslation;
        std::function<void()> clearCaptions;
        /// What is on the screen, to be copied.
        std::function<TranscriptSnapshot()> visibleText;
        std::function<void()> dismissNotice;
        /// The user closed the window.
        std::function<void()> close;
        std::function<void()> toggleWindow{}; ///< shows it or hides it; captions go on
        std::function<void()> quit{};
        std::function<void()> showHistory{}; ///< absent: there is no such window
        /// Likewise; the pane of this name, or empty for where the user was.
        std::function<void(const std::string& pane)> showSettings{};
    };

    Host& host;
    AppSettings& settings;
    const SessionView& session;
    /// What is heard where the sound is no source of the computer's; empty otherwise.
    const Published<std::string>& soundName;
    /// What the program itself has to say, until the user has read it; empty: nothing.
    const Published<std::string>& notice;
    /// Where the window keeps its place.
    UserDefaults& store;
    Commands commands;
    /// How far the captions are behind the sound, in seconds; absent: nobody knows.
    std::function<double()> secondsBehind{};
    /// Whether the desktop asks for less motion.
    const Published<bool>& reducesMotion;
    /// Hears what the list of captions does to stay at its newest line.
    CaptionFollowDriver::Recorder recordFollow{};
    /// What the user can do where this desktop lets no program keep its window above others; empty:
    /// it does.
    std::string otherWayToTop{};
};

} // namespace tessarune
