#pragma once

#include "Tessarune/ui/captions/CaptionNotice.h"
#include "TessaruneCore/observation/Published.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tessarune {

/// The messages to the user that are shown over the captions, until the user dismisses them or they
/// no longer apply. A text that another notice already has is not added. Main thread.
class DesktopNotices {
  public:
    /// A topic has at most one notice, which a later one replaces; `none` has any number.
    enum class Topic { none, sound, file, speechModel, recording, session, silence };
    /// News is shown without the colours of trouble.
    enum class Kind { trouble, news };

    static constexpr std::size_t mostShown = 3;

    /// Called with each notice that is added.
    std::function<void(const std::string& text)> onNotice;

    /// Shows the text until it is dismissed.
    void tell(const std::string& text, Kind kind = Kind::trouble) {
        add({Topic::none, kind, text});
    }
    /// Replaces the notice on the topic by the text, or removes it if the text is empty.
    void tell(Topic topic, const std::string& text, Kind kind = Kind::trouble);
    /// Whether there is a notice on the topic that the user has not dismissed.
    bool has(Topic topic) const;
    /// Removes the notices that are shown; older ones, if any, take their place.
    void dismissShown();
    /// The newest notices, one per line, and the number of hidden ones. `isTrouble` is true if any
    /// notice, shown or hidden, is trouble.
    const Published<CaptionNotice>& shown() const { return shown_; }

  private:
    struct Notice {
        Topic topic = Topic::none;
        Kind kind = Kind::trouble;
        std::string text;
    };

    void add(Notice notice);
    void publish();

    std::vector<Notice> notices_;
    Published<CaptionNotice> shown_;
};

} // namespace tessarune
