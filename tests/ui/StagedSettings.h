#pragma once

#include "Tessarune/ui/settings/SettingsWindow.h"
#include "tests/simulation/FaultyFileSystem.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/ui/StagedCaptions.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tessarune {

/// Settings that another program can change.
class SharedUserDefaults final : public testing::MemoryUserDefaults {
  public:
    void observe(std::function<void()> onChange) override { changed = std::move(onChange); }

    std::function<void()> changed;
};

/// Speech models whose download ends when the test says so.
class ScriptedSpeechModels final : public SpeechModelManager {
  public:
    explicit ScriptedSpeechModels(Host& host) : succeeds(Executor::main(host)) {}

    std::vector<SpeechModelState> list() const override { return models; }
    Task<void> download(std::string name, std::function<void(AssetProgress)> progress,
                        std::stop_token /*stop*/) override {
        progress({30'000'000, 78'000'000});
        if (!co_await succeeds)
            throw std::runtime_error("The disk is full.");
        std::ranges::find(models, name, &SpeechModelState::name)->isInstalled = true;
    }
    void remove(const std::string& /*name*/) override {}

    std::vector<SpeechModelState> models{{"tiny-en", 44'000'000, true, false, {}},
                                         {"tiny-streaming-en", 78'000'000, false, false, {}},
                                         {"small-streaming-en", 224'000'000, true, true, {}}};
    OneShot<bool> succeeds;
};

class ScriptedLanguages final : public TranslationLanguages {
  public:
    std::vector<TranslationLanguageState> list() const override {
        using Status = TranslationAvailabilityStatus;
        std::vector<TranslationLanguageState> all;
        for (const auto& language : TranslationSupport::targetLanguages())
            all.push_back({language.id, Status::supported, 0, false, {}});
        all[0] = {"zh-Hans", Status::installed, 57'000'000, true, {}};
        all[7] = {"pt-BR", Status::installed, 18'000'000, false, {}};
        all[13].status = Status::unsupported;
        return all;
    }
    Task<void> download(std::string /*id*/,
                        std::function<void(TranslationDownloadProgress)> /*progress*/,
                        std::stop_token /*stop*/) override {
        ++downloads;
        co_return;
    }
    void remove(const std::string& /*id*/) override {}

    int downloads = 0;
};

/// A settings window over scripted models, languages and services.
class StagedSettings {
  public:
    ~StagedSettings() { window.reset(); }

    void open(const std::string& pane) {
        window = std::make_unique<SettingsWindow>(SettingsWindowEnvironment{
            .host = captions.host,
            .settings = settings,
            .session = captions.session,
            .store = store,
            .reducesMotion = captions.reducesMotion,
            .fileProblem = [this] { return problem; },
            .followFileProblem = [this](auto changed) { problemChanged = std::move(changed); },
            .renewFile = [this] { problem.clear(); },
            .speechModels = models,
            .speechModelSpeed =
                [](const std::string& name) {
                    return name == "tiny-en" ? std::optional(SpeechModelSpeed{0.21, false})
                                             : std::nullopt;
                },
            .languages = languages,
            .translationTest = std::make_shared<TranslationTaskBridge>(
                TranslationTaskBridge::Environment{captions.host, nullptr, nullptr}),
            .downloadTrouble = downloadTrouble,
            .files = files,
            .paths = {"/data"},
            .leaseDataFolder =
                [this] {
                    return DataFolderLease{
                        changeProblem.empty() ? std::make_shared<int>() : nullptr, changeProblem};
                },
            .openFolder =
                [this](const auto& folder) {
                    opened = folder;
                    return true;
                }});
        window->show(pane);
    }
    /// Simulates a change of the store by another program.
    void changedElsewhere() const { store.changed(); }

    StagedCaptions captions; ///< with host, session and application
    SharedUserDefaults store;
    AppSettings settings{store};
    ScriptedSpeechModels models{captions.host};
    ScriptedLanguages languages;
    Published<std::string> downloadTrouble;
    std::string problem; ///< of the settings file
    std::function<void()> problemChanged;
    simulation::FaultyFileSystem files;
    std::filesystem::path opened; ///< the last folder opened in the file manager
    std::string changeProblem;    ///< why no diagnostics run can be removed; empty: runs can be
    std::unique_ptr<SettingsWindow> window;
};

} // namespace tessarune
