#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/PermissionsManager.h"
#include "Tessarune/display/CaptionFollowDriver.h"
#include "Tessarune/session/LiveSessionControlTrigger.h"
#include "Tessarune/session/SessionView.h"
#include "Tessarune/session/TranscriptSnapshot.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/ui/captions/CaptionNotice.h"
#include "TessaruneCore/host/Host.h"

#include <functional>
#include <string>

namespace tessarune {

/// The data and actions of the caption window. All references must outlive the window.
struct CaptionWindowEnvironment {
    struct Commands {
        std::function<void(const LiveSessionControlTrigger&)> toggleListening;
        std::function<void(const AudioSource&)> selectSource;
        std::function<void()> refreshInputDevices;
        std::function<void()> retryTranslation;
        std::function<void()> clearCaptions;
        /// The texts of the captions that the user has not cleared, for copying.
        std::function<TranscriptSnapshot()> visibleText;
        std::function<void()> dismissNotice;
        /// Called when the user closes the window.
        std::function<void()> close;
        std::function<void()> toggleWindow{}; ///< shows or hides the window; captions continue
        std::function<void()> quit{};
        std::function<void()> showHistory{};
        /// Shows the settings with the pane of this name; an empty name keeps the pane that was
        /// shown last.
        std::function<void(const std::string& pane)> showSettings{};
        /// Opens the desktop's sound settings; empty if the desktop has none.
        PermissionsManager::OpenSettings openDesktopSettings{};
    };

    Host& host;
    AppSettings& settings;
    const SessionView& session;
    /// The name of the file that is captioned instead of the computer's sound; empty if there is
    /// none.
    const Published<std::string>& soundName;
    const Published<CaptionNotice>& notice;
    /// Where the window's position is stored.
    UserDefaults& store;
    Commands commands;
    /// Whether a translation model for the target language exists but is not installed. Reads the
    /// disk, because another program may install the model. The function may be empty.
    std::function<bool()> lacksTranslationModel{};
    /// By how many seconds the captions are behind the sound. The function may be empty.
    std::function<double()> secondsBehind{};
    /// Whether the desktop asks for less motion.
    const Published<bool>& reducesMotion;
    /// Receives the events of `CaptionFollowDriver`; may be empty.
    CaptionFollowDriver::Recorder recordFollow{};
    /// How the user can keep the window above others on a desktop that does not let the program do
    /// so; empty on other desktops.
    std::string otherWayToTop{};
    /// While a start of the captions is delayed: what it waits for, as a text for the user, or an
    /// empty text if there is nothing to tell yet. `nullopt` if no start is delayed. The pointer is
    /// null where a start is never delayed.
    const Published<std::optional<std::string>>* waiting = nullptr;

    bool isWaiting() const { return waiting && **waiting; }
    std::string waitingText() const { return waiting ? (*waiting)->value_or("") : ""; }
};

} // namespace tessarune
