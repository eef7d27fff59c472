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

/// What the settings window shows and what it may ask for. All of it outlives the window.
struct SettingsWindowEnvironment {
    Host& host;
    AppSettings& settings;
    /// Some settings rest while a session runs.
    const SessionView& session;
    /// Where the window keeps its place.
    UserDefaults& store;
    /// Whether the desktop asks for less motion.
    const Published<bool>& reducesMotion;
    /// Why the settings file cannot be read or written; empty while all is well.
    std::function<std::string()> fileProblem;
    /// From now on calls back when that changes; an empty one ends it.
    std::function<void(std::function<void()>)> followFileProblem;
    /// Keeps a file that cannot be read aside and begins a new one.
    std::function<void()> renewFile;
    SpeechModelManager& speechModels;
    /// How fast a model was on this computer; nothing where that is not known.
    std::function<std::optional<SpeechModelSpeed>(const std::string& name)> speechModelSpeed;
    TranslationLanguages& languages;
    std::shared_ptr<TranslationTaskBridge> translationTest;
    /// From now on calls back with why a download gets nowhere; an empty one ends it.
    std::function<void(std::function<void(const std::string& text)>)> followDownloadTrouble;
    /// Where the diagnostics runs are.
    FileSystem& files;
    TessarunePaths paths;
    /// Shows a folder in the desktop's file manager; false if it cannot.
    std::function<bool(const std::filesystem::path& folder)> openFolder;
};

} // namespace tessarune
