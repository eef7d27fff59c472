#pragma once

#include <string>
#include <vector>

namespace tessarune {

/// What a program takes until its first picture.
struct FirstPicture {
    double seconds = 0;          ///< from the start of the process
    double processorSeconds = 0; ///< of the process until then
    double megabytes = 0;        ///< of the process a second later, with its share of shared pages

    /// Starts a program on $DISPLAY, which no other program may use, waits until the middle of a
    /// window has another colour than the root window, and ends the program. Throws
    /// std::runtime_error if the program cannot be started or paints nothing within 30 seconds.
    static FirstPicture of(const std::vector<std::string>& command);
};

} // namespace tessarune
