#pragma once

#include "Tessarune/ui/controls/Lifeline.h"
#include "Tessarune/ui/history/HistoryDetailModel.h"
#include "Tessarune/ui/history/HistoryExportModel.h"
#include "Tessarune/ui/history/HistoryImportsModel.h"
#include "Tessarune/ui/history/HistoryListModel.h"
#include "Tessarune/ui/history/HistoryPlaybackModel.h"
#include "Tessarune/ui/history/HistoryRefinementModel.h"
#include "Tessarune/ui/history/HistoryTexts.h"
#include "Tessarune/ui/history/HistoryWindowEnvironment.h"
#include "Tessarune/ui/history/HistoryWordsModel.h"
#include "Tessarune/ui/history/UsageModel.h"
#include "Tessarune/ui/history/VocabularyModel.h"
#include "Tessarune/ui/history/WordCardModel.h"
#include "TessaruneCore/observation/Observations.h"

#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariantMap>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// The history window: a list; beside it the chosen recording, the vocabulary or the usage; and a
/// message about the last action. Main thread; the environment must outlive it.
///
/// Deletions can be undone one by one, the last one first, until they are carried out. They are
/// carried out some seconds after the last message, or earlier if the user dismisses the message,
/// closes the window or ends the program.
class HistoryWindowModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(tessarune::HistoryListModel* list READ list CONSTANT)
    Q_PROPERTY(tessarune::HistoryDetailModel* detail READ detail CONSTANT)
    Q_PROPERTY(tessarune::HistoryExportModel* exports READ exports CONSTANT)
    Q_PROPERTY(tessarune::HistoryPlaybackModel* playback READ playback CONSTANT)
    Q_PROPERTY(tessarune::HistoryRefinementModel* refinement READ refinement CONSTANT)
    Q_PROPERTY(tessarune::HistoryImportsModel* imports READ imports CONSTANT)
    Q_PROPERTY(tessarune::HistoryWordsModel* words READ words CONSTANT)
    Q_PROPERTY(tessarune::VocabularyModel* vocabulary READ vocabulary CONSTANT)
    Q_PROPERTY(tessarune::WordCardModel* card READ card CONSTANT)
    Q_PROPERTY(tessarune::UsageModel* usage READ usage CONSTANT)
    /// Whether the vocabulary is shown in place of the recording, and whether the usage is.
    Q_PROPERTY(bool showsVocabulary READ showsVocabulary NOTIFY pageChanged)
    Q_PROPERTY(bool showsUsage READ showsUsage NOTIFY pageChanged)
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(int currentRow READ currentRow WRITE setCurrentRow NOTIFY currentRowChanged)
    /// The last message, usually about the user's last action; it is removed after some seconds.
    Q_PROPERTY(QString message READ message NOTIFY messageChanged)
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY messageChanged)
    /// Why the list is empty, and what to do about it; empty while it loads or has rows.
    Q_PROPERTY(QString emptyTitle READ emptyTitle NOTIFY emptyChanged)
    Q_PROPERTY(QString emptyText READ emptyText NOTIFY emptyChanged)
    /// Why recordings may be missing from the list; empty if none is missing or the list is empty.
    Q_PROPERTY(QString listProblem READ listProblem NOTIFY emptyChanged)
    /// Whether the list is empty because there are no recordings yet.
    Q_PROPERTY(bool hasNoRecordings READ hasNoRecordings NOTIFY emptyChanged)
    /// The fixed texts of the window.
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

  public:
    explicit HistoryWindowModel(const HistoryWindowEnvironment& environment);
    ~HistoryWindowModel() override;

    HistoryListModel* list() { return &list_; }
    HistoryDetailModel* detail() { return &detail_; }
    HistoryExportModel* exports() { return &exports_; }
    HistoryPlaybackModel* playback() { return &playback_; }
    HistoryRefinementModel* refinement() { return &refinement_; }
    HistoryImportsModel* imports() { return &imports_; }
    HistoryWordsModel* words() { return &words_; }
    VocabularyModel* vocabulary() { return &vocabulary_; }
    WordCardModel* card() { return &card_; }
    UsageModel* usage() { return &usage_; }
    bool showsVocabulary() const { return page_ == Page::vocabulary; }
    bool showsUsage() const { return page_ == Page::usage; }
    QString query() const { return query_; }
    void setQuery(const QString& query);
    int currentRow() const;
    void setCurrentRow(int row);
    QString message() const { return message_; }
    bool canUndo() const { return !deletions_.empty(); }
    QString emptyTitle() const;
    QString emptyText() const;
    QString listProblem() const;
    bool hasNoRecordings() const;
    QVariantMap texts() const { return historyTexts(); }

    Q_INVOKABLE void openRecording() { setPage(Page::recording); }
    Q_INVOKABLE void openVocabulary() { setPage(Page::vocabulary); }
    Q_INVOKABLE void openUsage() { setPage(Page::usage); }

    /// Deletes the chosen recording; for some seconds this can be undone.
    Q_INVOKABLE void deleteCurrent();
    Q_INVOKABLE void undo();
    Q_INVOKABLE void dismissMessage();
    Q_INVOKABLE void setNote(const QString& note);
    /// Keeps a note that the user is still writing. It is saved when another recording is shown.
    Q_INVOKABLE void draftNote(const QString& note) { draft_ = note; }
    Q_INVOKABLE void discardDraft() { draft_.reset(); }
    Q_INVOKABLE void copy(bool withTranslation);

    /// Reads the list and the transcript again: another program may have changed them unnoticed.
    void refresh();
    /// Chooses a recording as soon as it is listed.
    void select(const UUID& id);
    /// Carries out the deletions that could still be undone, and waits until all changes are
    /// written.
    void finishPending();

  Q_SIGNALS:
    void pageChanged();
    void queryChanged();
    void currentRowChanged();
    void messageChanged();
    void emptyChanged();

  private:
    enum class Page { recording, vocabulary, usage };
    /// A recording that is no longer listed, but not yet deleted.
    struct Deletion {
        UUID id;
        std::string title;
        DataFolderHold hold;
    };

    void setPage(Page page);
    void tell(const std::string& message);
    DataFolderHold holdDataFolder();
    void tellDeletions();
    void finishDeletions();
    void change(DataFolderHold hold, std::function<bool()> step,
                std::function<void(HistoryWindowModel&)> failed);
    void listUpdated();

    const HistoryWindowEnvironment& environment_;
    const std::shared_ptr<SerialQueue> queue_; ///< for changes of the catalog
    HistoryListModel list_;
    HistoryDetailModel detail_;
    HistoryExportModel exports_;
    HistoryPlaybackModel playback_;
    HistoryRefinementModel refinement_;
    HistoryImportsModel imports_;
    WordCardModel card_;
    HistoryWordsModel words_;
    VocabularyModel vocabulary_;
    UsageModel usage_;
    Page page_ = Page::recording;
    QString query_;
    std::optional<QString> draft_; ///< the unfinished note of the shown recording
    std::optional<UUID> current_;  ///< the chosen recording
    std::optional<UUID> wanted_;   ///< to be chosen as soon as it is listed
    int lastRow_ = 0;              ///< the row where the chosen recording was last seen
    QString message_;
    std::string vocabularyProblem_; ///< the last one that was told
    std::vector<Deletion> deletions_;
    QTimer messageTimer_;
    NotificationCenter::Observation selection_;
    Observations observations_;
    const Lifeline<HistoryWindowModel> lifeline_{*this};
};

} // namespace tessarune
