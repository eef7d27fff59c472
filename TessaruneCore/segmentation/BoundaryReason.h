#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace tessarune {

/// Why a text was cut at some place.
struct BoundaryReason {
    struct Punctuation {
        char32_t character;
        bool operator==(const Punctuation&) const = default;
    };
    struct ClausePunctuation {
        char32_t character;
        bool operator==(const ClausePunctuation&) const = default;
    };
    struct Pause {
        double seconds;
        bool operator==(const Pause&) const = default;
    };
    /// The limit that was reached, not the word count.
    struct MaxWords {
        std::int64_t limit;
        bool operator==(const MaxWords&) const = default;
    };
    struct MaxCharacters {
        std::int64_t limit;
        bool operator==(const MaxCharacters&) const = default;
    };
    struct EngineFinal {
        bool operator==(const EngineFinal&) const = default;
    };
    struct LocalAgreement {
        bool operator==(const LocalAgreement&) const = default;
    };

    std::variant<Punctuation, ClausePunctuation, Pause, MaxWords, MaxCharacters, EngineFinal,
                 LocalAgreement>
        value;

    static BoundaryReason punctuation(char32_t character) { return {Punctuation{character}}; }
    static BoundaryReason clausePunctuation(char32_t character) {
        return {ClausePunctuation{character}};
    }
    static BoundaryReason pause(double seconds) { return {Pause{seconds}}; }
    static BoundaryReason maxWords(std::int64_t limit) { return {MaxWords{limit}}; }
    static BoundaryReason maxCharacters(std::int64_t limit) { return {MaxCharacters{limit}}; }
    static BoundaryReason engineFinal() { return {EngineFinal{}}; }
    static BoundaryReason localAgreement() { return {LocalAgreement{}}; }

    template <typename Case>
    bool is() const {
        return std::holds_alternative<Case>(value);
    }

    /// The reason in logs and in the diagnostics display: "maxWords:28", "engineFinal".
    std::string diagnosticValue() const;

    bool operator==(const BoundaryReason&) const = default;
};

} // namespace tessarune
