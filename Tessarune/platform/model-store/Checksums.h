#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// SHA-256 of bytes that arrive in pieces.
class SHA256 {
  public:
    SHA256();
    void update(std::string_view bytes);
    /// Returns 64 hexadecimal digits in lower case. May be called only once, after the last
    /// `update`.
    std::string hex();

    /// The checksum of a file. Throws std::system_error.
    static std::string ofFile(const std::filesystem::path& path);

  private:
    std::shared_ptr<void> context_;
};

/// CRC-32C (Castagnoli) of bytes that arrive in pieces.
class CRC32C {
  public:
    void update(std::string_view bytes);
    std::uint32_t value() const { return ~register_; }

    /// The checksum of a file. Throws std::system_error.
    static std::uint32_t ofFile(const std::filesystem::path& path);
    /// Parses the notation of cloud storage: four bytes, most significant first, in base64.
    /// `nullopt` if the text has another form.
    static std::optional<std::uint32_t> fromBase64(std::string_view text);

  private:
    std::uint32_t register_ = ~std::uint32_t{0};
};

} // namespace tessarune
