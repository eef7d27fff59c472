#pragma once

#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/recognition/ASREventRecord.h"

#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// What changes the captions of a session beside its recognition events. The event log of a
/// diagnostics run has a record of each, of a kind of its own, which is no event to other readers.
enum class CaptionMark {
    settings,  ///< the settings of the captions, as JSON in the record's text
    open,      ///< the record's text is still open from the recogniser before
    withdrawn, ///< the recogniser took its guess back
    stopped,   ///< the user asked for the end: guesses no longer count
    sealed,    ///< what was open has become rows
    ended,     ///< the rows are as the run's timeline has them
};

/// The record's kind.
std::string_view name(CaptionMark mark);
/// Nothing for an event.
std::optional<CaptionMark> captionMark(const ASREventRecord& record);

ASREventRecord captionMarkRecord(CaptionMark mark, double t, std::string text = {});
ASREventRecord captionSettingsRecord(const CaptionCore::Config& config, double t);
/// Nothing if the record's text does not hold them.
std::optional<CaptionCore::Config> captionSettings(const ASREventRecord& record);

} // namespace tessarune
