#include "Tessarune/platform/translation-engine/TraditionalChinese.h"

#include "TessaruneCore/text/Localization.h"

#include <opencc/SimpleConverter.hpp>

#include <stdexcept>

namespace tessarune {

struct TraditionalChinese::Converter {
    opencc::SimpleConverter simplifiedToTaiwan{"s2twp.json"};
};

TraditionalChinese::TraditionalChinese() {
    try {
        converter_ = std::make_unique<Converter>();
    } catch (const std::exception& failure) {
        throw std::runtime_error(localized(
            "The conversion to Traditional Chinese is not available: %@", {failure.what()}));
    }
}

TraditionalChinese::~TraditionalChinese() = default;

std::string TraditionalChinese::of(const std::string& simplified) const {
    return converter_->simplifiedToTaiwan.Convert(simplified);
}

} // namespace tessarune
