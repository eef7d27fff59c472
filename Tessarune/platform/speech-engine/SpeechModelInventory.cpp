#include "Tessarune/platform/speech-engine/SpeechModelInventory.h"

#include "Tessarune/platform/model-store/Checksums.h"
#include "TessaruneCore/text/Localization.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

const OfferedSpeechModel* offered(std::string_view name) {
    const auto& all = SpeechModels::offered();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& offer) { return offer.name == name; });
    return found == all.end() ? nullptr : &*found;
}

[[noreturn]] void failUnknown(const std::string& name) {
    throw std::runtime_error(localized("There is no speech model named %@.", {name}));
}

FileToFetch fileOf(const nlohmann::json& entry) {
    FileToFetch file;
    file.name = entry.at("name").get<std::string>();
    file.url = entry.at("url").get<std::string>();
    file.bytes = entry.at("size").get_ref<const std::uint64_t&>();
    if (entry.at("checksum_type").get<std::string>() == "crc32c")
        file.crc32c = CRC32C::fromBase64(entry.at("checksum").get<std::string>());
    if (!file.crc32c)
        throw std::runtime_error(localized("%@ has no usable checksum", {file.name}));
    return file;
}

class Request final : public AssetInstallationRequest {
  public:
    using Download = std::function<Task<void>(std::function<void(AssetProgress)>, std::stop_token)>;

    explicit Request(Download download) : download_(std::move(download)) {}

    Task<void> downloadAndInstall(std::function<void(AssetProgress)> progress,
                                  std::stop_token stop) override {
        return download_(std::move(progress), std::move(stop));
    }

  private:
    Download download_;
};

} // namespace

SpeechModelInventory::SpeechModelInventory(ModelStore& store, ModelInstaller& installer,
                                           std::function<std::string()> choice, Library library)
    : store_(store),
      installer_(installer),
      choice_(std::move(choice)),
      library_(std::move(library)) {}

bool SpeechModelInventory::isIntact(const std::string& name) const {
    const std::optional<StoredModel> model = store_.find(ModelKind::speech, name);
    return model && model->damage.empty();
}

Task<std::shared_ptr<AssetInstallationRequest>>
SpeechModelInventory::assetInstallationRequest(std::string localeIdentifier) {
    if (localeIdentifier.substr(0, localeIdentifier.find_first_of("-_")) != "en")
        throw UnsupportedSpeechLocale(
            localized("There is no speech model for %@.", {localeIdentifier}));
    std::string wanted = choice_ ? choice_() : std::string(SpeechModels::automatic);
    if (wanted == SpeechModels::automatic) {
        const auto& all = SpeechModels::offered();
        const auto intact = std::find_if(all.begin(), all.end(), [this](const auto& offer) {
            return isIntact(std::string(offer.name));
        });
        wanted = (intact == all.end() ? all.front() : *intact).name;
    }
    if (isIntact(wanted))
        co_return nullptr;
    if (offered(wanted) == nullptr)
        failUnknown(wanted);
    Request::Download fetch = [this, wanted](std::function<void(AssetProgress)> progress,
                                             std::stop_token stop) {
        return download(wanted, std::move(progress), std::move(stop));
    };
    co_return std::make_shared<Request>(std::move(fetch));
}

AvailableModel SpeechModelInventory::availableModel(const OfferedSpeechModel& offer,
                                                    const MoonshineLibrary& library) {
    AvailableModel model;
    model.kind = ModelKind::speech;
    model.name = offer.name;
    model.details["architecture"] = std::to_string(static_cast<std::uint32_t>(offer.architecture));
    // For word times, the smallest model would need a second network of its own size.
    const bool withWordTimes = offer.architecture != moonshine::Architecture::tiny;
    try {
        const nlohmann::json list =
            nlohmann::json::parse(library.dependencies(offer.architecture, withWordTimes));
        for (const auto& group : list.at("groups")) {
            for (const auto& entry : group.at("files"))
                model.files.push_back(fileOf(entry));
        }
    } catch (const std::exception& failure) {
        throw std::runtime_error(
            localized("The speech engine's list of the files of %@ is invalid: %@",
                      {model.name, failure.what()}));
    }
    return model;
}

Task<void> SpeechModelInventory::download(std::string name,
                                          std::function<void(AssetProgress)> progress,
                                          std::stop_token stop) {
    const OfferedSpeechModel* const offer = offered(name);
    if (offer == nullptr)
        failUnknown(name);
    AvailableModel model = availableModel(*offer, *library_());
    ModelInstaller::ProgressHandler handler;
    if (progress) {
        handler = [progress = std::move(progress)](ModelInstaller::Progress now) {
            progress({now.received, now.expected});
        };
    }
    Task<void> installing =
        installer_.install(std::move(model), std::move(handler), std::move(stop));
    co_await installing;
}

std::vector<SpeechModelState> SpeechModelInventory::list() const {
    std::vector<SpeechModelState> states;
    const std::vector<StoredModel> stored = store_.list(ModelKind::speech);
    const auto add = [&](const StoredModel& model) {
        states.push_back({model.name, model.bytes(), true, model.isRemovable, model.damage});
    };
    for (const OfferedSpeechModel& offer : SpeechModels::offered()) {
        const auto here = std::find_if(stored.begin(), stored.end(), [&](const StoredModel& model) {
            return model.name == offer.name;
        });
        if (here != stored.end())
            add(*here);
        else
            states.push_back({std::string(offer.name), offer.bytes, false, false, {}});
    }
    for (const StoredModel& model : stored) {
        if (offered(model.name) == nullptr)
            add(model);
    }
    return states;
}

void SpeechModelInventory::remove(const std::string& name) {
    if (!store_.find(ModelKind::speech, name) && offered(name) == nullptr)
        failUnknown(name);
    store_.remove(ModelKind::speech, name);
}

} // namespace tessarune
