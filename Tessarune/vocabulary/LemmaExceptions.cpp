#include "Tessarune/vocabulary/LemmaExceptions.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace tessarune::LemmaExceptions {

namespace {

/// Function words. Each is its own lemma. Lexicons of content words lack them and take some for
/// other words: "his" for the plural of "hi", "as" for the plural of a letter, "its" for the plural
/// of "IT".
constexpr std::string_view ownLemmas =
    // articles, determiners, quantities
    "a the this that these those each every either neither some any no none both all few many "
    "much more most several little less least enough other others another such own same "
    // pronouns
    "i me my mine myself you your yours yourself yourselves he him his himself she her hers "
    "herself it its itself we us our ours ourselves they them their theirs themselves one oneself "
    "who whom whose which what whoever whatever whichever "
    "someone somebody something anyone anybody anything everyone everybody everything nobody "
    "nothing "
    // prepositions
    "about above across after against along amid among around as at before behind below beneath "
    "beside besides between beyond by despite down during except for from in inside into like "
    "near of off on onto out outside over past per since than through throughout till to toward "
    "towards under underneath until unto up upon via with within without "
    // conjunctions and question words
    "and but or nor so yet if unless because although though while whereas whether when whenever "
    "where wherever why how however "
    // adverbs and particles
    "not here there then now thus hence too very also just only even still again always never "
    "ever often perhaps maybe quite rather almost yes yeah okay ok oh ah well "
    // modal verbs: "could" is more than the past tense of "can"
    "can could may might must shall should will would ought";

/// Pairs of a form and its lemma, for forms on which lexicons disagree, or for which they prefer a
/// rare word or have no entry.
constexpr std::string_view irregular =
    "am be is be are be was be were be been be being be "
    "has have had have having have does do did do done do doing do "
    "an a cannot can better good best good worse bad worst bad "
    "further far furthest far farther far farthest far "
    "men man women woman children child feet foot teeth tooth geese goose mice mouse "
    "wives wife knives knife thieves thief wolves wolf "
    "lay lie lain lie lying lie laid lay "
    "felt feel found find fell fall ground ground wound wound "
    "bore bear born bear borne bear "
    "shot shoot lit light bit bite hid hide slid slide "
    "spoke speak broke break stole steal froze freeze wove weave woke wake "
    "gotten get got get "
    "gonna go wanna want gotta get "
    "media medium criteria criterion phenomena phenomenon analyses analysis crises crisis "
    "theses thesis hypotheses hypothesis bases basis axes axis";

struct Tables {
    std::unordered_set<std::string_view> functionWords;
    std::unordered_map<std::string_view, std::string_view> lemmas;
};

Tables makeTables() {
    Tables result;
    const auto nextWord = [](std::string_view& text) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(text.size(), word.size() + 1));
        return word;
    };
    for (std::string_view rest = ownLemmas; !rest.empty();) {
        const std::string_view word = nextWord(rest);
        result.functionWords.insert(word);
        result.lemmas.emplace(word, word);
    }
    for (std::string_view rest = irregular; !rest.empty();) {
        const std::string_view form = nextWord(rest);
        result.lemmas.emplace(form, nextWord(rest));
    }
    return result;
}

const Tables& tables() {
    static const Tables instance = makeTables();
    return instance;
}

} // namespace

std::optional<std::string_view> lemma(std::string_view form) {
    const auto found = tables().lemmas.find(form);
    return found == tables().lemmas.end() ? std::nullopt : std::optional(found->second);
}

bool isFunctionWord(std::string_view word) {
    return tables().functionWords.contains(word);
}

} // namespace tessarune::LemmaExceptions
