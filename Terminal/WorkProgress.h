#pragma once

#include "Terminal/DownloadProgress.h"
#include "Terminal/TerminalOptions.h"

#include <nlohmann/json.hpp>

#include <string>

namespace tessarune {

/// Reports the progress of work. A terminal gets one line that is rewritten; a log gets a line for
/// every ten per cent; JSON has a line for each per cent. A new step is always reported. With
/// --quiet only JSON is printed. Main queue.
class WorkProgress {
  public:
    /// `json` has the fields that each JSON line contains besides the step and the per cent.
    WorkProgress(const TerminalOptions& options, nlohmann::ordered_json json);
    ~WorkProgress() { endLine(); }
    WorkProgress(const WorkProgress&) = delete;

    /// `doing` begins the line, as in "Transcribing 20 %". `fraction` is from 0 to 1.
    void report(const std::string& doing, const std::string& step, double fraction);
    /// Removes the line, if there is one.
    void endLine();

  private:
    const bool isJSON_;
    const bool isQuiet_;
    const bool isOnTerminal_; ///< a terminal shows the progress; false with --json or --quiet
    const nlohmann::ordered_json json_;
    DownloadPercent percent_;
    std::string step_;
    std::string shown_; ///< the rewritten line; empty if there is none
};

} // namespace tessarune
