#include "Tessarune/diagnostics/RunVerification.h"

#include "Tessarune/diagnostics/DiagnosticsRunLayout.h"
#include "TessaruneCore/recognition/ASREventLog.h"
#include "TessaruneCore/replay/CaptionMark.h"
#include "TessaruneCore/replay/CaptionReplay.h"
#include "TessaruneCore/text/JSON.h"
#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace tessarune::RunVerification {

namespace {

using Manifest = JSON::Value;

[[noreturn]] void failAsDamaged(std::string_view path) {
    throw std::runtime_error(localized("%@ is damaged.", {std::string(path)}));
}

std::string contentOf(FileSystem& files, const std::filesystem::path& directory,
                      const std::string& path) {
    if (!files.exists(directory / path))
        throw std::runtime_error(localized("%@ is missing.", {path}));
    return files.read(directory / path);
}

/// Returns the manifest. Throws if the run is not a full one or the manifest names no recogniser.
Manifest manifestOf(FileSystem& files, const std::filesystem::path& directory) {
    namespace Layout = DiagnosticsRunLayout;
    const std::string path(Layout::manifestFile);
    Manifest manifest = JSON::parse(contentOf(files, directory, path));
    const auto kind = JSON::member<std::string>(manifest, "kind");
    if (kind == Layout::coreKind)
        throw std::runtime_error(
            localized("This run contains no events, because its level was \"core\"."));
    if (kind != Layout::fullKind ||
        !manifest.contains(Manifest::json_pointer("/recognition/optionID")))
        failAsDamaged(path);
    return manifest;
}

/// The rows of the timeline, as JSON.
Manifest segmentsOf(FileSystem& files, const std::filesystem::path& directory) {
    const Manifest::json_pointer where("/engines/0/segments");
    const std::string path(DiagnosticsRunLayout::artifact("timeline").path);
    const Manifest timeline = JSON::parse(contentOf(files, directory, path));
    if (!timeline.contains(where) || !timeline.at(where).is_array())
        failAsDamaged(path);
    return timeline.at(where);
}

EngineCapabilities capabilitiesIn(const Manifest& recognition) {
    EngineCapabilities caps;
    std::string unit;
    JSON::Reader(recognition)
        .required("punctuatesNatively", caps.punctuatesNatively)
        .required("selfSegments", caps.selfSegments)
        .required("streamsWordByWord", caps.streamsWordByWord)
        .required("providesWordTimestamps", caps.providesWordTimestamps)
        .required("isOnline", caps.isOnline)
        .required("maxUnpunctuatedUnits", caps.maxUnpunctuatedUnits)
        .required("boundaryUnit", unit);
    caps.boundaryUnit = boundaryUnit(unit).value_or(caps.boundaryUnit);
    return caps;
}

std::vector<ASREventRecord> eventsOf(const Manifest& manifest, FileSystem& files,
                                     const std::filesystem::path& directory) {
    namespace Layout = DiagnosticsRunLayout;
    const auto option = JSON::member<std::string>(manifest.at("recognition"), "optionID");
    const auto lost = manifest.find("lostRecords");
    if (lost != manifest.end() && lost->contains("asrEvents"))
        throw std::runtime_error(localized("Events are missing: the disk was too slow or full."));
    auto records = ASREventLog::parsed(contentOf(
        files, directory, Layout::path(Layout::artifact("asrEvents"), option.value_or(""))));
    const auto ends = [](const ASREventRecord& record) {
        return captionMark(record) == CaptionMark::ended;
    };
    if (std::ranges::none_of(records, ends))
        throw std::runtime_error(localized("The event log does not reach the end of the session."));
    return records;
}

std::string described(std::string_view text, std::string_view kind) {
    return "\"" + std::string(text) + "\" (" + std::string(kind) + ")";
}

Result compare(const CaptionCore::Rows& replayed, const Manifest& segments) {
    Result result;
    const std::string nothing = localized("nothing");
    for (std::size_t i = 0; i < std::max(replayed.size(), segments.size()); ++i) {
        const std::string replayedRow =
            i < replayed.size() ? described(replayed[i].sourceText, name(replayed[i].freezeKind))
                                : nothing;
        const std::string timelineRow =
            i < segments.size()
                ? described(JSON::member<std::string>(segments[i], "text").value_or(""),
                            JSON::member<std::string>(segments[i], "freezeKind").value_or(""))
                : nothing;
        if (replayedRow != timelineRow) {
            result.problem = localized("Caption %lld: the session has %@, the replay has %@.",
                                       {std::to_string(i + 1), timelineRow, replayedRow});
            return result;
        }
        ++result.rows;
    }
    return result;
}

} // namespace

Result verify(FileSystem& files, const std::filesystem::path& directory) {
    try {
        const Manifest manifest = manifestOf(files, directory);
        const auto replayed = CaptionReplay::runMarked(eventsOf(manifest, files, directory),
                                                       capabilitiesIn(manifest.at("recognition")));
        Result result = compare(replayed.segments, segmentsOf(files, directory));
        for (const CaptionSegment& row : replayed.segments)
            result.text += row.sourceText + "\n";
        return result;
    } catch (const std::exception& error) {
        return {0, error.what(), {}};
    }
}

} // namespace tessarune::RunVerification
