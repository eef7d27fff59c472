#pragma once

#include "Tessarune/speech/SpeechModelManager.h"
#include "Tessarune/translation/TranslationLanguages.h"
#include "Tessarune/ui/settings/ResourcesModel.h"

#include <functional>
#include <optional>
#include <string>

namespace tessarune {

/// How fast a speech model runs on this computer.
struct SpeechModelSpeed {
    static constexpr double lineSeconds = 5; ///< the length of an example line

    double passSeconds = 0; ///< the duration of a pass over the example line
    bool isTooSlow = false;
};

/// The speech models and the languages as resources of the settings window. The objects passed in
/// must outlive the returned sources.
namespace SettingsResources {

ResourcesModel::Source
speechModels(SpeechModelManager& models,
             std::function<std::optional<SpeechModelSpeed>(const std::string& name)> speed);

ResourcesModel::Source languages(TranslationLanguages& languages);

} // namespace SettingsResources

} // namespace tessarune
