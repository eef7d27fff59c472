#pragma once

#include "Tessarune/ui/controls/Lifeline.h"
#include "Tessarune/ui/history/HistoryWindowEnvironment.h"
#include "TessaruneCore/observation/Observations.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>
#include <string>
#include <vector>

namespace tessarune {

/// The word chosen in a list: its meanings, from the dictionary on this computer, and its actions.
/// Only `lookUp` and `hear`, which the user asks for, use the network. Main thread; the environment
/// must outlive it.
class WordCardModel final : public QObject {
    Q_OBJECT
    /// Empty if no word is chosen.
    Q_PROPERTY(QString word READ word NOTIFY changed)
    Q_PROPERTY(bool isKnown READ isKnown WRITE setKnown NOTIFY marksChanged)
    Q_PROPERTY(bool isFavorite READ isFavorite WRITE setFavorite NOTIFY marksChanged)
    /// The word's senses, each with its part of speech.
    Q_PROPERTY(QStringList senses READ senses NOTIFY changed)
    /// Says that the dictionary lacks the word, or that no pronunciation was found; empty
    /// otherwise.
    Q_PROPERTY(QString hint READ hint NOTIFY hintChanged)
    /// Whether a pronunciation can be fetched and played.
    Q_PROPERTY(bool canHear READ canHear CONSTANT)
    /// Whether the pronunciation is being fetched, and whether it is playing.
    Q_PROPERTY(bool isFetching READ isFetching NOTIFY soundChanged)
    Q_PROPERTY(bool isHeard READ isHeard NOTIFY soundChanged)
    /// The dictionaries and the sources of pronunciation to choose from, and the indices of the
    /// chosen ones.
    Q_PROPERTY(QStringList dictionaries READ dictionaries CONSTANT)
    Q_PROPERTY(int dictionary READ dictionary WRITE setDictionary NOTIFY sourcesChanged)
    Q_PROPERTY(QStringList voices READ voices CONSTANT)
    Q_PROPERTY(int voice READ voice WRITE setVoice NOTIFY sourcesChanged)

  public:
    /// `beforeSound` is called before a pronunciation is fetched and played.
    WordCardModel(const HistoryWindowEnvironment& environment, std::function<void()> beforeSound);

    /// Shows a word; an empty text closes the card.
    void show(const std::string& word);

    QString word() const { return QString::fromStdString(word_); }
    bool isKnown() const;
    void setKnown(bool isKnown);
    bool isFavorite() const;
    void setFavorite(bool isFavorite);
    QStringList senses() const;
    QString hint() const;
    bool canHear() const { return environment_.pronunciation != nullptr; }
    bool isFetching() const;
    bool isHeard() const;
    QStringList dictionaries() const;
    int dictionary() const;
    void setDictionary(int index);
    QStringList voices() const;
    int voice() const;
    void setVoice(int index);

    Q_INVOKABLE void close() { show({}); }
    /// Opens the word's page in the chosen dictionary in the user's browser.
    Q_INVOKABLE void lookUp();
    /// Fetches and plays the pronunciation, or stops it.
    Q_INVOKABLE void hear();

  Q_SIGNALS:
    void changed();
    void marksChanged();
    void hintChanged();
    void soundChanged();
    void sourcesChanged();

  private:
    Task<void> define(std::string word);
    void soundMoved();
    std::string soundKey() const;

    const HistoryWindowEnvironment& environment_;
    const std::function<void()> beforeSound_;
    std::string word_;
    std::vector<WordDefinition> definitions_;
    bool isDefined_ = false; ///< whether the dictionary has answered
    bool wasFetching_ = false;
    bool isSilent_ = false; ///< whether no pronunciation was found
    Observations observations_;
    const Lifeline<WordCardModel> lifeline_{*this};
};

} // namespace tessarune
