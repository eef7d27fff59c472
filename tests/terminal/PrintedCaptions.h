#pragma once

#include "Terminal/CaptionOutput.h"
#include "Tessarune/display/LiveCaptionDisplayCache.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "TessaruneCore/translation/TranslationSegmentMutator.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace tessarune::testing {

/// A stream into memory.
class Printed {
  public:
    Printed() : file_(open_memstream(&bytes_, &size_)) {}
    ~Printed() {
        std::fclose(file_);
        std::free(bytes_);
    }
    Printed(const Printed&) = delete;

    std::FILE* file() const { return file_; }
    /// The text printed since the last call.
    std::string take() {
        std::fflush(file_);
        std::string text(bytes_ + taken_, size_ - taken_);
        taken_ = size_;
        return text;
    }

  private:
    char* bytes_ = nullptr;
    std::size_t size_ = 0;
    std::size_t taken_ = 0;
    std::FILE* file_;
};

/// Caption rows as a session changes them, and an output that prints them.
class PrintedCaptions {
  public:
    SimulatedHost host{1000};
    CaptionCore core = CaptionCore::onHost([] { return CaptionCore::Config(true, true, false); },
                                           [] { return EngineCapabilities(); }, host);
    Printed out;
    Printed errors;
    CaptionOutput output;
    std::string target = "fr";
    bool awaits = true; ///< whether the session translates
    struct Preview {
        std::string text;
        std::string source;
    } preview;

    void commit(const std::string& text) {
        CaptionSegment row;
        row.id = UUID::random();
        row.sourceText = text;
        row.startedAt = host.now();
        core.committedSegments.mutate([&](CaptionCore::Rows& rows) { rows.push_back(row); });
        update();
    }
    void live(const std::string& text) {
        core.currentPartial.mutate([&](CaptionSegment& row) { row.sourceText = text; });
        update();
    }
    /// Sets the translation of the unit of these rows.
    void translate(std::size_t first, std::size_t last, const std::string& text) {
        const UUID unit = UUID::random();
        core.committedSegments.mutate([&](CaptionCore::Rows& rows) {
            TranslationSegmentMutator::applySuccess(unit, ids(rows, first, last), rows[last].id,
                                                    text, rows);
        });
        update();
    }
    void fail(std::size_t first, std::size_t last, const std::string& error) {
        const UUID unit = UUID::random();
        core.committedSegments.mutate([&](CaptionCore::Rows& rows) {
            TranslationSegmentMutator::applyFailure(unit, ids(rows, first, last), rows[last].id,
                                                    error, rows);
        });
        update();
    }
    CaptionPicture picture() {
        const LiveCaptions captions = LiveCaptions::of(core);
        cache_.update({*captions.committedSegments,
                       *captions.liveLeadingSentences,
                       *captions.softCaptionSegments,
                       *captions.currentPartial,
                       {}},
                      true, nullptr);
        frame_ = cache_.frame();
        frame_.ghostTranslationText = preview.text;
        frame_.ghostTranslationSourceText = preview.source;
        return {frame_, captions, target, awaits};
    }
    void update() { output.update(picture()); }
    void finish() { output.finish(picture()); }

  private:
    LiveCaptionDisplayCache cache_{[] { return 0.0; }};
    LiveCaptionDisplayFrame frame_;

    static std::vector<UUID> ids(const CaptionCore::Rows& rows, std::size_t first,
                                 std::size_t last) {
        std::vector<UUID> all;
        for (std::size_t i = first; i <= last; ++i)
            all.push_back(rows[i].id);
        return all;
    }
};

} // namespace tessarune::testing
