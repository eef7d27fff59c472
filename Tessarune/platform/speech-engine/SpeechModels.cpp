#include "Tessarune/platform/speech-engine/SpeechModels.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Localization.h"

#include <unistd.h>

namespace tessarune {

namespace {

/// The files of a model for recordings may take one twelfth of the memory; the loaded model takes
/// about four times as much as its files.
constexpr std::uint64_t memoryDivisor = 12;

} // namespace

std::uint64_t memoryBytesOfComputer() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    return pages > 0 && pageSize > 0
               ? static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize)
               : 0;
}

const std::vector<OfferedSpeechModel>& SpeechModels::offered() {
    using moonshine::Architecture;
    static const std::vector<OfferedSpeechModel> models{
        {smallest, Architecture::tiny, 44'000'000},
        {"tiny-streaming-en", Architecture::tinyStreaming, 78'000'000},
        {"small-streaming-en", Architecture::smallStreaming, 224'000'000},
        {"medium-streaming-en", Architecture::mediumStreaming, 416'000'000}};
    return models;
}

SpeechModels::SpeechModels(Host& host, ModelStore& store, std::function<std::string()> choice,
                           std::function<std::shared_ptr<const MoonshineLibrary>()> library,
                           double passInterval, std::uint64_t memoryBytes)
    : store_(store),
      choice_(std::move(choice)),
      library_(std::move(library)),
      passInterval_(passInterval),
      memoryBytes_(memoryBytes),
      speeds_(host, store) {}

StoredModel SpeechModels::named(const std::string& name) const {
    if (std::optional<StoredModel> model = store_.find(ModelKind::speech, name))
        return std::move(*model);
    throw std::runtime_error(localized("The speech model %@ is not on this computer.", {name}));
}

StoredModel SpeechModels::choose() const {
    const std::string choice = choice_ ? choice_() : std::string(automatic);
    if (choice != automatic)
        return named(choice);
    const auto isTooSlow = [this](const StoredModel& model) {
        const auto ratio = speeds_.lookRatio(model.name);
        return ratio && SpeechModelSpeeds::isTooSlow(*ratio);
    };
    std::vector<StoredModel> here;
    for (const OfferedSpeechModel& offer : offered()) {
        std::optional<StoredModel> model = store_.find(ModelKind::speech, offer.name);
        if (model && (here.empty() || (model->damage.empty() && !isTooSlow(*model))))
            here.push_back(std::move(*model));
    }
    if (here.empty())
        throw std::runtime_error(localized("There is no speech model on this computer."));
    return here.back();
}

std::shared_ptr<MoonshineModel> SpeechModels::loaded() {
    const StoredModel stored = choose();
    std::shared_ptr<MoonshineModel>& model = loaded_[stored.folder.string()];
    if (!model) {
        model = std::make_shared<MoonshineModel>(library_(), stored,
                                                 MoonshineModel::Use{passInterval_});
        TessaruneLog::asr.notice([&] { return "speech model " + stored.name + " loaded"; });
    }
    return model;
}

StoredModel SpeechModels::chooseForFiles(const std::string& wanted) const {
    if (wanted != automatic)
        return named(wanted);
    std::optional<StoredModel> best;
    for (const OfferedSpeechModel& offer : offered()) {
        std::optional<StoredModel> model = store_.find(ModelKind::speech, offer.name);
        const bool fits = offer.bytes <= memoryBytes_ / memoryDivisor;
        if (model && (!best || (fits && model->damage.empty())))
            best = std::move(model);
    }
    if (!best)
        throw std::runtime_error(localized("There is no speech model on this computer."));
    return std::move(*best);
}

std::shared_ptr<MoonshineModel> SpeechModels::loadForFiles(const std::string& model) const {
    const StoredModel stored = chooseForFiles(model);
    TessaruneLog::asr.notice([&] { return "speech model " + stored.name + " for a recording"; });
    return std::make_shared<MoonshineModel>(library_(), stored,
                                            MoonshineModel::Use{passInterval_, false});
}

} // namespace tessarune
