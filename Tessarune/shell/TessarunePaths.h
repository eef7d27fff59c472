#pragma once

#include <filesystem>
#include <optional>

namespace tessarune {

/// Where the program keeps what is the user's. A value: made once at start and handed down.
struct TessarunePaths {
    /// Replaces the data folder of the desktop conventions, for tests and for `--data`.
    std::optional<std::filesystem::path> appSupportBaseOverride;

    /// `$XDG_DATA_HOME/Tessarune`, by default `~/.local/share/Tessarune`.
    std::filesystem::path appSupportBase() const;
    std::filesystem::path logs() const { return appSupportBase() / "Logs"; }
    std::filesystem::path recordings() const { return appSupportBase() / "Recordings"; }
    std::filesystem::path transcripts() const { return appSupportBase() / "Transcripts"; }
    std::filesystem::path diagnostics() const { return appSupportBase() / "Diagnostics"; }
    std::filesystem::path recordingIndex() const { return appSupportBase() / "recordings.json"; }
    /// Held by the one program that may write here.
    std::filesystem::path lock() const { return appSupportBase() / "Tessarune.lock"; }
    std::filesystem::path models() const { return appSupportBase() / "Models"; }

    /// `$XDG_CONFIG_HOME/Tessarune/settings.json`, by default under `~/.config`.
    static std::filesystem::path settingsFile();
    /// `$XDG_RUNTIME_DIR/tessarune.log`, a trace for developers. Nothing without such a folder.
    static std::optional<std::filesystem::path> debugLog();
};

} // namespace tessarune
