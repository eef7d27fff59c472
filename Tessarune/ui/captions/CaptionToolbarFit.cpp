#include "Tessarune/ui/captions/CaptionToolbarFit.h"

#include <algorithm>
#include <utility>

namespace tessarune {

CaptionToolbarFit::CaptionToolbarFit() {
    connect(this, &CaptionToolbarFit::inputChanged, this, &CaptionToolbarFit::fit);
}

void CaptionToolbarFit::fit() {
    if (button_ <= 0)
        return;
    const auto all = wanted_.size();
    const double textRoom = room_ - toggle_ - source_ - static_cast<double>(all + 1) * button_;
    const bool showsSourceText = textRoom >= sourceText_;
    const bool showsToggleText = textRoom >= sourceText_ + toggleText_;
    auto count = all;
    if (textRoom < 0) { // the buttons "more" and "close" need room, too
        const double fitting = (room_ - toggle_ - source_) / button_ - 2;
        count = std::clamp(static_cast<qsizetype>(fitting), qsizetype{0}, all);
    }
    const bool hadMore = showsMore();
    const QStringList buttons = wanted_.last(count);
    showsSourceText_ = showsSourceText;
    showsToggleText_ = showsToggleText;
    Q_EMIT changed();
    // QML creates all buttons again at this signal, so it is emitted only after a real change.
    if (std::exchange(buttons_, buttons) != buttons || showsMore() != hadMore)
        Q_EMIT buttonsChanged();
}

} // namespace tessarune
