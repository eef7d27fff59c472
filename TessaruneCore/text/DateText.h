#pragma once

#include <string>
#include <string_view>

/// Moments as people read them, in the time zone of this computer.
namespace tessarune::DateText {

/// `pattern` is one of Unicode's date patterns ("yyyy年M月d日", "HH:mm:ss"), `locale` an identifier
/// such as "zh_Hans_CN". A pattern that is none gives an empty text. Any thread.
std::string formatted(double secondsSince1970, std::string_view pattern, std::string_view locale);

} // namespace tessarune::DateText
