#pragma once

#include "Tessarune/app/Application.h"
#include "Tessarune/app/ListeningSession.h"
#include "Tessarune/ui/desktop/DesktopSound.h"
#include "Tessarune/ui/welcome/WelcomeWindow.h"

#include <functional>
#include <string>

namespace tessarune {

/// The welcome page of the first start, with a session over sample speech whose captions it shows.
/// Nothing is recorded. Main thread; the references must outlive it.
class DesktopWelcome {
  public:
    /// Whether the page must still be shown, because it was never closed.
    static bool isDue(const Application& application);

    /// `onClose` is called once, when the page closes.
    DesktopWelcome(Application& application, const Published<bool>& reducesMotion,
                   const Published<std::string>& downloadTrouble, std::function<void()> onClose);
    DesktopWelcome(const DesktopWelcome&) = delete;

    void show() { window_.show(); }
    /// Whether the page is not closed yet.
    bool isOpen() const { return onClose_ != nullptr; }
    /// Closes the page and stops the sample. Also called before a session of the user begins.
    void close();
    /// Resumes after `close`, once the page and its session have ended. Then this object may be
    /// destroyed.
    Task<void> ended();

  private:
    Task<std::string> playSample();
    CaptionWindowEnvironment sampleEnvironment(const Published<bool>& reducesMotion);

    Application& application_;
    std::function<void()> onClose_;
    DesktopSound sound_;
    std::string sampleProblem_; // empty if there is a sample
    ListeningSession session_;
    Published<CaptionNotice> notice_;
    const CaptionWindowEnvironment sample_;
    WelcomeWindow window_;
};

} // namespace tessarune
