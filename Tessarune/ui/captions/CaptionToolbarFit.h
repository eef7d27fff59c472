#pragma once

#include <QObject>
#include <QStringList>

namespace tessarune {

/// Which parts of the toolbar have room in the window. As the window gets narrower, the text of the
/// toggle disappears first, then the name of the source, then buttons from the left, so that the
/// remaining buttons keep their places. The toggle, the source and the last button always stay.
/// Widths are in device-independent pixels and include the gap beside the part. Main thread.
class CaptionToolbarFit : public QObject {
    Q_OBJECT
    Q_PROPERTY(double room MEMBER room_ NOTIFY inputChanged)
    Q_PROPERTY(double toggle MEMBER toggle_ NOTIFY inputChanged) ///< without its text
    Q_PROPERTY(double toggleText MEMBER toggleText_ NOTIFY inputChanged)
    Q_PROPERTY(double source MEMBER source_ NOTIFY inputChanged) ///< without its name
    /// The minimum width at which the name of the source is worth showing.
    Q_PROPERTY(double sourceText MEMBER sourceText_ NOTIFY inputChanged)
    Q_PROPERTY(double button MEMBER button_ NOTIFY inputChanged)
    /// The buttons that the user wants, without the last one.
    Q_PROPERTY(QStringList wanted MEMBER wanted_ NOTIFY inputChanged)

    Q_PROPERTY(bool showsToggleText READ showsToggleText NOTIFY changed)
    Q_PROPERTY(bool showsSourceText READ showsSourceText NOTIFY changed)
    Q_PROPERTY(QStringList buttons READ buttons NOTIFY buttonsChanged)
    /// Whether there is a button for the menu, because other buttons have no room.
    Q_PROPERTY(bool showsMore READ showsMore NOTIFY buttonsChanged)

  public:
    CaptionToolbarFit();
    bool showsToggleText() const { return showsToggleText_; }
    bool showsSourceText() const { return showsSourceText_; }
    const QStringList& buttons() const { return buttons_; }
    bool showsMore() const { return buttons_.size() < wanted_.size(); }

  Q_SIGNALS:
    void inputChanged();
    void changed();
    void buttonsChanged();

  private:
    void fit();

    double room_ = 0;
    double toggle_ = 0;
    double toggleText_ = 0;
    double source_ = 0;
    double sourceText_ = 0;
    double button_ = 0;
    QStringList wanted_;
    bool showsToggleText_ = true;
    bool showsSourceText_ = true;
    QStringList buttons_;
};

} // namespace tessarune
