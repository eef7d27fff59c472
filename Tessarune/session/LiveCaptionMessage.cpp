#include "Tessarune/session/LiveCaptionMessage.h"

#include "TessaruneCore/text/Text.h"

#include <utility>

namespace tessarune {

void LiveCaptionMessage::present(const std::string& text, double now) {
    CaptionSegment segment;
    segment.id = UUID::random();
    segment.sourceText = text;
    segment.startedAt = now;
    message_ = segment;
    core_.currentPartial = std::move(segment);
}

bool LiveCaptionMessage::isShown() const {
    return message_ && core_.currentPartial->id == message_->id &&
           Text::equal(core_.currentPartial->sourceText, message_->sourceText);
}

void LiveCaptionMessage::remove() {
    if (isShown())
        core_.currentPartial.mutate([](CaptionSegment& row) { row.sourceText.clear(); });
    message_.reset();
}

} // namespace tessarune
