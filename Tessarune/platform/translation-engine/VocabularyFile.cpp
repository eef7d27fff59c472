#include "Tessarune/platform/translation-engine/VocabularyFile.h"

#include "TessaruneCore/text/Localization.h"

#include <cstdint>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tessarune::VocabularyFile {

namespace {

/// Field numbers of a SentencePiece model, which is a protocol buffer.
constexpr std::uint64_t piecesField = 1;
constexpr std::uint64_t normalizerField = 3;

/// Reads a number of variable length; `nullopt` if it is truncated.
std::optional<std::uint64_t> takeNumber(std::string_view& bytes) {
    std::uint64_t number = 0;
    for (unsigned shift = 0; shift < 64 && !bytes.empty(); shift += 7) {
        const auto byte = static_cast<unsigned char>(bytes.front());
        bytes.remove_prefix(1);
        number |= static_cast<std::uint64_t>(byte & 0x7FU) << shift;
        if (byte < 0x80)
            return number;
    }
    return std::nullopt;
}

/// Reads the number of the next field and skips the field; `nullopt` if the field is truncated or
/// of an unknown type.
std::optional<std::uint64_t> takeField(std::string_view& bytes) {
    const auto key = takeNumber(bytes);
    if (!key)
        return std::nullopt;
    std::optional<std::uint64_t> length;
    switch (*key & 7U) {
    case 0: // a number
        if (!takeNumber(bytes))
            return std::nullopt;
        length = 0;
        break;
    case 1: // eight bytes
        length = 8;
        break;
    case 2: // a length, then as many bytes
        length = takeNumber(bytes);
        break;
    case 5: // four bytes
        length = 4;
        break;
    default:
        break;
    }
    if (!length || *length > bytes.size())
        return std::nullopt;
    bytes.remove_prefix(*length);
    return *key >> 3U;
}

} // namespace

void requireComplete(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::string content((std::istreambuf_iterator<char>(stream)), {});
    std::string_view remaining = content;
    bool hasPieces = false;
    bool hasNormalizer = false;
    bool isTruncated = false;
    while (!remaining.empty() && !isTruncated) {
        const auto field = takeField(remaining);
        isTruncated = !field;
        hasPieces = hasPieces || field == piecesField;
        hasNormalizer = hasNormalizer || field == normalizerField;
    }
    if (isTruncated || !hasPieces || !hasNormalizer)
        throw std::runtime_error(localized("%@ is not a complete vocabulary.", {file.string()}));
}

} // namespace tessarune::VocabularyFile
