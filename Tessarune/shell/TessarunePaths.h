#pragma once

#include <filesystem>
#include <optional>

namespace tessarune {

/// The paths of the user's data. A value: made once at start and passed down.
struct TessarunePaths {
    /// Replaces the default data folder, for tests.
    std::optional<std::filesystem::path> appSupportBaseOverride;

    /// `$XDG_DATA_HOME/Tessarune`, by default `~/.local/share/Tessarune`.
    std::filesystem::path appSupportBase() const;
    std::filesystem::path logs() const { return appSupportBase() / "Logs"; }
    std::filesystem::path recordings() const { return appSupportBase() / "Recordings"; }
    std::filesystem::path transcripts() const { return appSupportBase() / "Transcripts"; }
    std::filesystem::path diagnostics() const { return appSupportBase() / "Diagnostics"; }
    std::filesystem::path recordingIndex() const { return appSupportBase() / "recordings.json"; }
    /// Locked by the one program that may change recordings and diagnostics runs.
    std::filesystem::path lock() const { return appSupportBase() / "Tessarune.lock"; }
    std::filesystem::path models() const { return appSupportBase() / "Models"; }

    /// `$XDG_CONFIG_HOME/Tessarune/settings.json`, by default under `~/.config`.
    static std::filesystem::path settingsFile();
    /// `$XDG_RUNTIME_DIR/tessarune.log`, a trace for developers. `nullopt` if the variable
    /// is not an absolute path.
    static std::optional<std::filesystem::path> debugLog();
};

} // namespace tessarune
