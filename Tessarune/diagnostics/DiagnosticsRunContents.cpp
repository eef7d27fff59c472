#include "Tessarune/diagnostics/DiagnosticsRunContents.h"

#include "Tessarune/diagnostics/DiagnosticsRunFiles.h"
#include "TessaruneCore/text/JSON.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <system_error>

namespace tessarune {

namespace {

using SizesByPath = std::map<std::string, std::uint64_t>;

void collectSizes(FileSystem& files, const std::filesystem::path& directory,
                  const std::string& below, SizesByPath& sizes) {
    std::vector<std::string> entries;
    try {
        entries = files.list(below.empty() ? directory : directory / below);
    } catch (const std::system_error&) { // counts as empty
    }
    for (const std::string& entry : entries) {
        const std::string path = (std::filesystem::path(below) / entry).string();
        try {
            if (files.isDirectory(directory / path))
                collectSizes(files, directory, path, sizes);
            else
                sizes[path] = files.size(directory / path);
        } catch (const std::system_error&) { // an unreadable file is left out
        }
    }
}

void applyManifest(const JSON::Value& manifest, DiagnosticsRunContents& contents) {
    const auto text = [&](const char* key) {
        return JSON::member<std::string>(manifest, key).value_or("");
    };
    contents.level = text("diagnosticsLevel");
    contents.isFull = text("kind") == DiagnosticsRunLayout::fullKind;
    contents.isRun = contents.isFull || text("kind") == DiagnosticsRunLayout::coreKind;
    contents.startedWall = JSON::member<double>(manifest, "startedWall");
    contents.durationSeconds = JSON::member<double>(manifest, "durationSeconds");
    contents.isFinished = contents.durationSeconds.has_value();
    // A longer time is damage; a negative one, a clock that was set back.
    constexpr double longestSeconds = 1e9;
    if (contents.durationSeconds &&
        (*contents.durationSeconds < 0 || *contents.durationSeconds > longestSeconds))
        contents.durationSeconds.reset();
    contents.recordingID = text("recordingID");
    if (const auto summary = manifest.find("summary"); summary != manifest.end())
        contents.committedSegments =
            JSON::member<std::int64_t>(*summary, "committedSegmentCount").value_or(0);
    const auto lost = manifest.find("lostRecords");
    for (const auto& count : lost == manifest.end() ? JSON::Value::object() : *lost)
        contents.lostRecords += count.is_number_integer() ? count.get<std::int64_t>() : 0;
}

} // namespace

DiagnosticsRunContents DiagnosticsRunContents::read(FileSystem& files,
                                                    const std::filesystem::path& directory) {
    namespace Layout = DiagnosticsRunLayout;
    DiagnosticsRunContents contents;
    contents.id = directory.filename().string();
    contents.directory = directory;
    const JSON::Value manifest =
        JSON::parse(DiagnosticsRunFiles::readManifest(files, directory).value_or(""));
    std::string optionID;
    if (manifest.is_object()) {
        applyManifest(manifest, contents);
        if (const auto recognition = manifest.find("recognition"); recognition != manifest.end())
            optionID = JSON::member<std::string>(*recognition, "optionID").value_or("");
    }
    // A run that was cut off early may have no manifest, but it has a lifecycle log.
    contents.isRun |=
        std::ranges::any_of(Layout::artifacts(), [&](const Layout::Artifact& artifact) {
            return artifact.content == Layout::Content::lifecycle &&
                   files.exists(directory / Layout::path(artifact, optionID));
        });
    if (!contents.isRun)
        return contents; // another folder may contain any number of files
    SizesByPath sizes;
    collectSizes(files, directory, "", sizes);
    for (const Layout::Artifact& artifact : Layout::artifacts()) {
        if (const auto found = sizes.extract(Layout::path(artifact, optionID)))
            contents.files.push_back({found.key(), &artifact, found.mapped()});
    }
    for (const auto& [path, bytes] : sizes)
        contents.files.push_back({path, nullptr, bytes});
    return contents;
}

std::uint64_t DiagnosticsRunContents::bytes() const {
    return std::accumulate(files.begin(), files.end(), std::uint64_t{0},
                           [](std::uint64_t sum, const File& file) { return sum + file.bytes; });
}

bool DiagnosticsRunContents::has(DiagnosticsRunLayout::Content content) const {
    return std::ranges::any_of(files, [&](const File& file) {
        return file.artifact && file.artifact->content == content && file.bytes > 0;
    });
}

} // namespace tessarune
