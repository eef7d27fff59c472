#include "Tessarune/platform/model-store/Checksums.h"

#include "TessaruneCore/text/SystemErrors.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <functional>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace tessarune {

namespace {

void readInPieces(const std::filesystem::path& path,
                  const std::function<void(std::string_view)>& piece) {
    const auto fail = [&] { throw std::system_error(errno, systemErrors(), path.string()); };
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        fail();
    const std::shared_ptr<void> closing(nullptr, [file](void*) { ::close(file); });
    std::vector<char> buffer(1 << 20);
    for (;;) {
        const ssize_t count = ::read(file, buffer.data(), buffer.size());
        if (count == 0)
            return;
        if (count > 0)
            piece({buffer.data(), static_cast<std::size_t>(count)});
        else if (errno != EINTR)
            fail();
    }
}

/// The polynomial 0x1EDC6F41 with its bits reversed.
constexpr std::uint32_t castagnoli = 0x82F63B78;

constexpr std::array<std::uint32_t, 256> remainders = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
        std::uint32_t remainder = byte;
        for (int bit = 0; bit < 8; ++bit)
            remainder = (remainder >> 1) ^ ((remainder & 1) != 0 ? castagnoli : 0);
        table[byte] = remainder;
    }
    return table;
}();

} // namespace

SHA256::SHA256()
    : context_(EVP_MD_CTX_new(),
               [](void* context) { EVP_MD_CTX_free(static_cast<EVP_MD_CTX*>(context)); }) {
    if (EVP_DigestInit_ex(static_cast<EVP_MD_CTX*>(context_.get()), EVP_sha256(), nullptr) != 1)
        throw std::runtime_error("SHA-256 is not available");
}

void SHA256::update(std::string_view bytes) {
    EVP_DigestUpdate(static_cast<EVP_MD_CTX*>(context_.get()), bytes.data(), bytes.size());
}

std::string SHA256::hex() {
    std::array<unsigned char, 32> digest{};
    EVP_DigestFinal_ex(static_cast<EVP_MD_CTX*>(context_.get()), digest.data(), nullptr);
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : digest) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

std::string SHA256::ofFile(const std::filesystem::path& path) {
    SHA256 sum;
    readInPieces(path, [&](std::string_view piece) { sum.update(piece); });
    return sum.hex();
}

void CRC32C::update(std::string_view bytes) {
    for (const char byte : bytes)
        register_ =
            (register_ >> 8) ^ remainders[(register_ ^ static_cast<unsigned char>(byte)) & 255];
}

std::uint32_t CRC32C::ofFile(const std::filesystem::path& path) {
    CRC32C sum;
    readInPieces(path, [&](std::string_view piece) { sum.update(piece); });
    return sum.value();
}

std::optional<std::uint32_t> CRC32C::fromBase64(std::string_view text) {
    // Four bytes are always eight characters, the last two of them padding.
    if (text.size() != 8 || !text.ends_with("=="))
        return std::nullopt;
    std::array<unsigned char, 6> decoded{};
    if (EVP_DecodeBlock(decoded.data(), reinterpret_cast<const unsigned char*>(text.data()), 8) !=
        6)
        return std::nullopt;
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = value << 8 | decoded[i];
    return value;
}

} // namespace tessarune
