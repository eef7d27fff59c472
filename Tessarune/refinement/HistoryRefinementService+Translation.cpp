#include "Tessarune/refinement/HistoryRefinementJob.h"
#include "Tessarune/refinement/HistoryRefinementService.h"
#include "TessaruneCore/LocalizedError.h"
#include "TessaruneCore/host/CancellationError.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <cmath>
#include <stdexcept>

namespace tessarune {

namespace {

using TranslationOutcome = HistoryRefinementOutcome::Translation;
using TranslationRecord = HistoryRefinementObserver::Translation;

constexpr const char* skippedEvent = "history.refine.translation.skipped";

/// The spoken language, as the translator names it.
std::string sourceLanguageOf(const std::string& localeIdentifier) {
    const std::string locale = Text::lowercased(localeIdentifier);
    if (locale.starts_with("zh"))
        return "zh-Hans";
    for (const char* language : {"ja", "ko"}) {
        if (locale.starts_with(language))
            return language;
    }
    return "en";
}

/// A sentence followed by its translation, as in the bilingual transcript.
std::string blockOf(const std::string& source, const std::string& translation) {
    std::vector<std::string_view> lines;
    for (const auto text : {Text::trimmed(source), Text::trimmed(translation)}) {
        if (!text.empty())
            lines.push_back(text);
    }
    return Text::joined(lines, "\n");
}

} // namespace

Task<void> HistoryRefinementService::translateAndSaveIfPossible(JobPtr job) {
    const HistoryRefinementRequest& request = job->request;
    const std::string target = request.translationTargetLanguage;
    const std::string source = sourceLanguageOf(request.localeIdentifier);
    HistoryRefinementOutcome& outcome = job->outcome;
    if (!TranslationSupport::isAppleBackend(request.translationBackend) ||
        !environment_.makeTranslator) {
        job->note(skippedEvent,
                  {{"reason", "backendUnavailable"}, {"backend", request.translationBackend}});
        co_return;
    }
    if (TranslationSupport::isSameLanguageTarget(target, source)) {
        job->note(
            skippedEvent,
            {{"reason", "sameLanguage"}, {"sourceLanguage", source}, {"targetLanguage", target}});
        co_return;
    }
    std::exception_ptr failure;
    RecordingTranscriptSaveOutcome saved = RecordingTranscriptSaveOutcome::failed;
    try {
        Task<std::string> translating = translateSegments(job, source);
        const std::string bilingual = co_await translating;
        co_await runOn(worker_, [&] {
            saved = environment_.catalog.saveRefinedTranscript(
                job->result.sourceText(), bilingual,
                job->result.wordTimeline(request.recognitionOptionID), request.recordingID);
        });
        if (saved == RecordingTranscriptSaveOutcome::failed)
            throw std::runtime_error("the transcripts could not be written");
    } catch (const RecordingDeleted&) {
        saved = RecordingTranscriptSaveOutcome::skippedDeleted;
    } catch (const CancellationError&) {
        outcome.translation = TranslationOutcome::cancelled;
        co_return;
    } catch (...) {
        failure = std::current_exception();
    }
    LogFields fields = job->recording();
    const auto elapsed =
        static_cast<std::int64_t>(std::llround((environment_.host.now() - job->startedAt) * 1000));
    if (failure) {
        outcome.translation = TranslationOutcome::failed;
        outcome.translationProblem = localizedDescription(failure);
        fields.add("target", target)
            .add("error", outcome.translationProblem)
            .add("elapsedMS", elapsed);
        environment_.logger.event("history.refine.translation.failed", fields);
        job->note("history.refine.translation.failed", fields,
                  HistoryRefinementObserver::Status::failed);
    } else if (saved == RecordingTranscriptSaveOutcome::skippedDeleted) {
        outcome.status = HistoryRefinementOutcome::Status::deleted;
        fields.add("reason", "recordingDeleted");
        environment_.logger.event(skippedEvent, fields);
        job->note(skippedEvent, fields);
    } else {
        outcome.translation = TranslationOutcome::saved;
        fields.add("segments", outcome.sentences).add("target", target).add("elapsedMS", elapsed);
        environment_.logger.event("history.refine.translation.done", fields);
        if (job->observer)
            job->observer->bilingualSaved(outcome.sentences, target);
    }
}

/// Translates one sentence after the other; the first failure ends the translation.
Task<std::string> HistoryRefinementService::translateSegments(JobPtr job, std::string source) {
    if (!translator_)
        translator_ = environment_.makeTranslator();
    const std::shared_ptr<Translator> translator = translator_;
    const std::string target = job->request.translationTargetLanguage;
    const auto& segments = job->result.segments;
    std::vector<std::string> blocks;
    for (std::size_t i = 0; i < segments.size(); ++i) {
        setStep(*job, Progress::Step::translating,
                static_cast<double>(i) / static_cast<double>(segments.size()));
        Task<void> waiting = waitWhilePaused(job);
        co_await waiting;
        const std::string text(Text::trimmed(segments[i].text));
        if (text.empty())
            continue;
        TranslationRecord record;
        record.index = static_cast<std::int64_t>(i);
        record.sourceLanguage = source;
        record.targetLanguage = target;
        record.source = text;
        const auto report = [&](TranslationRecord::Event event) {
            record.event = event;
            if (job->observer)
                job->observer->translation(record);
        };
        report(TranslationRecord::Event::start);
        const double startedAt = environment_.host.now();
        try {
            Task<std::string> translating = translator->translate(text, source, target);
            record.translated = co_await translating;
        } catch (const std::exception& error) {
            record.elapsedSeconds = environment_.host.now() - startedAt;
            record.error = error.what();
            report(TranslationRecord::Event::failure);
            throw;
        }
        record.elapsedSeconds = environment_.host.now() - startedAt;
        report(TranslationRecord::Event::success);
        blocks.push_back(blockOf(text, record.translated));
    }
    co_return Text::joined(blocks, "\n\n");
}

} // namespace tessarune
