#pragma once

#include "Tessarune/shell/FileSystem.h"

#include <nlohmann/json.hpp>

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune::testing {

/// The lines of the runtime logs in a folder whose events begin with `prefix`.
inline std::vector<nlohmann::json> loggedLines(FileSystem& files, const FileSystem::Path& folder,
                                               std::string_view prefix = "") {
    std::vector<nlohmann::json> lines;
    for (const auto& name : files.list(folder)) {
        std::istringstream text(files.read(folder / name));
        for (std::string line; std::getline(text, line);) {
            auto event = nlohmann::json::parse(line);
            if (event["event"].get<std::string>().starts_with(prefix))
                lines.push_back(std::move(event));
        }
    }
    return lines;
}

} // namespace tessarune::testing
