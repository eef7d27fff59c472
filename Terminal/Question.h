#pragma once

#include "Terminal/ExitStatus.h"
#include "Tessarune/shell/FileSystem.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <filesystem>
#include <string>

namespace tessarune {

enum class Answer { yes, no, interrupted };

/// Whether there is a user who can answer.
bool somebodyCanAnswer();

/// Asks at the terminal and waits; an empty line means `byDefault`, the end of the input means no.
/// Ctrl-C interrupts. Main queue.
Task<Answer> ask(Host& host, std::string question, Answer byDefault);

/// Whether a file may be written: it is new, or may be replaced, which the user is asked unless
/// `replaces` is set. Prints the obstacle. Main queue.
Task<ExitStatus> permissionToWrite(Host& host, FileSystem& files, std::filesystem::path to,
                                   bool replaces);

} // namespace tessarune
