#include "TessaruneCore/segmentation/BoundaryReason.h"

#include "TessaruneCore/text/Text.h"

namespace tessarune {

namespace {

std::string withCharacter(std::string label, char32_t character) {
    Text::append(label, character);
    return label;
}

struct DiagnosticValue {
    std::string operator()(const BoundaryReason::Punctuation& reason) const {
        return withCharacter("punctuation:", reason.character);
    }
    std::string operator()(const BoundaryReason::ClausePunctuation& reason) const {
        return withCharacter("clausePunctuation:", reason.character);
    }
    std::string operator()(const BoundaryReason::Pause& reason) const {
        return "pause:" + Text::shortest(reason.seconds);
    }
    std::string operator()(const BoundaryReason::MaxWords& reason) const {
        return "maxWords:" + std::to_string(reason.limit);
    }
    std::string operator()(const BoundaryReason::MaxCharacters& reason) const {
        return "maxCharacters:" + std::to_string(reason.limit);
    }
    std::string operator()(const BoundaryReason::EngineFinal&) const { return "engineFinal"; }
    std::string operator()(const BoundaryReason::LocalAgreement&) const { return "localAgreement"; }
};

} // namespace

std::string BoundaryReason::diagnosticValue() const {
    return std::visit(DiagnosticValue{}, value);
}

} // namespace tessarune
