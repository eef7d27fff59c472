#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace tessarune::Text {

/// Iterates over the characters of a text without building a list.
///
/// ASCII and most Latin, Greek, Cyrillic, Chinese, Japanese and Korean letters take a fast path
/// without ICU or allocation. Runs in which code points join (marks, emoji, jamo, flags) go through
/// ICU as a whole. The text must outlive the walker. Confined to one thread.
class CharacterWalker {
  public:
    explicit CharacterWalker(std::string_view text) : text_(text) {}

    /// Stores the next character in `character`; false at the end.
    bool next(std::string_view& character) {
        if (at_ == text_.size())
            return false;
        const std::size_t start = at_;
        if (joinedEnds_.empty() && isASCII(at_) && text_[at_] != '\r' &&
            (at_ + 1 == text_.size() || isASCII(at_ + 1))) {
            ++at_;
        } else {
            at_ = endOfNext();
        }
        character = text_.substr(start, at_ - start);
        return true;
    }

    /// The number of bytes consumed.
    std::size_t position() const { return at_; }

  private:
    bool isASCII(std::size_t at) const { return static_cast<unsigned char>(text_[at]) < 0x80; }
    std::size_t endOfNext();
    std::size_t endOfJoinedRun() const;

    std::string_view text_;
    std::size_t at_ = 0;
    std::vector<std::size_t> joinedEnds_; // of the current run's characters; empty outside a run
    std::size_t nextJoinedEnd_ = 0;
};

} // namespace tessarune::Text
