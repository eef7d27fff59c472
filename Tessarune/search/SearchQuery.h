#pragma once

#include "Tessarune/search/SearchTokens.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// What was typed into a search, understood. A plain value; its functions are pure.
///
/// Each word has to occur, in any order; what stands in quotation marks, and the parts of a word
/// such as "e-mail" or of Chinese text, has to occur as one sequence. The word that is still being
/// typed, the last one, may be the beginning of another from its second letter on.
struct SearchQuery {
    struct Phrase {
        std::vector<std::string> tokens;
        bool lastIsPrefix = false;

        bool operator==(const Phrase&) const = default;
    };

    std::vector<Phrase> phrases;

    static SearchQuery parse(std::string_view text);

    /// Nothing was asked for.
    bool isEmpty() const { return phrases.empty(); }

    /// Whether each phrase occurs in one of the texts, for what no index holds.
    bool matches(const std::vector<std::string_view>& texts) const;

    /// The first place of any of the phrases: a view into `text`, nothing if there is none.
    std::optional<std::string_view> firstMatch(std::string_view text) const;

    bool operator==(const SearchQuery&) const = default;
};

/// A piece of a line around what was found, on one line.
struct SearchExcerpt {
    std::string before;
    std::string match;
    std::string after;

    bool operator==(const SearchExcerpt&) const = default;

    /// About `context` characters on either side, with "…" where the line goes on. Nothing where
    /// the text has none of the phrases.
    static std::optional<SearchExcerpt> of(const SearchQuery& query, std::string_view text,
                                           std::size_t context = 40);
};

} // namespace tessarune
