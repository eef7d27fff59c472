#pragma once

#include "Tessarune/display/SubtitleChromeState.h"
#include "Tessarune/display/SubtitleSettingsStores.h"
#include "Tessarune/ui/captions/CaptionWindowEnvironment.h"
#include "TessaruneCore/observation/Observations.h"

#include <QAccessible>
#include <QColor>
#include <QObject>

namespace tessarune {

/// The caption window without its captions: its background, whether it stays on top, and whether it
/// shows the toolbar. Main thread; the environment must outlive it.
class CaptionWindowModel final : public QObject, private QAccessible::ActivationObserver {
    Q_OBJECT
    Q_PROPERTY(QColor background READ background NOTIFY settingsChanged)
    /// Whether texts need an outline, because the screen behind the window shows through.
    Q_PROPERTY(bool isTranslucent READ isTranslucent NOTIFY settingsChanged)
    Q_PROPERTY(bool keepsOnTop READ keepsOnTop NOTIFY settingsChanged)
    /// Whether the desktop lists the window among the running programs.
    Q_PROPERTY(bool isListed READ isListed NOTIFY listedChanged)
    Q_PROPERTY(bool showsChrome READ showsChrome NOTIFY chromeChanged)
    /// Whether a screen reader may read the window, and so needs items that are not drawn, too.
    Q_PROPERTY(bool isRead READ isRead NOTIFY readChanged)
    /// Whether the window has been drawn once; its toolbar and menus are created only then.
    Q_PROPERTY(bool isPainted READ isPainted NOTIFY painted)

  public:
    explicit CaptionWindowModel(const CaptionWindowEnvironment& environment);
    ~CaptionWindowModel() override;

    QColor background() const;
    bool isTranslucent() const;
    bool keepsOnTop() const { return settings_.state->keepOnTop; }
    bool isListed() const { return *environment_.settings.showDockIcon; }
    bool isRead() const { return isRead_; }
    bool showsChrome() const { return *chrome_.isPresented; }
    bool isPainted() const { return isPainted_; }
    void setPainted();

    Q_INVOKABLE void setHovered(bool hovered) { chrome_.setBodyHovering(hovered); }
    Q_INVOKABLE void setToolbarFocused(bool focused) { chrome_.setChromeHovering(focused); }
    /// For keyboard users, who reach the toolbar only while it is shown.
    Q_INVOKABLE void showToolbar() { chrome_.presentForAWhile(); }
    Q_INVOKABLE void setMenuOpen(bool open);
    Q_INVOKABLE void close() const { environment_.commands.close(); }

  Q_SIGNALS:
    void settingsChanged();
    void chromeChanged();
    void readChanged();
    void listedChanged();
    void painted();

  private:
    void accessibilityActiveChanged(bool active) override {
        isRead_ = active;
        Q_EMIT readChanged();
    }

    const CaptionWindowEnvironment& environment_;
    SubtitleWindowSettingsStore settings_;
    SubtitleChromeState chrome_;
    bool isPainted_ = false;
    bool isRead_ = QAccessible::isActive();
    Observations observations_;
};

} // namespace tessarune
