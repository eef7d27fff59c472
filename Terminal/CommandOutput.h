#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string_view>

namespace tessarune {

// What commands print. Texts are made safe for a terminal first: names, notes and transcripts may
// hold anything. Lost output is not noticed at once but at the end, by `statusOfOutput`. Main
// queue.

/// Lines on standard output.
void printText(std::string_view text);
/// One object a line on standard output; what is no UTF-8 in it is replaced.
void printJSON(const nlohmann::ordered_json& object);
/// A line on standard error that is no failure.
void printNotice(std::string_view text);
/// Why it does not work: a line on standard error that begins with the program's name.
void printProblem(std::string_view text);

/// The status to end with: `status`, or, if that is a good one and standard output could not be
/// written (a full disk), ExitStatus::ioError, and says so. A reader that went away has had enough
/// and is no failure. To be called once, when everything has been printed.
int statusOfOutput(int status);

} // namespace tessarune
