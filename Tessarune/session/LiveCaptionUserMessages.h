#pragma once

#include <string>
#include <string_view>
#include <vector>

/// What the session says to the user in its status line, in the user's language.
namespace tessarune::LiveCaptionUserMessages {

std::string idleTitle();
std::string idleSubtitle();
std::string checkingTitle();
std::string checkingSubtitle();
std::string silentTitle();
std::vector<std::string> silentSubtitleLines();

/// Whether the text warns that nothing is heard: the first sound takes it away.
bool isSilentMessage(std::string_view text);

/// While the source is gone, until it gives sound again.
std::string captureInterrupted();
/// The capture went over to another device, or gives sound again.
std::string captureListeningTo(const std::string& deviceName);

} // namespace tessarune::LiveCaptionUserMessages
