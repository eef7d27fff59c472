#include "Terminal/TranslationOffer.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/LanguageCommands.h"
#include "Terminal/Question.h"
#include "Terminal/TranslationChoice.h"
#include "TessaruneCore/text/Localization.h"

namespace tessarune {

namespace {

/// The key under which the target of the last declined offer is stored. It is stored with the
/// settings, but is not a setting.
constexpr const char* declinedKey = "translationOfferDeclined";

bool wasDeclined(const Program& program, const std::string& id) {
    const auto declined = program.storedDefaults.value(declinedKey);
    const auto* text = declined ? std::get_if<std::string>(&*declined) : nullptr;
    return text && *text == id;
}

std::string question(const TranslationLanguageState& language) {
    const std::string name = languageName(language.id);
    if (!language.damage.empty())
        return localized("The translation model for %@ is damaged.", {name});
    return localized("The translation model for %@ is not on this computer. Its size: %@.",
                     {name, downloadSize(language.bytes)});
}

} // namespace

Task<std::optional<ExitStatus>> offerTranslation(Program& program, const TerminalOptions& options,
                                                 CaptionsCommand command) {
    if (options.json || options.quiet || !userCanAnswer())
        co_return std::nullopt;
    const auto settings = LiveTranslationSettingsSnapshot::current(program.settings);
    const auto choice =
        chooseTranslation(settings, command.target, program.translationModels.list());
    if (!choice.missing || (!command.target && wasDeclined(program, choice.missing->id)))
        co_return std::nullopt;
    const std::string id = choice.missing->id;
    printNotice(question(*choice.missing));
    switch (co_await ask(program.host, localized("Download it now?"), Answer::yes)) {
    case Answer::interrupted:
        printNotice("");
        co_return ExitStatus::interrupted;
    case Answer::no:
        if (!command.target)
            program.storedDefaults.set(declinedKey, id);
        co_return std::nullopt;
    case Answer::yes:
        break;
    }
    const auto status = static_cast<ExitStatus>(co_await downloadLanguage(program, options, id));
    const bool wasStopped = status == ExitStatus::interrupted;
    // Captions may begin without the target of the settings, but not without that of the command
    // line.
    const bool mayContinue = status == ExitStatus::ok || (!command.target && !wasStopped);
    co_return mayContinue ? std::nullopt : std::optional(status);
}

} // namespace tessarune
