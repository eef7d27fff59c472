#pragma once

#include "TessaruneCore/recognition/RecognitionEngine.h"

#include <string>

namespace tessarune {

/// One selectable recognition language. Only `group` may change after construction.
struct RecognitionOption {
    std::string id; ///< what settings store
    std::string title;
    std::string flag; ///< an emoji
    std::string localeIdentifier;
    RecognitionEngine engine;
    std::string group;

    /// The engine's capabilities for texts in this language.
    EngineCapabilities capabilities() const {
        return engine.capabilities().localized(localeIdentifier);
    }
    std::string menuTitle() const { return "English(" + flag + ")"; }

    bool operator==(const RecognitionOption&) const = default;
};

} // namespace tessarune
