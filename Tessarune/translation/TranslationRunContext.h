#pragma once

#include <string>

namespace tessarune {

/// The language pair of one run of translations, fixed when the run starts.
struct TranslationRunContext {
    std::string target;
    std::string sourceLanguage;
    /// The target is the source's own language: the source text stands as its translation, and the
    /// translator is not touched.
    bool passThrough = false;

    bool operator==(const TranslationRunContext&) const = default;

    /// From the default source language.
    static TranslationRunContext forTarget(std::string target);
};

} // namespace tessarune
