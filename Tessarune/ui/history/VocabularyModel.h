#pragma once

#include "Tessarune/ui/history/WordListModel.h"

namespace tessarune {

/// The words that the user marked, the newest first, or the core words still to learn; and the
/// known share of the core words. Main thread; store and card must outlive it.
class VocabularyModel final : public WordListModel {
    Q_OBJECT
    /// The known share of the core words, 0 to 1.
    Q_PROPERTY(double progress READ progress NOTIFY changed)
    Q_PROPERTY(QString progressText READ progressText NOTIFY changed)
    Q_PROPERTY(bool canRemove READ canRemove NOTIFY changed)

  public:
    VocabularyModel(VocabularyStore& store, WordCardModel& card);

    QStringList kinds() const override;
    QString summary() const override;
    QString emptyTitle() const override;
    QString emptyText() const override;
    double progress() const;
    QString progressText() const;
    bool canRemove() const;

    /// Removes the word from the shown list of marked words.
    Q_INVOKABLE void remove(int row);

  protected:
    std::vector<ListedWord> words() const override;
};

} // namespace tessarune
