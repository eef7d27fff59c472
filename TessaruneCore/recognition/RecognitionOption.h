#pragma once

#include "TessaruneCore/recognition/RecognitionEngine.h"

#include <string>

namespace tessarune {

/// A row of the choice of recognition languages. All but `group` stays as it was made.
struct RecognitionOption {
    std::string id; ///< what settings store
    std::string title;
    std::string flag; ///< an emoji
    std::string localeIdentifier;
    RecognitionEngine engine;
    std::string group;

    /// Those of the engine, for texts of this language.
    EngineCapabilities capabilities() const {
        return engine.capabilities().localized(localeIdentifier);
    }
    std::string menuTitle() const { return "English(" + flag + ")"; }

    bool operator==(const RecognitionOption&) const = default;
};

} // namespace tessarune
