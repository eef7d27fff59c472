#pragma once

#include "Tessarune/history/DataFolderHold.h"
#include "Tessarune/session/SessionView.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessarunePaths.h"
#include "Tessarune/translation/TranslationTaskBridge.h"
#include "Tessarune/ui/settings/SettingsResources.h"
#include "TessaruneCore/host/Host.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// The data and actions of the settings window. All references must outlive the window.
struct SettingsWindowEnvironment {
    Host& host;
    AppSettings& settings;
    /// While a session runs, no profile can be applied and no unfinished diagnostics run removed.
    const SessionView& session;
    /// Where the window's position is stored.
    UserDefaults& store;
    /// Whether the desktop asks for less motion.
    const Published<bool>& reducesMotion;
    /// Returns why the settings file cannot be read or written; empty if it can be.
    std::function<std::string()> fileProblem;
    /// Sets the function to call when storing a setting changes the result of `fileProblem`. An
    /// empty function ends the calls.
    std::function<void(std::function<void()>)> followFileProblem;
    /// Sets an unreadable settings file aside and starts a new one, in which recording is off.
    std::function<void()> renewFile;
    SpeechModelManager& speechModels;
    /// Returns how fast a model was on this computer; `nullopt` if unknown.
    std::function<std::optional<SpeechModelSpeed>(const std::string& name)> speechModelSpeed;
    TranslationLanguages& languages;
    std::shared_ptr<TranslationTaskBridge> translationTest;
    /// Says why a download makes no progress; set again after each failed attempt.
    const Published<std::string>& downloadTrouble;
    /// The disk and the paths of the diagnostics runs.
    FileSystem& files;
    TessarunePaths paths;
    /// Called before each removal of a run. The returned hold is kept until the removal has ended.
    std::function<DataFolderLease()> leaseDataFolder;
    /// Shows a folder in the desktop's file manager; returns false on failure.
    std::function<bool(const std::filesystem::path& folder)> openFolder;
};

} // namespace tessarune
