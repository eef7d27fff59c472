#include "Tessarune/ui/desktop/DesktopSettings.h"

namespace tessarune {

std::unique_ptr<SettingsWindow> makeSettingsWindow(Application& application,
                                                   ListeningSession& session) {
    return std::make_unique<SettingsWindow>(SettingsWindowEnvironment{
        .host = application.host,
        .settings = application.settings,
        .session = session.store().view(),
        .store = application.storedDefaults,
        .fileProblem = [&application] { return application.storedDefaults.problem(); },
        .renewFile = [&application] { application.renewSettingsFile(); }});
}

} // namespace tessarune
