#pragma once

#include "Tessarune/refinement/SpeechAnalyzerFileRecords.h"
#include "Tessarune/refinement/SpeechAnalyzerFileTranscriptionResult.h"
#include "Tessarune/speech/SpeechTranscriber.h"
#include "TessaruneCore/host/Host.h"

#include <string>
#include <vector>

namespace tessarune {

/// Splits the results of a recording into sentences, one result after the other. One thread.
class FileSegmentCollector {
  public:
    using Segment = SpeechAnalyzerFileTranscriptionResult::Segment;

    /// `host` is the clock of the diagnostic records; it must outlive the collector.
    FileSegmentCollector(Host& host, SpeechTranscriberOptions options,
                         SpeechAnalyzerFileTranscriberDiagnostics diagnostics);

    void add(const SpeechResult& result);

    struct Collected {
        std::vector<Segment> segments;
        bool usedVolatileFallback = false; ///< no final results: `segments` are volatile
    };
    /// All sentences, without repeated ones.
    Collected collected() const;

  private:
    std::vector<Segment> split(const SpeechResult& result, const std::string& text) const;

    Host& host_;
    const SpeechTranscriberOptions options_;
    const SpeechAnalyzerFileTranscriberDiagnostics diagnostics_;
    std::int64_t sequence_ = 0;
    std::vector<Segment> final_;
    std::vector<Segment> volatile_; ///< of the latest volatile result
};

/// The sentence without case and punctuation: recognisers change both when they repeat a sentence.
std::string normalizedSegmentKey(std::string_view text);

} // namespace tessarune
