#include "Tessarune/ui/captions/CaptionWindowModel.h"

#include <algorithm>

namespace tessarune {

namespace {

/// The user could not find and grab a fully transparent window.
constexpr double faintest = 0.02;
constexpr double opaqueEnough = 0.85; // for texts without an outline

double opacityOf(std::int64_t perCent) {
    return std::clamp(static_cast<double>(perCent) / 100, faintest, 1.0);
}

} // namespace

CaptionWindowModel::CaptionWindowModel(const CaptionWindowEnvironment& environment)
    : environment_(environment),
      settings_(environment.host, environment.settings),
      chrome_(environment.host) {
    observations_.follow(settings_.state, [this] { Q_EMIT settingsChanged(); });
    observations_.follow(chrome_.isPresented, [this] { Q_EMIT chromeChanged(); });
    observations_.followChanges(environment_.settings.showDockIcon.published(),
                                [this](bool) { Q_EMIT listedChanged(); });
    QAccessible::installActivationObserver(this);
}

CaptionWindowModel::~CaptionWindowModel() {
    QAccessible::removeActivationObserver(this);
}

QColor CaptionWindowModel::background() const {
    QColor color = QColor::fromRgb(static_cast<QRgb>(settings_.state->bgColorHex));
    color.setAlphaF(static_cast<float>(opacityOf(settings_.state->bgOpacity)));
    return color;
}

bool CaptionWindowModel::isTranslucent() const {
    return opacityOf(settings_.state->bgOpacity) < opaqueEnough;
}

void CaptionWindowModel::setPainted() {
    isPainted_ = true;
    chrome_.presentForAWhile();
    Q_EMIT painted();
}

void CaptionWindowModel::setMenuOpen(bool open) {
    if (open)
        chrome_.menuDidBeginTracking();
    else
        chrome_.menuDidEndTracking();
}

} // namespace tessarune
