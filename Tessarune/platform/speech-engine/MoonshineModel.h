#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "Tessarune/platform/speech-engine/MoonshineLibrary.h"

#include <memory>
#include <span>
#include <string>

namespace tessarune {

/// The sample rate of the engine's input.
inline constexpr int speechSampleRate = 16000;

/// A model in memory, ready to recognise: the engine's "transcriber". One thread at a time.
class MoonshineModel {
  public:
    struct Use {
        double passInterval; ///< seconds; with less new sound than this, the engine skips a pass
        bool decodesOpenLines = true;
    };

    /// Checks the model's files and loads them. Throws ModelDamaged before anything is loaded, or
    /// std::runtime_error with the engine's message.
    MoonshineModel(std::shared_ptr<const MoonshineLibrary> library, const StoredModel& stored,
                   Use use);
    ~MoonshineModel();
    MoonshineModel(const MoonshineModel&) = delete;
    MoonshineModel& operator=(const MoonshineModel&) = delete;

    const std::string& name() const { return name_; }

    /// Recognises a whole recording at once. The result is valid until the next call on this model.
    const moonshine::Transcript& transcribe(std::span<const float> samples, int sampleRate);

  private:
    friend class MoonshineStream;

    std::shared_ptr<const MoonshineLibrary> library_;
    std::string name_;
    moonshine::Calls::Handle handle_ = moonshine::unknown;
};

/// One stream of sound through a model; its times count from its creation. Confined to the thread
/// of its model. All operations throw std::runtime_error with the engine's message.
class MoonshineStream {
  public:
    explicit MoonshineStream(std::shared_ptr<MoonshineModel> model);
    ~MoonshineStream();
    MoonshineStream(const MoonshineStream&) = delete;
    MoonshineStream& operator=(const MoonshineStream&) = delete;

    /// Adds sound of `speechSampleRate`, one channel. Fast.
    void add(std::span<const float> samples);

    /// Recognises the added sound. Returns all lines since the creation of the stream, valid until
    /// the next call. Slow.
    const moonshine::Transcript& transcribe();

    /// Ends the sound: the next `transcribe` completes the last line.
    void stop();

  private:
    std::shared_ptr<MoonshineModel> model_;
    moonshine::Calls::Handle handle_;
};

} // namespace tessarune
