#pragma once

#include "Terminal/CommandOptions.h"
#include "Tessarune/history/HistoryExport.h"
#include "Tessarune/history/UsageStatistics.h"

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tessarune {

// The commands for recorded sessions. An ID may be shortened to its beginning.

struct ListRecordingsCommand {};
struct ShowRecordingCommand {
    std::string id;
};

struct CountWordsCommand {
    std::string id;
};
struct ExportRecordingCommand {
    std::string id;
    HistoryExportFormat format = HistoryExportFormat::pdf;
    /// Absent: both languages if there is a translation.
    std::optional<HistoryTranscriptExportContent> content;
    std::string to; ///< empty: a name made from the note or the date; "-": standard output
    bool replaces = false;
};
struct PlayCommand {
    std::string id;
    double from = 0; ///< seconds
};
struct SetNoteCommand {
    std::string id;
    std::string note; ///< empty: removes the note
};
struct DeleteRecordingsCommand {
    std::vector<std::string> ids;
    bool isConfirmed = false; ///< deletes without asking
};

struct ImportFilesCommand {
    std::vector<std::filesystem::path> files;
};
struct RefineCommand {
    std::string id;
    std::string model; ///< empty: the best model
};
struct SearchRecordingsCommand {
    std::string text;
};
struct ShowUsageCommand {
    UsagePeriodKind by = UsagePeriodKind::day;
};

/// The commands for the diagnostics runs of sessions.
struct DiagnosticsCommand {
    enum class Action { list, show, verify, remove, pack };

    Action action = Action::list;
    std::string run; ///< the run's name, its beginning, or the path of its folder
    bool isConfirmed = false;
    bool withText = false; ///< also pack files that may contain what was said
    std::string to;        ///< the path of the archive; empty: named after the run
};

using HistoryCommand =
    std::variant<ListRecordingsCommand, ShowRecordingCommand, ExportRecordingCommand,
                 SetNoteCommand, DeleteRecordingsCommand, CountWordsCommand, RefineCommand,
                 ImportFilesCommand, SearchRecordingsCommand, ShowUsageCommand, PlayCommand,
                 DiagnosticsCommand>;

/// Declares these commands to the command line and reads them from it.
class HistoryOptions {
  public:
    void declare(CommandOptions& options);

    /// The given command; `nullopt` if none of these was given. Throws UsageProblem.
    std::optional<HistoryCommand> command() const;

  private:
    ExportRecordingCommand exportCommand() const;
    DiagnosticsCommand diagnosticsCommand() const;

    bool list_ = false;
    std::string show_;
    std::string words_;
    std::string play_;
    std::string from_;
    std::string export_;
    std::string format_;
    std::string content_;
    std::string to_;
    std::vector<std::string> note_;
    std::vector<std::string> delete_;
    std::vector<std::string> diagnostics_;
    std::string verifyRun_;
    bool withText_ = false;
    bool yes_ = false;
    std::vector<std::string> import_;
    RefineCommand refine_;
    std::string search_;
    bool usage_ = false;
    std::string usageBy_ = "day";
};

} // namespace tessarune
