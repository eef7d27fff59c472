#include "Terminal/TranslationOffer.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/DownloadProgress.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/LanguageCommands.h"
#include "Terminal/SignalWatch.h"
#include "Terminal/TranslationChoice.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace tessarune {

namespace {

/// The settings' target for which an offer was declined; beside the settings, and none of them.
constexpr const char* declinedKey = "translationOfferDeclined";
/// How soon the reading of an answer notices that nobody waits for it any more.
constexpr int lookAgainMilliseconds = 100;

enum class Answer { yes, no, interrupted };

/// Waits for a line on the terminal. An empty one is a yes; the end of the input is a no.
Answer readAnswer(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
        pollfd input{STDIN_FILENO, POLLIN, 0};
        if (poll(&input, 1, lookAgainMilliseconds) <= 0)
            continue;
        char line[64];
        const ssize_t length = ::read(STDIN_FILENO, line, sizeof line);
        if (length <= 0)
            return Answer::no;
        const std::string_view text(line, static_cast<std::size_t>(length));
        const std::string word = Text::lowercased(Text::trimmed(text));
        return word.empty() || word.starts_with("y") || word == localized("yes") ? Answer::yes
                                                                                 : Answer::no;
    }
    return Answer::interrupted;
}

/// Somebody may also press Ctrl-C instead of answering.
Task<Answer> ask(Host& host, std::string question) {
    std::fputs((question + " [Y/n] ").c_str(), stderr);
    std::stop_source stop;
    OneShot<Answer> answered(Executor::main(host));
    const auto reading = host.serialQueue("tessarune.question", QueuePriority::utility);
    const SignalWatch signals(host, [answered] { answered.resume(Answer::interrupted); });
    reading->async([answered, token = stop.get_token()] { answered.resume(readAnswer(token)); });
    const Answer answer = co_await answered;
    stop.request_stop();
    reading->sync([] {});
    co_return answer;
}

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

Task<std::optional<int>> offerTranslation(Program& program, const TerminalOptions& options,
                                          CaptionsCommand command) {
    const bool somebodyIsThere = isatty(STDIN_FILENO) && isatty(STDERR_FILENO);
    if (options.json || options.quiet || !somebodyIsThere)
        co_return std::nullopt;
    const auto settings = LiveTranslationSettingsSnapshot::current(program.settings);
    const auto choice =
        chooseTranslation(settings, command.target, program.translationModels.list());
    if (!choice.missing || (!command.target && wasDeclined(program, choice.missing->id)))
        co_return std::nullopt;
    const std::string id = choice.missing->id;
    printNotice(question(*choice.missing));
    switch (co_await ask(program.host, localized("Download it now?"))) {
    case Answer::interrupted:
        printNotice("");
        co_return static_cast<int>(ExitStatus::stoppedTwice);
    case Answer::no:
        if (!command.target)
            program.storedDefaults.set(declinedKey, id);
        co_return std::nullopt;
    case Answer::yes:
        break;
    }
    const int status = co_await downloadLanguage(program, options, id);
    const bool wasStopped = status == static_cast<int>(ExitStatus::stoppedTwice);
    // Captions do not depend on what the settings want; what was asked for now is another thing.
    const bool goesOn =
        status == static_cast<int>(ExitStatus::ok) || (!command.target && !wasStopped);
    co_return goesOn ? std::nullopt : std::optional(status);
}

} // namespace tessarune
