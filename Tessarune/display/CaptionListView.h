#pragma once

#include <optional>

namespace tessarune {

/// The scrolling list of captions, as `CaptionFollowDriver` drives it; a view implements it over
/// its toolkit's list. Lengths are in points of the toolkit, positions grow downwards. Main queue.
class CaptionListView {
  public:
    struct Geometry {
        double clipY = 0;          ///< top of the visible part
        double clipHeight = 0;     ///< height of the visible part
        double documentHeight = 0; ///< total height of the rows
        /// The value of `clipY` at which the list is scrolled to its end. It may differ from
        /// `documentHeight - clipHeight`, because the first row need not begin at position 0.
        double legalBottomY = 0;
        int rows = -1; ///< -1: unknown

        bool overflowing() const { return documentHeight > clipHeight; }
        double legalBottomDelta() const { return legalBottomY - clipY; }
        double clipMaxY() const { return clipY + clipHeight; }
    };

    virtual ~CaptionListView() = default;

    /// `nullopt` while the list is invisible or has no rows, so that it need not be scrolled.
    virtual std::optional<Geometry> geometry() const = 0;
    /// Scrolls to `legalBottomY`.
    virtual void scrollToEnd() = 0;
    /// Lays out and draws all visible rows again.
    virtual void redraw() = 0;
    /// Makes the window system compose the window again.
    virtual void nudgeWindow() = 0;
    virtual bool isFullScreen() const = 0;
};

} // namespace tessarune
