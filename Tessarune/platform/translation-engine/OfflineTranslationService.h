#pragma once

#include "Tessarune/platform/translation-engine/TranslationModelInventory.h"
#include "Tessarune/translation/TranslationService.h"
#include "TessaruneCore/host/Host.h"

#include <memory>
#include <string>

namespace tessarune {

/// Limits for single calls of the engine, in seconds. They are reached only if the engine hangs or
/// the disk does not answer.
struct TranslationLimits {
    double load = 30;      ///< for reading all files of a model
    double translate = 20; ///< a sentence takes about a thousandth of this
};

/// Translates on this computer. Each language pair has one engine on its own thread. The pair's
/// sessions share the engine; it is loaded on first use and dropped with the last session. Only
/// `prepareTranslation` uses the network.
///
/// An engine that reaches a limit is abandoned: the operation fails with `alreadyCancelled`, its
/// session is over, and the next session gets a new engine. While three engines of a pair hang, the
/// operations of its new sessions fail in the same way.
///
/// Any thread. Host, store and inventory must outlive the service and its sessions. When the
/// service is destroyed, remaining sessions fail with `alreadyCancelled`; so does an operation
/// whose session is destroyed.
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
