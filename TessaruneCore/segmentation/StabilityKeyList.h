#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// The stability keys of a list of sentences that is updated often with few changes. A text that
/// is unchanged at its position is not normalised again.
///
/// Confined to its owner's thread.
class StabilityKeyList {
  public:
    /// Replaces the previous list.
    template <typename Texts>
    void assign(const Texts& texts) {
        resize(texts.size());
        std::size_t index = 0;
        for (const auto& text : texts)
            update(index++, text);
    }
    void clear();

    const std::vector<std::string>& keys() const { return keys_; }
    /// Whether the list before the last `assign` had the same key at this index.
    bool isUnchanged(std::size_t index) const { return unchanged_[index]; }

  private:
    void resize(std::size_t count);
    void update(std::size_t index, std::string_view text);

    std::vector<std::string> texts_;
    std::vector<std::string> keys_;
    std::vector<bool> unchanged_;
    std::size_t previousCount_ = 0;
};

} // namespace tessarune
