#include "Terminal/ModelCommands.h"

#include "Terminal/DownloadProgress.h"
#include "Terminal/ExitStatus.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>

namespace tessarune {

namespace {

std::string describe(const SpeechModelState& model) {
    if (!model.damage.empty())
        return "damaged: " + model.damage;
    if (!model.isInstalled)
        return "can be downloaded";
    return model.isRemovable ? "installed" : "installed, came with the program";
}

void say(const char* what, const std::exception& error) {
    std::fprintf(stderr, "tessarune-terminal: %s: %s\n", what, error.what());
}

} // namespace

Task<int> listModels(Program& program, const TerminalOptions& options) {
    const SpeechModelManager manager = program.speechModels.manager();
    const std::vector<SpeechModelState> models = manager.list();
    int width = 0;
    for (const auto& model : models)
        width = std::max(width, static_cast<int>(model.name.size()));
    for (const auto& model : models) {
        if (options.json) {
            const nlohmann::ordered_json line = {
                {"type", "model"},        {"name", model.name},
                {"bytes", model.bytes},   {"installed", model.isInstalled},
                {"damage", model.damage}, {"chosen", model.name == *program.settings.speechModel}};
            std::puts(line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
            continue;
        }
        std::printf("%-*s %6.0f MB  %s\n", width, model.name.c_str(),
                    static_cast<double>(model.bytes) / bytesAMegabyte, describe(model).c_str());
    }
    co_return static_cast<int>(ExitStatus::ok);
}

Task<int> installModel(Program& program, const TerminalOptions& options, std::string name) {
    const SpeechModelManager manager = program.speechModels.manager();
    ShownDownload download{
        name, [manager, name](ShownDownload::Progress progress, std::stop_token stop) {
            std::function<void(AssetProgress)> handler;
            if (progress)
                handler = [progress](AssetProgress now) { progress(now.received, now.expected); };
            return manager.download(name, std::move(handler), std::move(stop));
        }};
    return runDownload(program, options, std::move(download));
}

Task<int> removeModel(Program& program, std::string name) {
    const SpeechModelManager manager = program.speechModels.manager();
    try {
        manager.remove(name);
    } catch (const std::exception& error) {
        say(name.c_str(), error);
        co_return static_cast<int>(ExitStatus::noModel);
    }
    co_return static_cast<int>(ExitStatus::ok);
}

} // namespace tessarune
