#include "Terminal/ModelCommands.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/DownloadProgress.h"
#include "Terminal/ExitStatus.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/TextColumns.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tessarune {

Task<int> listModels(Program& program, const TerminalOptions& options) {
    const std::vector<SpeechModelState> models = program.speechModels.list();
    std::size_t width = 0;
    for (const auto& model : models)
        width = std::max(width, Text::columns(model.name));
    for (const auto& model : models) {
        if (options.json)
            printJSON({{"type", "model"},
                       {"name", model.name},
                       {"bytes", model.bytes},
                       {"installed", model.isInstalled},
                       {"damage", model.damage},
                       {"chosen", model.name == *program.settings.speechModel}});
        else
            printText(Text::padded(model.name, width) + "  " + sizeCell(model.bytes) + "  " +
                      modelStateText(model.isInstalled, model.isRemovable, model.damage));
    }
    co_return static_cast<int>(ExitStatus::ok);
}

Task<int> installModel(Program& program, const TerminalOptions& options, std::string name) {
    const auto known = program.speechModels.list();
    if (std::ranges::find(known, name, &SpeechModelState::name) == known.end()) {
        printProblem(
            localized("There is no speech model named '%@'; --model list shows them.", {name}));
        co_return static_cast<int>(ExitStatus::noModel);
    }
    Task<int> downloading =
        runDownload(program, options, downloadOf<AssetProgress>(program.speechModels, name));
    const int status = co_await downloading;
    co_return status;
}

Task<int> removeModel(Program& program, std::string name) {
    try {
        program.speechModels.remove(name);
    } catch (const std::exception& error) {
        printProblem(error.what());
        co_return static_cast<int>(ExitStatus::noModel);
    }
    co_return static_cast<int>(ExitStatus::ok);
}

} // namespace tessarune
