#include "Terminal/SourcesCommand.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/ExitStatus.h"
#include "Tessarune/platform/pulse/PulseSoundServer.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/TextColumns.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tessarune {

namespace {

struct Row {
    std::string source;
    std::string name;
    bool isDefault = false;
};

std::vector<Row> rows(const SoundDevices& devices) {
    std::vector<Row> list;
    if (const auto* output = devices.defaultOutput())
        list.push_back({"system", output->name, true});
    for (const auto& input : devices.inputs)
        list.push_back({"mic:" + input.id, input.name, input.id == devices.defaultInputID});
    return list;
}

void print(const std::vector<Row>& list, bool json) {
    std::size_t width = 0;
    for (const auto& row : list)
        width = std::max(width, Text::columns(row.source));
    for (const auto& row : list) {
        if (json) {
            printJSON({{"type", "source"},
                       {"source", row.source},
                       {"name", row.name},
                       {"default", row.isDefault}});
            continue;
        }
        const std::string name = Text::printableLine(row.name);
        printText(Text::padded(Text::printableLine(row.source), width) + "  " +
                  (row.isDefault ? localized("%@ (default)", {name}) : name));
    }
}

} // namespace

Task<int> listSources(Program& program, const TerminalOptions& options) {
    PulseSoundServer server;
    try {
        Task<void> connecting = server.connect(Executor::main(program.host));
        co_await connecting;
    } catch (const SoundServerError& error) {
        printProblem(localized("There is no sound server: %@", {error.what()}));
        co_return static_cast<int>(ExitStatus::noSoundServer);
    }
    const std::vector<Row> list = rows(server.devices());
    if (list.empty())
        printNotice(localized("The sound server has no outputs and no microphones."));
    print(list, options.json);
    co_return static_cast<int>(ExitStatus::ok);
}

} // namespace tessarune
