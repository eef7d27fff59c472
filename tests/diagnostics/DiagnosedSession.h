#pragma once

#include "Tessarune/diagnostics/SessionDiagnosticsRecorder.h"
#include "tests/simulation/TranslatedLiveSession.h"

#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace tessarune::testing {

/// Process figures that a test sets.
struct ScriptedProcessFigures final : ProcessFigures {
    double cpu = 0;
    Memory used{100, 120};

    double cpuSeconds() override { return cpu; }
    Memory memory() override { return used; }
    std::vector<Thread> threads() override { return {{1, true, cpu, 0, "running", 0}}; }
    std::string thermalState() override { return "nominal"; }
    std::int64_t activeProcessorCount() override { return 2; }
    std::optional<bool> lowPowerMode() override { return std::nullopt; }
    LogFields host() override { return {{"osVersion", "Simulated 1"}}; }
};

/// A simulated, translated session that a real diagnostics recorder observes.
struct DiagnosedSession : simulation::TranslatedLiveSession {
    explicit DiagnosedSession(DiagnosticsLevel level, std::uint64_t seed = 0)
        : TranslatedLiveSession(seed) {
        settings.diagnosticsLevel = level;
        observer = [this] {
            return recorder = std::make_shared<SessionDiagnosticsRecorder>(
                       SessionDiagnosticsRecorder::Environment{
                           .host = host,
                           .files = files,
                           .paths = paths,
                           .settings = settings,
                           .logger = logger,
                           .catalog = *catalog,
                           .figures = figures,
                           .notifications = &notifications,
                           .app = {"test", "1", "/usr", "/x"},
                           .onASREvent = {},
                           .mayRecord = [this] { return mayRecord; },
                           .windows = [this] { return windows; }});
        };
        launch();
    }

    void speak() {
        hear(3);
        for (const char* text : {"Purple elephants", "Purple elephants dance.",
                                 "Purple elephants dance. Quietly they"})
            say(false, text);
        say(true, "Purple elephants dance. Quietly they sing olé.");
        hear(2);
        say(false, "Nobody objects");
    }
    void runOne() {
        start();
        speak();
        stop();
        host.advanceBy(20);
    }

    std::filesystem::path run() {
        const auto names = files.list(paths.diagnostics());
        return names.empty() ? std::filesystem::path() : paths.diagnostics() / names.back();
    }
    nlohmann::json json(const std::string& name) {
        return nlohmann::json::parse(files.contentsOf(run() / name), nullptr, false);
    }
    std::vector<nlohmann::json> lines(const std::string& name) {
        std::istringstream text(files.contentsOf(run() / name));
        std::vector<nlohmann::json> found;
        for (std::string line; std::getline(text, line);)
            found.push_back(nlohmann::json::parse(line, nullptr, false));
        return found;
    }
    /// The paths of the run's files, relative to its folder.
    std::set<std::string> runFiles(const std::string& below = "") {
        std::set<std::string> found;
        for (const auto& name : files.list(below.empty() ? run() : run() / below)) {
            const std::string path = below.empty() ? name : below + "/" + name;
            if (files.isDirectory(run() / path))
                found.merge(runFiles(path));
            else
                found.insert(path);
        }
        return found;
    }

    bool mayRecord = true;
    std::vector<IdleMemorySentinel::Window> windows{{.title = "Captions", .isVisible = true}};
    ScriptedProcessFigures figures;
    std::shared_ptr<SessionDiagnosticsRecorder> recorder;
};

} // namespace tessarune::testing
