#pragma once

#include <string>

namespace tessarune {

/// Interface: the desktop's services that the program uses. Main queue.
class Desktop {
  public:
    enum class LoginState {
        off,
        on,
        switchedOff, ///< by the user, in the desktop's own settings
    };

    virtual ~Desktop() = default;

    /// Opens an address, a file or a folder in the user's program for it. False if there is no such
    /// program.
    virtual bool openURL(const std::string& url) = 0;

    /// Whether the desktop has settings for sound.
    virtual bool hasSoundSettings() const = 0;
    /// Opens the settings for sound; false if they do not start.
    virtual bool openSoundSettings() = 0;

    /// Sets whether the program starts with the user's desktop. Throws std::system_error.
    virtual void setLoginItem(bool startsWithDesktop) = 0;
    virtual LoginState loginState() = 0;

    /// Shows a notification outside of any window. It is lost if the desktop shows no
    /// notifications.
    virtual void notify(const std::string& title, const std::string& text) = 0;
};

} // namespace tessarune
