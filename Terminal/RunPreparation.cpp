#include "Terminal/RunPreparation.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/RunFailure.h"
#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/TextColumns.h"

#include <utility>

namespace tessarune {

std::vector<std::string> RunPreparation::repairTexts(const Application::Preparation& found) {
    std::vector<std::string> texts;
    if (std::string rebuilt = found.rebuiltIndexText(); !rebuilt.empty())
        texts.push_back(std::move(rebuilt));
    if (std::string removed = found.removedText(); !removed.empty())
        texts.push_back(std::move(removed));
    for (const UUID& id : found.repairs.recoveredSessions)
        texts.push_back(
            localized("An interrupted session was recovered: --show %@", {shortID(id)}));
    for (const auto* imports :
         {&found.repairs.untranscribedImports, &found.repairs.brokenOffImports}) {
        for (const RecordingMetadata& import : *imports)
            texts.push_back(localized(
                "The import of '%@' was interrupted. To transcribe it: --refine %@",
                {Text::printableLine(import.note.value_or(import.filePath)), shortID(import.id)}));
    }
    return texts;
}

void RunPreparation::overrideSettings(Application& application, const CaptionsCommand& command) {
    AppSettings& settings = application.settings;
    if (!command.records)
        application.recording.recordNothing();
    // Silence does not end a terminal session unless the user has stored a limit. It never ends the
    // captions of a file, which end with the file.
    if (std::holds_alternative<FileSource>(command.source) ||
        !settings.audioInactivityAutoStopMinutes.isStored())
        application.override(settings.audioInactivityAutoStopMinutes, std::int64_t{0});
    if (!command.locale)
        return;
    for (const auto& option : ModelCatalog::recognitionOptions()) {
        if (option.localeIdentifier == *command.locale)
            application.override(settings.selectedRecognitionOptionID, option.id);
    }
}

void RunPreparation::checkModel(const Application& application) {
    if (const std::string problem = application.speechModelProblem(); !problem.empty())
        throw RunFailure::ofModel(problem);
}

bool RunPreparation::prepareToRecord(Application& application, const CaptionsCommand& command,
                                     const RunOutput& output) {
    const Application::Preparation found = application.prepareToRecord();
    const auto& [doubt, failure, holder] = found.obstacle;
    if (!doubt.empty() && command.records)
        output.warn(doubt);
    if (holder)
        throw RunFailure(
            ExitStatus::dataInUse,
            localized("%@ is using the recordings. Try again in a few seconds; if "
                      "it is recording, add --no-record to get captions without a recording.",
                      {holder->text()}));
    if (!failure.empty()) {
        application.recording.recordNothing();
        output.say(localized("Nothing can be recorded: %@", {failure}));
    }
    for (const std::string& text : repairTexts(found))
        output.say(text);
    return failure.empty();
}

} // namespace tessarune
