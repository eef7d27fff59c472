#pragma once

#include <string>
#include <vector>

/// Titles and subtitles for states without captions, in the user's language.
namespace tessarune::LiveCaptionUserMessages {

std::string idleTitle();
std::string idleSubtitle();
std::string checkingTitle();
std::string checkingSubtitle();
std::string silentTitle();
std::vector<std::string> silentSubtitleLines();

} // namespace tessarune::LiveCaptionUserMessages
