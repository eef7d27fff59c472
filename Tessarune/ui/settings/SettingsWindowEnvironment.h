#pragma once

#include "Tessarune/session/SessionView.h"
#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/host/Host.h"

#include <filesystem>
#include <functional>
#include <string>

namespace tessarune {

/// What the settings window shows and what it may ask for. All of it outlives the window.
struct SettingsWindowEnvironment {
    Host& host;
    AppSettings& settings;
    /// Some settings rest while a session runs.
    const SessionView& session;
    /// Where the preview of captions keeps nothing.
    UserDefaults& store;
    /// Why the settings file cannot be read or written; empty while all is well.
    std::function<std::string()> fileProblem;
    /// Keeps a file that cannot be read aside and begins a new one.
    std::function<void()> renewFile;
};

} // namespace tessarune
