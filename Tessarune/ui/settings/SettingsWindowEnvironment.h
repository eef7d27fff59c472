#pragma once

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

/// The data and actions of the settings window. All of it outlives the window.
struct SettingsWindowEnvironment {
    Host& host;
    AppSettings& settings;
    /// Some settings cannot be changed while a session runs.
    const SessionView& session;
    /// Where the window's position is stored.
    UserDefaults& store;
    /// Whether the desktop asks for less motion.
    const Published<bool>& reducesMotion;
    /// Why the settings file cannot be read or written; empty if it can be.
    std::function<std::string()> fileProblem;
    /// Calls back from now on when that changes; an empty function ends it.
    std::function<void(std::function<void()>)> followFileProblem;
    /// Keeps an unreadable file aside and starts a new one.
    std::function<void()> renewFile;
    SpeechModelManager& speechModels;
    /// How fast a model was on this computer; `nullopt` if unknown.
    std::function<std::optional<SpeechModelSpeed>(const std::string& name)> speechModelSpeed;
    TranslationLanguages& languages;
    std::shared_ptr<TranslationTaskBridge> translationTest;
    /// Calls back from now on with why a download makes no progress; an empty function ends it.
    std::function<void(std::function<void(const std::string& text)>)> followDownloadTrouble;
    /// The folder of the diagnostics runs.
    FileSystem& files;
    TessarunePaths paths;
    /// Why none of them may be removed, as another program writes there; empty where it may.
    std::function<std::string()> changeProblem;
    /// Shows a folder in the desktop's file manager; false if it cannot.
    std::function<bool(const std::filesystem::path& folder)> openFolder;
};

} // namespace tessarune
