#pragma once

#include "Terminal/ExitStatus.h"
#include "Tessarune/shell/FileSystem.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <filesystem>
#include <string>

namespace tessarune {

enum class Answer { yes, no, interrupted };

/// Whether a user can answer: standard input and standard error are a terminal.
bool userCanAnswer();

/// Asks at the terminal and waits for the answer. An empty line means `byDefault`, the end of the
/// input means no, and Ctrl-C interrupts. Main queue.
Task<Answer> ask(Host& host, std::string question, Answer byDefault);

/// Whether a file may be written: it is new, `replaces` is set, or the user agrees to replace it.
/// Returns ExitStatus::ok if so; otherwise prints the problem, if the user did not decide it, and
/// returns the status to exit with. Main queue.
Task<ExitStatus> permissionToWrite(Host& host, FileSystem& files, std::filesystem::path to,
                                   bool replaces);

} // namespace tessarune
