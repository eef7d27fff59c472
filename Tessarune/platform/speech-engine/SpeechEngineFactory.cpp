#include "Tessarune/platform/speech-engine/SpeechEngineFactory.h"

#include "Tessarune/platform/speech-engine/MoonshineFileAnalyzer.h"
#include "Tessarune/platform/speech-engine/MoonshineSpeechAnalyzer.h"

#include <stdexcept>

namespace tessarune {

SpeechEngine makeSpeechEngine(Host& host, ModelStore& store,
                              std::function<std::string()> modelChoice) {
    return makeSpeechEngine(host, store, std::move(modelChoice), &MoonshineLibrary::shared, {});
}

SpeechEngine makeSpeechEngine(Host& host, ModelStore& store,
                              std::function<std::string()> modelChoice,
                              std::function<std::shared_ptr<const MoonshineLibrary>()> library,
                              RecognitionPolicy policy) {
    auto models =
        std::make_shared<SpeechModels>(host, store, std::move(modelChoice), std::move(library),
                                       policy.passInterval / 2, policy.memoryBytes);
    const Executor worker = Executor::queue(
        host, host.serialQueue("tessarune.speech-engine", QueuePriority::userInitiated));

    SpeechEngine engine;
    engine.makeTranscriber = [](SpeechTranscriberOptions options, Executor resultsExecutor) {
        return std::make_shared<MoonshineSpeechTranscriber>(std::move(options),
                                                            std::move(resultsExecutor));
    };
    auto backlog = std::make_shared<RecognitionBacklog>();
    engine.unheardSeconds = [backlog] { return backlog->seconds.load(); };
    engine.makeAnalyzer =
        [&host, worker, models, policy, backlog](
            std::shared_ptr<SpeechTranscriber> transcriber) -> std::shared_ptr<SpeechAnalyzer> {
        const auto ours = std::dynamic_pointer_cast<MoonshineSpeechTranscriber>(transcriber);
        if (!ours)
            throw std::logic_error("the transcriber belongs to another engine");
        return std::make_shared<MoonshineSpeechAnalyzer>(host, worker, models, *ours,
                                                         ours->results(), policy, backlog);
    };
    const Executor fileWorker = Executor::queue(
        host, host.serialQueue("tessarune.speech-engine.file", QueuePriority::utility));
    const MoonshineFileAnalyzer::Policy filePolicy{policy.lowestHertz, policy.removesHum,
                                                   policy.linesBeforeRestart};
    engine.makeFileAnalyzer = [fileWorker, models, filePolicy](SpeechTranscriberOptions options,
                                                               std::string model) {
        return std::make_shared<MoonshineFileAnalyzer>(fileWorker, models, std::move(model),
                                                       std::move(options), filePolicy);
    };
    return engine;
}

} // namespace tessarune
