#include "TessaruneCore/replay/CaptionMark.h"

#include "TessaruneCore/text/JSON.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tessarune {

namespace {

constexpr std::pair<CaptionMark, std::string_view> markNames[] = {
    {CaptionMark::settings, "settings"},   {CaptionMark::open, "open"},
    {CaptionMark::withdrawn, "withdrawn"}, {CaptionMark::stopped, "stopped"},
    {CaptionMark::sealed, "sealed"},       {CaptionMark::ended, "ended"}};

} // namespace

std::string_view name(CaptionMark mark) {
    return std::ranges::find(markNames, mark, &std::pair<CaptionMark, std::string_view>::first)
        ->second;
}

std::optional<CaptionMark> captionMark(const ASREventRecord& record) {
    const auto* const found = std::ranges::find(markNames, record.kind,
                                                &std::pair<CaptionMark, std::string_view>::second);
    return found == std::end(markNames) ? std::nullopt : std::optional(found->first);
}

ASREventRecord captionMarkRecord(CaptionMark mark, double t, std::string text) {
    ASREventRecord record;
    record.t = t;
    record.kind = name(mark);
    record.text = std::move(text);
    return record;
}

ASREventRecord captionSettingsRecord(const CaptionCore::Config& config, double t) {
    const JSON::Value object{{"segment", config.segment},
                             {"freeze", config.freeze},
                             {"clauseLevel", config.clauseLevel},
                             {"softClauseLevel", config.softClauseLevel},
                             {"freezeStableSeconds", config.freezeStableSeconds},
                             {"duplicateCommitWindowSeconds", config.duplicateCommitWindowSeconds},
                             {"softCaptionEnabled", config.softCaptionEnabled},
                             {"softCaptionStableSeconds", config.softCaptionStableSeconds}};
    return captionMarkRecord(CaptionMark::settings, t, JSON::line(object).value_or(""));
}

std::optional<CaptionCore::Config> captionSettings(const ASREventRecord& record) {
    CaptionCore::Config config(false, false, false);
    const JSON::Value object = JSON::parse(record.text);
    JSON::Reader reader(object);
    reader.required("segment", config.segment)
        .required("freeze", config.freeze)
        .required("clauseLevel", config.clauseLevel)
        .required("softClauseLevel", config.softClauseLevel)
        .required("freezeStableSeconds", config.freezeStableSeconds)
        .required("duplicateCommitWindowSeconds", config.duplicateCommitWindowSeconds)
        .required("softCaptionEnabled", config.softCaptionEnabled)
        .required("softCaptionStableSeconds", config.softCaptionStableSeconds);
    return reader.isGood() ? std::optional(config) : std::nullopt;
}

} // namespace tessarune
