// Any bytes as the settings file: no crash, and a change keeps every other key or changes nothing.
#include "Tessarune/platform/disk/JSONUserDefaults.h"
#include "TessaruneCore/text/Text.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/simulation/FaultyFileSystem.h"

#include <nlohmann/json.hpp>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessarune;
    const std::filesystem::path path = "/config/settings.json";
    fuzz::Input input(data, size);
    const std::string key = input.line();
    const std::string before(input.rest());
    if (!Text::isValidUTF8(key))
        return 0; // the program's own keys are valid UTF-8
    simulation::FaultyFileSystem disk;
    disk.setContents(path, before);

    JSONUserDefaults defaults(disk, path);
    defaults.set(key, std::int64_t{7});
    fuzz::require(defaults.value(key) == SettingValue(std::int64_t{7}), "a setting that is lost");
    const std::string after = disk.contentsOf(path);
    if (!defaults.problem().empty()) {
        fuzz::require(after == before, "an unreadable file that is overwritten");
        return 0;
    }
    if (!nlohmann::json::accept(before)) { // a number beyond the range of a double
        JSONUserDefaults later(disk, path);
        later.set(key, std::int64_t{8});
        later.set(key, std::int64_t{7});
        fuzz::require(disk.contentsOf(path) == after, "another setting that changes each time");
        return 0;
    }
    auto now = nlohmann::json::parse(after);
    auto then = nlohmann::json::parse(before);
    now.erase(key);
    then.erase(key);
    fuzz::require(now == then, "another setting that changed");
    return 0;
}
