#pragma once

#include <string>

namespace tessarune {

/// Seam: what the program asks of the desktop that it runs on. Main queue.
class Desktop {
  public:
    enum class LoginState {
        off,
        on,
        switchedOff, ///< by the user, in the desktop's own settings
    };

    virtual ~Desktop() = default;

    /// Opens an address, a file or a folder in the program that the user has for it. False if there
    /// is none.
    virtual bool openURL(const std::string& url) = 0;

    /// The program starts with the user's desktop, or no longer does. Throws std::system_error.
    virtual void setLoginItem(bool startsWithDesktop) = 0;
    virtual LoginState loginState() = 0;

    /// A message that does not depend on any window. Lost where the desktop shows none.
    virtual void notify(const std::string& title, const std::string& text) = 0;
};

} // namespace tessarune
