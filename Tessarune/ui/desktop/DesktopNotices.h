#pragma once

#include "TessaruneCore/observation/Published.h"

#include <functional>
#include <string>
#include <vector>

namespace tessarune {

/// The messages to the user that are shown beside the captions, until the user dismisses them or
/// they no longer apply. Main thread.
class DesktopNotices {
  public:
    /// A topic has at most one notice, which later news replaces or removes; `none` has any number.
    enum class Topic { none, sound, file, speechModel, recording, session };

    /// Called with each new notice, unless one with the same text is already shown.
    std::function<void(const std::string& text)> onNotice;

    /// Shows the text until it is dismissed.
    void tell(const std::string& text) { add(Topic::none, text); }
    /// Replaces the notice on the topic by the text, or removes it if the text is empty.
    void tell(Topic topic, const std::string& text);
    void dismissAll();
    /// All notices, the newest first, one per line; empty if there are none.
    const Published<std::string>& text() const { return text_; }

  private:
    struct Notice {
        Topic topic = Topic::none;
        std::string text;
    };

    void add(Topic topic, const std::string& text);
    void publish();

    std::vector<Notice> notices_;
    Published<std::string> text_;
};

} // namespace tessarune
