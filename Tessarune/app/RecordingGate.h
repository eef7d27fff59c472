#pragma once

#include "Tessarune/history/DataFolderHold.h"
#include "Tessarune/platform/disk/DataFolderLock.h"
#include "Tessarune/platform/disk/JSONUserDefaults.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/TessarunePaths.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace tessarune {

/// Decides whether a session may be recorded: the user's choice about recordings must be readable,
/// this program must be the writer of the data folder, and `recordNothing` must not have been
/// called. If a session may be recorded, the settings decide whether it is. The gate never changes
/// the settings.
///
/// Main queue; the references must outlive it.
class RecordingGate {
  public:
    /// Why nothing is recorded although the settings may ask for it; at most one field is set.
    struct Obstacle {
        std::string doubt;   ///< why the user's choice is unknown, and how the user can make it
        std::string failure; ///< why the data folder cannot be used
        std::optional<DataFolderLock::Holder> holder; ///< the program that writes the data folder

        bool isThere() const { return !doubt.empty() || !failure.empty() || holder.has_value(); }
    };

    /// `program` is the name that other programs see when this one has the data folder.
    RecordingGate(const AppSettings& settings, const JSONUserDefaults& stored,
                  const TessarunePaths& paths, std::string program);

    /// Called by `mayRecord` with the reason why the session may not be recorded, or with an empty
    /// obstacle if it may. Not called after `recordNothing`.
    std::function<void(const Obstacle&)> onDecision;

    /// Switches recording off until the program ends, and keeps texts out of diagnostics runs.
    void recordNothing() { recordsNothing_ = true; }
    /// Whether sessions are to be recorded: the user's choice is known, the settings ask for
    /// recordings or for session diagnostics, and `recordNothing` was not called.
    bool recordsSessions() const;
    /// Why the user's choice about recordings is unknown; empty if it is known.
    std::string doubt() const;

    /// Whether a session may be recorded and its diagnostics run may keep texts. Each session asks
    /// again, because the call takes the data folder if another program has released it meanwhile.
    bool mayRecord();

    /// Makes this program the writer of the data folder until the last copy of the returned hold is
    /// dropped. If another program is the writer, returns that program. Throws std::system_error if
    /// the folder cannot be created or written.
    std::variant<DataFolderHold, DataFolderLock::Holder> holdDataFolder();

    /// Like `holdDataFolder`, but the hold lasts until `leaveDataFolder`. Returns the other program
    /// if it is the writer.
    std::optional<DataFolderLock::Holder> takeDataFolder();
    /// Lets other programs write the data folder again, once no hold exists.
    void leaveDataFolder() { taken_.reset(); }
    bool hasDataFolder() const;

  private:
    struct DataFolder;
    Obstacle obstacle();

    const AppSettings& settings_;
    const JSONUserDefaults& stored_;
    const TessarunePaths& paths_;
    const std::string program_;
    bool recordsNothing_ = false;
    const std::shared_ptr<DataFolder> dataFolder_;
    DataFolderHold taken_; ///< from `takeDataFolder` to `leaveDataFolder`
};

} // namespace tessarune
