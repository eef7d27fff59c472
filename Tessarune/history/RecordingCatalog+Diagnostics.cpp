#include "Tessarune/history/RecordingCatalog.h"
#include "TessaruneCore/text/JSON.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <string_view>
#include <tuple>

namespace tessarune {

namespace {

using Json = JSON::Value;

/// The files of a run that name its recordings.
constexpr std::string_view namingFiles[] = {"recording.json", "manifest.json"};

/// Whether a key "recordingID", at any depth, names one of the recordings.
bool namesAnyRecording(const Json& value, const std::set<std::string>& lowerCaseIDs) {
    if (!value.is_structured())
        return false;
    if (value.is_object()) {
        const auto named = value.find("recordingID");
        if (named != value.end() && named->is_string() &&
            lowerCaseIDs.contains(Text::lowercased(named->get_ref<const std::string&>())))
            return true;
    }
    return std::any_of(value.begin(), value.end(),
                       [&](const Json& inner) { return namesAnyRecording(inner, lowerCaseIDs); });
}

} // namespace

std::optional<std::filesystem::path> RecordingCatalog::diagnosticsRunURL(const UUID& id) {
    const auto runs = diagnosticsRunURLs({id});
    return runs.empty() ? std::nullopt : std::optional(runs.front());
}

std::vector<std::filesystem::path>
RecordingCatalog::diagnosticsRunURLs(const std::set<UUID>& matching) {
    if (matching.empty())
        return {};
    std::set<std::string> ids;
    for (const auto& id : matching)
        ids.insert(Text::lowercased(id.text()));
    std::vector<std::tuple<double, std::string>> runs;
    try {
        for (const auto& name : files_.list(paths_.diagnostics())) {
            const auto run = paths_.diagnostics() / name;
            if (name.starts_with(".") || !files_.isDirectory(run) || !namesRecording(run, ids))
                continue;
            double modified = -std::numeric_limits<double>::infinity();
            try {
                modified = files_.modifiedAt(run);
            } catch (const std::exception&) { // counts as the oldest
            }
            runs.emplace_back(modified, name);
        }
    } catch (const std::exception&) {
        return {}; // a folder that cannot be listed has no runs
    }
    std::sort(runs.rbegin(), runs.rend());
    std::vector<std::filesystem::path> urls;
    urls.reserve(runs.size());
    for (const auto& [modified, name] : runs)
        urls.push_back(paths_.diagnostics() / name);
    return urls;
}

/// The files that name the recording are removed after all others: as long as they exist, an
/// interrupted removal can be repeated.
void RecordingCatalog::removeRun(const std::filesystem::path& run) {
    try {
        for (const auto& name : files_.list(run)) {
            if (std::ranges::find(namingFiles, name) == std::end(namingFiles))
                removeQuietly(run / name);
        }
    } catch (const std::exception&) { // the removal below reports the failure
    }
    removeQuietly(run);
}

bool RecordingCatalog::namesRecording(const std::filesystem::path& run,
                                      const std::set<std::string>& ids) {
    for (const std::string_view name : namingFiles) {
        try {
            if (namesAnyRecording(JSON::parse(files_.read(run / name)), ids))
                return true;
        } catch (const std::exception&) { // missing or unreadable: tries the next file
        }
    }
    return false;
}

} // namespace tessarune
