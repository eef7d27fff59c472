#pragma once

#include "Tessarune/display/SmoothStreamingText.h"
#include "Tessarune/ui/captions/CaptionStageModel.h"

#include <QColor>
#include <QObject>
#include <QString>
#include <cstddef>
#include <memory>

namespace tessarune {

/// A growing text that a view shows word by word: `SmoothStreamingText` for Qt Quick. Main thread.
class StreamingText : public QObject {
    Q_OBJECT
    /// Supplies the host and the settings. Set it before a text is shown.
    Q_PROPERTY(tessarune::CaptionStageModel* stage MEMBER stage_ NOTIFY inputChanged)
    Q_PROPERTY(QString text MEMBER text_ NOTIFY inputChanged)
    /// Whether the text is still growing; a complete text is shown at once.
    Q_PROPERTY(bool running MEMBER running_ NOTIFY inputChanged)
    Q_PROPERTY(QColor highlightColor MEMBER highlightColor_ NOTIFY markupChanged)
    /// The visible part, as styled text.
    Q_PROPERTY(QString markup READ markup NOTIFY markupChanged)

  public:
    StreamingText();
    QString markup() const;

  Q_SIGNALS:
    void inputChanged();
    void markupChanged();

  private:
    void stream();
    void highlightChanged();

    CaptionStageModel* stage_ = nullptr;
    QString text_;
    bool running_ = false;
    QColor highlightColor_;
    std::unique_ptr<SmoothStreamingText> streaming_;
    std::size_t alreadyRevealed_ = 0;
    bool hasRevealed_ = false; // since `running` became true
};

} // namespace tessarune
