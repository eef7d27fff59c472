#pragma once

#include "Tessarune/display/CaptionFollowDriver.h"
#include "Tessarune/ui/captions/CaptionStageModel.h"

#include <QObject>
#include <QPointer>
#include <QQmlParserStatus>
#include <QQuickItem>
#include <QQuickWindow>
#include <QVariantAnimation>
#include <optional>

namespace tessarune {

/// Connects a Qt Quick list to the driver that keeps it at its newest line. Rows that do not fill
/// the list stand at its bottom. Lengths are in device-independent pixels. Main thread.
///
/// New rows scroll the list at once. So that a reader sees the lines move up, the list is then
/// drawn lower by `glide`, which is animated to zero.
class CaptionFollow : public QObject, public QQmlParserStatus, private CaptionListView {
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(tessarune::CaptionStageModel* stage MEMBER stage_ NOTIFY attachedChanged)
    Q_PROPERTY(QQuickItem* list READ list WRITE setList NOTIFY attachedChanged)
    /// By how much the list extends above its visible area.
    Q_PROPERTY(double hiddenHeight MEMBER hiddenHeight_ NOTIFY attachedChanged)
    Q_PROPERTY(bool reviewing READ reviewing NOTIFY reviewingChanged)
    Q_PROPERTY(double glide READ glide NOTIFY glideChanged)
    /// The height of the list's last row.
    Q_PROPERTY(double newestHeight READ newestHeight NOTIFY newestHeightChanged)

  public:
    CaptionFollow();

    QQuickItem* list() const { return list_; }
    void setList(QQuickItem* list);
    void classBegin() override {}
    void componentComplete() override;
    bool reviewing() const { return *state_.isReviewing; }
    double glide() const { return glide_; }
    double newestHeight() const { return newestHeight_; }

    // Call these from the list's signals.
    Q_INVOKABLE void movementStarted();
    Q_INVOKABLE void moved();
    Q_INVOKABLE void movementEnded();
    Q_INVOKABLE void contentHeightChanged();
    Q_INVOKABLE void heightChanged();
    /// Scrolls to the newest line, as the user asked.
    Q_INVOKABLE void returnToNewest();
    /// Scrolls by this many pages, as the user asked with the keyboard; negative values scroll
    /// back.
    Q_INVOKABLE void scrollByKey(double pages);

  Q_SIGNALS:
    void attachedChanged();
    void reviewingChanged();
    void glideChanged();
    void newestHeightChanged();

  private:
    void framePublished();
    void contentChanged();
    void followWindow(QQuickWindow* window);
    void listShownOrHidden();
    void visibleChanged(bool isVisible);
    void screenChanged();
    void beforeFrame();
    void takeHeights();

    // CaptionListView
    std::optional<Geometry> geometry() const override;
    void scrollToEnd() override;
    void redraw() override;
    void nudgeWindow() override;
    bool isFullScreen() const override;

    double listValue(const char* property) const;
    bool isMovedByUser() const;
    /// Returns by how much the rows moved up.
    double moveToEnd();
    void setGlide(double glide);

    CaptionStageModel* stage_ = nullptr;
    QPointer<QQuickItem> list_;
    double hiddenHeight_ = 0;
    CaptionFollowState state_;
    std::optional<CaptionFollowDriver> driver_;
    Observations observations_;
    QVariantAnimation gliding_;
    double glide_ = 0;
    double newestHeight_ = 0;
    bool contentIsDue_ = false; // a caption frame was published since the window was last drawn
    bool endIsDue_ = false;     // the list's end may have moved since the last drawing
};

} // namespace tessarune
