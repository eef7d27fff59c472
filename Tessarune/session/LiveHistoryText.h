#pragma once

#include "TessaruneCore/UUID.h"
#include "TessaruneCore/translation/SessionTranscriptBuilder.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tessarune {

/// The text of a running session, renewed again and again: as `SessionTranscriptBuilder` makes it,
/// without going each time through all rows that were committed since the session began.
///
/// Committed rows come behind those that are there, and keep their text; a list that does not go on
/// from the last one begins a new text. A value, for one thread at a time.
class LiveHistoryText {
  public:
    struct Built {
        std::string text;
        std::size_t characters = 0;
    };
    /// `previous` is the text that was built last. It is not kept here, since after some hours it
    /// is long.
    Built build(std::string_view previous, const SessionTranscriptBuilder::Sources& sources);

    double builtAt = 0; ///< paces the next build; seconds since 1970

  private:
    bool goesOn(std::string_view previous, std::span<const CaptionSegment> rows) const;

    // The front of the text: all committed rows but the last.
    std::size_t settledBytes_ = 0;
    std::size_t settledCharacters_ = 0;
    std::size_t settledRows_ = 0;
    std::optional<UUID> lastSettledRow_;
};

} // namespace tessarune
