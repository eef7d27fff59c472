#pragma once

#include "Tessarune/ui/captions/CaptionRowsModel.h"
#include "Tessarune/ui/captions/CaptionStageModel.h"

#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QQuickItem>
#include <QString>
#include <QVariantList>
#include <optional>

namespace tessarune {

/// The text that the user has selected in a list of captions, from any character to any other, also
/// across rows. It is stored as row and character numbers, so that it stays in place while captions
/// are added. Main thread.
class CaptionSelection : public QObject {
    Q_OBJECT
    Q_PROPERTY(tessarune::CaptionStageModel* stage MEMBER stage_ NOTIFY attachedChanged)
    Q_PROPERTY(tessarune::CaptionRowsModel* rows MEMBER rows_ NOTIFY attachedChanged)
    /// The list view. Each item of a row has the properties `sourceItem` and `translationItem`.
    Q_PROPERTY(QQuickItem* list READ list WRITE setList NOTIFY attachedChanged)
    Q_PROPERTY(QString text READ text NOTIFY changed)
    /// Grows with each change of the selection, so that bindings to it are evaluated again.
    Q_PROPERTY(int revision READ revision NOTIFY changed)

  public:
    CaptionSelection();
    QQuickItem* list() const { return list_; }
    void setList(QQuickItem* list);
    QString text() const;
    int revision() const { return revision_; }

    // Points are in the list's coordinates.
    Q_INVOKABLE void begin(double x, double y);
    Q_INVOKABLE void extend(double x, double y);
    Q_INVOKABLE void selectWord(double x, double y);
    Q_INVOKABLE void selectAll();
    Q_INVOKABLE void clear();
    /// The selected part of a text item, as rectangles in it. `width` and `revision` are not used
    /// here; the caller's binding passes them so that it is evaluated again when they change.
    Q_INVOKABLE QVariantList rects(int row, bool isTranslation, QQuickItem* item, double width,
                                   int revision) const;

  Q_SIGNALS:
    void attachedChanged();
    void changed();

  private:
    /// The position before a character in one of the texts of a row.
    struct Place {
        int row = 0;
        int part = 0;            ///< 0 for the upper text of the row, 1 for the lower one
        qsizetype character = 0; ///< an index in UTF-16 units
        auto operator<=>(const Place&) const = default;
    };
    struct Range {
        qsizetype from = 0;
        qsizetype to = 0;
    };

    void followRows();
    void rowsRemoved();
    std::optional<Place> placeAt(QPointF point) const;
    QString textOf(int row, int part) const;
    bool isTranslation(int part) const;
    Range rangeIn(int row, int part) const;
    void select(Place anchor, Place end);

    CaptionStageModel* stage_ = nullptr;
    CaptionRowsModel* rows_ = nullptr;
    QPointer<QQuickItem> list_;
    std::optional<Place> anchor_;
    Place end_;
    int revision_ = 0;
};

} // namespace tessarune
