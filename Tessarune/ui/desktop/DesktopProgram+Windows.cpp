#include "Tessarune/platform/qt-desktop/X11Desktop.h"
#include "Tessarune/ui/desktop/DesktopHistory.h"
#include "Tessarune/ui/desktop/DesktopProgram.h"
#include "Tessarune/ui/desktop/DesktopSettings.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <malloc.h>

#include <QGuiApplication>
#include <QWindow>
#include <algorithm>
#include <string_view>
#include <utility>

namespace tessarune {

namespace {

double secondsBehind(const LiveSystemAudioTranscriber& transcriber) {
    const PerfStats stats = transcriber.perfStats();
    const auto found = stats.find("secondsBehind");
    return found == stats.end() ? 0 : found->second;
}

/// How the user keeps a window above others on a desktop that does not let a program do so.
std::string desktopsWayToTop() {
    static const std::pair<const char*, std::string_view> ways[] = {
        {"GNOME", localizationKey("Alt+空格，置顶")},
        {"KDE", localizationKey("Alt+F3，更多操作，常居顶端")},
        {"sway", "swaymsg floating enable, sticky enable"},
        {"Hyprland", "hyprctl dispatch pin"},
    };
    const QStringList desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(':');
    for (const auto& [desktop, way] : ways) {
        if (desktops.contains(QLatin1String(desktop)))
            return localized(way);
    }
    return localized("用窗口菜单");
}

/// Whether a translation model for the target language exists but is not installed.
bool lacksTranslationModel(const Application& application) {
    using namespace TranslationSupport;
    return application.translationModels.status(
               appleLanguageIdentifier(defaultSourceLanguage),
               appleLanguageIdentifier(*application.settings.translationTargetLanguage)) ==
           TranslationAvailabilityStatus::supported;
}

} // namespace

/// Offers the windows that are opened on request. The menus have an entry for each.
void DesktopProgram::offerWindows() {
    windows_.offer<SettingsWindow>(DesktopWindows::Kind::settings, [this] {
        return makeSettingsWindow(application_, session_, motion_.isReduced, downloadTrouble_,
                                  desktop_);
    });
    windows_.offer<HistoryWindow>(DesktopWindows::Kind::history, [this] {
        return makeHistoryWindow(application_, sound_, store(), desktop_);
    });
}

CaptionWindowEnvironment DesktopProgram::windowEnvironment() {
    using Kind = DesktopWindows::Kind;
    return {
        .host = host_,
        .settings = application_.settings,
        .session = store().view(),
        .soundName = sound_.fileName,
        .notice = notices_.shown(),
        .store = application_.storedDefaults,
        .commands =
            {.toggleListening = [this](const auto& trigger) { toggle(trigger); },
             .selectSource = [this](const AudioSource& source) { listening_.selectSource(source); },
             .refreshInputDevices = [this] { store().refreshInputDevices(); },
             .retryTranslation = [this] { session_.translation().retryIncompleteTranslations(); },
             .clearCaptions = [this] { store().clearCaptions(); },
             .visibleText = [this] { return store().texts().visibleText(); },
             .dismissNotice = [this] { notices_.dismissShown(); },
             .close = [this] { closeWindow(); },
             .toggleWindow = [this] { toggleWindow(); },
             .quit = [this] { quit(); },
             .showHistory = [this] { windows_.show(Kind::history); },
             .showSettings =
                 [this](const std::string& pane) { windows_.show(Kind::settings, pane); },
             .openDesktopSettings =
                 desktop_.hasSoundSettings()
                     ? [this](PermissionsManager::Key kind) { session_.openSettings(kind); }
                     : PermissionsManager::OpenSettings()},
        .lacksTranslationModel = [this] { return tessarune::lacksTranslationModel(application_); },
        .secondsBehind = [this] { return secondsBehind(store().liveTranscriber()); },
        .reducesMotion = motion_.isReduced,
        .recordFollow = [this](const auto& event, const auto& fields,
                               bool important) { recordFollow(event, fields, important); },
        .otherWayToTop = X11Desktop::keepsWindowsAbove() ? std::string() : desktopsWayToTop(),
        .waiting = &listening_.waiting()};
}

void DesktopProgram::recordFollow(const std::string& event, const LogFields& fields,
                                  bool important) {
    session_.recordCaptionFollow(event, fields);
    LogFields logged;
    for (const auto& [name, value] : fields) {
        if (name != "isReviewing")
            logged.add(name, value);
    }
    application_.logger.event("caption." + event, std::move(logged),
                              important ? Importance::important : Importance::routine);
}

void DesktopProgram::showFirst() {
    const bool hasRequest = !request_.files.empty() || !request_.actions.empty();
    if (hasRequest || !DesktopWelcome::isDue(application_)) {
        window_->show();
        return;
    }
    welcome_ =
        std::make_unique<DesktopWelcome>(application_, motion_.isReduced, downloadTrouble_, [this] {
            if (isEnding_)
                return;
            window_->show();
            spawn(Executor::main(host_), releaseWelcome());
        });
    welcome_->show();
}

/// Destroys the page as soon as possible: its session has its own recogniser with a model in
/// memory.
Task<void> DesktopProgram::releaseWelcome() {
    Task<void> ending = welcome_->ended();
    co_await ending;
    welcome_.reset();
    malloc_trim(0);
}

void DesktopProgram::makeTray() {
    if (tray_ || isEnding_)
        return;
    using Kind = DesktopWindows::Kind;
    tray_.emplace(
        store().view(), listening_.waiting(), application_.paths.appSupportBase(),
        DesktopTray::Commands{
            .toggleListening = [this] { toggle(LiveSessionControlTrigger::contextMenu()); },
            .toggleWindow = [this] { toggleWindow(); },
            .isWindowVisible = [this] { return window_->window().isVisible(); },
            .copyCaptions = [this] { window_->commands().copy(true); },
            .showHistory = [this] { windows_.show(Kind::history); },
            .showSettings = [this] { windows_.show(Kind::settings); },
            .showAbout = [this] { windows_.show(Kind::settings, "about"); },
            .quit = [this] { quit(); }});
    QObject::connect(&window_->window(), &QWindow::visibleChanged, &window_->window(), [this] {
        if (tray_)
            tray_->update();
    });
}

void DesktopProgram::perform(DesktopAction action) {
    switch (action) {
    case DesktopAction::start:
        closeWelcome();
        return showIfStarted(
            [this] { listening_.start(LiveSessionControlTrigger::programmatic()); });
    case DesktopAction::stop:
        return listening_.stop(LiveSessionControlTrigger::programmatic());
    case DesktopAction::toggle:
        return toggle(LiveSessionControlTrigger::programmatic());
    case DesktopAction::show:
        return showWindow();
    case DesktopAction::history:
        return windows_.show(DesktopWindows::Kind::history);
    case DesktopAction::settings:
        return windows_.show(DesktopWindows::Kind::settings);
    }
}

/// Handles a request from the desktop, or from a second start of the program.
void DesktopProgram::handle(const InstanceRequest& request) {
    if (isEnding_)
        return;
    if (request.actions.empty()) {
        showWindow();
        if (*application_.settings.dockClickTogglesRecord && request.files.empty())
            toggle(LiveSessionControlTrigger::dockReopen());
    }
    for (const std::string& word : request.actions) {
        if (const auto action = desktopActionOf(word))
            perform(*action);
    }
    if (request.files.empty())
        return;
    closeWelcome();
    listening_.captionFiles({request.files.begin(), request.files.end()});
}

/// Closes the welcome page before a session of the user begins. This stops the sample speech on the
/// page and shows the caption window.
void DesktopProgram::closeWelcome() {
    if (welcome_)
        welcome_->close();
}

/// On the first start, shows the welcome page in place of the caption window.
void DesktopProgram::showWindow() {
    if (welcome_ && welcome_->isOpen())
        welcome_->show();
    else
        window_->show();
}

/// Runs a command that may start captions. If it does, shows the window, so that nobody is recorded
/// without seeing it.
void DesktopProgram::showIfStarted(const std::function<void()>& command) {
    const auto isOn = [this] { return *store().view().isListening || *listening_.waiting(); };
    const bool wasOn = isOn();
    command();
    if (!wasOn && isOn() && isOutOfSight())
        showWindow();
}

bool DesktopProgram::isOutOfSight() const {
    const QWindow& window = window_->window();
    return !window.isVisible() || window.windowStates().testFlag(Qt::WindowMinimized);
}

/// Captions and recording continue.
void DesktopProgram::hideWindow() {
    window_->hide();
}

void DesktopProgram::toggleWindow() {
    if (isOutOfSight())
        showWindow();
    else if (isInTray())
        hideWindow();
    else if (*application_.settings.showDockIcon)
        window_->window().showMinimized(); // to the desktop's list of windows
}

/// The user closed the caption window: this ends the session.
void DesktopProgram::closeWindow() {
    application_.logger.event("window.subtitleCloseRequested", {}, Importance::important);
    hideWindow();
    if (*store().view().isListening && isInTray())
        desktop_.notify("Tessarune",
                        localized("The captions have ended. Tessarune stays in the tray."));
    listening_.stop(LiveSessionControlTrigger::subtitleWindowClose());
    endIfUnreachable();
}

void DesktopProgram::endIfUnreachable() {
    const auto windows = QGuiApplication::topLevelWindows();
    const bool hasVisibleWindow =
        std::ranges::any_of(windows, [](const QWindow* window) { return window->isVisible(); });
    if (isInTray() || hasVisibleWindow)
        return;
    endsAfterExport_ = *application_.historyExport.unfinishedFiles() > 0;
    if (!endsAfterExport_)
        quit();
}

/// Checks that there is still a tray, because the panel that showed the item may have vanished.
bool DesktopProgram::isInTray() const {
    return tray_ && (trayWatch_->isThere() || X11Desktop::hasTray());
}

} // namespace tessarune
