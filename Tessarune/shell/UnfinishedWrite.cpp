#include "Tessarune/shell/UnfinishedWrite.h"

#include <algorithm>
#include <charconv>

namespace tessarune {

namespace {

constexpr std::string_view mark = ".new-";
constexpr std::size_t serialDigits = 6;

bool isDigit(char letter) {
    return letter >= '0' && letter <= '9';
}

} // namespace

std::optional<UnfinishedWrite> UnfinishedWrite::parse(std::string_view name) {
    const std::size_t at = name.rfind(mark);
    if (at == std::string_view::npos)
        return std::nullopt;
    const std::string_view number = name.substr(at + mark.size());
    if (number.size() <= serialDigits || number.front() == '0' ||
        !std::ranges::all_of(number, isDigit))
        return std::nullopt;
    UnfinishedWrite write{name.substr(0, at), 0};
    const char* const end = number.data() + number.size() - serialDigits;
    const auto read = std::from_chars(number.data(), end, write.process);
    if (read.ec != std::errc())
        return std::nullopt;
    return write;
}

std::string UnfinishedWrite::suffix(int process, unsigned serial) {
    const std::string digits = std::to_string(serial);
    return std::string(mark) + std::to_string(process) +
           std::string(serialDigits - digits.size(), '0') + digits;
}

} // namespace tessarune
