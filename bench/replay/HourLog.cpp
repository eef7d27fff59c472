#include "bench/replay/HourLog.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <utility>

namespace tessarune::HourLog {

namespace {

constexpr double startTime = 1760000000;
constexpr std::size_t shortestText = 120; // characters

/// The words and punctuation of a language.
struct Voice {
    std::vector<std::string_view> words;
    std::string_view blank;
    std::string_view comma;
    std::string_view fullStop;
    std::string_view question;
};

const Voice& voice(Language language) {
    static const Voice english{
        {"the",      "of",        "and",      "people",   "water",   "evening",    "I",
         "we",       "they",      "was",      "were",     "is",      "about",      "house",
         "morning",  "river",     "between",  "question", "answer",  "because",    "never",
         "always",   "Dr. Smith", "3.5",      "street",   "window",  "light",      "after",
         "before",   "letter",    "remember", "children", "music",   "quietly",    "again",
         "through",  "another",   "would",    "could",    "should",  "winter",     "summer",
         "train",    "station",   "heard",    "spoke",    "nothing", "everything", "small",
         "enormous", "it's",      "don't",    "café",     "London",  "1984",       "seven"},
        " ",
        ",",
        ".",
        "?"};
    static const Voice chinese{
        {"我们", "今天", "讨论",   "问题", "因为",       "所以", "时间",   "河流", "城市",
         "晚上", "早晨", "他们",   "没有", "已经",       "可以", "需要",   "音乐", "孩子",
         "老师", "学校", "语言",   "翻译", "字幕",       "声音", "计算机", "系统", "非常",
         "安静", "重新", "开始",   "结束", "之后",       "之前", "如果",   "但是", "的",
         "了",   "是",   "在",     "和",   "有",         "不",   "人",     "这",   "那",
         "大",   "小",   "火车站", "北京", "二零二五年", "GPU",  "API"},
        "",
        "，",
        "。",
        "？"};
    return language == Language::english ? english : chinese;
}

/// Random numbers that are the same on every computer. The standard library's distributions are not
/// the same everywhere, so only its generator is used.
class Dice {
  public:
    explicit Dice(std::uint64_t seed) : random_(seed) {}
    std::size_t below(std::size_t count) { return static_cast<std::size_t>(random_() % count); }
    bool oneIn(std::size_t count) { return below(count) == 0; }

  private:
    std::mt19937_64 random_;
};

/// The words of one utterance, punctuated.
std::vector<std::string> speak(const Voice& voice, Dice& dice) {
    const std::size_t limit = shortestText + dice.below(longestText - shortestText + 1);
    std::vector<std::string> words;
    std::size_t length = 0;
    std::size_t leftInSentence = 0;
    while (true) {
        if (leftInSentence == 0)
            leftInSentence = 5 + dice.below(10);
        std::string word(voice.words[dice.below(voice.words.size())]);
        if (--leftInSentence == 0) {
            word += dice.oneIn(6) ? voice.question : voice.fullStop;
        } else if (dice.oneIn(9)) {
            word += voice.comma;
        }
        const std::size_t grown = length + Text::length(word) + Text::length(voice.blank);
        if (grown > limit)
            return words;
        length = grown;
        words.push_back(std::move(word));
    }
}

/// The guess after `step` of the `partialsPerUtterance` steps.
std::string guess(const Voice& voice, const std::vector<std::string>& words, std::size_t step,
                  Dice& dice) {
    const std::size_t count = std::max<std::size_t>(1, words.size() * step / partialsPerUtterance);
    std::vector<std::string> heard(words.begin(),
                                   words.begin() + static_cast<std::ptrdiff_t>(count));
    // The last words may be wrong until more words follow.
    if (dice.oneIn(6))
        heard.back() = voice.words[dice.below(voice.words.size())];
    if (count > 3 && dice.oneIn(12))
        heard[count - 3] = voice.words[dice.below(voice.words.size())];
    return std::string(Text::prefix(Text::joined(heard, voice.blank), longestText));
}

std::vector<ASRWordTiming> timings(std::string_view text, double start, double end) {
    const auto words = Text::splitAtBlanks(text);
    const double each = (end - start) / static_cast<double>(words.size());
    std::vector<ASRWordTiming> result;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const double from = start + each * static_cast<double>(i);
        result.push_back({std::string(words[i]), from, from + each});
    }
    return result;
}

void append(std::vector<ASREventRecord>& records, const Voice& voice, double start, Dice dice) {
    const std::vector<std::string> words = speak(voice, dice);
    constexpr double step = utteranceSeconds / static_cast<double>(partialsPerUtterance);
    for (std::size_t i = 1; i <= partialsPerUtterance; ++i) {
        const double time = start + step * (static_cast<double>(i) - 0.5);
        records.emplace_back(time, ASREvent::partial(guess(voice, words, i, dice),
                                                     static_cast<std::int64_t>(i), start));
    }
    const std::string text = Text::joined(words, voice.blank);
    const double end = start + utteranceSeconds;
    records.emplace_back(end, ASREvent::final(text, start, end, EndpointReason::engineFinal,
                                              timings(text, start, end)));
}

} // namespace

std::vector<ASREventRecord> make(Language language, std::size_t utterances) {
    std::vector<ASREventRecord> records;
    records.reserve(utterances * (partialsPerUtterance + 1));
    for (std::size_t i = 0; i < utterances; ++i) {
        const bool isRepeated = i + repeatedUtterances >= utterances;
        const std::size_t said = isRepeated ? i + repeatedUtterances - utterances : i;
        append(records, voice(language), startTime + utteranceSeconds * static_cast<double>(i),
               Dice(said + 1));
    }
    return records;
}

} // namespace tessarune::HourLog
