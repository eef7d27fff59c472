#pragma once

#include <string>
#include <vector>

namespace tessarune {

/// Starts a program on the otherwise unused display $DISPLAY, waits until the middle of a window
/// has another colour than the root window, and ends the program.
struct FirstPicture {
    double seconds = 0;          ///< from the start of the process
    double processorSeconds = 0; ///< the program's own until then
    double megabytes = 0;        ///< of the process at that time, shared pages in proportion

    /// Throws std::runtime_error if nothing is painted within some seconds.
    static FirstPicture of(const std::vector<std::string>& command);
};

} // namespace tessarune
