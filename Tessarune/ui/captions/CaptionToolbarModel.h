#pragma once

#include "Tessarune/display/SubtitleSettingsStores.h"
#include "Tessarune/ui/captions/CaptionSourcesModel.h"
#include "Tessarune/ui/captions/CaptionWindowEnvironment.h"
#include "TessaruneCore/observation/Observations.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <utility>
#include <vector>

namespace tessarune {

/// The toolbar and the status line of the caption window: the source, the duration, and the
/// buttons. The model notices only whether a frame has captions and whether one of them is an
/// error, so that new captions do not redraw the toolbar. Main thread; the environment must outlive
/// the model.
class CaptionToolbarModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isListening READ isListening NOTIFY sessionChanged)
    /// Whether a start or a stop is in progress.
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY sessionChanged)
    Q_PROPERTY(QString toggleText READ toggleText NOTIFY sessionChanged)
    Q_PROPERTY(QString sourceName READ sourceName NOTIFY sessionChanged)
    Q_PROPERTY(QAbstractListModel* sources READ sources CONSTANT)
    /// -1 if the source is not in the list.
    Q_PROPERTY(int currentSource READ currentSource NOTIFY sourcesChanged)
    Q_PROPERTY(QString status READ status NOTIFY sessionChanged)
    /// Whether the status is shown over the captions.
    Q_PROPERTY(bool showsStatus READ showsStatus NOTIFY sessionChanged)
    Q_PROPERTY(bool isTrouble READ isTrouble NOTIFY sessionChanged)
    /// The label of the action that may solve the problem that the status reports; empty if there
    /// is none.
    Q_PROPERTY(QString statusRemedy READ statusRemedy NOTIFY sessionChanged)
    Q_PROPERTY(QString notice READ notice NOTIFY noticeChanged)
    Q_PROPERTY(bool noticeIsTrouble READ noticeIsTrouble NOTIFY noticeChanged)
    Q_PROPERTY(QString dismissText READ dismissText CONSTANT)
    Q_PROPERTY(QString duration READ duration NOTIFY durationChanged)

    Q_PROPERTY(bool isCompact READ isCompact NOTIFY settingsChanged)
    Q_PROPERTY(bool keepsOnTop READ keepsOnTop NOTIFY settingsChanged)
    /// The buttons that the user wants, without the last one, which closes the window.
    Q_PROPERTY(QStringList buttons READ buttons NOTIFY settingsChanged)
    /// The texts of all buttons.
    Q_PROPERTY(QVariantMap texts READ texts NOTIFY settingsChanged)

  public:
    explicit CaptionToolbarModel(const CaptionWindowEnvironment& environment);

    bool isListening() const { return *session().isListening || environment_.isWaiting(); }
    bool isBusy() const;
    QString toggleText() const;
    QString sourceName() const;
    CaptionSourcesModel* sources() { return &sources_; }
    QStringList sourceNames() const;
    int currentSource() const;
    QString status() const;
    bool showsStatus() const;
    bool isTrouble() const;
    QString statusRemedy() const;
    QString notice() const { return QString::fromStdString(environment_.notice->text); }
    bool noticeIsTrouble() const { return environment_.notice->isTrouble; }
    QString dismissText() const;
    QString duration() const;

    bool isCompact() const { return settings_.state->compactToolbar; }
    bool keepsOnTop() const { return settings_.state->keepOnTop; }
    QStringList buttons() const;
    QVariantMap texts() const;
    /// Whether captions are translated, so that their layout and order can be changed.
    bool hasLayouts() const;
    bool swaps() const { return settings_.state->swapCaptionOrder; }
    QString pinText() const;
    QString keepOnTopText() const; ///< for an entry with a check mark
    QString copyText() const;
    QString copyOriginalText() const;
    QString clearText() const;
    QString layoutText() const;
    QString swapText() const;
    QString historyText() const;
    QString settingsText() const;

    Q_INVOKABLE void toggle() const;
    Q_INVOKABLE void remedyStatus() const;
    void toggleByMenu() const;
    /// Handles the record shortcut.
    void toggleByKey() const;
    Q_INVOKABLE void selectSource(int index) const;
    Q_INVOKABLE void refreshSources() const;
    void togglePin() const;
    void cycleLayout() const;
    void swapOrder() const;
    void showHistory() const { environment_.commands.showHistory(); }
    void showSettings() const { environment_.commands.showSettings({}); }
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
    bool hasOutput() const;
    bool showsErrorAsCaption() const;

    const CaptionWindowEnvironment& environment_;
    SubtitleToolbarSettingsStore settings_;
    CaptionSourcesModel sources_;
    /// Whether the last frame had captions, and whether one of them was an error.
    std::pair<bool, bool> shown_{false, false};
    Observations observations_;
};

} // namespace tessarune
