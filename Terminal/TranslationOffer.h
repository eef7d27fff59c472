#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

#include <optional>

namespace tessarune {

/// Called before captions begin: if the model for their translation is missing and a user sits at
/// the terminal, offers to download it. A declined offer for the settings' target is not repeated.
/// Returns the exit status if the captions must not begin. Main queue.
Task<std::optional<int>> offerTranslation(Program& program, const TerminalOptions& options,
                                          CaptionsCommand command);

} // namespace tessarune
