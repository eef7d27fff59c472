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

/// The data and actions of the caption window. All of it outlives the window.
struct CaptionWindowEnvironment {
    struct Commands {
        std::function<void(const LiveSessionControlTrigger&)> toggleListening;
        std::function<void(const AudioSource&)> selectSource;
        std::function<void()> refreshInputDevices;
        std::function<void()> retryTranslation;
        std::function<void()> clearCaptions;
        /// The text on the screen, for copying.
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
    /// The name of a source that is not one of the computer's; empty otherwise.
    const Published<std::string>& soundName;
    /// A message of the program itself, until the user dismisses it; empty if there is none.
    const Published<std::string>& notice;
    /// Where the window's position is stored.
    UserDefaults& store;
    Commands commands;
    /// By how many seconds the captions are behind the sound; absent if unknown.
    std::function<double()> secondsBehind{};
    /// Whether the desktop asks for less motion.
    const Published<bool>& reducesMotion;
    /// Is told how the caption list stays at its newest line.
    CaptionFollowDriver::Recorder recordFollow{};
    /// What the user can do where this desktop lets no program keep its window above others; empty
    /// where it does.
    std::string otherWayToTop{};
};

} // namespace tessarune
