#pragma once

#include "Tessarune/translation/LiveTranscriptTranslation.h"
#include "Tessarune/translation/TranslationService.h"
#include "TessaruneCore/UUID.h"
#include "TessaruneCore/observation/Published.h"

#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// One test of a language pair, requested by the user.
struct TranslationTestRequest {
    UUID id;
    std::string source;
    std::string target;
    std::string text;

    bool operator==(const TranslationTestRequest&) const = default;
};

/// Tests a language pair for the user: downloads its files if they are missing, prepares the pair
/// in a new translation session, translates a sample and reports the result. After a successful
/// test, a listening session that uses the pair retries its failed rows at once.
///
/// Main queue. Made with `std::make_shared`: a running test keeps it alive.
class TranslationTaskBridge : public std::enable_shared_from_this<TranslationTaskBridge> {
  public:
    struct Environment {
        Host& host;
        /// Null if this computer has no translator.
        std::shared_ptr<TranslationService> service;
        /// The listening session's translation, which retries failed rows after a successful test;
        /// null if no session can run.
        std::shared_ptr<LiveTranscriptTranslation> live;
    };
    explicit TranslationTaskBridge(Environment environment);
    TranslationTaskBridge(const TranslationTaskBridge&) = delete;

    /// Supersedes a running test.
    void runTranslationTest(const std::string& target);

    // State for views, which only read and observe it
    Published<bool>& isTestingTranslation() { return isTestingTranslation_; }
    Published<std::string>& resultText() { return resultText_; }
    Published<std::string>& statusText() { return statusText_; }

    /// The text of the failure for the user.
    static std::string errorMessage(const std::exception& error,
                                    const TranslationTestRequest& request);

  private:
    using Self = std::shared_ptr<TranslationTaskBridge>;

    static Task<void> test(Self self, TranslationTestRequest request);
    static Task<void> run(Self self, std::shared_ptr<TranslationSession> session,
                          TranslationTestRequest request);
    bool isCurrent(const TranslationTestRequest& request) const { return request_ == request; }
    std::shared_ptr<Translator> translator() const;
    void retryLiveTranslationsIfCurrent(const TranslationTestRequest& request);
    void finish();

    Environment environment_;
    std::optional<TranslationTestRequest> request_;
    Published<bool> isTestingTranslation_{false};
    Published<std::string> resultText_;
    Published<std::string> statusText_;
};

} // namespace tessarune
