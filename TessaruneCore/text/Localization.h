#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tessarune {

/// Hashes a key without converting it to a string.
struct LocalizationKeyHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view key) const {
        return std::hash<std::string_view>{}(key);
    }
};

/// Maps each key to the text in the user's language.
using LocalizationTable =
    std::unordered_map<std::string, std::string, LocalizationKeyHash, std::equal_to<>>;

/// Replaces the table, at the start of the program or when the language changes. Any thread.
void setLocalizationTable(LocalizationTable table);

/// Marks a literal as a key that is looked up later, so that `scripts/texts` collects it.
constexpr std::string_view localizationKey(std::string_view key) {
    return key;
}

/// The text for a key, or the key itself if the table has no text for it. Any thread.
std::string localized(std::string_view key);

/// The same, with each "%@" (a text) and "%lld" (a number) replaced by the next argument. A mark
/// without an argument stays, an argument without a mark is ignored, and marks inside arguments are
/// not replaced.
std::string localized(std::string_view key, const std::vector<std::string>& arguments);

/// Two sentences in a row, with a space between them in languages that have one. An empty one is
/// left out.
std::string bothSentences(const std::string& first, const std::string& second);

} // namespace tessarune
