#pragma once

#include "Terminal/ExitStatus.h"
#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

#include <optional>

namespace tessarune {

/// Called before captions begin. If the model for their translation is missing or damaged, asks the
/// user whether to download it. Does not ask with --json or --quiet, or if nobody can answer.
///
/// If the user declines the model for the target language of the settings, does not ask about this
/// language again until the user declines another one. Always asks about a target language of the
/// command line.
///
/// Returns the exit status if the captions must not begin. Main queue.
Task<std::optional<ExitStatus>> offerTranslation(Program& program, const TerminalOptions& options,
                                                 CaptionsCommand command);

} // namespace tessarune
