#pragma once

#include <cstddef>
#include <cstdint>

/// The C functions of the Rust library in this folder (src/lib.rs). Only TranslationEngine.cpp
/// calls them.
///
/// No function throws or unwinds: a panic of the engine becomes a failure with its text. An engine
/// belongs to the thread that loaded it. Text is UTF-8 with its length in bytes; in arguments,
/// invalid UTF-8 is replaced by U+FFFD.
namespace tessarune::translationABI {

/// A borrowed text: an argument must stay valid until the call returns; a result is static.
struct BorrowedText {
    const std::uint8_t* data;
    std::size_t length;
};

/// Owned by the caller, who must free it with `tessarune_text_free`.
struct OwnedText {
    std::uint8_t* data;
    std::size_t length;
};

/// Where the catalogue of models is published, and the major version that this engine reads.
struct CatalogueSource {
    BorrowedText endpoint;    ///< address of the server, without a path
    BorrowedText collection;  ///< name of the collection on the server
    BorrowedText attachments; ///< base address of the files
    std::uint64_t majorVersion;
};

struct Engine; ///< opaque

extern "C" {

/// Returns null on failure and sets `failure` to the reason; otherwise leaves `failure` unchanged.
/// The model's file stays mapped into memory and must not change while the engine lives. Detects a
/// truncated model, but not all other damage.
Engine* tessarune_engine_load(BorrowedText model, BorrowedText sourceVocabulary,
                              BorrowedText targetVocabulary, OwnedText* failure);

/// Splits the text into sentences, translates each, and joins the results. Sets `result` to the
/// translation, or to the reason of the failure if this returns false.
bool tessarune_engine_translate(const Engine* engine, BorrowedText text, OwnedText* result);

void tessarune_engine_free(Engine* engine);
void tessarune_text_free(OwnedText text);

CatalogueSource tessarune_catalogue_source();
}

static_assert(sizeof(BorrowedText) == 16 && sizeof(OwnedText) == 16);
static_assert(sizeof(CatalogueSource) == 3 * sizeof(BorrowedText) + 8);

} // namespace tessarune::translationABI
