#pragma once

#include "TessaruneCore/observation/Published.h"

#include <functional>
#include <string>
#include <vector>

namespace tessarune {

/// What the program tells the user beside the captions, until the user has read it or it is no
/// longer so. Main thread.
class DesktopNotices {
  public:
    /// What changes by itself: a topic has one notice at a time.
    enum class Topic { none, sound, waitingForFile, speechModel, recording };

    /// Hears each notice that did not stand there already.
    std::function<void(const std::string& text)> onNotice;

    /// Shows the text until it is dismissed.
    void tell(const std::string& text) { add(Topic::none, text); }
    /// Shows the text in place of the last one on the topic; empty: there is nothing to say.
    void tell(Topic topic, const std::string& text);
    void dismissAll();
    /// All notices, a line each; empty: none.
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
