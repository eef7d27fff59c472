#pragma once

#include "Tessarune/translation/AppleTranslator.h"
#include "Tessarune/translation/LiveTranscriptTranslation.h"
#include "tests/support/Await.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/translation/ScriptedTranslationService.h"

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace tessarune::testing {

/// A session reduced to its translation: caption rows, settings, and a translator over a scripted
/// service, on simulated time.
struct TranslatedSession : TranslatedCaptions {
    explicit TranslatedSession(std::uint64_t seed = 0) : host(1000, seed) {
        settings.translationTargetLanguage = "fr";
        translation->attach(*this);
    }
    ~TranslatedSession() override {
        translation->shutDown();
        host.runUntilIdle(); // pending calls of the service end before the host
        host.end();
    }

    SimulatedHost host;
    MemoryUserDefaults defaults;
    AppSettings settings{defaults};
    std::shared_ptr<ScriptedTranslationService> service =
        std::make_shared<ScriptedTranslationService>();
    bool hasTranslator = true;
    int translatorsMade = 0;

    std::vector<CaptionSegment> rows;
    std::string statusMessage;
    std::vector<std::string> refreshes; ///< reasons
    std::vector<std::string> events;    ///< names of important events
    std::vector<TranslationObservation> observations;
    int persisted = 0;
    std::string patched; ///< text of the last patch
    std::function<void(const std::vector<CaptionSegment>& before)> onChange = [](auto&) {};

    std::shared_ptr<LiveTranscriptTranslation> translation =
        std::make_shared<LiveTranscriptTranslation>(LiveTranslationRuntime::Environment{
            host, settings,
            [this]() -> std::shared_ptr<Translator> {
                if (!hasTranslator)
                    return nullptr;
                ++translatorsMade;
                return std::make_shared<AppleTranslator>(host, service, Executor::main(host));
            },
            [this](std::string name, LogFields) { events.push_back(std::move(name)); },
            countingUUIDSource()});
    LiveTranslationRuntime* runtime = &translation->runtime();

    /// Commits new rows, as the core does.
    void commit(const std::vector<std::string>& texts) {
        for (const auto& text : texts) {
            CaptionSegment row;
            row.id = UUID::random();
            row.sourceText = text;
            row.committedAt = row.startedAt = host.now();
            rows.push_back(row);
        }
        translation->startCommittedRun();
    }

    /// Reports a boundary decision with this newest sentence.
    void speak(const std::string& leading) {
        BoundaryObservation observation;
        observation.decision.leading = {leading};
        translation->pumpGhostTranslation(observation);
    }

    std::vector<std::string> shown() const { return translationsOf(rows); }
    const std::string& status() const { return *translation->view().translationStatusMessage; }
    const std::string& preview() const { return *translation->view().ghostTranslationText; }
    bool isPreparing() const {
        return translation->view().translationPreparationDisplayState->preparing.has_value();
    }
    bool hasRefreshed(const std::string& reason) const {
        return std::find(refreshes.begin(), refreshes.end(), reason) != refreshes.end();
    }

    const std::vector<CaptionSegment>& committedSegments() const override { return rows; }
    void
    changeCommittedSegments(const std::function<void(std::span<CaptionSegment>)>& change) override {
        const auto before = rows;
        change(rows);
        onChange(before);
    }
    void setStatusMessage(const std::string& text) override { statusMessage = text; }
    void refreshCaptionDisplay(const std::string& reason,
                               const LiveCaptionDisplayTranslationPatch* patch) override {
        refreshes.push_back(reason);
        if (patch)
            patched = patch->translatedText.value_or("");
    }
    void updatePersistedTranscriptIfStopped() override { ++persisted; }
    void appendTranslationObservation(const TranslationObservation& observation) override {
        observations.push_back(observation);
    }
    bool keepsTextsForDiagnosis() const override { return keepsTexts; }
    bool keepsTexts = false;
};

} // namespace tessarune::testing
