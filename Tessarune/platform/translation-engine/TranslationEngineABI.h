#pragma once

#include <cstddef>
#include <cstdint>

/// The C functions of the Rust library in this folder (src/lib.rs). Only TranslationEngine.cpp
/// calls them.
///
/// No function throws or unwinds: a panic of the engine becomes a failure with its text. An engine
/// belongs to the thread that loaded it. Text is bytes of UTF-8 with their number; bytes that are
/// none are replaced by U+FFFD.
namespace tessarune::translationABI {

/// Kept by the caller until the call returns. What is returned so lasts as long as the program.
struct BorrowedText {
    const std::uint8_t* data;
    std::size_t length;
};

/// The receiver's; given back with `tessarune_text_free`.
struct OwnedText {
    std::uint8_t* data;
    std::size_t length;
};

/// Where the catalogue of models is published, and which models in it this engine reads: those
/// whose version has this first number.
struct CatalogueSource {
    BorrowedText endpoint;    ///< address of the server, without a path
    BorrowedText collection;  ///< name of the collection there
    BorrowedText attachments; ///< address below which the files lie
    std::uint64_t majorVersion;
};

struct Engine; ///< opaque

extern "C" {

/// Null where it does not load; then `failure` says why. The model stays mapped: its file must not
/// change as long as the engine lives. A model that is cut short is noticed, one that is damaged
/// otherwise may not be.
Engine* tessarune_engine_load(BorrowedText model, BorrowedText sourceVocabulary,
                              BorrowedText targetVocabulary, OwnedText* failure);

/// Several sentences and long ones are cut and joined again. `result` is the translation, or where
/// this gives false the failure.
bool tessarune_engine_translate(const Engine* engine, BorrowedText text, OwnedText* result);

void tessarune_engine_free(Engine* engine);
void tessarune_text_free(OwnedText text);

CatalogueSource tessarune_catalogue_source();
}

static_assert(sizeof(BorrowedText) == 16 && sizeof(OwnedText) == 16);
static_assert(sizeof(CatalogueSource) == 3 * sizeof(BorrowedText) + 8);

} // namespace tessarune::translationABI
