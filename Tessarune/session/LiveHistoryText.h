#pragma once

#include "TessaruneCore/UUID.h"
#include "TessaruneCore/translation/SessionTranscriptBuilder.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tessarune {

/// Builds the text of a running session incrementally. The text equals that of
/// `SessionTranscriptBuilder`, but a build does not visit all committed rows.
///
/// It assumes that committed rows are only appended and keep their text. If the rows do not
/// continue those of the last build, a new text is started. One thread at a time.
class LiveHistoryText {
  public:
    struct Built {
        std::string text;
        std::size_t characters = 0;
    };
    /// `previous` is the text of the last build. The caller keeps it, so that a text that may
    /// become very long is stored only once.
    Built build(std::string_view previous, const SessionTranscriptBuilder::Sources& sources);

    /// Set by the caller to limit the rate of builds; seconds since 1970.
    double builtAt = 0;

  private:
    bool continuesText(std::string_view previous, std::span<const CaptionSegment> rows) const;

    // The first part of the text: all committed rows except the last.
    std::size_t settledBytes_ = 0;
    std::size_t settledCharacters_ = 0;
    std::size_t settledRows_ = 0;
    std::optional<UUID> lastSettledRow_;
};

} // namespace tessarune
