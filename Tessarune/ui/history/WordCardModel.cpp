#include "Tessarune/ui/history/WordCardModel.h"

#include "Tessarune/ui/history/HistoryTexts.h"
#include "Tessarune/vocabulary/VocabularyAddresses.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace tessarune {

namespace {

// In the order of `vocabularyDictionaryProviders` and of `vocabularyPronunciationSources`.
constexpr std::array<const char*, 7> dictionaryTitles{
    "有道英汉词典", "剑桥英汉词典", "剑桥英语词典", "牛津高阶英语词典",
    "柯林斯词典",   "朗文词典",     "韦氏词典"};
constexpr std::array<const char*, 8> voiceTitles{"有道 · 美音", "有道 · 英音",   "剑桥 · 美音",
                                                 "剑桥 · 英音", "柯林斯 · 美音", "柯林斯 · 英音",
                                                 "牛津 · 美音", "牛津 · 英音"};
static_assert(dictionaryTitles.size() == vocabularyDictionaryProviders.size());
static_assert(voiceTitles.size() == vocabularyPronunciationSources.size());

template <typename Titles>
QStringList textsOf(const Titles& titles) {
    QStringList all;
    for (const char* const title : titles)
        all << historyText(title);
    return all;
}

template <typename Choices, typename Choice>
int placeOf(const Choices& choices, Choice chosen) {
    const auto found = std::ranges::find(choices, chosen, &Choices::value_type::first);
    return static_cast<int>(found - choices.begin());
}

template <typename Choices, typename Chosen>
void chooseAt(const Choices& choices, int index, Chosen& chosen) {
    if (index >= 0 && index < static_cast<int>(choices.size()))
        chosen = choices[static_cast<std::size_t>(index)].first;
}

const char* nameOfPart(PartOfSpeech part) {
    switch (part) {
    case PartOfSpeech::noun:
        return "名词";
    case PartOfSpeech::verb:
        return "动词";
    case PartOfSpeech::adjective:
        return "形容词";
    case PartOfSpeech::adverb:
        return "副词";
    }
    return "";
}

} // namespace

WordCardModel::WordCardModel(const HistoryWindowEnvironment& environment,
                             std::function<void()> beforeSound)
    : environment_(environment), beforeSound_(std::move(beforeSound)) {
    const auto marks = [this] { Q_EMIT marksChanged(); };
    observations_.follow(environment_.vocabulary->masteredWords(), marks);
    observations_.follow(environment_.vocabulary->favoriteWords(), marks);
    const auto sources = [this] { Q_EMIT sourcesChanged(); };
    VocabularyPreferences& preferences = *environment_.vocabularyPreferences;
    observations_.follow(preferences.dictionaryProvider.published(), sources);
    observations_.follow(preferences.pronunciationSource.published(), sources);
    if (!canHear())
        return;
    const auto moved = [this] { soundMoved(); };
    observations_.follow(environment_.pronunciation->activeKey(), moved);
    observations_.follow(environment_.pronunciation->loadingKey(), moved);
}

void WordCardModel::show(const std::string& word) {
    if (std::exchange(word_, word) == word)
        return;
    if (canHear())
        environment_.pronunciation->stop();
    definitions_.clear();
    isDefined_ = false;
    isSilent_ = false;
    if (!word_.empty())
        spawn(Executor::main(environment_.host), define(word_));
    Q_EMIT changed();
    Q_EMIT marksChanged();
    Q_EMIT hintChanged();
    Q_EMIT soundChanged();
}

Task<void> WordCardModel::define(std::string word) {
    const auto held = lifeline_.held();
    Task<std::vector<WordDefinition>> asking = environment_.wordStatistics.definitions(word);
    std::vector<WordDefinition> found = co_await asking;
    if (!*held || word_ != word)
        co_return;
    definitions_ = std::move(found);
    isDefined_ = true;
    Q_EMIT changed();
    Q_EMIT hintChanged();
}

bool WordCardModel::isKnown() const {
    return environment_.vocabulary->isMastered(word_);
}

void WordCardModel::setKnown(bool isKnown) {
    if (isKnown)
        environment_.vocabulary->markMastered(word_);
    else
        environment_.vocabulary->removeMastered(word_);
}

bool WordCardModel::isFavorite() const {
    return environment_.vocabulary->isFavorite(word_);
}

void WordCardModel::setFavorite(bool isFavorite) {
    if (isFavorite)
        environment_.vocabulary->addFavorite(word_);
    else
        environment_.vocabulary->removeFavorite(word_);
}

QStringList WordCardModel::senses() const {
    QStringList all;
    for (const WordDefinition& definition : definitions_)
        all << historyText(nameOfPart(definition.partOfSpeech)) + QStringLiteral(" · ") +
                   QString::fromStdString(definition.text);
    return all;
}

QString WordCardModel::hint() const {
    if (isSilent_)
        return historyText("没有找到这个词的发音。可以在生词本里换一个发音来源。");
    return isDefined_ && definitions_.empty() ? historyText("本机词典里没有这个词。") : QString();
}

std::string WordCardModel::soundKey() const {
    return HistoryPronunciationAudioPlayer::key(
        *environment_.vocabularyPreferences->pronunciationSource, word_);
}

bool WordCardModel::isFetching() const {
    return canHear() && !word_.empty() && *environment_.pronunciation->loadingKey() == soundKey();
}

bool WordCardModel::isHeard() const {
    return canHear() && !word_.empty() && *environment_.pronunciation->activeKey() == soundKey();
}

/// A fetched pronunciation plays at once, so if nothing plays after a fetch, none was found. This
/// is checked in a later call, because the player announces the end of the fetch before the sound.
void WordCardModel::soundMoved() {
    const bool isDone = std::exchange(wasFetching_, isFetching()) && !wasFetching_;
    Q_EMIT soundChanged();
    if (!isDone)
        return;
    environment_.host.post(lifeline_.calling([asked = word_](WordCardModel& card) {
        if (card.word_ != asked)
            return;
        card.isSilent_ = !card.isHeard() && !card.isFetching();
        Q_EMIT card.hintChanged();
    }));
}

void WordCardModel::lookUp() {
    const auto url =
        VocabularyDictionary::url(*environment_.vocabularyPreferences->dictionaryProvider, word_);
    if (url)
        environment_.openURL(*url);
}

void WordCardModel::hear() {
    if (!canHear() || word_.empty())
        return;
    isSilent_ = false;
    Q_EMIT hintChanged();
    if (isFetching()) {
        wasFetching_ = false; // a fetch that the user stops does not mean that nothing was found
        return environment_.pronunciation->stop();
    }
    if (!isHeard())
        beforeSound_();
    environment_.pronunciation->play(*environment_.vocabularyPreferences->pronunciationSource,
                                     word_);
}

QStringList WordCardModel::dictionaries() const {
    return textsOf(dictionaryTitles);
}

int WordCardModel::dictionary() const {
    return placeOf(vocabularyDictionaryProviders,
                   *environment_.vocabularyPreferences->dictionaryProvider);
}

void WordCardModel::setDictionary(int index) {
    chooseAt(vocabularyDictionaryProviders, index,
             environment_.vocabularyPreferences->dictionaryProvider);
}

QStringList WordCardModel::voices() const {
    return textsOf(voiceTitles);
}

int WordCardModel::voice() const {
    return placeOf(vocabularyPronunciationSources,
                   *environment_.vocabularyPreferences->pronunciationSource);
}

void WordCardModel::setVoice(int index) {
    chooseAt(vocabularyPronunciationSources, index,
             environment_.vocabularyPreferences->pronunciationSource);
}

} // namespace tessarune
