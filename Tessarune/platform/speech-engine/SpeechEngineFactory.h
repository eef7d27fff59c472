#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "Tessarune/platform/speech-engine/MoonshineLibrary.h"
#include "Tessarune/platform/speech-engine/RecognitionPolicy.h"
#include "Tessarune/speech/SpeechAnalyzer.h"

#include <functional>
#include <string>

namespace tessarune {

/// Creates the recogniser of this computer. It loads nothing before an analyzer is prepared; the
/// preparation fails if the library or the model is missing. Models for live sound stay loaded
/// while a copy of the returned engine lives; `host` and `store` must outlive all copies.
///
/// `modelChoice` is called at each preparation on the worker queue and returns "automatic" or the
/// name of a model.
SpeechEngine makeSpeechEngine(Host& host, ModelStore& store,
                              std::function<std::string()> modelChoice);

/// Does the same with replaceable parts, for tests.
SpeechEngine makeSpeechEngine(Host& host, ModelStore& store,
                              std::function<std::string()> modelChoice,
                              std::function<std::shared_ptr<const MoonshineLibrary>()> library,
                              RecognitionPolicy policy);

} // namespace tessarune
