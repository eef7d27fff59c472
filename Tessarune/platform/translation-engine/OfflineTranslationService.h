#pragma once

#include "Tessarune/platform/translation-engine/TranslationModelInventory.h"
#include "Tessarune/translation/TranslationService.h"
#include "TessaruneCore/host/Host.h"

#include <memory>
#include <string>

namespace tessarune {

/// The translator of this computer: one engine a language pair, on a thread of its own, which the
/// pair's sessions share. It is loaded when a session first needs it and dropped with the last of
/// them. Nothing but `prepareTranslation` uses the network.
///
/// Any thread. Host, store and inventory must outlive it and its sessions. Sessions that are left
/// when it goes fail with `alreadyCancelled`, and so does an operation whose session went.
class OfflineTranslationService final : public TranslationService {
  public:
    OfflineTranslationService(Host& host, ModelStore& store, TranslationModelInventory& inventory);
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
