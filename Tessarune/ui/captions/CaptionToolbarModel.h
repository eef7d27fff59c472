#pragma once

#include "Tessarune/display/SubtitleSettingsStores.h"
#include "Tessarune/ui/captions/CaptionWindowEnvironment.h"
#include "TessaruneCore/observation/Observations.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <vector>

namespace tessarune {

/// The toolbar and the status line of the caption window: the source, the duration, and the
/// buttons. It observes the session and not the frame, so that new captions do not redraw it. Main
/// thread; the environment must outlive it.
class CaptionToolbarModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isListening READ isListening NOTIFY sessionChanged)
    /// Whether a start or a stop is in progress.
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY sessionChanged)
    Q_PROPERTY(QString toggleText READ toggleText NOTIFY sessionChanged)
    Q_PROPERTY(QString sourceName READ sourceName NOTIFY sessionChanged)
    Q_PROPERTY(QStringList sources READ sources NOTIFY sourcesChanged)
    /// -1 if the source is not in the list.
    Q_PROPERTY(int currentSource READ currentSource NOTIFY sourcesChanged)
    Q_PROPERTY(QString status READ status NOTIFY sessionChanged)
    /// Whether the status needs attention and is shown over the captions.
    Q_PROPERTY(bool showsStatus READ showsStatus NOTIFY sessionChanged)
    Q_PROPERTY(bool isTrouble READ isTrouble NOTIFY sessionChanged)
    Q_PROPERTY(QString notice READ notice NOTIFY noticeChanged)
    Q_PROPERTY(QString dismissText READ dismissText CONSTANT)
    Q_PROPERTY(QString duration READ duration NOTIFY durationChanged)

    Q_PROPERTY(bool isCompact READ isCompact NOTIFY settingsChanged)
    Q_PROPERTY(bool keepsOnTop READ keepsOnTop NOTIFY settingsChanged)
    Q_PROPERTY(bool showsPin READ showsPin NOTIFY settingsChanged)
    Q_PROPERTY(bool showsLayout READ showsLayout NOTIFY settingsChanged)
    Q_PROPERTY(bool showsSwap READ showsSwap NOTIFY settingsChanged)
    Q_PROPERTY(bool showsCopy READ showsCopy NOTIFY settingsChanged)
    Q_PROPERTY(bool showsCopyOriginal READ showsCopyOriginal NOTIFY settingsChanged)
    Q_PROPERTY(bool showsClear READ showsClear NOTIFY settingsChanged)
    Q_PROPERTY(bool showsHistory READ showsHistory NOTIFY settingsChanged)
    Q_PROPERTY(bool showsSettings READ showsSettings NOTIFY settingsChanged)
    Q_PROPERTY(QString pinText READ pinText NOTIFY settingsChanged)
    Q_PROPERTY(QString layoutText READ layoutText CONSTANT)
    Q_PROPERTY(QString swapText READ swapText CONSTANT)
    Q_PROPERTY(QString copyText READ copyText CONSTANT)
    Q_PROPERTY(QString copyOriginalText READ copyOriginalText CONSTANT)
    Q_PROPERTY(QString clearText READ clearText CONSTANT)
    Q_PROPERTY(QString historyText READ historyText CONSTANT)
    Q_PROPERTY(QString settingsText READ settingsText CONSTANT)
    Q_PROPERTY(QString closeText READ closeText CONSTANT)
    Q_PROPERTY(QString sourceText READ sourceText CONSTANT)

  public:
    explicit CaptionToolbarModel(const CaptionWindowEnvironment& environment);

    bool isListening() const { return *session().isListening || environment_.isWaiting(); }
    bool isBusy() const;
    QString toggleText() const;
    QString sourceName() const;
    QStringList sources() const;
    int currentSource() const;
    QString status() const;
    bool showsStatus() const;
    bool isTrouble() const;
    QString notice() const { return QString::fromStdString(*environment_.notice); }
    QString dismissText() const;
    QString duration() const;

    bool isCompact() const { return settings_.state->compactToolbar; }
    bool keepsOnTop() const { return settings_.state->keepOnTop; }
    bool showsPin() const { return settings_.state->showPinWindow; }
    bool showsLayout() const { return settings_.state->showLayoutMode; }
    bool showsSwap() const { return settings_.state->showSwapCaptionOrder; }
    bool showsCopy() const { return settings_.state->showCopyBilingual; }
    bool showsCopyOriginal() const { return settings_.state->showCopyOriginal; }
    bool showsClear() const { return settings_.state->showClearSubtitles; }
    bool showsHistory() const {
        return settings_.state->showHistory && environment_.commands.showHistory;
    }
    bool showsSettings() const {
        return settings_.state->showSettings && environment_.commands.showSettings;
    }
    /// Whether captions are translated, so that their layout and order can be changed.
    bool hasLayouts() const;
    bool swaps() const { return settings_.state->swapCaptionOrder; }
    QString pinText() const;
    QString keepOnTopText() const; ///< the same in both states
    QString copyText() const;
    QString copyOriginalText() const;
    QString clearText() const;
    QString layoutText() const;
    QString swapText() const;
    QString historyText() const;
    QString settingsText() const;
    QString closeText() const;
    QString sourceText() const;

    Q_INVOKABLE void toggle() const;
    void toggleByMenu() const;
    /// Handles the record shortcut.
    void toggleByKey() const;
    Q_INVOKABLE void selectSource(int index) const;
    Q_INVOKABLE void refreshSources() const;
    Q_INVOKABLE void togglePin() const;
    Q_INVOKABLE void cycleLayout() const;
    Q_INVOKABLE void swapOrder() const;
    Q_INVOKABLE void showHistory() const { environment_.commands.showHistory(); }
    Q_INVOKABLE void showSettings() const { environment_.commands.showSettings({}); }
    Q_INVOKABLE void dismissNotice() const { environment_.commands.dismissNotice(); }

  Q_SIGNALS:
    void sessionChanged();
    void sourcesChanged();
    void durationChanged();
    void noticeChanged();
    void settingsChanged();

  private:
    const SessionView& session() const { return environment_.session; }
    bool isStopping() const { return *session().sessionPhase == LiveSessionPhase::stopping; }
    AppSettings& appSettings() const { return environment_.settings; }
    std::vector<AudioSource> listedSources() const;

    const CaptionWindowEnvironment& environment_;
    SubtitleToolbarSettingsStore settings_;
    Observations observations_;
};

} // namespace tessarune
