#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace tessarune::testing {

/// The part of a terminal that the screen output uses. As on a real terminal, lines that have
/// scrolled off the top cannot change any more, and erasing the end of the screen does not bring
/// them back. Thus a line that is rewritten too late appears twice.
class TerminalEmulator {
  public:
    explicit TerminalEmulator(std::size_t rows) : rows_(rows) {}

    void write(const std::string& bytes) {
        for (std::size_t i = 0; i < bytes.size();) {
            if (bytes[i] == '\033') {
                std::size_t end = i + 2;
                while (!(bytes[end] >= '@' && bytes[end] <= '~'))
                    ++end;
                escape(bytes.substr(i + 2, end - i - 2), bytes[end]);
                i = end + 1;
            } else if (bytes[i] == '\n') {
                lineFeed();
                ++i;
            } else if (bytes[i] == '\r') {
                ++i;
                column_ = 0;
            } else {
                const std::size_t end = std::min(bytes.find_first_of("\033\n\r", i), bytes.size());
                EXPECT_EQ(column_, lines_[line_].size()) << "nothing is overwritten";
                lines_[line_] += (isDim_ ? "~" : "") + bytes.substr(i, end - i);
                column_ = lines_[line_].size();
                i = end;
            }
        }
    }

    /// All visible and scrolled lines; dim lines begin with "~".
    std::vector<std::string> text() const {
        std::vector<std::string> all = lines_;
        while (!all.empty() && all.back().empty())
            all.pop_back();
        return all;
    }

  private:
    void escape(const std::string& parameters, char command) {
        if (command == 'm') {
            isDim_ = parameters == "2";
        } else if (command == 'J') {
            lines_.resize(line_ + 1);
            lines_[line_].resize(column_);
        } else if (command == 'A') {
            const std::size_t count = std::stoul(parameters);
            line_ = std::max(top_, line_ - std::min(line_, count));
        } else { // shows or hides the cursor
            EXPECT_EQ(parameters + command,
                      parameters[1] == '2' && command == 'h' ? "?25h" : "?25l");
        }
    }
    void lineFeed() {
        column_ = 0;
        if (++line_ == lines_.size())
            lines_.emplace_back();
        top_ = std::max(top_, lines_.size() - std::min(lines_.size(), rows_));
    }

    std::size_t rows_;
    std::vector<std::string> lines_{""};
    std::size_t top_ = 0; ///< the first line on the screen; never decreases
    std::size_t line_ = 0;
    std::size_t column_ = 0;
    bool isDim_ = false;
};

} // namespace tessarune::testing
