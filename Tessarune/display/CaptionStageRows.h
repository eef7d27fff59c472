#pragma once

#include "Tessarune/display/LiveCaptionDisplayFrame.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// One drawn row of the caption stage.
struct CaptionStageRow {
    std::string source;      ///< empty in the block of translations
    std::string translation; ///< empty: there is none yet
    bool isGhost = false;    ///< the translation is a preview
    bool isGrowing = false;  ///< the source is still growing

    bool operator==(const CaptionStageRow&) const = default;
};

/// The rows of one list on the caption stage: the settled rows of a frame, followed by those that
/// may still change. A value; keeps the frame's rows without copying them.
///
/// A row is identified by its position. A sentence that settles keeps its place, so that a list
/// changes one row and moves none.
class CaptionStageRows {
  public:
    enum class Block {
        bilingual,    ///< each source row with its translation
        source,       ///< only the source
        translations, ///< only the translations
    };

    CaptionStageRows() = default;
    /// With `merges`, the rows of a translation unit are shown as one.
    CaptionStageRows(const LiveCaptionDisplayFrame& frame, Block block, bool merges);

    std::size_t size() const { return settledSize() + tail_.size(); }
    CaptionStageRow row(std::size_t index) const;
    /// The index of the first primary row. The primary rows are those that the user is reading: the
    /// newest settled row and all rows after it.
    std::size_t firstPrimary() const { return settledSize() == 0 ? 0 : settledSize() - 1; }
    /// The number of rows before the open part of the text.
    std::size_t settledSize() const { return settled_.size() + translations_.size(); }
    /// The index of the row whose source is still growing; `size()` if there is none.
    std::size_t growing() const;

    /// The indexes at which this list and `before` both have a row but the rows differ, ascending.
    /// If both lists show the same block, the cost depends only on the changes.
    std::vector<std::size_t> changedSince(const CaptionStageRows& before) const;

  private:
    void addTail(const LiveCaptionDisplayFrame& frame, const LiveCaptionDisplayRows& live);
    bool hasGhost() const;
    bool isGhostOfPart(const LiveCaptionDisplayFrame& frame) const;
    void findGhostRow(const LiveCaptionDisplayFrame& frame);

    Block block_ = Block::source;
    LiveCaptionDisplayRows settled_;         // empty for `Block::translations`
    SharedVector<std::string> translations_; // empty for the other blocks
    std::vector<CaptionStageRow> tail_;
    std::string ghost_;
    std::optional<std::size_t> ghostRow_; // the settled row that the preview belongs to
};

} // namespace tessarune
