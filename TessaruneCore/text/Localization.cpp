#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <atomic>
#include <memory>

namespace tessarune {

namespace {

std::atomic<std::shared_ptr<const LocalizationTable>>& currentTable() {
    static auto& table = *new std::atomic<std::shared_ptr<const LocalizationTable>>;
    return table;
}

} // namespace

void setLocalizationTable(LocalizationTable table) {
    currentTable() = std::make_shared<const LocalizationTable>(std::move(table));
}

std::string localized(std::string_view key) {
    if (const auto table = currentTable().load()) {
        if (const auto found = table->find(key); found != table->end())
            return found->second;
    }
    return std::string(key);
}

std::string localized(std::string_view key, const std::vector<std::string>& arguments) {
    const std::string pattern = localized(key);
    std::string result;
    std::size_t at = 0;
    for (const auto& argument : arguments) {
        const std::size_t text = pattern.find("%@", at);
        const std::size_t number = pattern.find("%lld", at);
        const std::size_t mark = std::min(text, number);
        if (mark == std::string::npos)
            break;
        result.append(pattern, at, mark - at).append(argument);
        at = mark + (mark == text ? 2 : 4);
    }
    return result.append(pattern, at);
}

std::string bothSentences(const std::string& first, const std::string& second) {
    return first.empty() || second.empty() ? first + second : localized("%@ %@", {first, second});
}

} // namespace tessarune
