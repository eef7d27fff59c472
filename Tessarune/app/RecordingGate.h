#pragma once

#include "Tessarune/platform/disk/DataFolderLock.h"
#include "Tessarune/platform/disk/JSONUserDefaults.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/TessarunePaths.h"

#include <functional>
#include <optional>
#include <string>

namespace tessarune {

/// Decides whether what is said is kept. The settings must ask for it and be readable, this program
/// must be the one that writes the data folder, and the run must not be one that keeps nothing.
///
/// It never touches the settings: they stay what the user chose, for this run and the next.
///
/// Main queue; what is named by reference outlives it.
class RecordingGate {
  public:
    /// Why nothing is recorded although the settings may ask for it; at most one of these.
    struct Obstacle {
        std::string doubt;   ///< nobody can tell whether the user wants recordings; says how to
        std::string failure; ///< why there can be no data folder
        std::optional<DataFolderLock::Holder> holder; ///< another program writes the data folder

        bool isThere() const { return !doubt.empty() || !failure.empty() || holder.has_value(); }
    };

    /// `program` is the name under which other programs see who has the data folder.
    RecordingGate(const AppSettings& settings, const JSONUserDefaults& stored,
                  const TessarunePaths& paths, std::string program)
        : settings_(settings), stored_(stored), paths_(paths), program_(std::move(program)) {}

    /// Hears what keeps a session from being recorded, or that nothing does, each time that one
    /// starts.
    std::function<void(const Obstacle&)> onDecision;

    /// Nothing of this run is recorded, and no diagnostics run holds what is said.
    void recordNothing() { keepsNothing_ = true; }
    /// Whether sessions are to be recorded. One with diagnostics is, whatever else is set.
    bool recordsSessions() const;
    /// Why nobody can tell whether the user wants recordings; empty where it is known.
    std::string doubt() const;

    /// Asked by each session that is to be recorded, or whose words a diagnostics run is to hold.
    /// Takes the data folder, which another program may have left meanwhile.
    bool mayRecord();

    /// Makes this program the one that writes the data folder, until it ends, if it is not so
    /// already; gives who has it instead. Throws std::system_error where there can be no such
    /// folder.
    std::optional<DataFolderLock::Holder> takeDataFolder();
    bool hasDataFolder() const { return dataFolder_.has_value(); }
    /// Others may write it again.
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
