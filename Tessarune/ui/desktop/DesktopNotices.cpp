#include "Tessarune/ui/desktop/DesktopNotices.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <ranges>
#include <utility>

namespace tessarune {

void DesktopNotices::tell(Topic topic, const std::string& text, Kind kind) {
    const auto isShown = [&](const Notice& notice) {
        return notice.topic == topic && notice.text == text;
    };
    if (std::ranges::any_of(notices_, isShown))
        return;
    std::erase_if(notices_, [topic](const Notice& notice) { return notice.topic == topic; });
    add({topic, kind, text});
    publish();
}

bool DesktopNotices::has(Topic topic) const {
    return std::ranges::find(notices_, topic, &Notice::topic) != notices_.end();
}

void DesktopNotices::dismissShown() {
    notices_.resize(notices_.size() - std::min(notices_.size(), mostShown));
    publish();
}

void DesktopNotices::add(Notice notice) {
    const std::string text = notice.text;
    const bool isShown =
        std::ranges::any_of(notices_, [&](const Notice& shown) { return shown.text == text; });
    if (text.empty() || isShown)
        return;
    notices_.push_back(std::move(notice));
    publish();
    if (onNotice)
        onNotice(text);
}

void DesktopNotices::publish() {
    std::vector<std::string> lines;
    lines.reserve(notices_.size());
    for (const Notice& notice : notices_ | std::views::reverse)
        lines.push_back(notice.text);
    if (lines.size() > mostShown) {
        const auto hidden = std::to_string(lines.size() - mostShown);
        lines.resize(mostShown);
        lines.push_back(localized("And %lld more.", {hidden}));
    }
    const auto isTrouble = [](const Notice& notice) { return notice.kind == Kind::trouble; };
    CaptionNotice shown{Text::joined(lines, "\n"), std::ranges::any_of(notices_, isTrouble)};
    if (*shown_ != shown)
        shown_ = std::move(shown);
}

} // namespace tessarune
