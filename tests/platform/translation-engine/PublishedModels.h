#pragma once

#include "tests/platform/model-store/PackedBytes.h"

#include <nlohmann/json.hpp>

#include <string>
#include <utility>
#include <vector>

namespace tessarune::testing {

/// A catalogue record of a published file; a test changes the fields that it is about.
inline nlohmann::json record(const std::string& source, const std::string& target,
                             const std::string& role, const std::string& content = "content",
                             const std::string& version = "3.0") {
    const std::string name = role + "." + source + target + (role == "model" ? ".bin" : ".spm");
    return {{"name", name},
            {"version", version},
            {"fileType", role},
            {"architecture", "base"},
            {"sourceLanguage", source},
            {"targetLanguage", target},
            {"decompressedHash", sha256Of(content)},
            {"decompressedSize", content.size()},
            {"attachment",
             {{"size", packed(content).size()}, {"location", "files/" + name + version + ".zst"}}}};
}

inline std::string catalogueOf(const std::vector<nlohmann::json>& records) {
    return nlohmann::json{{"data", records}}.dump();
}

/// A catalogue that lists these pairs.
inline std::string catalogueOfPairs(const std::vector<std::pair<std::string, std::string>>& pairs) {
    std::vector<nlohmann::json> records;
    for (const auto& [source, target] : pairs) {
        records.push_back(record(source, target, "model"));
        records.push_back(record(source, target, "vocab"));
    }
    return catalogueOf(records);
}

} // namespace tessarune::testing
