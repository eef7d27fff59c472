#include "Tessarune/refinement/SpeechAnalyzerFileTranscriber.h"

#include "Tessarune/refinement/FileSegmentCollector.h"
#include "Tessarune/refinement/RecordingBlocks.h"
#include "TessaruneCore/host/CancellationError.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace tessarune {

namespace {

using FileError = SpeechAnalyzerFileTranscriberError;
using Transcription = SpeechAnalyzerFileTranscriber::Transcription;

std::string textOf(FileError::Kind kind) {
    return kind == FileError::Kind::emptyResult
               ? localized("Apple SpeechAnalyzer 文件模式没有产出转写文本")
               : localized("The recogniser cannot transcribe files.");
}

void throwIfStopped(const std::stop_token& stop) {
    if (stop.stop_requested())
        throw CancellationError();
}

void addAll(FileSegmentCollector& collector, const std::vector<SpeechResult>& results) {
    for (const SpeechResult& result : results)
        collector.add(result);
}

} // namespace

FileError::SpeechAnalyzerFileTranscriberError(Kind kind)
    : std::runtime_error(textOf(kind)), kind_(kind) {}

SpeechAnalyzerFileTranscriber::SpeechAnalyzerFileTranscriber(Environment environment)
    : environment_(std::move(environment)) {}

Task<Transcription>
SpeechAnalyzerFileTranscriber::transcribe(std::string audioPath, std::string localeIdentifier,
                                          Control control,
                                          SpeechAnalyzerFileTranscriberDiagnostics diagnostics) {
    const Environment environment = environment_;
    if (!environment.engine.makeFileAnalyzer)
        throw FileError(FileError::Kind::noFileMode);
    const SpeechTranscriberOptions options{
        localeIdentifier,
        {SpeechReportingOption::volatileResults, SpeechReportingOption::fastResults},
        {SpeechAttributeOption::audioTimeRange}};
    const std::shared_ptr<SpeechFileAnalyzer> analyzer =
        environment.engine.makeFileAnalyzer(options, control.model);
    std::unique_ptr<RecordingBlocks> blocks;
    co_await runOn(environment.reader, [&] {
        blocks = std::make_unique<RecordingBlocks>(environment.openMedia, environment.makeConverter,
                                                   audioPath, analyzer->audioFormat());
    });
    Transcription transcription;
    Task<std::string> preparing = analyzer->prepare();
    transcription.model = co_await preparing;
    FileSegmentCollector collector(environment.host, options, std::move(diagnostics));
    for (;;) {
        if (control.beforeBlock) {
            Task<void> waiting = control.beforeBlock();
            co_await waiting;
        }
        throwIfStopped(control.stop);
        const AudioBufferPtr block =
            co_await runOn(environment.reader, [&] { return blocks->next(blockSeconds); });
        if (!block)
            break;
        Task<std::vector<SpeechResult>> analyzing = analyzer->analyze(block, control.stop);
        const std::vector<SpeechResult> results = co_await analyzing;
        throwIfStopped(control.stop);
        addAll(collector, results);
        if (control.progress)
            control.progress(blocks->heardSeconds(), blocks->duration());
    }
    Task<std::vector<SpeechResult>> finishing = analyzer->finish();
    const std::vector<SpeechResult> last = co_await finishing;
    throwIfStopped(control.stop);
    addAll(collector, last);

    FileSegmentCollector::Collected collected = collector.collected();
    if (collected.usedVolatileFallback)
        environment.logger.event("speechAnalyzer.fileRefine.usedVolatileFallback",
                                 {{"locale", localeIdentifier}});
    if (collected.segments.empty() && !blocks->brokenOff().empty())
        throw MediaFileError(MediaFileError::Kind::damaged, blocks->brokenOff());
    if (collected.segments.empty())
        throw FileError(FileError::Kind::emptyResult);
    SpeechAnalyzerFileTranscriptionResult& result = transcription.result;
    result.localeIdentifier = localeIdentifier;
    result.segments = std::move(collected.segments);
    // The first word is reported at most `mostLateness` too late, so it does not begin earlier than
    // the reported time minus `mostLateness`. Loud sound before that was music or noise.
    result.audioOnsetSeconds = std::max(
        blocks->onsetSeconds(), result.firstSoundSeconds().value_or(0) - analyzer->mostLateness());
    transcription.heardSeconds = blocks->heardSeconds();
    transcription.brokenOff = blocks->brokenOff();
    // The remaining sound is freed on the queue that read it.
    co_await runOn(environment.reader, [&] { blocks.reset(); });
    co_return transcription;
}

} // namespace tessarune
