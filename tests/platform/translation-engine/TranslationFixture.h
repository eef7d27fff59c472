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
#include <vector>

namespace tessarune::testing {

inline constexpr const char* portugueseModel = "model.enpt.intgemm.alphas.bin";
inline constexpr const char* portugueseVocabulary = "vocab.enpt.spm";

/// What became of an operation: its text, or why there is none.
struct Outcome {
    std::string text;
    std::string failure;
    std::optional<TranslationError> kind;
    bool isOver = false;
};

/// The real engine in real time, with a model store of its own and a server that stands for all
/// others. The English to Portuguese model that scripts/setup unpacked came "with the program".
class TranslationFixture : public ::testing::Test {
  protected:
    explicit TranslationFixture(std::vector<std::filesystem::path> shipped = {TESSARUNE_MODELS})
        : store(disk, folder / "own", std::move(shipped)), installer(host, store, policy()) {}

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

    // Operations that run side by side until `finish`.

    std::shared_ptr<Outcome> begin(Task<TranslationSession::Response> task) {
        auto outcome = std::make_shared<Outcome>();
        spawn(Executor::main(host), follow(std::move(task), outcome, this));
        ++running;
        return outcome;
    }
    std::shared_ptr<Outcome> begin(Task<void> task) { return begin(said(std::move(task), "done")); }
    std::shared_ptr<Outcome> begin(Task<bool> task) { return begin(answered(std::move(task))); }
    std::shared_ptr<Outcome> begin(Task<TranslationAvailabilityStatus> task) {
        return begin(named(std::move(task)));
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
    TranslationModelInventory inventory{host, store, installer, policy()};
    std::unique_ptr<OfflineTranslationService> service =
        std::make_unique<OfflineTranslationService>(host, store, inventory);
    int running = 0;

  private:
    static Task<TranslationSession::Response> said(Task<void> task, std::string text) {
        co_await task;
        co_return {text};
    }
    static Task<TranslationSession::Response> answered(Task<bool> task) {
        const bool answer = co_await task;
        co_return {answer ? "yes" : "no"};
    }
    static Task<TranslationSession::Response> named(Task<TranslationAvailabilityStatus> task) {
        const TranslationAvailabilityStatus status = co_await task;
        co_return {std::string(name(status))};
    }

    static Task<void> follow(Task<TranslationSession::Response> task,
                             std::shared_ptr<Outcome> outcome, TranslationFixture* self) {
        try {
            const TranslationSession::Response response = co_await task;
            outcome->text = response.targetText;
        } catch (const TranslationServiceError& failure) {
            outcome->failure = failure.errorDescription();
            outcome->kind = failure.kind();
        } catch (const std::exception& failure) {
            outcome->failure = failure.what();
        }
        outcome->isOver = true;
        if (--self->running == 0)
            self->host.quit();
    }
};

} // namespace tessarune::testing
