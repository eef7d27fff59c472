#pragma once

#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/recognition/ASREventRecord.h"

#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// The changes of a session's captions that are not recognition events. The event log of a
/// diagnostics run has a record of each, of a kind of its own, which other readers do not take for
/// an event.
enum class CaptionMark {
    settings,  ///< the settings of the captions, as JSON in the record's text
    open,      ///< the record's text remains open from the previous recogniser
    withdrawn, ///< the recogniser withdrew its guess
    stopped,   ///< the user requested the end: guesses no longer count
    sealed,    ///< open text has become rows
    ended,     ///< the rows are those of the run's timeline
};

/// The record's kind.
std::string_view name(CaptionMark mark);
/// `nullopt` for an event.
std::optional<CaptionMark> captionMark(const ASREventRecord& record);

ASREventRecord captionMarkRecord(CaptionMark mark, double t, std::string text = {});
ASREventRecord captionSettingsRecord(const CaptionCore::Config& config, double t);
/// `nullopt` if the record's text does not hold them.
std::optional<CaptionCore::Config> captionSettings(const ASREventRecord& record);

} // namespace tessarune
