#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/MicrophoneCapture.h"
#include "Tessarune/audio/SystemAudioCapture.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/speech/SpeechAnalyzerTranscriber.h"
#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/recognition/ASREventLog.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace tessarune {

/// One run of captions: sound goes from the capture to the recogniser, events from there to the
/// core. Main queue, except where sound and results arrive on their own.
class LiveCaptions final : public SystemAudioCaptureDelegate,
                           public std::enable_shared_from_this<LiveCaptions> {
  public:
    /// The settings and all that is named by reference in `platform` outlive the run.
    static std::shared_ptr<LiveCaptions> make(SpeechPlatform platform, SoundServer& sound,
                                              const AppSettings& settings);

    /// Called on the main queue: something in the core changed; a word to the user; the recogniser
    /// gave up.
    std::function<void()> onChange;
    std::function<void(std::string)> onStatus;
    std::function<void(std::string)> onError;

    CaptionCore core;

    /// Writes the events of the run there from now on. False if the file cannot be created.
    bool writeEventLog(const std::filesystem::path& path);

    /// Loads the model and makes the recogniser ready. Throws with a text that can be shown.
    Task<void> startRecogniser(std::string locale);
    /// Then opens the source. Throws with a text that can be shown.
    Task<void> startCapture(AudioSource source);

    /// Ends the capture, waits (bounded) for the last words and fixes what is still live.
    Task<void> finish();

    /// Seconds of sound that the engine has taken so far. Any thread.
    double takenSeconds() const;

  private:
    LiveCaptions(SpeechPlatform platform, SoundServer& sound, const AppSettings& settings);

    void makeTranscriber(const std::string& locale);
    void take(const ASREvent& event);
    void say(const CaptureEvent& event);

    void systemAudioCapture(SystemAudioCapture& capture, AudioBufferPtr didOutput) override;
    void systemAudioCaptureDidMeasure(SystemAudioCapture& capture, double level) override;
    void systemAudioCaptureDidStaySilent(SystemAudioCapture& capture) override;
    void systemAudioCaptureDidChange(SystemAudioCapture& capture,
                                     const CaptureEvent& event) override;

    SpeechPlatform platform_;
    SoundServer& sound_;
    std::unique_ptr<ASREventLog::Writer> eventLog_;
    std::shared_ptr<SpeechAnalyzerTranscriber> transcriber_; // set before any sound comes
    std::shared_ptr<SystemAudioCapture> system_;
    std::shared_ptr<MicrophoneCapture> microphone_;
};

} // namespace tessarune
