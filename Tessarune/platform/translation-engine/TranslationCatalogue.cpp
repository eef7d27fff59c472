#include "Tessarune/platform/translation-engine/TranslationCatalogue.h"

#include "TessaruneCore/text/Localization.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string_view>
#include <tuple>

namespace tessarune {

namespace {

using Json = nlohmann::json;

/// The targets of the pairs from English; Thai has no model so far.
constexpr std::string_view builtInTargets[] = {"ar", "de", "es", "fr", "hi",      "id",
                                               "it", "ja", "ko", "nl", "pl",      "pt",
                                               "ru", "tr", "uk", "vi", "zh-Hans", "zh-Hant"};

constexpr std::string_view modelRole = "model";
constexpr std::string_view sharedRole = "vocab";
constexpr std::string_view sourceRole = "srcvocab";
constexpr std::string_view targetRole = "trgvocab";

/// "3.1", or "3.1a2" for a trial version.
struct Version {
    int major = 0;
    int minor = 0;
    bool isFinal = true;
    std::string suffix;

    static std::optional<Version> parse(std::string_view text) {
        Version version;
        const char* const end = text.data() + text.size();
        const auto [afterMajor, noMajor] = std::from_chars(text.data(), end, version.major);
        if (noMajor != std::errc() || afterMajor == end || *afterMajor != '.')
            return std::nullopt;
        const auto [afterMinor, noMinor] = std::from_chars(afterMajor + 1, end, version.minor);
        if (noMinor != std::errc())
            return std::nullopt;
        version.suffix = std::string(afterMinor, end);
        version.isFinal = version.suffix.empty();
        return version;
    }

    auto order() const { return std::tie(major, minor, isFinal, suffix); }
};

/// For whom a model is published, in ascending order of preference. The model's records state the
/// audience as a condition in the expression language of the publisher's program. Any condition
/// that `audienceOf` does not know means `trial`.
enum class Audience { otherDevices, trial, everybody };

Audience audienceOf(std::string_view condition) {
    const auto contains = [&](std::string_view text) {
        return condition.find(text) != std::string_view::npos;
    };
    if (contains("OS == 'Android'"))
        return Audience::otherDevices;
    if (condition.empty() || (contains("OS != 'Android'") && !contains("channel ==")))
        return Audience::everybody;
    return Audience::trial;
}

std::string textOf(const Json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

std::uint64_t countOf(const Json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_number_unsigned() ? found->get<std::uint64_t>() : 0;
}

struct Record {
    std::string source;
    std::string target;
    std::string role;
    std::string architecture;
    std::string condition;
    std::string versionText;
    Version version;
    FileToFetch file;
};

/// `nullopt` for a record that this program cannot use.
std::optional<Record> recordOf(const Json& entry, const TranslationCatalogueSource& source) {
    if (!entry.is_object() || !entry.contains("attachment") || !entry["attachment"].is_object())
        return std::nullopt;
    const Json& attachment = entry["attachment"];
    Record record;
    record.source = textOf(entry, "sourceLanguage");
    record.target = textOf(entry, "targetLanguage");
    record.role = textOf(entry, "fileType");
    record.architecture = textOf(entry, "architecture");
    record.condition = textOf(entry, "filter_expression");
    record.versionText = textOf(entry, "version");
    const std::optional<Version> version = Version::parse(record.versionText);
    if (!version || version->major != source.majorVersion ||
        audienceOf(record.condition) == Audience::otherDevices)
        return std::nullopt;
    record.version = *version;

    const std::string name = textOf(entry, "name");
    const std::string location = textOf(attachment, "location");
    record.file.name = name.starts_with(record.role + ".") ? name : record.role + "." + name;
    record.file.url = source.attachments + "/" + location;
    record.file.bytes = countOf(attachment, "size");
    record.file.isZstd = true;
    record.file.unpackedBytes = countOf(entry, "decompressedSize");
    record.file.sha256 = textOf(entry, "decompressedHash");
    if (name.empty() || location.empty() || record.file.sha256.size() != 64)
        return std::nullopt;
    return record;
}

/// The records that were published together: files of different editions are incompatible.
struct Edition {
    std::map<std::string, const Record*, std::less<>> byRole;

    bool has(std::string_view role) const { return byRole.find(role) != byRole.end(); }
    bool isComplete() const {
        return has(modelRole) && (has(sharedRole) || (has(sourceRole) && has(targetRole)));
    }
    const Record& model() const { return *byRole.find(modelRole)->second; }

    std::vector<FileToFetch> files() const {
        std::vector<FileToFetch> needed{model().file};
        if (has(sharedRole)) {
            needed.push_back(byRole.find(sharedRole)->second->file);
        } else {
            needed.push_back(byRole.find(sourceRole)->second->file);
            needed.push_back(byRole.find(targetRole)->second->file);
        }
        return needed;
    }

    bool isBetterThan(const Edition& other) const {
        // Of two models for everybody, the one with a condition is made for desktop computers.
        const auto rank = [](const Record& record) {
            return std::make_tuple(audienceOf(record.condition), record.version.order(),
                                   !record.condition.empty(), record.architecture);
        };
        return rank(model()) > rank(other.model());
    }
};

} // namespace

TranslationCatalogue TranslationCatalogue::builtIn() {
    TranslationCatalogue catalogue;
    for (const std::string_view target : builtInTargets)
        catalogue.models_.emplace(Key("en", target), Model());
    return catalogue;
}

TranslationCatalogue TranslationCatalogue::parse(const std::string& text,
                                                 const TranslationCatalogueSource& source) {
    const Json json = Json::parse(text, nullptr, false);
    if (!json.is_object() || !json.contains("data") || !json["data"].is_array())
        throw std::runtime_error(localized("The list of translation models is invalid."));
    std::vector<Record> records;
    for (const Json& entry : json["data"]) {
        if (std::optional<Record> record = recordOf(entry, source))
            records.push_back(std::move(*record));
    }
    using EditionKey = std::tuple<std::string, std::string, std::string>;
    std::map<Key, std::map<EditionKey, Edition>> editions;
    for (const Record& record : records) {
        Edition& edition = editions[{record.source, record.target}]
                                   [{record.versionText, record.architecture, record.condition}];
        edition.byRole.emplace(record.role, &record);
    }

    TranslationCatalogue catalogue;
    for (const auto& [pair, published] : editions) {
        const Edition* best = nullptr;
        for (const auto& [editionKey, edition] : published) {
            if (edition.isComplete() && (best == nullptr || edition.isBetterThan(*best)))
                best = &edition;
        }
        if (best != nullptr)
            catalogue.models_.emplace(pair, Model{best->model().versionText, best->files()});
    }
    if (catalogue.models_.empty())
        throw std::runtime_error(
            localized("The list of translation models has no model for this program."));
    return catalogue;
}

std::optional<AvailableModel> TranslationCatalogue::model(const TranslationPair& pair) const {
    const auto found = models_.find(key(pair));
    if (found == models_.end() || found->second.files.empty())
        return std::nullopt;
    return AvailableModel{ModelKind::translation,
                          pair.modelName(),
                          found->second.files,
                          {{"version", found->second.version}}};
}

TranslationEngine::Files translationFilesOf(const StoredModel& model) {
    const auto find = [&](std::string_view role) -> std::optional<std::filesystem::path> {
        for (const ModelFile& file : model.files) {
            if (file.name.starts_with(std::string(role) + "."))
                return model.path(file.name);
        }
        return std::nullopt;
    };
    const auto network = find(modelRole);
    const auto shared = find(sharedRole);
    const auto source = shared ? shared : find(sourceRole);
    const auto target = shared ? shared : find(targetRole);
    if (!network || !source || !target)
        throw std::runtime_error(
            localized("The translation model %@ is incomplete.", {model.name}));
    return {*network, *source, *target};
}

} // namespace tessarune
