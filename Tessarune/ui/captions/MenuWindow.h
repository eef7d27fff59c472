#pragma once

#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>

namespace tessarune {

/// A menu in a window of its own, so that it is whole even if its owner is smaller. It is as large
/// as its list needs, and scrolls only on a screen that is lower. It has the keyboard, although
/// most desktops leave that to the owner. A press outside closes it, as does another window that
/// takes the focus. While it is open, its list may change. Main thread.
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
    /// Opens the menu with its corner at a point of an item.
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
    QSize neededSize(const QSize& most);
    bool handleKey(QEvent& event);
    void focusMoved(const QWindow* window);

    QPointer<QQuickItem> list_;
    QPoint corner_; // where the menu is wanted
    double margin_ = 0;
    double leastWidth_ = 0;
    double mostWidth_ = 0;
};

} // namespace tessarune
