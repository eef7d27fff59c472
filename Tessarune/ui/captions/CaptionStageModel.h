#pragma once

#include "Tessarune/display/SubtitleSettingsStores.h"
#include "Tessarune/ui/captions/CaptionRowsModel.h"
#include "Tessarune/ui/captions/CaptionWindowEnvironment.h"
#include "Tessarune/ui/controls/DesktopLook.h"
#include "TessaruneCore/observation/Observations.h"

#include <QColor>
#include <QFont>
#include <QObject>
#include <QString>
#include <QTimer>
#include <optional>
#include <string>
#include <tuple>

namespace tessarune {

/// The body of the caption window: captions in one of two layouts, or why there are none. Main
/// thread; the environment must outlive it.
class CaptionStageModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(tessarune::CaptionRowsModel* rows READ rows CONSTANT)
    /// The rows of the second block; empty in a layout with one block.
    Q_PROPERTY(tessarune::CaptionRowsModel* translations READ translations CONSTANT)
    /// "content", "empty-idle", "empty-checking", "empty-silent", or "clear" to show nothing.
    Q_PROPERTY(QString presentation READ presentation NOTIFY stateChanged)
    Q_PROPERTY(QString emptyTitle READ emptyTitle NOTIFY stateChanged)
    Q_PROPERTY(QString emptySubtitle READ emptySubtitle NOTIFY stateChanged)
    /// The label of the action that may solve the problem that the empty stage explains; empty if
    /// there is none.
    Q_PROPERTY(QString emptyRemedy READ emptyRemedy NOTIFY stateChanged)
    Q_PROPERTY(QString translationStatus READ translationStatus NOTIFY stateChanged)
    /// The label of the action that solves the translation's problem; empty if there is none.
    Q_PROPERTY(QString translationRemedy READ translationRemedy NOTIFY stateChanged)
    Q_PROPERTY(QString newestText READ newestText CONSTANT)

    Q_PROPERTY(QString listName READ listName CONSTANT)
    Q_PROPERTY(bool reducesMotion READ reducesMotion NOTIFY settingsChanged)
    Q_PROPERTY(bool translates READ translates NOTIFY settingsChanged)
    Q_PROPERTY(bool isBilingual READ isBilingual NOTIFY settingsChanged)
    Q_PROPERTY(bool swaps READ swaps NOTIFY settingsChanged)
    Q_PROPERTY(int bottomPadding READ bottomPadding NOTIFY settingsChanged)
    Q_PROPERTY(QColor highlightColor READ highlightColor NOTIFY settingsChanged)
    Q_PROPERTY(QFont sourceFont READ sourceFont NOTIFY settingsChanged)
    Q_PROPERTY(QFont translationFont READ translationFont NOTIFY settingsChanged)
    Q_PROPERTY(QColor sourceColor READ sourceColor NOTIFY settingsChanged)
    Q_PROPERTY(QColor translationColor READ translationColor NOTIFY settingsChanged)

  public:
    explicit CaptionStageModel(const CaptionWindowEnvironment& environment);

    Host& host() const { return environment_.host; }
    const CaptionFollowDriver::Recorder& followRecorder() const {
        return environment_.recordFollow;
    }

    CaptionRowsModel* rows() { return &rows_; }
    CaptionRowsModel* translations() { return &translations_; }
    qulonglong contentRevision() const;
    QString presentation() const;
    QString emptyTitle() const;
    QString emptySubtitle() const;
    QString emptyRemedy() const;
    QString translationStatus() const;
    QString translationRemedy() const;
    QString newestText() const;

    QString listName() const;
    bool reducesMotion() const { return *environment_.reducesMotion; }
    bool translates() const { return settings().translationEnabled; }
    bool isBilingual() const;
    bool swaps() const { return settings().swapCaptionOrder; }
    int bottomPadding() const { return static_cast<int>(settings().subtitleBottomPadding); }
    int returnSeconds() const {
        return static_cast<int>(settings().subtitleReviewAutoReturnSeconds);
    }
    bool streams() const { return settings().smoothStreaming; }
    int paceMS() const { return static_cast<int>(settings().smoothPaceMS); }
    bool highlights() const { return settings().highlightChanges; }
    QColor highlightColor() const;
    QFont sourceFont() const;
    QFont translationFont() const;
    QColor sourceColor() const;
    QColor translationColor() const;

    Q_INVOKABLE void remedyEmpty() const;
    Q_INVOKABLE void remedyTranslation() const;

  Q_SIGNALS:
    /// A frame was published.
    void frameChanged();
    /// The texts, or whether there are captions, may have changed.
    void stateChanged();
    /// The rows show other texts, or the texts in another order.
    void layoutChanged();
    void settingsChanged();

  private:
    const LiveCaptionDisplayStore& display() const { return environment_.session.captionDisplay; }
    const LiveCaptionDisplayFrame& frame() const { return *display().frame; }
    const SubtitleCaptionSettingsViewState& settings() const { return *settings_.state; }
    bool isCleared() const;
    /// The file or microphone that is heard in place of the computer; empty for the computer.
    std::string heardName() const;
    void lookForModel();
    void updateRows();

    using Layout = std::tuple<bool, bool, bool>; // bilingual, swapped, merged
    std::optional<Layout> layout_;
    const CaptionWindowEnvironment& environment_;
    SubtitleCaptionSettingsStore settings_;
    DesktopLook look_;
    CaptionRowsModel rows_;
    CaptionRowsModel translations_;
    std::string explainedStatus_; ///< the translation's status when `lookForModel` last ran
    bool lacksModel_ = false;
    QTimer modelLook_; ///< runs while the model is missing
    Observations observations_;
};

} // namespace tessarune
