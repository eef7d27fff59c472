#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace tessarune::Text {

/// Gives the characters of a text one after the other, without a list of them all.
///
/// ASCII and the common letters of the world's scripts are cut here, and cost neither a call of ICU
/// nor an allocation; a stretch in which code points join (marks, emoji, jamo, flags) goes through
/// ICU as a whole. The text must outlive the walker. Confined to one thread.
class CharacterWalker {
  public:
    explicit CharacterWalker(std::string_view text) : text_(text) {}

    /// The next character into `character`; false at the end.
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

    /// How many bytes have been walked over.
    std::size_t position() const { return at_; }

  private:
    bool isASCII(std::size_t at) const { return static_cast<unsigned char>(text_[at]) < 0x80; }
    std::size_t endOfNext();
    std::size_t endOfJoinedStretch() const;

    std::string_view text_;
    std::size_t at_ = 0;
    std::vector<std::size_t> joinedEnds_; // of the stretch being walked; empty outside of one
    std::size_t nextJoinedEnd_ = 0;
};

} // namespace tessarune::Text
