#include "Tessarune/platform/speech-engine/SpeechModels.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Localization.h"

#include <nlohmann/json.hpp>
#include <unistd.h>

#include <algorithm>
#include <cmath>

namespace tessarune {

namespace {

/// Seconds of work for each second of the open line, at every look. At more than this a line of
/// five seconds is shown anew less than once a second, since a rest as long follows each look.
constexpr double slowLookRatio = 0.1;
/// Fewer say nothing about a computer.
constexpr std::size_t passesThatTell = 50;
/// After so long a slow model gets another trial: computers, drivers and programs change.
constexpr double verdictSeconds = 30.0 * 24 * 3600;

/// The part of the memory that a recording's model may have as files; loaded it takes some four
/// times as much.
constexpr std::uint64_t shareOfMemory = 12;

constexpr const char* speedsName = "speeds.json";

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
    : host_(host),
      store_(store),
      choice_(std::move(choice)),
      library_(std::move(library)),
      passInterval_(passInterval),
      memoryBytes_(memoryBytes) {}

StoredModel SpeechModels::named(const std::string& name) const {
    if (std::optional<StoredModel> model = store_.find(ModelKind::speech, name))
        return std::move(*model);
    throw std::runtime_error(localized("The speech model %@ is not on this computer.", {name}));
}

StoredModel SpeechModels::choose() const {
    const std::string choice = choice_ ? choice_() : std::string(automatic);
    if (choice != automatic)
        return named(choice);
    std::vector<StoredModel> here;
    for (const OfferedSpeechModel& offer : offered()) {
        std::optional<StoredModel> model = store_.find(ModelKind::speech, offer.name);
        if (model && (here.empty() || (model->damage.empty() && !isTooSlow(model->name))))
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
        const bool fits = offer.bytes <= memoryBytes_ / shareOfMemory;
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

bool SpeechModels::isTooSlow(const std::string& model) const {
    const std::map<std::string, Speed> known = speeds();
    const auto speed = known.find(model);
    if (speed == known.end() || speed->second.lookRatio <= slowLookRatio)
        return false;
    return std::abs(host_.wallClock() - speed->second.measuredAt) < verdictSeconds;
}

std::filesystem::path SpeechModels::speedsFile() const {
    return store_.folder(ModelKind::speech, smallest).parent_path() / speedsName;
}

std::map<std::string, SpeechModels::Speed> SpeechModels::speeds() const {
    std::map<std::string, Speed> known;
    try {
        if (!store_.files().exists(speedsFile()))
            return {};
        const auto stored = nlohmann::json::parse(store_.files().read(speedsFile()));
        for (const auto& [model, speed] : stored.items())
            known[model] = {speed.at("lookRatio").get<double>(),
                            speed.at("measuredAt").get<double>()};
    } catch (const std::exception&) {
        return {}; // not worth more: it is measured again
    }
    return known;
}

void SpeechModels::observe(const std::string& model, double lookRatio, std::size_t passes) {
    if (passes < passesThatTell)
        return;
    std::map<std::string, Speed> known = speeds();
    known[model] = {lookRatio, host_.wallClock()};
    nlohmann::json stored;
    for (const auto& [name, speed] : known)
        stored[name] = {{"lookRatio", speed.lookRatio}, {"measuredAt", speed.measuredAt}};
    try {
        store_.files().createDirectories(speedsFile().parent_path());
        store_.files().writeAtomically(speedsFile(), stored.dump() + "\n");
    } catch (const std::exception& failure) {
        TessaruneLog::asr.notice(
            [&] { return std::string("the speed of a model was not kept: ") + failure.what(); });
    }
}

} // namespace tessarune
