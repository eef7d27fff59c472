#pragma once

#include "Tessarune/display/LiveCaptionDisplayFrame.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// One row of the caption stage as it is drawn.
struct CaptionStageRow {
    std::string source;      ///< empty in the block of translations
    std::string translation; ///< empty: there is none yet
    bool isGhost = false;    ///< the translation is a preview
    bool isGrowing = false;  ///< words are still being added to the source

    bool operator==(const CaptionStageRow&) const = default;
};

/// The rows of one list on the caption stage: those of a frame that are settled, and behind them
/// those that may still change. A value; keeps the frame's rows without copying them.
///
/// A row is known by its position. A sentence that settles stays where it grew, so that a list that
/// draws it changes one row and moves none.
class CaptionStageRows {
  public:
    enum class Block {
        bilingual,    ///< each source row with its translation
        source,       ///< the source alone
        translations, ///< the translations alone
    };

    CaptionStageRows() = default;
    /// `merges`: the rows of a translation unit are one.
    CaptionStageRows(const LiveCaptionDisplayFrame& frame, Block block, bool merges);

    std::size_t size() const { return settledSize() + tail_.size(); }
    CaptionStageRow row(std::size_t index) const;
    /// The newest settled row and all behind it are what is being read.
    std::size_t firstPrimary() const { return settledSize() == 0 ? 0 : settledSize() - 1; }

    /// The rows of both lists that differ, ascending. Costs what has changed.
    std::vector<std::size_t> changedSince(const CaptionStageRows& before) const;

  private:
    std::size_t settledSize() const { return settled_.size() + translations_.size(); }
    void addTail(const LiveCaptionDisplayFrame& frame, const LiveCaptionDisplayRows& live);
    void findGhostRow(const LiveCaptionDisplayFrame& frame);

    Block block_ = Block::source;
    LiveCaptionDisplayRows settled_;         // of the blocks that show the source
    SharedVector<std::string> translations_; // of the other one
    std::vector<CaptionStageRow> tail_;
    std::string ghost_;
    std::optional<std::size_t> ghostRow_; // the settled row that the preview belongs to
};

} // namespace tessarune
