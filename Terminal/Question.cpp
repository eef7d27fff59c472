#include "Terminal/Question.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/SignalWatch.h"
#include "Tessarune/shell/ChosenFile.h"
#include "TessaruneCore/host/OneShot.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <stop_token>
#include <string_view>
#include <system_error>

namespace tessarune {

namespace {

/// The interval at which the reader checks whether the answer is still wanted.
constexpr int checkMilliseconds = 100;
/// The length of the longest line that a terminal accepts. A smaller buffer would leave part of a
/// long line to the next question or to the shell.
constexpr std::size_t maximumLine = 4096;

Answer readAnswer(Answer byDefault, const std::stop_token& stop) {
    while (!stop.stop_requested()) {
        pollfd input{STDIN_FILENO, POLLIN, 0};
        if (poll(&input, 1, checkMilliseconds) <= 0)
            continue;
        char line[maximumLine];
        const ssize_t length = ::read(STDIN_FILENO, line, sizeof line);
        if (length < 0 && errno == EINTR)
            continue;
        if (length <= 0)
            return Answer::no;
        const std::string_view text(line, static_cast<std::size_t>(length));
        const std::string word = Text::lowercased(Text::trimmed(text));
        if (word.empty())
            return byDefault;
        return word.starts_with("y") || word == localized("yes") ? Answer::yes : Answer::no;
    }
    return Answer::interrupted;
}

} // namespace

bool userCanAnswer() {
    return isatty(STDIN_FILENO) && isatty(STDERR_FILENO);
}

Task<Answer> ask(Host& host, std::string question, Answer byDefault) {
    std::fputs(
        (Text::printable(question) + (byDefault == Answer::yes ? " [Y/n] " : " [y/N] ")).c_str(),
        stderr);
    std::stop_source stop;
    OneShot<Answer> answered(Executor::main(host));
    const auto reading = host.serialQueue("tessarune.question", QueuePriority::utility);
    const SignalWatch signals(host, [answered] { answered.resume(Answer::interrupted); });
    reading->async([answered, byDefault, token = stop.get_token()] {
        answered.resume(readAnswer(byDefault, token));
    });
    const Answer answer = co_await answered;
    stop.request_stop();
    reading->sync([] {}); // wait: a reader that still runs would take input meant for others
    co_return answer;
}

Task<ExitStatus> permissionToWrite(Host& host, FileSystem& files, std::filesystem::path ownFolder,
                                   std::filesystem::path to, bool replaces) {
    if (ChosenFile::isBelow(ownFolder, to)) {
        printProblem(ChosenFile::isOwnProblem(to));
        co_return ExitStatus::cannotWrite;
    }
    if (files.isDirectory(to)) {
        printProblem(localized("%@ is a folder.", {to.string()}));
        co_return ExitStatus::cannotWrite;
    }
    std::error_code ignored;
    const auto type = std::filesystem::symlink_status(to, ignored).type();
    if (type != std::filesystem::file_type::not_found &&
        type != std::filesystem::file_type::regular) {
        printProblem(localized("%@ is not an ordinary file.", {to.string()}));
        co_return ExitStatus::cannotWrite;
    }
    if (replaces || !files.exists(to))
        co_return ExitStatus::ok;
    const std::string text = localized("%@ already exists.", {to.string()});
    if (!userCanAnswer()) {
        printProblem(bothSentences(text, localized("Add --yes to replace it.")));
        co_return ExitStatus::cannotWrite;
    }
    Task<Answer> asking = ask(host, bothSentences(text, localized("Replace it?")), Answer::no);
    switch (co_await asking) {
    case Answer::yes:
        co_return ExitStatus::ok;
    case Answer::no:
        co_return ExitStatus::cannotWrite;
    case Answer::interrupted:
        break;
    }
    co_return ExitStatus::interrupted;
}

} // namespace tessarune
