#include "TessaruneCore/recognition/ASREventRecordReader.h"
#include "TessaruneCore/text/Text.h"

#include <charconv>

namespace tessarune {

namespace {

/// Walks over the plain part of JSON and tells the reader. Every function is false where something
/// else begins, and then the whole line has to be read again by the book.
class QuickParser {
  public:
    QuickParser(std::string_view line, ASREventRecordReader& reader)
        : at_(line.data()), end_(line.data() + line.size()), reader_(reader) {}

    bool line() { return value(maximalDepth) && (skipBlanks(), at_ == end_); }

  private:
    static constexpr int maximalDepth = 4; // a record, its words, a word, what stands in it

    bool value(int depth);
    bool members(int depth);
    bool elements(int depth);
    bool text(std::string_view& text);
    bool number();
    bool digits();
    void skipBlanks();
    bool take(char wanted);
    bool isAt(char wanted) const { return at_ != end_ && *at_ == wanted; }

    const char* at_;
    const char* end_;
    ASREventRecordReader& reader_;
};

bool isDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

void QuickParser::skipBlanks() {
    while (isAt(' ') || isAt('\t') || isAt('\r') || isAt('\n'))
        ++at_;
}

bool QuickParser::take(char wanted) {
    skipBlanks();
    if (!isAt(wanted))
        return false;
    ++at_;
    return true;
}

bool QuickParser::value(int depth) {
    skipBlanks();
    if (isAt('"')) {
        std::string_view string;
        return text(string) && reader_.string(string);
    }
    if (depth == 0)
        return false;
    if (isAt('{'))
        return members(depth - 1);
    if (isAt('['))
        return elements(depth - 1);
    return number();
}

bool QuickParser::members(int depth) {
    ++at_;
    if (!reader_.start_object(0))
        return false;
    if (take('}'))
        return reader_.end_object();
    do {
        skipBlanks();
        std::string_view name;
        if (!text(name) || !reader_.key(name) || !take(':') || !value(depth))
            return false;
    } while (take(','));
    return take('}') && reader_.end_object();
}

bool QuickParser::elements(int depth) {
    ++at_;
    if (!reader_.start_array(0))
        return false;
    if (take(']'))
        return reader_.end_array();
    do {
        if (!value(depth))
            return false;
    } while (take(','));
    return take(']') && reader_.end_array();
}

bool QuickParser::text(std::string_view& text) {
    if (!isAt('"'))
        return false;
    const char* const start = ++at_;
    while (at_ != end_ && *at_ != '"' && *at_ != '\\' && static_cast<unsigned char>(*at_) >= 0x20)
        ++at_;
    if (!isAt('"'))
        return false;
    text = std::string_view(start, static_cast<std::size_t>(at_ - start));
    ++at_;
    return Text::isValidUTF8(text);
}

bool QuickParser::digits() {
    const char* const start = at_;
    while (at_ != end_ && isDigit(*at_))
        ++at_;
    return at_ != start;
}

bool QuickParser::number() {
    const char* const start = at_;
    if (isAt('-'))
        ++at_;
    const char* const whole = at_;
    if (!digits() || (*whole == '0' && at_ - whole > 1))
        return false;
    if (!isAt('.')) {
        std::int64_t number = 0;
        return std::from_chars(start, at_, number).ec == std::errc() &&
               reader_.number_integer(number);
    }
    ++at_;
    double number = 0;
    return digits() && std::from_chars(start, at_, number).ec == std::errc() &&
           reader_.number_float(number, {});
}

} // namespace

bool ASREventRecordReader::readQuickly(std::string_view line) {
    return QuickParser(line, *this).line();
}

std::optional<ASREventRecord> ASREventRecord::fromLine(std::string_view line) {
    ASREventRecordReader reader;
    return reader.readQuickly(line) ? reader.record() : ASREventRecordReader::readByTheBook(line);
}

} // namespace tessarune
