#pragma once

#include <memory>
#include <string>

namespace tessarune {

/// Writes simplified Chinese with traditional characters and the words that are usual in Taiwan.
/// One thread at a time.
class TraditionalChinese {
  public:
    /// Loads the dictionaries. Throws std::runtime_error if they are missing.
    TraditionalChinese();
    ~TraditionalChinese();

    std::string of(const std::string& simplified) const;

  private:
    struct Converter;
    std::unique_ptr<Converter> converter_;
};

} // namespace tessarune
