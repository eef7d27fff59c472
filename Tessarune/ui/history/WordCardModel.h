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

/// The word that was chosen in a list: what it means, by the dictionary on this computer, and what
/// can be done about it. Only `lookUp` and `hear`, which the user asks for, touch the network. Main
/// thread; the environment outlives it.
class WordCardModel final : public QObject {
    Q_OBJECT
    /// Empty: none is chosen.
    Q_PROPERTY(QString word READ word NOTIFY changed)
    Q_PROPERTY(bool isKnown READ isKnown WRITE setKnown NOTIFY marksChanged)
    Q_PROPERTY(bool isFavorite READ isFavorite WRITE setFavorite NOTIFY marksChanged)
    /// Its senses, each with its part of speech.
    Q_PROPERTY(QStringList senses READ senses NOTIFY changed)
    /// In place of senses, or about its sound; empty: nothing needs to be said.
    Q_PROPERTY(QString hint READ hint NOTIFY hintChanged)
    /// Its sound can be fetched and played.
    Q_PROPERTY(bool canHear READ canHear CONSTANT)
    Q_PROPERTY(bool isFetching READ isFetching NOTIFY soundChanged)
    Q_PROPERTY(bool isHeard READ isHeard NOTIFY soundChanged)
    /// Where words are looked up and heard.
    Q_PROPERTY(QStringList dictionaries READ dictionaries CONSTANT)
    Q_PROPERTY(int dictionary READ dictionary WRITE setDictionary NOTIFY sourcesChanged)
    Q_PROPERTY(QStringList voices READ voices CONSTANT)
    Q_PROPERTY(int voice READ voice WRITE setVoice NOTIFY sourcesChanged)

  public:
    /// `beforeSound` is called when a word is about to be heard.
    WordCardModel(const HistoryWindowEnvironment& environment, std::function<void()> beforeSound);

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
    /// Its page of the chosen dictionary, in the user's browser.
    Q_INVOKABLE void lookUp();
    /// Fetches and plays its sound, or stops it.
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
    bool isDefined_ = false; ///< the dictionary has answered
    bool wasFetching_ = false;
    bool isSilent_ = false; ///< nobody had its sound
    Observations observations_;
    const Lifeline<WordCardModel> lifeline_{*this};
};

} // namespace tessarune
