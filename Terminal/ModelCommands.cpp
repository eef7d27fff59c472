#include "Terminal/ModelCommands.h"

#include "Terminal/ExitStatus.h"
#include "Terminal/SignalWatch.h"

#include <nlohmann/json.hpp>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace tessarune {

namespace {

constexpr double bytesAMegabyte = 1e6;

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

/// One line that is rewritten; only where somebody can see it.
void showProgress(const std::string& name, AssetProgress progress) {
    const double received = static_cast<double>(progress.received) / bytesAMegabyte;
    const double expected = static_cast<double>(progress.expected) / bytesAMegabyte;
    if (progress.expected > 0)
        std::fprintf(stderr, "\r%s: %.1f of %.1f MB (%.0f %%) ", name.c_str(), received, expected,
                     100 * received / expected);
    else
        std::fprintf(stderr, "\r%s: %.1f MB ", name.c_str(), received);
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
    std::stop_source stop;
    SignalWatch signals(program.host, [&stop] { stop.request_stop(); });
    const bool shows = isatty(STDERR_FILENO) && !options.quiet;
    std::function<void(AssetProgress)> progress;
    if (shows)
        progress = [name](AssetProgress state) { showProgress(name, state); };
    if (!options.quiet)
        std::fprintf(stderr, "Downloading %s…\n", name.c_str());
    try {
        Task<void> downloading = manager.download(name, std::move(progress), stop.get_token());
        co_await downloading;
    } catch (const std::exception& error) {
        if (shows)
            std::fputs("\n", stderr);
        say(name.c_str(), error);
        co_return static_cast<int>(ExitStatus::noModel);
    }
    if (!options.quiet)
        std::fprintf(stderr, "%s%s is installed.\n", shows ? "\r\033[K" : "", name.c_str());
    co_return static_cast<int>(ExitStatus::ok);
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
