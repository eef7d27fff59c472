#include "Tessarune/ui/desktop/DesktopNotices.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <ranges>

namespace tessarune {

void DesktopNotices::tell(Topic topic, const std::string& text) {
    const auto isShown = [&](const Notice& notice) {
        return notice.topic == topic && notice.text == text;
    };
    if (std::ranges::any_of(notices_, isShown))
        return;
    std::erase_if(notices_, [topic](const Notice& notice) { return notice.topic == topic; });
    add(topic, text);
    publish();
}

void DesktopNotices::dismissAll() {
    notices_.clear();
    publish();
}

void DesktopNotices::add(Topic topic, const std::string& text) {
    const bool isShown =
        std::ranges::any_of(notices_, [&](const Notice& notice) { return notice.text == text; });
    if (text.empty() || isShown)
        return;
    notices_.push_back({topic, text});
    publish();
    if (onNotice)
        onNotice(text);
}

void DesktopNotices::publish() {
    std::vector<std::string> lines;
    lines.reserve(notices_.size());
    for (const Notice& notice : notices_ | std::views::reverse)
        lines.push_back(notice.text);
    const std::string text = Text::joined(lines, "\n");
    if (*text_ != text)
        text_ = text;
}

} // namespace tessarune
