#pragma once

#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/host/LoopHost.h"
#include "Tessarune/platform/translation-engine/OfflineTranslationService.h"
#include "tests/platform/model-store/FaultyServer.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace tessarune::testing {

inline constexpr const char* portugueseModel = "model.enpt.intgemm.alphas.bin";
inline constexpr const char* portugueseVocabulary = "vocab.enpt.spm";

/// The outcome of an operation: its text, or the reason why there is none.
struct Outcome {
    std::string text;
    std::string failure;
    std::optional<TranslationError> kind;
};

/// The real engine in real time, with a model store of its own. All downloads come from `server`.
/// The store treats the unpacked English to Portuguese model as part of the program.
class TranslationFixture : public ::testing::Test {
  protected:
    explicit TranslationFixture(std::vector<std::filesystem::path> shipped = {TESSARUNE_MODELS},
                                ModelTrial trial = {})
        : store(disk, folder / "own", std::move(shipped)),
          installer(host, store, policy()),
          inventory(host, store, installer, TranslationCatalogueSource::ofEngine(),
                    std::move(trial)) {}

    DownloadPolicy policy() const {
        DownloadPolicy impatient;
        impatient.stallSeconds = 1;
        impatient.fruitlessTries = 2;
        impatient.firstPauseSeconds = 0.01;
        impatient.longestPauseSeconds = 0.05;
        impatient.mirror = server.url("");
        return impatient;
    }

    std::shared_ptr<TranslationSession> session(const std::string& target) {
        return service->session("en-US", target, Executor::main(host));
    }

    /// Begins an operation, which runs concurrently with others until `finish`.
    template <typename T>
    std::shared_ptr<Outcome> begin(Task<T> task) {
        auto outcome = std::make_shared<Outcome>();
        spawn(Executor::main(host), follow(std::move(task), outcome, this));
        ++running;
        return outcome;
    }
    void finish() {
        if (running > 0)
            host.run();
    }

    template <typename T>
    Outcome run(Task<T> task) {
        const auto outcome = begin(std::move(task));
        finish();
        return *outcome;
    }
    Outcome translate(const std::string& text, const std::string& target = "pt-BR") {
        const auto asked = session(target);
        return run(asked->translate(text));
    }
    std::string status(const std::string& from, const std::string& to) {
        const auto availability = service->languageAvailability(Executor::main(host));
        return run(availability->status(from, to)).text;
    }

    TemporaryFolder folder;
    PosixFileSystem disk;
    LoopHost host;
    FaultyServer server;
    ModelStore store;
    ModelInstaller installer;
    TranslationModelInventory inventory;
    std::unique_ptr<OfflineTranslationService> service =
        std::make_unique<OfflineTranslationService>(host, store, inventory);
    int running = 0;

  private:
    static std::string textOf(const TranslationSession::Response& response) {
        return response.targetText;
    }
    static std::string textOf(const std::string& text) { return text; }
    static std::string textOf(bool answer) { return answer ? "yes" : "no"; }
    static std::string textOf(TranslationAvailabilityStatus status) {
        return std::string(name(status));
    }

    template <typename T>
    static Task<void> follow(Task<T> task, std::shared_ptr<Outcome> outcome,
                             TranslationFixture* self) {
        try {
            if constexpr (std::is_void_v<T>) {
                co_await task;
            } else {
                const T result = co_await task;
                outcome->text = textOf(result);
            }
        } catch (const TranslationServiceError& failure) {
            outcome->failure = failure.errorDescription();
            outcome->kind = failure.kind();
        } catch (const std::exception& failure) {
            outcome->failure = failure.what();
        }
        // The operation may have resumed elsewhere; only the main queue changes `running`.
        co_await switchTo(Executor::main(self->host));
        if (--self->running == 0)
            self->host.quit();
    }
};

} // namespace tessarune::testing
