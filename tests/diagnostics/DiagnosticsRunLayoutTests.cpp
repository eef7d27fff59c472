#include "Tessarune/diagnostics/DiagnosticsRunLayout.h"
#include "Tessarune/diagnostics/HistoryRefinementDiagnosticsSession.h"
#include "TessaruneCore/text/Text.h"
#include "tests/diagnostics/DiagnosedSession.h"
#include "tests/support/FileContents.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace tessarune {
namespace {

using testing::DiagnosedSession;
namespace Layout = DiagnosticsRunLayout;
using Level = DiagnosticsLevel;

bool isNamed(const Layout::Field& field, const std::string& key) {
    const std::string names = ", " + std::string(field.names) + ",";
    return names.find(", " + key + ",") != std::string::npos;
}

/// Collects the members that the table does not list, each with its path.
void collectUnknown(const nlohmann::json& object, const std::vector<Layout::Field>& fields,
                    const std::string& where, std::set<std::string>& unknown) {
    for (const auto& [key, value] : object.items()) {
        const auto field = std::ranges::find_if(
            fields, [&k = key](const Layout::Field& known) { return isNamed(known, k); });
        if (field == fields.end()) {
            unknown.insert(where + "." + key);
            continue;
        }
        if (field->members == Layout::anything)
            continue;
        const auto& members = Layout::fields(field->members);
        if (value.is_object())
            collectUnknown(value, members, where + "." + key, unknown);
        for (const auto& element : value.is_array() ? value : nlohmann::json::array()) {
            if (element.is_object())
                collectUnknown(element, members, where + "." + key, unknown);
        }
    }
}

std::string fieldTable(const std::vector<Layout::Field>& fields) {
    std::string text = "| Field | Meaning |\n|---|---|\n";
    for (const auto& field : fields) {
        std::string names = "`" + std::string(field.names) + "`";
        for (std::size_t at = 0; (at = names.find(", ", at)) != std::string::npos; at += 4)
            names.replace(at, 2, "`, `");
        text += "| " + names + " | " + std::string(field.meaning);
        if (!field.members.empty() && field.members != Layout::anything)
            text += std::ranges::count(Layout::groups(), field.members) > 0
                        ? ": [below](#" + Text::lowercased(field.members) + ")"
                        : "";
        text += " |\n";
    }
    return text;
}

std::string guide() {
    std::string text = "<!-- Made from Tessarune/diagnostics/DiagnosticsRunLayout.cpp and "
                       "DiagnosticsRunFields*.cpp:\n     TESSARUNE_WRITE_DOCS=1 "
                       "build/dev/bin/diagnostics-tests --gtest_filter='*Guide*' -->\n";
    text += testing::contentsOf(std::string(TESSARUNE_TEST_DATA) + "/../diagnostics/guide-head.md");
    text += "\n## Files\n\n| File | In the manifest | Level | Written | Text | What |\n"
            "|---|---|---|---|---|---|\n";
    for (const auto& artifact : Layout::artifacts()) {
        const std::string level = artifact.isInCoreRuns ? "core" : "standard";
        text += "| `" + std::string(artifact.path) + "` | " +
                (artifact.isListed ? "`" + std::string(artifact.name) + "`" : "") + " | " + level +
                (artifact.condition.empty() ? "" : "; " + std::string(artifact.condition)) + " | " +
                std::string(artifact.written) + " | " + (artifact.holdsText ? "yes" : "no") +
                " | " + std::string(artifact.description) + " |\n";
    }
    for (const auto& artifact : Layout::artifacts()) {
        if (const auto& fields = Layout::fields(artifact.name); !fields.empty())
            text += "\n## " + std::string(artifact.path) + "\n\n" + fieldTable(fields);
    }
    for (const auto& group : Layout::groups())
        text += "\n## " + std::string(group) + "\n\n" + fieldTable(Layout::fields(group));
    return text;
}

TEST(DiagnosticsRunLayoutTests, TheGuideIsMadeFromTheTable) {
    const std::string path = std::string(TESSARUNE_TEST_DATA) + "/../../docs/diagnostics.md";
    if (std::getenv("TESSARUNE_WRITE_DOCS"))
        std::ofstream(path) << guide();
    EXPECT_EQ(testing::contentsOf(path), guide())
        << "docs/diagnostics.md is out of date; TESSARUNE_WRITE_DOCS=1 updates it";
}

/// Reports a refinement of the session's recording to the diagnostics in its run.
void refine(DiagnosedSession& session) {
    using Observer = HistoryRefinementObserver;
    const HistoryRefinementRequest request = **session.refinements.rbegin();
    const auto observer = HistoryRefinementDiagnosticsSession::open(
        {session.host, session.files, *session.catalog, session.logger,
         session.host.serialQueue("", QueuePriority::utility)},
        request);
    ASSERT_NE(observer, nullptr);
    session.host.advanceBy(1);
    EXPECT_EQ(session.json("manifest.json")["refinementDiagnostics"]["status"], "running");
    observer->lifecycle({"history.refine", LifecyclePhase::start, {}, {}, {}});
    SpeechAnalyzerFileResultSummary summary;
    summary.audioStartSeconds = 1;
    observer->appleResult(summary);
    observer->splitCandidate({});
    observer->finalSegment(0, {"Violet giants waltz.", 0, 2, {}});
    session.catalog->saveRefinedSourceTranscript("Violet giants waltz.", std::nullopt,
                                                 request.recordingID);
    observer->sourceSaved(1, "audioSegment");
    for (const auto event :
         {Observer::Translation::Event::start, Observer::Translation::Event::success,
          Observer::Translation::Event::failure})
        observer->translation({event, 0, "en", "fr", "Violet giants waltz.", 0.5, "…", "?"});
    observer->bilingualSaved(1, "fr");
    observer->close(Observer::Status::finished);
    session.host.advanceBy(1);
    const auto manifest = session.json("manifest.json");
    const auto& about = manifest["refinementDiagnostics"];
    EXPECT_EQ(about["status"], "finished");
    EXPECT_EQ(about["counters"]["translationFailureCount"], 1);
    EXPECT_EQ(about["files"][2]["bytes"],
              session.files.contentsOf(session.run() / "events/refine_segments.ndjson").size());
    EXPECT_EQ(session.files.contentsOf(session.run() / "transcript.txt"), "Violet giants waltz.");
    EXPECT_EQ(manifest["summary"]["transcriptCharacters"], 20);
}

TEST(DiagnosticsRunLayoutTests, EveryFileAndFieldThatIsWrittenIsInTheTable) {
    std::set<std::string> unknown;
    for (const Level level : {Level::core, Level::trace}) {
        DiagnosedSession session(level);
        session.settings.appleAnalyzerDiagnosticsMode = AppleAnalyzerDiagnosticsMode::fullRaw;
        session.runOne();
        session.figures.used.footprintMB = 3000;
        session.host.advanceBy(30);
        if (level == Level::trace)
            refine(session);
        for (const std::string& path : session.runFiles()) {
            const auto artifact =
                std::ranges::find_if(Layout::artifacts(), [&](const Layout::Artifact& known) {
                    return Layout::path(known, "apple-analyzer-en") == path;
                });
            if (artifact == Layout::artifacts().end()) {
                unknown.insert(path);
                continue;
            }
            const auto& fields = Layout::fields(artifact->name);
            if (path.ends_with(".json"))
                collectUnknown(session.json(path), fields, path, unknown);
            if (path.ends_with(".ndjson")) {
                for (const auto& line : session.lines(path))
                    collectUnknown(line, fields, path, unknown);
            }
        }
    }
    EXPECT_EQ(unknown, std::set<std::string>());
}

} // namespace
} // namespace tessarune
