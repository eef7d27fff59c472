#include "Terminal/LanguageCommands.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/DownloadProgress.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/SignalWatch.h"
#include "Terminal/TranslationChoice.h"
#include "Tessarune/translation/TranslationTaskBridge.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/TextColumns.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tessarune {

namespace {

std::string displayName(const std::string& id) {
    return TranslationSupport::translationTargetDisplayName({.id = id, .flag = ""});
}

std::string describe(const TranslationLanguageState& language) {
    using Status = TranslationAvailabilityStatus;
    if (language.status == Status::unsupported && language.damage.empty())
        return localized("no model yet");
    return modelStateText(language.status == Status::installed, language.isRemovable,
                          language.damage);
}

/// The state of a language; null if there is no model for it, neither installed nor to download.
const TranslationLanguageState*
translatableState(const std::vector<TranslationLanguageState>& states, const std::string& id) {
    const auto state = std::ranges::find(states, id, &TranslationLanguageState::id);
    return state == states.end() || state->status == TranslationAvailabilityStatus::unsupported
               ? nullptr
               : &*state;
}

/// Runs the translation test that the settings window also offers, and prints its result, or
/// nothing after Ctrl-C.
Task<int> runTest(Program& program, const TerminalOptions& options, std::string target) {
    const auto bridge = std::make_shared<TranslationTaskBridge>(TranslationTaskBridge::Environment{
        .host = program.host, .service = program.translation, .live = nullptr});
    OneShot<bool> ended(Executor::main(program.host)); // false: interrupted
    bridge->isTestingTranslation().onDidChange([ended](bool isTesting) {
        if (!isTesting)
            ended.resume(true);
    });
    SignalWatch signals(program.host, [ended] { ended.resume(false); });
    bridge->runTranslationTest(target);
    const bool isFinished = co_await ended;
    if (!isFinished)
        co_return static_cast<int>(ExitStatus::interrupted);

    const std::string& text = *bridge->resultText();
    const bool succeeded = !text.empty();
    if (options.json)
        printJSON({{"type", "translationTest"},
                   {"target", target},
                   {"ok", succeeded},
                   {"status", *bridge->statusText()},
                   {"text", text}});
    else if (succeeded)
        printText(text);
    if (!options.json && (!options.quiet || !succeeded))
        printNotice(*bridge->statusText());
    co_return static_cast<int>(succeeded ? ExitStatus::ok : ExitStatus::noModel);
}

} // namespace

Task<int> listLanguages(Program& program, const TerminalOptions& options) {
    const auto languages = program.translationModels.list();
    std::size_t idWidth = 0;
    std::size_t nameWidth = 0;
    for (const auto& language : languages) {
        idWidth = std::max(idWidth, language.id.size());
        nameWidth = std::max(nameWidth, Text::columns(displayName(language.id)));
    }
    for (const auto& language : languages) {
        const std::string name = displayName(language.id);
        if (options.json) {
            printJSON({{"type", "language"},
                       {"id", language.id},
                       {"name", name},
                       {"state", tessarune::name(language.status)},
                       {"bytes", language.bytes},
                       {"damage", language.damage},
                       {"chosen", language.id == *program.settings.translationTargetLanguage}});
            continue;
        }
        printText(Text::padded(language.id, idWidth) + "  " + Text::padded(name, nameWidth) + "  " +
                  sizeCell(language.bytes) + "  " + describe(language));
    }
    co_return static_cast<int>(ExitStatus::ok);
}

Task<int> downloadLanguage(Program& program, const TerminalOptions& options, std::string id) {
    const auto states = program.translationModels.list();
    if (!translatableState(states, id)) {
        printProblem(noTranslationModelText(id));
        co_return static_cast<int>(ExitStatus::noModel);
    }
    Task<int> downloading = runDownload(
        program, options, downloadOf<TranslationDownloadProgress>(program.translationModels, id));
    const int status = co_await downloading;
    co_return status;
}

Task<int> removeLanguage(Program& program, std::string id) {
    try {
        program.translationModels.remove(id);
    } catch (const std::exception& error) {
        printProblem(id + ": " + error.what());
        co_return static_cast<int>(ExitStatus::noModel);
    }
    co_return static_cast<int>(ExitStatus::ok);
}

Task<int> testTranslation(Program& program, const TerminalOptions& options, std::string target) {
    const auto states = program.translationModels.list();
    if (const auto* state = translatableState(states, target)) {
        const bool isOnDisk =
            state->status == TranslationAvailabilityStatus::installed || !state->damage.empty();
        // `flaw` also reports a model that is not on the disk.
        Task<std::string> checking = program.translationModels.flaw(target);
        const std::string flaw = co_await checking;
        if (isOnDisk && !flaw.empty())
            printNotice(damagedModelText(target, flaw));
        if (!flaw.empty()) {
            Task<int> downloading = downloadLanguage(program, options, target);
            const int status = co_await downloading;
            if (status != static_cast<int>(ExitStatus::ok))
                co_return status;
        }
    }
    Task<int> testing = runTest(program, options, std::move(target));
    const int status = co_await testing;
    co_return status;
}

} // namespace tessarune
