#include "Tessarune/ui/captions/StreamingText.h"

namespace tessarune {

StreamingText::StreamingText() {
    connect(this, &StreamingText::inputChanged, this, &StreamingText::stream);
}

void StreamingText::stream() {
    if (!stage_ || !running_) {
        streaming_.reset();
        return;
    }
    if (!streaming_)
        alreadyRevealed_ = stage_->rows()->takeAlreadyRevealed();
    // QML sets the text and `running` one after the other. If it sets `running` first, the text is
    // still an older one. Therefore each text begins a new stream until something is revealed.
    if (!streaming_ || !hasRevealed_) {
        hasRevealed_ = false;
        stage_->rows()->setRevealed(alreadyRevealed_);
        streaming_ = std::make_unique<SmoothStreamingText>(stage_->host(), alreadyRevealed_);
        streaming_->onReveal = [this](std::size_t count) {
            hasRevealed_ = true;
            stage_->rows()->setRevealed(count);
            Q_EMIT markupChanged();
        };
    }
    connect(stage_, &CaptionStageModel::settingsChanged, this, &StreamingText::highlightChanged,
            Qt::UniqueConnection);
    streaming_->options = {.animated = stage_->streams(),
                           .reduceMotion = stage_->reducesMotion(),
                           .paceMS = stage_->paceMS(),
                           .highlightLastWord = stage_->highlights()};
    streaming_->stream(text_.toStdString());
    Q_EMIT markupChanged();
}

/// Applies a change of the highlight at once. A change of another setting takes effect with the
/// next text.
void StreamingText::highlightChanged() {
    if (!streaming_)
        return;
    streaming_->options.highlightLastWord = stage_->highlights();
    Q_EMIT markupChanged();
}

QString StreamingText::markup() const {
    if (!streaming_)
        return {};
    const auto [settled, newest] = streaming_->renderedTail();
    QString markup = QString::fromStdString(settled).toHtmlEscaped();
    if (!newest.empty())
        markup += QStringLiteral("<font color=\"%1\">%2</font>")
                      .arg(highlightColor_.name(), QString::fromStdString(newest).toHtmlEscaped());
    return markup;
}

} // namespace tessarune
