#pragma once

#include "Terminal/ExitStatus.h"
#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

#include <optional>

namespace tessarune {

/// Called before captions begin. If the model for their translation is missing or damaged and a
/// user can answer, offers to download it, but not with --json or --quiet. A declined target of the
/// settings is not offered again until another target is declined; a target of the command line is
/// always offered.
/// Returns the exit status if the captions must not begin. Main queue.
Task<std::optional<ExitStatus>> offerTranslation(Program& program, const TerminalOptions& options,
                                                 CaptionsCommand command);

} // namespace tessarune
