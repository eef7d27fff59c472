#pragma once

#include "Tessarune/translation/LiveTranslationSettingsSnapshot.h"
#include "Tessarune/translation/TranslationLanguagePreparation.h"
#include "TessaruneCore/UUID.h"
#include "TessaruneCore/diagnostics/LogFields.h"
#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/translation/CommittedTranslationHealthState.h"
#include "TessaruneCore/translation/Translator.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <string_view>
#include <unordered_set>

namespace tessarune {

/// The state that outlives a single translation: the translator, at most one run of committed
/// translations, at most one preview, at most one language preparation, and the health of the
/// current language pair. It has no access to captions; it answers queries, and starts and stops
/// tasks.
///
/// Main queue. Made with `std::make_shared`: a cancelled task that still waits for the translator
/// keeps the runtime alive. Such a task can end late and must not clear the state of its successor,
/// so each task has an identity.
class LiveTranslationRuntime : public std::enable_shared_from_this<LiveTranslationRuntime> {
  public:
    struct Environment {
        Host& host;
        AppSettings& settings;
        /// Creates a translator for the main queue; returns null if the computer has none.
        std::function<std::shared_ptr<Translator>()> makeTranslator = [] { return nullptr; };
        /// Writes an important event to the runtime log.
        std::function<void(std::string name, LogFields fields)> log = [](const auto&...) {};
        UUIDSource newID = UUID::random;
    };
    explicit LiveTranslationRuntime(Environment environment);
    LiveTranslationRuntime(const LiveTranslationRuntime&) = delete;

    /// A task's work. It sees the request to stop through the token.
    using Operation = std::function<Task<void>(std::stop_token stop)>;

    // State that the steps of a translation read and write between their suspensions

    std::shared_ptr<Translator> cachedTranslator; ///< created on first use
    CommittedTranslationHealthState committedHealth;
    /// The units that failed because the language's files were missing.
    std::unordered_set<UUID> languageResourceFailures;
    std::int64_t committedSessionGeneration = 0; ///< counts rebuilds of the pair

    LiveTranslationSettingsSnapshot settings() const {
        return LiveTranslationSettingsSnapshot::current(environment_.settings);
    }
    double now() const { return environment_.host.now(); }
    UUID newID() const { return environment_.newID(); }
    Executor executor() const { return Executor::main(environment_.host); }
    void log(std::string name, LogFields fields) const {
        environment_.log(std::move(name), std::move(fields));
    }

    /// Whether the result of a task is still wanted: the task was not stopped, translation is on,
    /// and the settings still have the task's target. Checked after each suspension of a
    /// translation; an unwanted result is dropped.
    bool isWanted(const TranslationRunContext& context, const std::stop_token& stop) const;

    /// The cached translator, created on first use; null if there is none.
    std::shared_ptr<Translator> translator();

    // Committed translations

    bool hasCommittedTask() const { return committedTask_.has_value(); }
    /// Cancels a preview, then starts a run unless one is in progress.
    void startCommittedTask(Operation operation);
    void cancelCommittedTask();

    /// Assigns the health and the failed units to this pair; resets both if they belonged to
    /// another pair.
    void selectCommittedHealthPair(std::string_view source, std::string_view target);
    /// Resets the health and forgets which pair it belonged to.
    void resetCommittedHealth();

    /// Drops all state of the pair and prepares it again. Throws what the translator throws,
    /// `TranslatorError` if there is no translator, or `CancellationError`.
    Task<void> rebuildCommittedLanguagePair(std::string source, std::string target,
                                            std::stop_token stop);

    // Previews

    const std::string& ghostSource() const { return ghostSource_; }
    bool hasGhostTask() const { return ghostTask_.has_value(); }
    /// Supersedes the previous preview and returns the identity of the new one.
    UUID beginGhostRequest(std::string source, std::string target);
    bool isCurrentGhostRequest(std::string_view source, std::string_view target,
                               const UUID& requestID) const;
    void startGhostTask(const UUID& requestID, Operation operation);
    /// Cancels the preview but keeps its source text, so that the same text is not requested again.
    void cancelGhostTask();
    void forgetGhostSource();
    /// If `text` has the same key as the preview's source, forgets that source and returns true.
    bool clearGhostSourceIfMatches(std::string_view text);

    // Language preparation

    using PreparationFinished = std::function<void(const TranslationLanguagePreparationResult&)>;
    /// If this starts a preparation, `onFinished` is called at its end, unless the preparation was
    /// cancelled or superseded.
    TranslationLanguagePreparationStart
    startLanguagePreparation(std::string source, std::string target,
                             std::shared_ptr<Translator> translator, std::string reason,
                             PreparationFinished onFinished);
    bool isPreparingLanguages(std::string_view source, std::string_view target) const;
    void cancelLanguagePreparation();

    /// Called after a session: cancels everything and releases the translator and its memory.
    void bigCleanup();

  private:
    struct Preparation {
        UUID id;
        std::string key;
        std::string source;
        std::string target;
        std::string reason;
        double startedAt;
        std::shared_ptr<Translator> translator;
        PreparationFinished onFinished;
    };
    using Self = std::shared_ptr<LiveTranslationRuntime>;

    /// Runs the operation, then calls `finish`.
    static Task<void> run(Self self, UUID id, Operation operation, std::stop_token stop,
                          void (LiveTranslationRuntime::*finish)(const UUID& id));
    static Task<void> runPreparation(Self self, Preparation preparation, std::stop_token stop);
    static Task<TranslationLanguagePreparationResult>
    prepareLanguagePair(Self self, std::string source, std::string target,
                        std::shared_ptr<Translator> translator, std::stop_token stop);
    static Task<void> rebuild(Self self, std::string source, std::string target,
                              std::stop_token stop);

    void finishCommittedTaskIfCurrent(const UUID& id);
    void finishGhostTaskIfCurrent(const UUID& requestID);
    std::int64_t elapsedMS(double since) const;

    Environment environment_;

    std::optional<TaskHandle> committedTask_;
    std::optional<UUID> committedRequestID_;
    std::optional<std::string> committedHealthPairKey_;

    std::optional<TaskHandle> ghostTask_;
    std::optional<UUID> ghostRequestID_;
    std::string ghostSource_;
    std::string ghostTarget_;

    std::optional<TaskHandle> languagePreparationTask_;
    std::optional<UUID> languagePreparationID_;
    std::optional<std::string> languagePreparationKey_;
    std::set<std::string> preparedLanguagePairKeys_;
};

} // namespace tessarune
