#pragma once

#include <cstddef>
#include <cstdint>

/// The C functions of the Rust library in this folder (src/lib.rs). Only TranslationEngine.cpp
/// calls them.
///
/// No function throws or unwinds: a panic of the engine becomes a failure with its text. An engine
/// belongs to the thread that loaded it. Text is UTF-8 with its length in bytes; each invalid byte
/// is replaced by U+FFFD.
namespace tessarune::translationABI {

/// A borrowed text: the caller keeps an argument until the call returns; a returned one is static.
struct BorrowedText {
    const std::uint8_t* data;
    std::size_t length;
};

/// Owned by the receiver, who frees it with `tessarune_text_free`.
struct OwnedText {
    std::uint8_t* data;
    std::size_t length;
};

/// Where the catalogue of models is published, and the major version that this engine reads.
struct CatalogueSource {
    BorrowedText endpoint;    ///< address of the server, without a path
    BorrowedText collection;  ///< name of the collection there
    BorrowedText attachments; ///< address below which the files lie
    std::uint64_t majorVersion;
};

struct Engine; ///< opaque

extern "C" {

/// Null on failure; `failure` then has the reason. The model stays mapped: its file must not change
/// while the engine lives. Detects a truncated model, but not all other damage.
Engine* tessarune_engine_load(BorrowedText model, BorrowedText sourceVocabulary,
                              BorrowedText targetVocabulary, OwnedText* failure);

/// Cuts several or long sentences and joins the results. `result` is the translation, or the
/// failure if this returns false.
bool tessarune_engine_translate(const Engine* engine, BorrowedText text, OwnedText* result);

void tessarune_engine_free(Engine* engine);
void tessarune_text_free(OwnedText text);

CatalogueSource tessarune_catalogue_source();
}

static_assert(sizeof(BorrowedText) == 16 && sizeof(OwnedText) == 16);
static_assert(sizeof(CatalogueSource) == 3 * sizeof(BorrowedText) + 8);

} // namespace tessarune::translationABI
