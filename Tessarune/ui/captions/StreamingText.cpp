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
    if (!streaming_) {
        streaming_ = std::make_unique<SmoothStreamingText>(stage_->host());
        streaming_->onReveal = [this](std::size_t) { Q_EMIT markupChanged(); };
    }
    streaming_->options = {.animated = stage_->streams(),
                           .reduceMotion = stage_->reducesMotion(),
                           .paceMS = stage_->paceMS(),
                           .highlightLastWord = stage_->highlights()};
    streaming_->stream(text_.toStdString());
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
