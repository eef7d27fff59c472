#pragma once

#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <string>

namespace tessarune {

enum class Answer { yes, no, interrupted };

/// Whether somebody sits there who can be asked.
bool somebodyCanAnswer();

/// Asks at the terminal and waits; an empty line means `byDefault`, the end of the input means no.
/// Ctrl-C interrupts. Main queue.
Task<Answer> ask(Host& host, std::string question, Answer byDefault);

} // namespace tessarune
