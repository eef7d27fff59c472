#pragma once

#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "tests/support/LoggedLines.h"
#include "tests/support/TemporaryFolder.h"

#include <string>
#include <string_view>
#include <vector>

namespace tessarune::testing {

/// A runtime log in its own folder, at a level that writes everything, and a reader of its lines.
class RuntimeLog {
  public:
    explicit RuntimeLog(Host& host) : logger(host, files_, paths_) {
        TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::verbose);
    }
    ~RuntimeLog() { TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::core); }

    std::vector<nlohmann::json> lines(std::string_view prefix = "") {
        logger.flush();
        return loggedLines(files_, paths_.logs(), prefix);
    }

    /// The names of the events that begin with `prefix`, without the prefix.
    std::vector<std::string> events(std::string_view prefix = "") {
        std::vector<std::string> names;
        for (const auto& line : lines(prefix))
            names.push_back(line["event"].get<std::string>().substr(prefix.size()));
        return names;
    }

  private:
    TemporaryFolder folder_;
    PosixFileSystem files_;
    TessarunePaths paths_{folder_.path()};

  public:
    TessaruneFileLogger logger;
};

} // namespace tessarune::testing
