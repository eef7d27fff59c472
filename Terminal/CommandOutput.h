#pragma once

#include "TessaruneCore/UUID.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <string_view>

namespace tessarune {

// The printed output of commands. Texts and JSON are made safe for a terminal first, because names,
// notes and transcripts may contain control characters. `statusOfOutput` reports lost output at the
// end. Main queue.

/// Prints lines on standard output.
void printText(std::string_view text);
/// Prints an object as one line on standard output.
void printJSON(const nlohmann::ordered_json& object);
/// The line that `printJSON` prints, without the line feed. Escapes the characters that
/// `Text::printable` would replace; replaces invalid UTF-8.
std::string jsonLine(const nlohmann::ordered_json& object);
/// Prints information, not a failure: a line on standard error.
void printNotice(std::string_view text);
/// Prints a failure: a line on standard error that begins with the program's name.
void printProblem(std::string_view text);

/// The beginning of a recording's ID. Commands accept it instead of the ID (`chosenRecording`).
std::string shortID(const UUID& id);
/// Describes the state of a model to the user. `damage` is the problem with its files, or empty.
std::string modelStateText(bool isInstalled, bool isRemovable, const std::string& damage);
/// "40 %".
std::string percentText(int percent);

/// Replaces the current line of the terminal on standard error; an empty text erases it.
void rewriteLine(std::string_view text);

/// Returns `status`. If standard output could not be written, for example on a full disk, reports
/// that, and returns ExitStatus::ioError instead of a success. A reader that has closed the pipe is
/// not a failure. Call once, after everything is printed.
int statusOfOutput(int status);

} // namespace tessarune
