#include "TessaruneCore/recognition/ASREvent.h"

#include "TessaruneCore/text/Text.h"

namespace tessarune {

std::string_view name(EndpointReason reason) {
    switch (reason) {
    case EndpointReason::silence:
        return "silence";
    case EndpointReason::hardLimit:
        return "hardLimit";
    case EndpointReason::manual:
        return "manual";
    case EndpointReason::engineFinal:
        return "engineFinal";
    }
    return {};
}

std::optional<EndpointReason> endpointReason(std::string_view text) {
    for (const auto reason : {EndpointReason::silence, EndpointReason::hardLimit,
                              EndpointReason::manual, EndpointReason::engineFinal}) {
        if (text == name(reason))
            return reason;
    }
    return std::nullopt;
}

bool ASRWordTiming::operator==(const ASRWordTiming& other) const {
    return Text::equal(word, other.word) && start == other.start && end == other.end;
}

bool ASREvent::Partial::operator==(const Partial& other) const {
    return Text::equal(text, other.text) && revision == other.revision &&
           timestamp == other.timestamp;
}

bool ASREvent::Final::operator==(const Final& other) const {
    return Text::equal(text, other.text) && start == other.start && end == other.end &&
           reason == other.reason && words == other.words;
}

} // namespace tessarune
