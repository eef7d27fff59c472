#include "Tessarune/search/SearchQuery.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>

namespace tessarune {

namespace {

/// In characters. A single letter is no prefix, because too many words begin with it.
constexpr std::size_t shortestPrefix = 2;

bool occursAt(const SearchQuery::Phrase& phrase, const std::vector<SearchToken>& tokens,
              std::size_t at) {
    if (tokens.size() - at < phrase.tokens.size())
        return false;
    for (std::size_t i = 0; i < phrase.tokens.size(); ++i) {
        const bool isPrefix = phrase.lastIsPrefix && i + 1 == phrase.tokens.size();
        const std::string& found = tokens[at + i].text;
        if (isPrefix ? !found.starts_with(phrase.tokens[i]) : found != phrase.tokens[i])
            return false;
    }
    return true;
}

/// The index in `tokens` at which the phrase begins; `tokens.size()` if it does not occur.
std::size_t indexOf(const SearchQuery::Phrase& phrase, const std::vector<SearchToken>& tokens) {
    std::size_t at = 0;
    while (at < tokens.size() && !occursAt(phrase, tokens, at))
        ++at;
    return at;
}

/// The last `count` characters of `text`, with "…" in front if it has more.
std::string lastCharacters(std::string_view text, std::size_t count) {
    const auto characters = Text::characters(text);
    if (characters.size() <= count)
        return std::string(text);
    const auto* start = characters[characters.size() - count].data();
    return "…" + std::string(text.substr(static_cast<std::size_t>(start - text.data())));
}

} // namespace

SearchQuery SearchQuery::parse(std::string_view text) {
    SearchQuery query;
    const auto add = [&query](std::string_view piece, bool isBeingTyped) {
        Phrase phrase;
        for (auto& token : SearchTokens::cut(piece))
            phrase.tokens.push_back(std::move(token.text));
        if (phrase.tokens.empty())
            return;
        phrase.lastIsPrefix = isBeingTyped && Text::length(phrase.tokens.back()) >= shortestPrefix;
        query.phrases.push_back(std::move(phrase));
    };
    while (!text.empty()) {
        if (text.front() == '"') {
            text.remove_prefix(1);
            const auto end = std::min(text.find('"'), text.size());
            add(text.substr(0, end), end == text.size());
            text.remove_prefix(std::min(end + 1, text.size()));
            continue;
        }
        const std::string_view piece = text.substr(0, text.find('"'));
        text.remove_prefix(piece.size());
        const auto words = Text::splitOnWhiteSpace(piece);
        for (const auto word : words)
            add(word, text.empty() && word.data() + word.size() == piece.data() + piece.size());
    }
    return query;
}

bool SearchQuery::matches(const std::vector<std::string_view>& texts) const {
    std::vector<std::vector<SearchToken>> cut;
    cut.reserve(texts.size());
    for (const auto text : texts)
        cut.push_back(SearchTokens::cut(text));
    return std::ranges::all_of(phrases, [&](const Phrase& phrase) {
        return std::ranges::any_of(
            cut, [&](const auto& tokens) { return indexOf(phrase, tokens) < tokens.size(); });
    });
}

std::optional<std::string_view> SearchQuery::firstMatch(std::string_view text) const {
    const auto tokens = SearchTokens::cut(text);
    std::optional<std::string_view> first;
    for (const auto& phrase : phrases) {
        const std::size_t at = indexOf(phrase, tokens);
        if (at == tokens.size())
            continue;
        const auto& last = tokens[at + phrase.tokens.size() - 1];
        const std::size_t start = tokens[at].offset;
        if (!first || text.data() + start < first->data())
            first = text.substr(start, last.offset + last.length - start);
    }
    return first;
}

std::optional<SearchExcerpt> SearchExcerpt::of(const SearchQuery& query, std::string_view text,
                                               std::size_t context) {
    const auto match = query.firstMatch(text);
    if (!match)
        return std::nullopt;
    const auto start = static_cast<std::size_t>(match->data() - text.data());
    const std::size_t end = start + match->size();
    const auto lineStart = start == 0 ? 0 : text.rfind('\n', start - 1) + 1;
    const auto lineEnd = std::min(text.find('\n', end), text.size());
    SearchExcerpt excerpt;
    excerpt.before = lastCharacters(text.substr(lineStart, start - lineStart), context);
    excerpt.match = Text::collapsingWhiteSpace(*match);
    excerpt.after = Text::truncated(text.substr(end, lineEnd - end), context, "…");
    return excerpt;
}

} // namespace tessarune
