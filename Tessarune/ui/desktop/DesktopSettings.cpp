#include "Tessarune/ui/desktop/DesktopSettings.h"

#include "Tessarune/platform/speech-engine/SpeechModelSpeeds.h"

#include <optional>
#include <string>
#include <utility>

namespace tessarune {

std::unique_ptr<SettingsWindow> makeSettingsWindow(Application& application,
                                                   ListeningSession& session,
                                                   const Published<bool>& reducesMotion,
                                                   const Published<std::string>& downloadTrouble,
                                                   Desktop& desktop) {
    return std::make_unique<SettingsWindow>(SettingsWindowEnvironment{
        .host = application.host,
        .settings = application.settings,
        .session = session.store().view(),
        .store = application.storedDefaults,
        .reducesMotion = reducesMotion,
        .fileProblem = [&application] { return application.storedDefaults.problem(); },
        .followFileProblem =
            [&application](std::function<void()> changed) {
                application.storedDefaults.onProblem = std::move(changed);
            },
        .renewFile = [&application] { application.renewSettingsFile(); },
        .speechModels = application.speechModels,
        .speechModelSpeed =
            [&application](const std::string& name) -> std::optional<SpeechModelSpeed> {
            const auto ratio =
                SpeechModelSpeeds(application.host, application.models).lookRatio(name);
            if (!ratio)
                return std::nullopt;
            return SpeechModelSpeed{*ratio * SpeechModelSpeed::lineSeconds,
                                    SpeechModelSpeeds::isTooSlow(*ratio)};
        },
        .languages = application.translationModels,
        .translationTest =
            std::make_shared<TranslationTaskBridge>(TranslationTaskBridge::Environment{
                application.host, application.translation, session.sharedTranslation()}),
        .downloadTrouble = downloadTrouble,
        .files = application.files,
        .paths = application.paths,
        .leaseDataFolder = [&application] { return application.leaseDataFolder(); },
        .openFolder =
            [&desktop](const std::filesystem::path& folder) {
                return desktop.openURL(folder.string());
            }});
}

} // namespace tessarune
