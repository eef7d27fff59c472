#pragma once

#include <string>

namespace tessarune {

/// A message of the program itself, which is shown over the captions until the user dismisses it.
struct CaptionNotice {
    std::string text; ///< empty: there is none
    bool isTrouble = false;

    bool operator==(const CaptionNotice&) const = default;
};

} // namespace tessarune
