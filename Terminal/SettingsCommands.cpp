#include "Terminal/SettingsCommands.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/ExitStatus.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/TextColumns.h"

#include <nlohmann/json.hpp>

#include <map>

namespace tessarune {

namespace {

constexpr std::size_t settingColumns = 80;
constexpr const char* settingIndent = "    ";

std::string about(const SettingInfo& info) {
    return bothSentences(localized(info.about),
                         info.meaning.empty() ? "" : localized(info.meaning));
}

nlohmann::ordered_json json(const AnySetting& setting) {
    const SettingInfo& info = setting.info();
    return {{"type", "setting"},
            {"key", setting.key()},
            {"value", setting.text()},
            {"default", setting.defaultText()},
            {"expected", setting.expected()},
            {"choices", setting.choices()},
            {"group", localized(title(info.group))},
            {"about", about(info)},
            {"windowOnly", isForWindowAlone(info.group)}};
}

/// Key and value, followed by the description and the valid values.
void print(const AnySetting& setting) {
    const bool changed = setting.text() != setting.defaultText();
    const std::string row =
        std::string(changed ? "* " : "  ") + std::string(setting.key()) + " = " + setting.text();
    printText(changed ? localized("%@  (default: %@)", {row, setting.defaultText()}) : row);
    const std::string text =
        localized("%@ Possible values: %@.", {about(setting.info()), setting.expected()});
    for (const auto& line : Text::wrapped(text, settingColumns - Text::columns(settingIndent)))
        printText(settingIndent + line);
}

/// The problem with an assignment; empty if it is valid.
std::string problemWith(const AppSettings& settings, const std::string& key,
                        const std::string& text) {
    const AnySetting* setting = settings.find(key);
    if (!setting)
        return localized("There is no setting '%@'; --settings lists them.", {key});
    if (!setting->accepts(text))
        return localized("%@ takes %@, not '%@'.", {key, setting->expected(), text});
    return {};
}

} // namespace

Task<int> showSettings(Program& program, const TerminalOptions& options) {
    std::map<SettingGroup, std::vector<const AnySetting*>> groups;
    for (const auto* setting : program.settings.all())
        groups[setting->info().group].push_back(setting);
    for (const auto& [group, settings] : groups) {
        if (!options.json) {
            const std::string heading = localized(title(group));
            printText(isForWindowAlone(group) ? localized("%@ (only for the window)", {heading})
                                              : heading);
            printText("");
        }
        for (const auto* setting : settings) {
            if (options.json)
                printJSON(json(*setting));
            else
                print(*setting);
        }
        if (!options.json)
            printText("");
    }
    // If the file is unreadable, the values above are the defaults.
    const std::string problem = program.storedDefaults.problem();
    if (problem.empty())
        co_return static_cast<int>(ExitStatus::ok);
    printProblem(localized("The settings cannot be read: %@.", {problem}));
    co_return static_cast<int>(ExitStatus::ioError);
}

Task<int> changeSettings(Program& program, SetCommand command) {
    for (const auto& [key, text] : command.values) {
        const std::string problem = problemWith(program.settings, key, text);
        if (!problem.empty()) {
            printProblem(problem);
            co_return static_cast<int>(ExitStatus::usage);
        }
    }
    if (const auto aside = program.renewSettingsFile(); !aside.empty())
        printNotice(localized("The settings file could not be read and was renamed to %@. In the "
                              "new one, recording is switched off (recordWhileCaptioning=false).",
                              {aside.string()}));
    for (const auto& [key, text] : command.values)
        program.settings.find(key)->setText(text);
    if (program.storedDefaults.problem().empty())
        co_return static_cast<int>(ExitStatus::ok);
    printProblem(
        localized("The settings could not be saved: %@.", {program.storedDefaults.problem()}));
    co_return static_cast<int>(ExitStatus::cannotWrite);
}

} // namespace tessarune
