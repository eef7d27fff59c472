#pragma once

#include "Terminal/Program.h"
#include "TessaruneCore/host/Task.h"

#include <optional>

namespace tessarune {

/// Before captions begin: if they want a translation whose model is missing, and somebody sits at
/// the terminal, asks whether to download it, and does. Whoever declines what the settings want is
/// not asked again. Gives the status to end with if the captions are not to begin. Main queue.
Task<std::optional<int>> offerTranslation(Program& program, const TerminalOptions& options,
                                          CaptionsCommand command);

} // namespace tessarune
