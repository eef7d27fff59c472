#include "Terminal/HistoryOptions.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <utility>

namespace tessarune {

namespace {

std::optional<HistoryTranscriptExportContent> checkedContent(const std::string& text,
                                                             HistoryExportFormat format) {
    using Content = HistoryTranscriptExportContent;
    using Format = HistoryExportFormat;
    if (text.empty())
        return std::nullopt;
    if (format == Format::m4a)
        throw UsageProblem(localized("%@ and %@ cannot be combined.", {"--content", "m4a"}));
    if (text == "source")
        return Content::source;
    if (text == "bilingual")
        return Content::bilingual;
    if (text == "translation" && format != Format::html && format != Format::pdf)
        return Content::translation;
    throw UsageProblem(localized("--content takes source or bilingual, and for srt, vtt and txt "
                                 "also translation, not '%@'.",
                                 {text}));
}

UsagePeriodKind usagePeriodKind(const std::string& word) {
    if (word == "day")
        return UsagePeriodKind::day;
    if (word == "week")
        return UsagePeriodKind::week;
    if (word == "month")
        return UsagePeriodKind::month;
    throw UsageProblem(localized("--by takes day, week or month, not '%@'.", {word}));
}

/// Parses a time such as "90", "12.5", "1:30" or "1:02:03". Returns seconds.
double checkedTime(const std::string& text) {
    double seconds = 0;
    std::size_t parts = 0;
    for (std::size_t at = 0; at <= text.size(); ++parts) {
        const std::size_t end = std::min(text.find(':', at), text.size());
        const std::string part = text.substr(at, end - at);
        double value = 0;
        const auto [rest, error] = std::from_chars(part.data(), part.data() + part.size(), value,
                                                   std::chars_format::fixed);
        const bool isNumber = error == std::errc() && rest == part.data() + part.size();
        if (!isNumber || !std::isfinite(value) || value < 0 || parts > 2 ||
            (parts > 0 && value >= 60))
            throw UsageProblem(
                localized("--from takes seconds, MM:SS or HH:MM:SS, not '%@'.", {text}));
        seconds = seconds * 60 + value;
        at = end + 1;
    }
    return seconds;
}

} // namespace

void HistoryOptions::declare(CommandOptions& options) {
    options.beginGroup(localized("Recorded sessions"));
    options.flag("--list", list_, localized("List the recorded sessions, the newest first"));
    options.words("--show", show_, "ID",
                  localized("Print a session's transcript; the beginning of the ID is enough"));
    options.words("--words", words_, "ID",
                  localized("List the words of a transcript, with their counts and meanings"));
    CLI::Option* const plays = options.words(
        "--play", play_, "ID",
        localized(
            "Play a session with its text: Space pauses, arrows and J, L move, R repeats, + and "
            "- change the speed, Q ends"));
    options.detailWord(
        {plays}, "--from", from_, "TIME",
        localized("With --play: the start position in seconds, as MM:SS or as HH:MM:SS"));
    CLI::Option* const exports = options.words(
        "--export", export_, "ID", localized("Write a transcript or its sound to a file"));
    options.detailWord({exports}, "--format", format_, "FORMAT",
                       localized("With --export: html, pdf, m4a, srt, vtt or txt; default: by the "
                                 "extension of the file name, or pdf"));
    options.detailWord({exports}, "--content", content_, "CONTENT",
                       localized("With --export: source (the original), bilingual or translation; "
                                 "default: bilingual if there is a translation"));
    options
        .words("--note", note_, "ID TEXT",
               localized("Set a session's note, or remove it with - as the text"))
        ->expected(2);
    CLI::Option* const deletes =
        options.words("--delete", delete_, "ID", localized("Delete sessions with all their files"))
            ->expected(1, CLI::detail::expected_max_vector_size);
    options.words("--import", import_, "FILE", localized("Import sound or video files"))
        ->expected(1, CLI::detail::expected_max_vector_size);
    CLI::Option* const refine = options.words(
        "--refine", refine_.id, "ID", localized("Transcribe a session again, more accurately"));
    options.detailWord({refine}, "--with-model", refine_.model, "NAME",
                       localized("With --refine: the speech model to use instead of the best one"));
    options.words("--search", search_, "TEXT",
                  localized("Find recordings by what was said, or by its translation"));
    CLI::Option* const usage =
        options.flag("--usage", usage_,
                     localized("Show listening time, sessions and words per day, week or month"));
    options.detailWord({usage}, "--by", usageBy_, "PERIOD",
                       localized("With --usage: per day (the default), week or month"));
    CLI::Option* const diagnostics =
        options
            .words(
                "--diagnostics", diagnostics_, "COMMAND",
                localized(
                    "Diagnostics of sessions: list, show RUN, verify RUN, pack RUN or delete RUN"))
            ->expected(1, 2);
    options.detailFlag({diagnostics}, "--with-text", withText_,
                       localized("With --diagnostics pack: include what was said"));
    options.words("--verify-run", verifyRun_, "DIR",
                  localized("Replay the diagnostics run in this folder and compare the captions "
                            "with those of the session"));
    options.detailWord(
        {exports, diagnostics}, "-o,--output", to_, "PATH",
        localized(
            "With --export or --diagnostics pack: the file to write; default: named after the "
            "note, the date or the run. An export can also go to -, the standard output"));
    options.detailFlag({exports, deletes, diagnostics}, "--yes", yes_,
                       localized("Delete sessions or replace files without asking"));
}

std::optional<HistoryCommand> HistoryOptions::command() const {
    if (list_)
        return ListRecordingsCommand{};
    if (!show_.empty())
        return ShowRecordingCommand{show_};
    if (!words_.empty())
        return CountWordsCommand{words_};
    if (!play_.empty())
        return PlayCommand{play_, from_.empty() ? 0 : checkedTime(from_)};
    if (!export_.empty())
        return exportCommand();
    if (!note_.empty())
        return SetNoteCommand{note_[0], note_[1] == "-" ? std::string() : note_[1]};
    if (!delete_.empty())
        return DeleteRecordingsCommand{delete_, yes_};
    if (!import_.empty())
        return ImportFilesCommand{{import_.begin(), import_.end()}};
    if (!refine_.id.empty())
        return refine_;
    if (!search_.empty())
        return SearchRecordingsCommand{search_};
    if (!diagnostics_.empty())
        return diagnosticsCommand();
    if (!verifyRun_.empty()) {
        // "./" makes it a path: a bare name would first be looked up among the runs of the data
        // folder.
        const bool isPath = verifyRun_.find('/') != std::string::npos;
        return DiagnosticsCommand{DiagnosticsCommand::Action::verify,
                                  isPath ? verifyRun_ : "./" + verifyRun_,
                                  false,
                                  false,
                                  {}};
    }
    if (usage_)
        return ShowUsageCommand{usagePeriodKind(usageBy_)};
    return std::nullopt;
}

DiagnosticsCommand HistoryOptions::diagnosticsCommand() const {
    using Action = DiagnosticsCommand::Action;
    constexpr std::pair<std::string_view, Action> words[] = {{"list", Action::list},
                                                             {"show", Action::show},
                                                             {"verify", Action::verify},
                                                             {"delete", Action::remove},
                                                             {"pack", Action::pack}};
    const auto* const found = std::ranges::find(words, std::string_view(diagnostics_.front()),
                                                &std::pair<std::string_view, Action>::first);
    const bool namesARun = diagnostics_.size() == 2;
    if (found == std::end(words) || namesARun == (found->second == Action::list))
        throw UsageProblem(localized("--diagnostics takes list, show RUN, verify RUN, pack RUN or "
                                     "delete RUN."));
    const Action action = found->second;
    if (withText_ && action != Action::pack)
        throw UsageProblem(
            localized("%@ can only be used with %@.", {"--with-text", "--diagnostics pack"}));
    if (!to_.empty() && action != Action::pack)
        throw UsageProblem(
            localized("%@ can only be used with %@.", {"--output", "--diagnostics pack"}));
    if (to_ == "-")
        throw UsageProblem(
            localized("--diagnostics pack can only write to a file, not to standard output."));
    return {action, namesARun ? diagnostics_[1] : "", yes_, withText_, to_};
}

ExportRecordingCommand HistoryOptions::exportCommand() const {
    ExportRecordingCommand command{export_, HistoryExportFormat::pdf, std::nullopt, to_, yes_};
    std::string format = format_;
    if (format.empty() && to_ != "-")
        format = std::filesystem::path(to_).extension().string();
    if (format.starts_with('.'))
        format.erase(0, 1);
    if (format.empty() && to_ == "-")
        throw UsageProblem(localized("%@ can only be used with %@.", {"--output -", "--format"}));
    const auto known = HistoryExport::formatOf(format.empty() ? "pdf" : Text::lowercased(format));
    if (!known)
        throw UsageProblem(
            localized("--format takes html, pdf, m4a, srt, vtt or txt, not '%@'.", {format}));
    command.format = *known;
    command.content = checkedContent(content_, *known);
    if (to_ == "-" && command.format == HistoryExportFormat::m4a)
        throw UsageProblem(localized("M4A can only be written to a file, not to a pipe."));
    return command;
}

} // namespace tessarune
