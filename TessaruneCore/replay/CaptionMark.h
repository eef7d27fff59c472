#pragma once

#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/recognition/ASREventRecord.h"

#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// What a replay of a session's captions needs besides the recognition events. The event log of a
/// diagnostics run records each of these under a kind of its own, which readers of events skip.
enum class CaptionMark {
    settings,  ///< the settings of the captions, as JSON in the record's text
    open,      ///< the record's text was left open by the previous recogniser
    withdrawn, ///< the recogniser withdrew its hypothesis
    stopped,   ///< the session's end was requested: partials are ignored from here
    sealed,    ///< the open text was committed as rows
    ended,     ///< the run ended: the committed rows equal those of `timeline.json`
};

/// The record's kind.
std::string_view name(CaptionMark mark);
/// The mark that the record stands for; `nullopt` if its kind is not a mark.
std::optional<CaptionMark> captionMark(const ASREventRecord& record);

ASREventRecord captionMarkRecord(CaptionMark mark, double t, std::string text = {});
ASREventRecord captionSettingsRecord(const CaptionCore::Config& config, double t);
/// `nullopt` if the record's text is not a settings object.
std::optional<CaptionCore::Config> captionSettings(const ASREventRecord& record);

} // namespace tessarune
