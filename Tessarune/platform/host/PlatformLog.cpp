#include "Tessarune/platform/host/PlatformLog.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"

#include <syslog.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace tessarune::PlatformLog {

namespace {

using Level = TessaruneLogger::Level;

int priority(Level level) {
    switch (level) {
    case Level::debug:
        return LOG_DEBUG;
    case Level::info:
        return LOG_INFO;
    case Level::notice:
        return LOG_NOTICE;
    case Level::fault:
        break;
    }
    return LOG_ERR;
}

} // namespace

void open(const char* program) {
    if (::access("/dev/log", W_OK) == 0) {
        ::openlog(program, LOG_PID, LOG_USER);
        TessaruneLog::setSink([](Level level, std::string_view category, const std::string& text) {
            ::syslog(priority(level), "[%.*s] %s", static_cast<int>(category.size()),
                     category.data(), text.c_str());
        });
        return;
    }
    TessaruneLog::setSink([program](Level level, std::string_view, const std::string& text) {
        if (level == Level::fault)
            std::fprintf(stderr, "%s: %s\n", program, text.c_str());
    });
}

} // namespace tessarune::PlatformLog
