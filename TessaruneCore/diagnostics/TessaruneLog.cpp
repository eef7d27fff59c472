#include "TessaruneCore/diagnostics/TessaruneLog.h"

#include "TessaruneCore/host/Mutex.h"

#include <atomic>
#include <memory>

namespace tessarune {

namespace {

/// Constructed on first use and never destroyed, so that logging is safe during start-up and
/// shutdown.
struct Shared {
    std::atomic<std::shared_ptr<const TessaruneLog::Sink>> sink;
    Mutex line; // one line at a time
    std::atomic<DiagnosticsLevel> level = DiagnosticsLevel::core;
};

Shared& shared() {
    static auto& instance = *new Shared;
    return instance;
}

} // namespace

void TessaruneLogger::verbose(const Text& text) const {
    if (TessaruneLog::diagnosticsLevel() >= DiagnosticsLevel::verbose)
        debug(text);
}

void TessaruneLogger::write(Level level, const Text& text) const {
    const auto sink = shared().sink.load();
    if (!sink)
        return;
    const std::string line = text();
    const MutexLock lock(shared().line);
    (*sink)(level, category_, line);
}

namespace TessaruneLog {

void setSink(Sink sink) {
    shared().sink = sink ? std::make_shared<const Sink>(std::move(sink)) : nullptr;
}

DiagnosticsLevel diagnosticsLevel() {
    return shared().level;
}

void setDiagnosticsLevel(DiagnosticsLevel level) {
    shared().level = level;
}

} // namespace TessaruneLog

} // namespace tessarune
