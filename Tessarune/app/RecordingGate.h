#pragma once

#include "Tessarune/platform/disk/DataFolderLock.h"
#include "Tessarune/platform/disk/JSONUserDefaults.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/TessarunePaths.h"

#include <functional>
#include <optional>
#include <string>

namespace tessarune {

/// Decides whether a session may be recorded: the settings must ask for it and be readable, this
/// program must be the writer of the data folder, and the run must not be one without recording.
///
/// It never changes the settings: they stay as the user chose, for this run and the next.
///
/// Main queue; the references outlive it.
class RecordingGate {
  public:
    /// Why nothing is recorded even if the settings ask for it; at most one of these.
    struct Obstacle {
        std::string doubt;   ///< the user's choice is unknown; the text says how to state it
        std::string failure; ///< why there can be no data folder
        std::optional<DataFolderLock::Holder> holder; ///< the program that writes the data folder

        bool isThere() const { return !doubt.empty() || !failure.empty() || holder.has_value(); }
    };

    /// `program` is the name under which other programs see who has the data folder.
    RecordingGate(const AppSettings& settings, const JSONUserDefaults& stored,
                  const TessarunePaths& paths, std::string program)
        : settings_(settings), stored_(stored), paths_(paths), program_(std::move(program)) {}

    /// Hears what keeps a session from being recorded, or that nothing does, each time that one
    /// starts.
    std::function<void(const Obstacle&)> onDecision;

    /// Records nothing in this run, and keeps texts out of its diagnostics runs.
    void recordNothing() { keepsNothing_ = true; }
    /// Whether sessions are to be recorded. A session with diagnostics is, independent of other
    /// settings.
    bool recordsSessions() const;
    /// Why the user's choice about recordings is unknown; empty if it is known.
    std::string doubt() const;

    /// Called by each session that is to be recorded or whose diagnostics run keeps texts. Takes
    /// the data folder, which another program may have released meanwhile.
    bool mayRecord();

    /// Makes this program the writer of the data folder until it ends, unless it is already;
    /// returns the holder if there is one. Throws std::system_error if the folder cannot exist.
    std::optional<DataFolderLock::Holder> takeDataFolder();
    bool hasDataFolder() const { return dataFolder_.has_value(); }
    /// Lets others write it again.
    void leaveDataFolder() { dataFolder_.reset(); }

  private:
    Obstacle obstacle();

    const AppSettings& settings_;
    const JSONUserDefaults& stored_;
    const TessarunePaths& paths_;
    const std::string program_;
    bool keepsNothing_ = false;
    std::optional<DataFolderLock> dataFolder_;
};

} // namespace tessarune
