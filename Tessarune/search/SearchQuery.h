#pragma once

#include "Tessarune/search/SearchTokens.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// A parsed search text. A plain value; its functions are pure.
///
/// Each word must occur, in any order. The words in quotation marks must occur as one sequence, and
/// so must the parts of a word such as "e-mail" and the characters of Chinese text. A last word
/// without a blank or quotation mark behind it is still being typed: if it has at least two
/// letters, it also matches the beginning of a longer word.
struct SearchQuery {
    struct Phrase {
        std::vector<std::string> tokens;
        bool lastIsPrefix = false;

        bool operator==(const Phrase&) const = default;
    };

    std::vector<Phrase> phrases;

    static SearchQuery parse(std::string_view text);

    bool isEmpty() const { return phrases.empty(); }

    /// Whether each phrase occurs in at least one of the texts. Needs no index.
    bool matches(const std::vector<std::string_view>& texts) const;

    /// The first occurrence of any of the phrases, as a view into `text`; `nullopt` if there is
    /// none.
    std::optional<std::string_view> firstMatch(std::string_view text) const;

    bool operator==(const SearchQuery&) const = default;
};

/// The surroundings of a match, on one line.
struct SearchExcerpt {
    std::string before;
    std::string match;
    std::string after;

    bool operator==(const SearchExcerpt&) const = default;

    /// Returns up to `context` characters on either side of the first match; "…" replaces the rest
    /// of the line. `nullopt` if the text has none of the phrases.
    static std::optional<SearchExcerpt> of(const SearchQuery& query, std::string_view text,
                                           std::size_t context = 40);
};

} // namespace tessarune
