#pragma once

#include "TessaruneCore/UUID.h"
#include "TessaruneCore/translation/SessionTranscriptBuilder.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tessarune {

/// The text of a running session, updated repeatedly: equal to that of `SessionTranscriptBuilder`,
/// but without a walk over all committed rows each time.
///
/// Committed rows are only appended, and keep their text; a list that does not continue the last
/// one starts a new text. A value, for one thread at a time.
class LiveHistoryText {
  public:
    struct Built {
        std::string text;
        std::size_t characters = 0;
    };
    /// `previous` is the text that was built last. It is not stored here, since it becomes long
    /// after some hours.
    Built build(std::string_view previous, const SessionTranscriptBuilder::Sources& sources);

    double builtAt = 0; ///< limits the rate of builds; seconds since 1970

  private:
    bool goesOn(std::string_view previous, std::span<const CaptionSegment> rows) const;

    // The first part of the text: all committed rows but the last.
    std::size_t settledBytes_ = 0;
    std::size_t settledCharacters_ = 0;
    std::size_t settledRows_ = 0;
    std::optional<UUID> lastSettledRow_;
};

} // namespace tessarune
