#pragma once

#include "Tessarune/ui/controls/Lifeline.h"
#include "Tessarune/ui/history/HistoryDetailModel.h"
#include "Tessarune/ui/history/HistoryWindowEnvironment.h"
#include "Tessarune/ui/history/WordListModel.h"

#include <cstdint>
#include <unordered_set>

namespace tessarune {

/// The words of the chosen recording by lemma, the most frequent first. They are counted only while
/// the panel is open. Main thread; environment, detail and card must outlive it.
class HistoryWordsModel final : public WordListModel {
    Q_OBJECT
    Q_PROPERTY(bool isOpen READ isOpen WRITE setOpen NOTIFY openChanged)

  public:
    HistoryWordsModel(const HistoryWindowEnvironment& environment, HistoryDetailModel& detail,
                      WordCardModel& card);

    bool isOpen() const { return isOpen_; }
    void setOpen(bool isOpen);

    /// Returns the first sentence of the transcript that contains the word. Each further call for
    /// the same word returns the next such sentence; after the last one, the first follows again.
    /// Returns -1 if no sentence contains the word or the words are not counted yet.
    Q_INVOKABLE int nextPlace(const QString& word);

    QStringList kinds() const override;
    QString summary() const override;
    QString emptyTitle() const override;
    QString emptyText() const override;

  Q_SIGNALS:
    void openChanged();

  protected:
    std::vector<ListedWord> words() const override;

  private:
    void countIfNeeded();
    Task<void> count(HistoryItem recording, std::string text);

    const HistoryWindowEnvironment& environment_;
    HistoryDetailModel& detail_;
    const std::unordered_set<std::string> core_;
    HistoryWordStatsService::Stats stats_; ///< null: not counted yet
    std::uint64_t counts_ = 0;             ///< raised by each count; only the last result is used
    bool isOpen_ = false;
    QString placedWord_;    ///< the word of the last call of `nextPlace`
    std::size_t place_ = 0; ///< counts the calls for that word from 0
    const Lifeline<HistoryWordsModel> lifeline_{*this};
};

} // namespace tessarune
