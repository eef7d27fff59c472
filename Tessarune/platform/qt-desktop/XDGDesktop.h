#pragma once

#include "Tessarune/shell/Desktop.h"
#include "Tessarune/shell/FileSystem.h"

#include <QDBusConnection>
#include <QObject>
#include <filesystem>
#include <string>

namespace tessarune {

/// A desktop that follows the conventions of freedesktop.org. Use it on the main thread, while the
/// application object exists. The file system must outlive the desktop.
class XDGDesktop final : public Desktop {
  public:
    /// `program` is the executable that the desktop starts at login.
    XDGDesktop(FileSystem& files, std::string applicationID, std::filesystem::path program,
               QDBusConnection bus = QDBusConnection::sessionBus());
    /// Waits a moment until the last notifications are sent.
    ~XDGDesktop() override;

    bool openURL(const std::string& url) override;
    bool hasSoundSettings() const override;
    bool openSoundSettings() override;
    /// Writes or removes an entry in the user's autostart folder.
    void setLoginItem(bool startsWithDesktop) override;
    LoginState loginState() override;
    void notify(const std::string& title, const std::string& text) override;

  private:
    std::string entry() const;

    FileSystem& files_;
    const std::string applicationID_;
    const std::filesystem::path program_;
    const std::filesystem::path entryFile_;
    QDBusConnection bus_;
    QObject calls_; // owns the calls of notifications that have no answer yet
};

} // namespace tessarune
