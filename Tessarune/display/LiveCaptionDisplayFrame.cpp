#include "Tessarune/display/LiveCaptionDisplayFrame.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

namespace tessarune {

bool SubtitleTranslationStatusViewState::operator==(
    const SubtitleTranslationStatusViewState& other) const {
    return Text::equal(text, other.text) && hasIncomplete == other.hasIncomplete &&
           canRetryIncomplete == other.canRetryIncomplete;
}

LiveCaptionDisplayFrame LiveCaptionDisplayFrame::empty() {
    LiveCaptionDisplayFrame frame;
    frame.statusMessage = localized("点击开始，或按空格");
    return frame;
}

bool LiveCaptionDisplayFrame::operator==(const LiveCaptionDisplayFrame& other) const {
    return sourceRevision == other.sourceRevision &&
           translationRevision == other.translationRevision &&
           Text::equal(ghostTranslationText, other.ghostTranslationText) &&
           Text::equal(ghostTranslationSourceText, other.ghostTranslationSourceText) &&
           Text::equal(statusMessage, other.statusMessage) && sessionPhase == other.sessionPhase &&
           translationStatus == other.translationStatus;
}

} // namespace tessarune
