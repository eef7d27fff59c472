#include "Terminal/SettingsCommands.h"

#include "Terminal/ExitStatus.h"
#include "TessaruneCore/text/Localization.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>

namespace tessarune {

namespace {

/// A file that is not understood is not used and never overwritten; the user should know.
void warnOfProblem(const Program& program) {
    if (!program.storedDefaults.problem().empty())
        std::fprintf(stderr, "tessarune-terminal: the settings file: %s\n",
                     program.storedDefaults.problem().c_str());
}

std::string line(const AnySetting& setting) {
    const nlohmann::ordered_json object = {{"type", "setting"},
                                           {"key", setting.key()},
                                           {"value", setting.text()},
                                           {"default", setting.defaultText()},
                                           {"expected", setting.expected()}};
    return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

/// Says what is wrong with an assignment; empty if it is fine.
std::string problemWith(const AppSettings& settings, const std::string& key,
                        const std::string& text) {
    const AnySetting* setting = settings.find(key);
    if (!setting)
        return "there is no setting '" + key + "'; --settings lists them";
    if (!setting->accepts(text))
        return key + " is " + setting->expected() + ", not '" + text + "'";
    return {};
}

} // namespace

Task<int> showSettings(Program& program, const TerminalOptions& options) {
    int width = 0;
    for (const auto* setting : program.settings.all())
        width = std::max(width, static_cast<int>(setting->key().size()));
    for (const auto* setting : program.settings.all()) {
        if (options.json) {
            std::puts(line(*setting).c_str());
            continue;
        }
        const bool changed = setting->text() != setting->defaultText();
        std::printf("%c %-*s  %s\n", changed ? '*' : ' ', width,
                    std::string(setting->key()).c_str(), setting->text().c_str());
    }
    warnOfProblem(program);
    co_return static_cast<int>(ExitStatus::ok);
}

Task<int> changeSettings(Program& program, SetCommand command) {
    for (const auto& [key, text] : command.values) {
        const std::string problem = problemWith(program.settings, key, text);
        if (!problem.empty()) {
            std::fprintf(stderr, "tessarune-terminal: %s\n", problem.c_str());
            co_return static_cast<int>(ExitStatus::usage);
        }
    }
    if (const auto aside = program.renewSettingsFile(); !aside.empty())
        std::fprintf(stderr, "%s\n",
                     localized("The settings file could not be read. It is kept as %@; a new one "
                               "begins, with recordWhileCaptioning=false.",
                               {aside.string()})
                         .c_str());
    for (const auto& [key, text] : command.values)
        program.settings.find(key)->setText(text);
    if (program.storedDefaults.problem().empty())
        co_return static_cast<int>(ExitStatus::ok);
    warnOfProblem(program);
    co_return static_cast<int>(ExitStatus::cannotWrite);
}

} // namespace tessarune
