#include "Tessarune/session/LiveTranscriptPersistencePresentationState.h"

#include "TessaruneCore/text/Localization.h"

namespace tessarune::LiveTranscriptPersistencePresentationState {

bool apply(bool transcriptPersisted, std::string& statusMessage) {
    if (transcriptPersisted)
        return false;
    statusMessage = localized("转写保存失败，请检查磁盘空间。");
    return true;
}

} // namespace tessarune::LiveTranscriptPersistencePresentationState
