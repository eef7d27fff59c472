#pragma once

#include "TessaruneCore/diagnostics/DiagnosticsLevel.h"

#include <functional>
#include <string>
#include <string_view>

namespace tessarune {

/// Writes the lines of one category to the text log. Lines go to the sink that the program sets at
/// start (the journal or standard error); without a sink they are dropped. Any thread.
class TessaruneLogger {
  public:
    enum class Level { debug, info, notice, fault };
    /// Builds the text of a line; called only if there is a sink.
    using Text = std::function<std::string()>;

    explicit constexpr TessaruneLogger(std::string_view category) : category_(category) {}

    /// A debug line that is written at the diagnostics level `verbose` and above.
    void verbose(const Text& text) const;
    void debug(const Text& text) const { write(Level::debug, text); }
    void info(const Text& text) const { write(Level::info, text); }
    void notice(const Text& text) const { write(Level::notice, text); }
    void fault(const Text& text) const { write(Level::fault, text); }

  private:
    void write(Level level, const Text& text) const;
    std::string_view category_;
};

namespace TessaruneLog {

inline constexpr std::string_view subsystem = "app.tessarune.captions";

inline constexpr TessaruneLogger capture{"capture"};
inline constexpr TessaruneLogger asr{"asr"};
inline constexpr TessaruneLogger translation{"translation"};
inline constexpr TessaruneLogger diagnostics{"diagnostics"};
inline constexpr TessaruneLogger ui{"ui"};
inline constexpr TessaruneLogger storage{"storage"};
inline constexpr TessaruneLogger app{"app"};

using Sink =
    std::function<void(TessaruneLogger::Level, std::string_view category, const std::string& text)>;

/// Replaces the sink; an empty one drops all lines. The sink is called from any thread, but never
/// concurrently.
void setSink(Sink sink);

/// The diagnostics level of the running program; expensive diagnostics check it first.
DiagnosticsLevel diagnosticsLevel();
void setDiagnosticsLevel(DiagnosticsLevel level);

} // namespace TessaruneLog

} // namespace tessarune
