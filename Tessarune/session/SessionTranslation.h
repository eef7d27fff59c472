#pragma once

#include "TessaruneCore/captions/BoundaryObservation.h"
#include "TessaruneCore/host/Task.h"

#include <functional>
#include <string>

namespace tessarune {

/// What a session asks of the translation of its captions, each step a function. As it is made,
/// nothing is translated. Called on the main queue.
struct SessionTranslation {
    /// Makes the pair that the settings name ready. `reason` is for the log.
    std::function<void(const std::string& reason)> prewarmCurrentTranslationPair =
        [](const std::string&) {};
    /// Target or backend has got another value, by whatever way.
    std::function<void(const std::string& reason)> settingChanged = [](const std::string&) {};
    /// Rows were committed or sealed: ends a preview and starts a run for what waits, if one can
    /// run now.
    std::function<void()> startCommittedRun = [] {};
    /// For each boundary decision: may begin a preview of the open sentence.
    std::function<void(const BoundaryObservation&)> pumpGhostTranslation =
        [](const BoundaryObservation&) {};
    std::function<void()> cancelCommittedTranslationTask = [] {};
    /// Ends the preview and takes its text away.
    std::function<void()> cancelGhostTranslation = [] {};
    /// Before a new session: cancels the run, forgets health, preview, status and preparation.
    std::function<void()> resetForNewSession = [] {};
    std::function<bool()> hasPendingTranslations = [] { return false; };
    /// Finishes what can be finished in this time; true if nothing is left. Goes on on the main
    /// queue and never throws.
    std::function<Task<bool>(double timeoutSeconds)> drainCommittedTranslationsBeforePersist =
        [](double) -> Task<bool> { co_return true; };
    /// What is being prepared is no longer shown.
    std::function<void()> setPreparationIdle = [] {};
    std::function<void(const std::string& text)> setTranslationStatusMessage =
        [](const std::string&) {};
    /// After a session: cancels everything and lets the translator and its memory go.
    std::function<void()> bigCleanup = [] {};
    /// The session goes away for good; nothing of it may be called after this.
    std::function<void()> shutDown = [] {};
};

} // namespace tessarune
