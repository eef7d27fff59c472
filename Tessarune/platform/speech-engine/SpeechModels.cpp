#include "Tessarune/platform/speech-engine/SpeechModels.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tessarune {

namespace {

/// A pass that takes longer shows less than one update a second, since another as long follows it
/// before the next.
constexpr double slowPassSeconds = 0.5;
/// Fewer say nothing about a computer.
constexpr std::size_t passesThatTell = 50;

constexpr const char* speedsName = "speeds.json";

} // namespace

const std::vector<OfferedSpeechModel>& SpeechModels::offered() {
    using moonshine::Architecture;
    static const std::vector<OfferedSpeechModel> models{
        {smallest, Architecture::tiny, 44'000'000},
        {"tiny-streaming-en", Architecture::tinyStreaming, 78'000'000},
        {"small-streaming-en", Architecture::smallStreaming, 224'000'000},
        {"medium-streaming-en", Architecture::mediumStreaming, 416'000'000}};
    return models;
}

SpeechModels::SpeechModels(ModelStore& store, std::function<std::string()> choice,
                           std::function<std::shared_ptr<const MoonshineLibrary>()> library,
                           double passInterval)
    : store_(store),
      choice_(std::move(choice)),
      library_(std::move(library)),
      passInterval_(passInterval) {}

StoredModel SpeechModels::choose() const {
    const std::string choice = choice_ ? choice_() : std::string(automatic);
    if (choice != automatic) {
        if (std::optional<StoredModel> model = store_.find(ModelKind::speech, choice))
            return std::move(*model);
        throw std::runtime_error("The speech model " + choice + " is not on this computer.");
    }
    std::vector<StoredModel> here;
    for (const OfferedSpeechModel& offer : offered()) {
        std::optional<StoredModel> model = store_.find(ModelKind::speech, offer.name);
        if (model && (here.empty() || (model->damage.empty() && !isTooSlow(model->name))))
            here.push_back(std::move(*model));
    }
    if (here.empty())
        throw std::runtime_error("There is no speech model on this computer.");
    return here.back();
}

std::shared_ptr<MoonshineModel> SpeechModels::loaded() {
    const StoredModel stored = choose();
    std::shared_ptr<MoonshineModel>& model = loaded_[stored.folder.string()];
    if (!model) {
        model = std::make_shared<MoonshineModel>(library_(), stored, passInterval_);
        TessaruneLog::asr.notice([&] { return "speech model " + stored.name + " loaded"; });
    }
    return model;
}

bool SpeechModels::isTooSlow(const std::string& model) const {
    const std::map<std::string, double> known = speeds();
    const auto speed = known.find(model);
    return speed != known.end() && speed->second > slowPassSeconds;
}

std::map<std::string, double> SpeechModels::speeds() const {
    try {
        const std::filesystem::path file =
            store_.folder(ModelKind::speech, smallest).parent_path() / speedsName;
        if (store_.files().exists(file))
            return nlohmann::json::parse(store_.files().read(file))
                .get<std::map<std::string, double>>();
    } catch (const std::exception&) {
        // Not worth more: it is measured again.
    }
    return {};
}

void SpeechModels::observe(const std::string& model, double secondsPerPass, std::size_t passes) {
    if (passes < passesThatTell)
        return;
    std::map<std::string, double> known = speeds();
    known[model] = secondsPerPass;
    try {
        const std::filesystem::path folder =
            store_.folder(ModelKind::speech, smallest).parent_path();
        store_.files().createDirectories(folder);
        store_.files().writeAtomically(folder / speedsName, nlohmann::json(known).dump() + "\n");
    } catch (const std::exception& failure) {
        TessaruneLog::asr.notice(
            [&] { return std::string("the speed of a model was not kept: ") + failure.what(); });
    }
}

} // namespace tessarune
