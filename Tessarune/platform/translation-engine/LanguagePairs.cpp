#include "Tessarune/platform/translation-engine/LanguagePairs.h"

#include <algorithm>

namespace tessarune::LanguagePairs {

namespace {

constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";

std::vector<std::string_view> subtags(std::string_view identifier) {
    std::vector<std::string_view> parts;
    while (true) {
        const std::size_t end = identifier.find_first_of("-_");
        parts.push_back(identifier.substr(0, end));
        if (end == std::string_view::npos)
            return parts;
        identifier.remove_prefix(end + 1);
    }
}

/// The possible names of a language in the catalogue, which lists languages without a region. For
/// Chinese, the catalogue names the script; its older versions did not.
std::vector<std::string> catalogueNames(std::string_view identifier) {
    const std::vector<std::string_view> parts = subtags(identifier);
    const std::string_view language = parts.front();
    if (language.size() < 2 || language.size() > 3 ||
        language.find_first_not_of(letters) != std::string_view::npos)
        return {};
    if (language != "zh")
        return {std::string(language)};
    const bool isTraditional = std::any_of(parts.begin(), parts.end(), [](std::string_view part) {
        return part == "Hant" || part == "TW" || part == "HK" || part == "MO";
    });
    if (isTraditional)
        return {"zh-Hant"};
    return {"zh-Hans", "zh"};
}

} // namespace

std::vector<TranslationPair> candidates(std::string_view source, std::string_view target) {
    std::vector<TranslationPair> pairs;
    const std::vector<std::string> sources = catalogueNames(source);
    const std::vector<std::string> targets = catalogueNames(target);
    for (const std::string& from : sources) {
        for (const std::string& to : targets)
            pairs.push_back({from, to});
    }
    if (targets == std::vector<std::string>{"zh-Hant"}) {
        for (const std::string& from : sources) {
            for (const std::string& to : catalogueNames("zh-Hans"))
                pairs.push_back({from, to, true});
        }
    }
    return pairs;
}

} // namespace tessarune::LanguagePairs
