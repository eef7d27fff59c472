#include "Tessarune/translation/TranslationObservation.h"

#include "TessaruneCore/text/Text.h"

#include <nlohmann/json.hpp>

namespace tessarune {

std::string_view name(TranslationObservation::Phase phase) {
    switch (phase) {
    case TranslationObservation::Phase::start:
        return "start";
    case TranslationObservation::Phase::success:
        return "success";
    case TranslationObservation::Phase::failure:
        return "failure";
    }
    return {};
}

std::string_view name(TranslationObservation::Scope scope) {
    return scope == TranslationObservation::Scope::committed ? "committed" : "ghost";
}

void to_json(nlohmann::ordered_json& json, const TranslationObservation& observation) {
    json = nlohmann::ordered_json::object();
    const auto add = [&json](const char* key, const auto& value) {
        if (value)
            json[key] = *value;
    };
    const auto textOf = [](const std::optional<UUID>& id) {
        return id ? std::optional(id->text()) : std::nullopt;
    };
    std::vector<std::string> segmentIDs;
    segmentIDs.reserve(observation.segmentIDs.size());
    for (const auto& id : observation.segmentIDs)
        segmentIDs.push_back(id.text());

    json["t"] = observation.t;
    json["phase"] = name(observation.phase);
    json["scope"] = name(observation.scope);
    add("translationUnitID", textOf(observation.translationUnitID));
    json["segmentID"] = observation.segmentID.text();
    json["segmentIDs"] = segmentIDs;
    add("resultSegmentID", textOf(observation.resultSegmentID));
    json["segmentCount"] = segmentIDs.size();
    json["sourceText"] = observation.sourceText;
    json["targetLanguage"] = observation.targetLanguage;
    add("translatedText", observation.translatedText);
    add("error", observation.error);
    add("durationSeconds", observation.durationSeconds);
    add("queueDelaySeconds", observation.queueDelaySeconds);

    const auto& attempt = observation.diagnostics;
    json["backend"] = attempt.backend;
    json["sourceLanguage"] = attempt.sourceLanguage;
    json["sourceCharacters"] = attempt.sourceCharacters;
    if (observation.translatedText)
        json["translatedCharacters"] = Text::length(*observation.translatedText);
    add("availabilitySeconds", attempt.availabilitySeconds);
    add("translateCallSeconds", attempt.translateCallSeconds);
    add("applySeconds", attempt.applySeconds);
    add("preflightStatus", attempt.preflightStatus);
    json["attemptCount"] = attempt.attemptCount;
    json["automaticRetry"] = attempt.automaticRetry;
    add("failureCategory", attempt.failureCategory);
    add("failureDomain", attempt.failureDomain);
    add("failureCode", attempt.failureCode);
    add("failureReason", attempt.failureReason);
    json["sessionGeneration"] = attempt.sessionGeneration;
    add("recoveryAction", attempt.recoveryAction);
}

} // namespace tessarune
