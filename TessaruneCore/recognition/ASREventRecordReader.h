#pragma once

#include "TessaruneCore/recognition/ASREventRecord.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tessarune {

/// Makes a record of the parts of one line of an event log, as a JSON parser finds them: its
/// functions have the names that the JSON library calls, and give false where reading on is of no
/// use. What is not wanted is walked over; nesting costs a counter and no stack. One for each line.
///
/// Internal to `ASREventRecord` and its tests.
class ASREventRecordReader {
  public:
    /// Any line, by the JSON library.
    static std::optional<ASREventRecord> readByTheBook(std::string_view line);

    /// A line without escapes, exponents and truth values, as nearly all are, in a fraction of
    /// the time. False, and nothing is known, for any other line.
    bool readQuickly(std::string_view line);

    bool null() { return scalar(nullptr); }
    bool boolean(bool value) { return scalar(value); }
    bool number_integer(std::int64_t number) { return scalar(number); }
    bool number_unsigned(std::uint64_t number) {
        constexpr auto largest = std::numeric_limits<std::int64_t>::max();
        return number <= static_cast<std::uint64_t>(largest)
                   ? scalar(static_cast<std::int64_t>(number))
                   : scalar(static_cast<double>(number));
    }
    bool number_float(double number, const std::string&) { return scalar(number); }
    bool string(std::string_view text) { return scalar(text); }
    template <typename Binary>
    bool binary(const Binary&) {
        return false;
    }
    template <typename Error>
    bool parse_error(std::size_t, const std::string&, const Error&) {
        return false;
    }
    bool start_object(std::size_t);
    bool key(std::string_view name);
    bool end_object() { return end(); }
    bool start_array(std::size_t);
    bool end_array() { return end(); }

    /// The record, after the last part; nothing if the line is none.
    std::optional<ASREventRecord> record();

  private:
    /// What stands under a key. Of equal keys the last counts, so a value of the wrong type is only
    /// noted until the line has been read to its end.
    template <typename Value>
    struct Slot {
        enum class State { absent, present, wrong };

        State state = State::absent;
        Value value{};

        void set(Value newValue) {
            state = State::present;
            value = std::move(newValue);
        }
        bool isPresent() const { return state == State::present; }
        bool isWrong() const { return state == State::wrong; }
        std::optional<Value> take() {
            return isPresent() ? std::optional<Value>(std::move(value)) : std::nullopt;
        }
    };

    using Number = Slot<double>;
    using Integer = Slot<std::int64_t>;
    using String = Slot<std::string>;
    using Words = Slot<std::vector<ASRWordTiming>>;

    struct WordFields {
        String word;
        Number start;
        Number end;
    };

    struct RecordFields {
        Number t;
        String kind;
        String text;
        Integer revision;
        Number timestamp;
        Number start;
        Number end;
        String reason;
        Words words;
    };

    enum class Level { outside, record, words, word };
    using Target = std::variant<std::monostate, Number*, Integer*, String*, Words*>;

    bool isIn(Level level) const { return nestedDepth_ == 0 && level_ == level; }
    template <typename SomeSlot, typename Value>
    static void assign(SomeSlot& slot, const Value&);
    Target fieldOfRecord(std::string_view name);
    Target fieldOfWord(std::string_view name);
    template <typename Value>
    bool scalar(const Value& value);
    bool beginNested();
    bool end();
    void endWord();

    Level level_ = Level::outside;
    std::size_t nestedDepth_ = 0; // of a value that nobody wants, at the level
    Target target_;               // what the last key names
    RecordFields record_;
    WordFields word_;
};

} // namespace tessarune
