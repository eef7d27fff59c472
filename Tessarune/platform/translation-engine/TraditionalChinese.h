#pragma once

#include <memory>
#include <string>

namespace tessarune {

/// Converts simplified Chinese to traditional characters and the vocabulary of Taiwan. One thread
/// at a time.
class TraditionalChinese {
  public:
    /// Loads the dictionaries. Throws std::runtime_error if they are missing.
    TraditionalChinese();
    ~TraditionalChinese();

    /// Returns the converted text.
    std::string of(const std::string& simplified) const;

  private:
    struct Converter;
    std::unique_ptr<Converter> converter_;
};

} // namespace tessarune
