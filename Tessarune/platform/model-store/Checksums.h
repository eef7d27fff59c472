#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// SHA-256 of bytes that come in pieces.
class SHA256 {
  public:
    SHA256();
    void update(std::string_view bytes);
    /// 64 hexadecimal digits in lower case. Ends the sum.
    std::string hex();

    /// Of a file's content. Throws std::system_error.
    static std::string ofFile(const std::filesystem::path& path);

  private:
    std::shared_ptr<void> context_;
};

/// CRC-32C (Castagnoli) of bytes that come in pieces.
class CRC32C {
  public:
    void update(std::string_view bytes);
    std::uint32_t value() const { return ~register_; }

    /// Of a file's content. Throws std::system_error.
    static std::uint32_t ofFile(const std::filesystem::path& path);
    /// From the notation of cloud storage: four bytes, highest first, in base 64. Nothing if it is
    /// no such text.
    static std::optional<std::uint32_t> fromBase64(std::string_view text);

  private:
    std::uint32_t register_ = ~std::uint32_t{0};
};

} // namespace tessarune
