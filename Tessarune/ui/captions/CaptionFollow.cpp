#include "Tessarune/ui/captions/CaptionFollow.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessarune {

namespace {

constexpr int glideMS = 220;
/// In device-independent pixels. More than `CaptionFollowDriver::reviewEnterThreshold`: after a
/// shorter scroll, the list would still follow and return to its newest line.
constexpr double shortestKeyScroll = 72;

} // namespace

CaptionFollow::CaptionFollow() {
    gliding_.setDuration(glideMS);
    gliding_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&gliding_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& value) { setGlide(value.toDouble()); });
    observations_.follow(state_.isReviewing, [this] { Q_EMIT reviewingChanged(); });
}

void CaptionFollow::setList(QQuickItem* list) {
    list_ = list;
    Q_EMIT attachedChanged();
}

/// Connects the list only now: before, it is not known whether the list is visible.
void CaptionFollow::componentComplete() {
    if (!stage_ || !list_)
        return;
    connect(list_, &QQuickItem::windowChanged, this, &CaptionFollow::followWindow);
    connect(list_, &QQuickItem::visibleChanged, this, &CaptionFollow::listShownOrHidden);
    followWindow(list_->window());
    driver_.emplace(stage_->host(), static_cast<CaptionListView&>(*this), state_,
                    stage_->followRecorder());
    connect(stage_, &CaptionStageModel::frameChanged, this, &CaptionFollow::framePublished);
    connect(stage_, &CaptionStageModel::settingsChanged, this, &CaptionFollow::contentChanged);
    listShownOrHidden();
}

void CaptionFollow::followWindow(QQuickWindow* window) {
    if (!window)
        return;
    const auto once = static_cast<Qt::ConnectionType>(Qt::DirectConnection | Qt::UniqueConnection);
    connect(window, &QQuickWindow::afterAnimating, this, &CaptionFollow::beforeFrame, once);
    connect(window, &QQuickWindow::visibleChanged, this, &CaptionFollow::visibleChanged, once);
    connect(window, &QQuickWindow::screenChanged, this, &CaptionFollow::screenChanged, once);
}

/// The list is invisible in a layout that does not use it, and while there are no captions.
void CaptionFollow::listShownOrHidden() {
    endIsDue_ = true;
    if (list_->isVisible())
        driver_->attached();
    contentChanged();
}

/// Reports the frame to the driver and requests a drawing. If no drawing follows for a while, the
/// driver requests another one. A window that is not exposed draws nothing, so its frames are not
/// reported.
void CaptionFollow::framePublished() {
    contentIsDue_ = true;
    if (!list_ || !list_->window() || !list_->window()->isExposed())
        return;
    driver_->frameHeartbeat();
    nudgeWindow();
}

void CaptionFollow::contentChanged() {
    driver_->update(stage_->contentRevision(), stage_->returnSeconds());
}

void CaptionFollow::visibleChanged(bool isVisible) {
    if (driver_ && isVisible)
        driver_->becameVisible("occlusion→visible");
}

void CaptionFollow::screenChanged() {
    if (driver_ && list_->window()->isVisible())
        driver_->becameVisible("screen-change");
}

void CaptionFollow::movementStarted() {
    if (!driver_)
        return;
    gliding_.stop();
    setGlide(0);
    driver_->userWillStartLiveScroll();
}

void CaptionFollow::moved() {
    if (driver_ && isMovedByUser())
        driver_->userDidLiveScroll();
}

void CaptionFollow::movementEnded() {
    if (driver_)
        driver_->userDidEndLiveScroll();
}

void CaptionFollow::contentHeightChanged() {
    if (!driver_)
        return;
    // The list is laying out its rows and must not be moved now.
    endIsDue_ = true;
    driver_->documentFrameChanged();
    nudgeWindow();
}

/// Moves the list before the window is drawn, so that a wrapped line is never half hidden.
void CaptionFollow::beforeFrame() {
    if (std::exchange(contentIsDue_, false))
        contentChanged();
    if (!std::exchange(endIsDue_, false))
        return;
    takeHeights();
    if (driver_->isPinned())
        scrollToEnd();
}

/// Aligns a short list to the bottom, and publishes the height of the newest row, on which the
/// height of the list may depend.
void CaptionFollow::takeHeights() {
    list_->setProperty("topMargin",
                       std::max(hiddenHeight_, list_->height() - listValue("contentHeight")));
    QQuickItem* newest = nullptr;
    QMetaObject::invokeMethod(list_, "itemAtIndex", Q_RETURN_ARG(QQuickItem*, newest),
                              Q_ARG(int, list_->property("count").toInt() - 1));
    if (newest && std::exchange(newestHeight_, newest->height()) != newest->height())
        Q_EMIT newestHeightChanged();
}

void CaptionFollow::heightChanged() {
    endIsDue_ = true;
    if (driver_ && driver_->isPinned())
        moveToEnd();
}

void CaptionFollow::returnToNewest() {
    if (!driver_)
        return;
    QMetaObject::invokeMethod(list_, "cancelFlick");
    driver_->returnToNewest();
}

void CaptionFollow::scrollByKey(double pages) {
    const auto before = geometry();
    if (!driver_ || !before)
        return;
    movementStarted();
    const double first = listValue("originY") - listValue("topMargin");
    const double distance = std::max(std::abs(pages) * before->clipHeight, shortestKeyScroll);
    const double wanted = listValue("contentY") + std::copysign(distance, pages);
    list_->setProperty("contentY",
                       std::clamp(wanted, std::min(first, before->legalBottomY - hiddenHeight_),
                                  before->legalBottomY - hiddenHeight_));
    driver_->userDidLiveScroll();
    driver_->userDidEndLiveScroll();
}

std::optional<CaptionListView::Geometry> CaptionFollow::geometry() const {
    if (!list_ || !list_->isVisible() || list_->height() <= 0 ||
        list_->property("count").toInt() == 0)
        return std::nullopt;
    Geometry geometry;
    geometry.clipHeight = list_->height() - hiddenHeight_;
    geometry.clipY = listValue("contentY") + hiddenHeight_;
    geometry.documentHeight = listValue("contentHeight");
    geometry.legalBottomY = listValue("originY") + geometry.documentHeight - geometry.clipHeight;
    geometry.rows = list_->property("count").toInt();
    return geometry;
}

double CaptionFollow::moveToEnd() {
    const auto before = geometry();
    if (!before)
        return 0;
    // While the end is more than a page away, the list only estimates the end's position. Showing
    // the end makes the position exact.
    if (std::abs(before->legalBottomDelta()) > before->clipHeight)
        QMetaObject::invokeMethod(list_, "positionViewAtEnd");
    list_->setProperty("contentY", geometry()->legalBottomY - hiddenHeight_);
    return before->legalBottomDelta();
}

/// Does nothing while the user moves the list: otherwise every new word would undo a slow scroll
/// back.
void CaptionFollow::scrollToEnd() {
    if (isMovedByUser())
        return;
    const double glide = glide_ + moveToEnd();
    gliding_.stop();
    if (glide <= 0 || glide > hiddenHeight_ || stage_->reducesMotion()) {
        setGlide(0);
        return;
    }
    setGlide(glide);
    gliding_.setStartValue(glide);
    gliding_.setEndValue(0.0);
    gliding_.start();
}

void CaptionFollow::redraw() {
    if (!list_)
        return;
    QMetaObject::invokeMethod(list_, "forceLayout");
    nudgeWindow();
}

/// Makes Qt draw and present the window, without moving it.
void CaptionFollow::nudgeWindow() {
    if (list_ && list_->window())
        list_->window()->update();
}

bool CaptionFollow::isFullScreen() const {
    return list_ && list_->window() && list_->window()->visibility() == QWindow::FullScreen;
}

double CaptionFollow::listValue(const char* property) const {
    return list_->property(property).toDouble();
}

bool CaptionFollow::isMovedByUser() const {
    return list_ && list_->property("moving").toBool();
}

void CaptionFollow::setGlide(double glide) {
    if (glide == glide_)
        return;
    glide_ = glide;
    Q_EMIT glideChanged();
}

} // namespace tessarune
