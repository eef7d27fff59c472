#include "Tessarune/platform/model-store/ModelStore.h"

#include "Tessarune/platform/model-store/Checksums.h"
#include "TessaruneCore/text/Localization.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <numeric>
#include <system_error>

namespace tessarune {

namespace {

constexpr const char* recordName = "model.json";
constexpr int recordVersion = 1;

bool isSHA256(std::string_view text) {
    return text.size() == 64 &&
           text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

/// Throws if the text is not a record of this version.
void parseRecord(const std::string& text, StoredModel& model) {
    const nlohmann::json json = nlohmann::json::parse(text);
    if (json.at("version") != recordVersion)
        throw std::runtime_error("a record of another version");
    model.details = json.at("details").get<std::map<std::string, std::string>>();
    for (const auto& entry : json.at("files")) {
        // The size is read by reference, because a conversion would accept even -1.5.
        ModelFile file{entry.at("name").get<std::string>(),
                       entry.at("bytes").get_ref<const std::uint64_t&>(),
                       entry.at("sha256").get<std::string>()};
        if (!ModelStore::isSafeName(file.name) || !isSHA256(file.sha256))
            throw std::runtime_error("a record with an invalid name or checksum");
        model.files.push_back(std::move(file));
    }
    if (model.files.empty())
        throw std::runtime_error("a record without files");
}

std::string recordOf(const StoredModel& model) {
    nlohmann::ordered_json json = {{"version", recordVersion}, {"details", model.details}};
    json["files"] = nlohmann::ordered_json::array();
    for (const ModelFile& file : model.files)
        json["files"].push_back(
            {{"name", file.name}, {"bytes", file.bytes}, {"sha256", file.sha256}});
    return json.dump(2) + "\n";
}

std::string displayName(const StoredModel& model, const ModelFile& file) {
    return model.name + ": " + model.path(file.name).string();
}

std::string_view folderName(ModelKind kind) {
    return kind == ModelKind::speech ? "speech" : "translation";
}

} // namespace

std::uint64_t StoredModel::bytes() const {
    return std::accumulate(
        files.begin(), files.end(), std::uint64_t{0},
        [](std::uint64_t sum, const ModelFile& file) { return sum + file.bytes; });
}

ModelStore::ModelStore(FileSystem& files, std::filesystem::path writable,
                       std::vector<std::filesystem::path> readOnly)
    : files_(files), writable_(std::move(writable)), readOnly_(std::move(readOnly)) {}

bool ModelStore::isSafeName(std::string_view name) {
    constexpr std::string_view allowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                         "0123456789._-";
    return !name.empty() && name.size() <= 100 && name.front() != '.' &&
           name.find_first_not_of(allowed) == std::string_view::npos;
}

std::filesystem::path ModelStore::folder(ModelKind kind, std::string_view name) const {
    if (!isSafeName(name))
        throw std::invalid_argument("invalid model name: " + std::string(name));
    return writable_ / folderName(kind) / name;
}

std::filesystem::path ModelStore::partialFolder(ModelKind kind, std::string_view name) const {
    return folder(kind, name).parent_path() / (".partial-" + std::string(name));
}

std::optional<StoredModel> ModelStore::read(ModelKind kind, const std::filesystem::path& folder,
                                            bool isRemovable) const {
    StoredModel model;
    model.kind = kind;
    model.name = folder.filename().string();
    model.folder = folder;
    model.isRemovable = isRemovable;
    try {
        if (!isSafeName(model.name) || !files_.exists(folder / recordName))
            return std::nullopt;
        parseRecord(files_.read(folder / recordName), model);
    } catch (const std::exception&) {
        return std::nullopt;
    }
    for (const ModelFile& file : model.files) {
        try {
            if (files_.size(model.path(file.name)) != file.bytes)
                model.damage = localized("%@ has changed in size since it was stored",
                                         {displayName(model, file)});
        } catch (const std::system_error& failure) {
            model.damage = displayName(model, file) + ": " + failure.code().message();
        }
        if (!model.damage.empty())
            break;
    }
    return model;
}

std::vector<StoredModel> ModelStore::list(ModelKind kind) const {
    std::map<std::string, StoredModel> byName;
    const auto add = [&](const std::filesystem::path& part, bool isRemovable) {
        const std::filesystem::path all = part / folderName(kind);
        std::vector<std::string> names;
        try {
            names = files_.list(all);
        } catch (const std::system_error&) {
            return; // an unreadable part counts as empty
        }
        for (const std::string& name : names) {
            std::optional<StoredModel> model = read(kind, all / name, isRemovable);
            if (!model)
                continue;
            const auto known = byName.find(name);
            if (known == byName.end())
                byName.emplace(name, std::move(*model));
            else if (!known->second.damage.empty() && model->damage.empty())
                known->second = std::move(*model);
        }
    };
    add(writable_, true);
    for (const auto& part : readOnly_)
        add(part, false);
    std::vector<StoredModel> models;
    models.reserve(byName.size());
    for (auto& [name, model] : byName)
        models.push_back(std::move(model));
    return models;
}

std::optional<StoredModel> ModelStore::find(ModelKind kind, std::string_view name) const {
    if (!isSafeName(name))
        return std::nullopt;
    std::optional<StoredModel> found = read(kind, folder(kind, name), true);
    for (const auto& part : readOnly_) {
        if (found && found->damage.empty())
            break;
        std::optional<StoredModel> other = read(kind, part / folderName(kind) / name, false);
        if (other && (!found || other->damage.empty()))
            found = std::move(other);
    }
    return found;
}

void ModelStore::verify(const StoredModel& model) {
    if (!model.damage.empty())
        throw ModelDamaged(model.damage);
    for (const ModelFile& file : model.files) {
        std::string sum;
        try {
            sum = SHA256::ofFile(model.path(file.name));
        } catch (const std::system_error& failure) {
            throw ModelDamaged(displayName(model, file) + ": " + failure.code().message());
        }
        if (sum != file.sha256)
            throw ModelDamaged(
                localized("%@ has changed since it was stored", {displayName(model, file)}));
    }
}

std::optional<FileLock> ModelStore::tryToLock(ModelKind kind, std::string_view name) {
    const std::filesystem::path parent = folder(kind, name).parent_path();
    files_.createDirectories(parent);
    return FileLock::tryToTake(parent / (".lock-" + std::string(name)));
}

void ModelStore::remove(ModelKind kind, std::string_view name) {
    const std::filesystem::path own = folder(kind, name);
    std::optional<FileLock> lock;
    if (files_.exists(own) || files_.exists(partialFolder(kind, name))) {
        lock = tryToLock(kind, name);
        if (!lock)
            throw std::runtime_error(localized("%@ is being downloaded and cannot be removed now.",
                                               {std::string(name)}));
    }
    const bool wasBegun = files_.remove(partialFolder(kind, name));
    if (files_.exists(own)) {
        // The record is removed first: an interrupted removal leaves no model that looks complete.
        files_.remove(own / recordName);
        files_.remove(own);
        return;
    }
    if (const std::optional<StoredModel> model = find(kind, name))
        throw std::runtime_error(localized("%@ came with the program and cannot be removed: %@",
                                           {model->name, model->folder.string()}));
    if (!wasBegun)
        throw std::runtime_error(localized("%@ is not on this computer.", {std::string(name)}));
}

StoredModel ModelStore::adopt(ModelKind kind, const std::string& name,
                              const std::vector<std::string>& files,
                              const std::map<std::string, std::string>& details) {
    StoredModel model;
    model.kind = kind;
    model.name = name;
    model.folder = folder(kind, name);
    model.isRemovable = true;
    model.details = details;
    const std::filesystem::path partial = partialFolder(kind, name);
    for (const std::string& file : files)
        model.files.push_back({file, files_.size(partial / file), SHA256::ofFile(partial / file)});
    for (const std::string& found : files_.list(partial)) {
        if (std::find(files.begin(), files.end(), found) == files.end())
            files_.remove(partial / found); // from an abandoned download of another edition
    }
    files_.writeAtomically(partial / recordName, recordOf(model));
    files_.remove(model.folder);
    files_.rename(partial, model.folder);
    return model;
}

} // namespace tessarune
