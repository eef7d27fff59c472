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

/// Asks at the terminal and waits for the answer. An empty line means `byDefault`; "y…" or the word
/// for yes in the user's language means yes; any other line, or the end of the input, means no.
/// Ctrl-C means `interrupted`. Main queue.
Task<Answer> ask(Host& host, std::string question, Answer byDefault);

/// Whether `to` may be written: it is not below `ownFolder`, and it is new, or an ordinary file
/// that `replaces` or the user allows to replace. Returns ExitStatus::ok if so. Otherwise returns
/// the status to exit with, and prints why unless the user declines or presses Ctrl-C. Main queue.
Task<ExitStatus> permissionToWrite(Host& host, FileSystem& files, std::filesystem::path ownFolder,
                                   std::filesystem::path to, bool replaces);

} // namespace tessarune
