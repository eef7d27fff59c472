#pragma once

#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>

namespace tessarune {

/// A menu in a window of its own, so that a smaller owner window does not cut it off. The menu is
/// as large as its list needs, within the limits of its width; the list scrolls only if the screen
/// is not high enough. Keys reach the menu, although most desktops leave the keyboard focus to the
/// owner. A press outside the menu closes it, as does another window that takes the focus. The list
/// may change while the menu is open. Main thread.
class MenuWindow : public QQuickWindow {
    Q_OBJECT
    /// A ListView that fills the window except for `margin`. Its items have an implicit width and
    /// the function `press()`.
    Q_PROPERTY(QQuickItem* list MEMBER list_ NOTIFY listChanged)
    Q_PROPERTY(double margin MEMBER margin_ NOTIFY listChanged)
    Q_PROPERTY(double leastWidth MEMBER leastWidth_ NOTIFY listChanged)
    Q_PROPERTY(double mostWidth MEMBER mostWidth_ NOTIFY listChanged)

  public:
    MenuWindow();
    /// Opens the menu with its upper left corner at a point of an item, if the screen has room
    /// there.
    Q_INVOKABLE void openAt(QQuickItem* item, double x, double y);

  Q_SIGNALS:
    void listChanged();

  protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    Q_SLOT void followList();
    Q_SLOT void announceCurrent();
    void place();
    QSize neededSize(const QSize& available);
    bool handleKey(QEvent& event);
    void focusMoved(const QWindow* window);

    QPointer<QQuickItem> list_;
    QPoint corner_; // the wanted upper left corner, on the screen
    double margin_ = 0;
    double leastWidth_ = 0;
    double mostWidth_ = 0;
};

} // namespace tessarune
