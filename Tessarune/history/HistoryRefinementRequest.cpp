#include "Tessarune/history/HistoryRefinementRequest.h"

#include "TessaruneCore/recognition/ModelCatalog.h"

#include <utility>

namespace tessarune {

std::optional<HistoryRefinementRequest>
HistoryRefinementRequest::current(const AppSettings& settings, const UUID& recordingID,
                                  std::string audioPath) {
    const auto option = ModelCatalog::recognitionOption(*settings.selectedRecognitionOptionID);
    if (!option || option->localeIdentifier.empty())
        return std::nullopt;
    return HistoryRefinementRequest{recordingID,
                                    std::move(audioPath),
                                    option->id,
                                    option->localeIdentifier,
                                    *settings.translationBackend,
                                    *settings.translationTargetLanguage};
}

} // namespace tessarune
