#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tessarune {

/// Why a recogniser issued a final result.
enum class EndpointReason { silence, hardLimit, manual, engineFinal };

std::string_view name(EndpointReason reason);
/// `nullopt` for an unknown name.
std::optional<EndpointReason> endpointReason(std::string_view name);

/// One word of a result, and when it was spoken, in seconds since 1970.
struct ASRWordTiming {
    std::string word;
    double start = 0;
    double end = 0;

    bool operator==(const ASRWordTiming&) const;
};

/// A result of the recogniser, the input of the caption engine.
struct ASREvent {
    /// The current hypothesis for the open utterance.
    struct Partial {
        std::string text;
        std::int64_t revision = 0; ///< from the recogniser; increases within an utterance
        double timestamp = 0;      ///< when the hypothesis was made, seconds since 1970

        bool operator==(const Partial&) const;
    };

    /// A finished utterance, and when it was spoken, in seconds since 1970.
    struct Final {
        std::string text;
        double start = 0;
        double end = 0;
        EndpointReason reason = EndpointReason::silence;
        std::optional<std::vector<ASRWordTiming>> words; ///< only if the recogniser times words

        bool operator==(const Final&) const;
    };

    std::variant<Partial, Final> value;

    static ASREvent partial(std::string text, std::int64_t revision, double timestamp) {
        return {Partial{std::move(text), revision, timestamp}};
    }
    static ASREvent final(std::string text, double start, double end, EndpointReason reason,
                          std::optional<std::vector<ASRWordTiming>> words = std::nullopt) {
        return {Final{std::move(text), start, end, reason, std::move(words)}};
    }

    bool operator==(const ASREvent&) const = default;
};

} // namespace tessarune
