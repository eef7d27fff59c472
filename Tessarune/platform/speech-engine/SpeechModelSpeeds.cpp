#include "Tessarune/platform/speech-engine/SpeechModelSpeeds.h"

#include "Tessarune/platform/speech-engine/SpeechModels.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace tessarune {

namespace {

/// Seconds of work per second of the open line in each pass. Above this, a line of five seconds is
/// updated less than once per second, because each pass is followed by a pause as long as the pass.
constexpr double slowLookRatio = 0.1;
/// The minimum number of passes for a reliable measurement.
constexpr std::size_t passesThatTell = 50;
/// After this time a slow model is tried again: computers, drivers and programs change.
constexpr double verdictSeconds = 30.0 * 24 * 3600;

constexpr const char* speedsName = "speeds.json";

} // namespace

std::optional<double> SpeechModelSpeeds::lookRatio(const std::string& model) const {
    const std::map<std::string, Speed> known = read();
    const auto speed = known.find(model);
    if (speed == known.end() ||
        std::abs(host_.wallClock() - speed->second.measuredAt) >= verdictSeconds)
        return std::nullopt;
    return speed->second.lookRatio;
}

bool SpeechModelSpeeds::isTooSlow(double lookRatio) {
    return lookRatio > slowLookRatio;
}

std::filesystem::path SpeechModelSpeeds::file() const {
    return store_.folder(ModelKind::speech, SpeechModels::smallest).parent_path() / speedsName;
}

std::map<std::string, SpeechModelSpeeds::Speed> SpeechModelSpeeds::read() const {
    std::map<std::string, Speed> known;
    try {
        if (!store_.files().exists(file()))
            return {};
        const auto stored = nlohmann::json::parse(store_.files().read(file()));
        for (const auto& [model, speed] : stored.items())
            known[model] = {speed.at("lookRatio").get<double>(),
                            speed.at("measuredAt").get<double>()};
    } catch (const std::exception&) {
        return {}; // an unreadable file: the speeds are measured again
    }
    return known;
}

void SpeechModelSpeeds::observe(const std::string& model, double lookRatio, std::size_t passes) {
    if (passes < passesThatTell)
        return;
    std::map<std::string, Speed> known = read();
    known[model] = {lookRatio, host_.wallClock()};
    nlohmann::json stored;
    for (const auto& [name, speed] : known)
        stored[name] = {{"lookRatio", speed.lookRatio}, {"measuredAt", speed.measuredAt}};
    try {
        store_.files().createDirectories(file().parent_path());
        store_.files().writeAtomically(file(), stored.dump() + "\n");
    } catch (const std::exception& failure) {
        TessaruneLog::asr.notice(
            [&] { return std::string("the speed of a model was not saved: ") + failure.what(); });
    }
}

} // namespace tessarune
