#pragma once

#include "Tessarune/platform/translation-engine/TranslationModelInventory.h"
#include "Tessarune/translation/TranslationService.h"
#include "TessaruneCore/host/Host.h"

#include <memory>
#include <string>

namespace tessarune {

/// How long the engine may be at one thing, in seconds. Reached only by an engine that hangs, or
/// files on a disk that does not answer.
struct TranslationLimits {
    double load = 30;      ///< reads all files of a model
    double translate = 20; ///< a sentence takes some thousandth of it
};

/// The translator of this computer: one engine a language pair, on a thread of its own, which the
/// pair's sessions share. It is loaded when a session first needs it and dropped with the last of
/// them. Nothing but `prepareTranslation` uses the network.
///
/// An engine that reaches a limit is left to itself: the operation fails with `alreadyCancelled`,
/// its session is over, and the next session has another engine. Once three of a pair hang, all
/// its operations fail so until one of them has ended.
///
/// Any thread. Host, store and inventory must outlive it and its sessions. Sessions that are left
/// when it goes fail with `alreadyCancelled`, and so does an operation whose session went.
class OfflineTranslationService final : public TranslationService {
  public:
    OfflineTranslationService(Host& host, ModelStore& store, TranslationModelInventory& inventory,
                              TranslationLimits limits = {});
    ~OfflineTranslationService() override;
    OfflineTranslationService(const OfflineTranslationService&) = delete;
    OfflineTranslationService& operator=(const OfflineTranslationService&) = delete;

    std::shared_ptr<LanguageAvailability> languageAvailability(Executor executor) override;
    std::shared_ptr<TranslationSession> session(std::string installedSource, std::string target,
                                                Executor executor) override;

  private:
    class Session;
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

} // namespace tessarune
