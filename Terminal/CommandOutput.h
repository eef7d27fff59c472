#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string_view>

namespace tessarune {

// The printed output of commands. Texts are made safe for a terminal first: names, notes and
// transcripts may hold anything. Lost output is reported at the end, by `statusOfOutput`. Main
// queue.

/// Lines on standard output.
void printText(std::string_view text);
/// One object per line on standard output; invalid UTF-8 in it is replaced.
void printJSON(const nlohmann::ordered_json& object);
/// A line on standard error that is not a failure.
void printNotice(std::string_view text);
/// A failure: a line on standard error that begins with the program's name.
void printProblem(std::string_view text);

/// The exit status: `status`, or, if that is a success and standard output could not be written (a
/// full disk), ExitStatus::ioError, which it reports. A reader that has closed the pipe is not a
/// failure. Call once, when everything is printed.
int statusOfOutput(int status);

} // namespace tessarune
