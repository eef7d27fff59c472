#pragma once

#include <string>
#include <string_view>

/// Formats times for people, in the computer's time zone.
namespace tessarune::DateText {

/// `pattern` is a Unicode date pattern ("yyyy年M月d日", "HH:mm:ss"), `locale` an identifier such as
/// "zh_Hans_CN". Returns an empty text if ICU cannot make a formatter. Any thread.
std::string formatted(double secondsSince1970, std::string_view pattern, std::string_view locale);

} // namespace tessarune::DateText
