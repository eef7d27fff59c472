#include "TessaruneCore/translation/Translator.h"

namespace tessarune {

std::string_view name(TranslationAvailabilityStatus status) {
    switch (status) {
    case TranslationAvailabilityStatus::installed:
        return "installed";
    case TranslationAvailabilityStatus::supported:
        return "supported";
    case TranslationAvailabilityStatus::unsupported:
        return "unsupported";
    }
    return {};
}

} // namespace tessarune
