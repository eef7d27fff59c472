#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "Tessarune/platform/speech-engine/MoonshineLibrary.h"

#include <memory>
#include <span>
#include <string>

namespace tessarune {

/// What the engine is fed with.
inline constexpr int speechSampleRate = 16000;

/// A model in memory, ready to recognise: the engine's "transcriber". One thread at a time.
class MoonshineModel {
  public:
    struct Use {
        double passInterval; ///< seconds of sound below which the engine need not look again
        bool decodesOpenLines = true;
    };

    /// Checks the model's files and loads them. Throws ModelDamaged before anything is loaded, or
    /// std::runtime_error with the engine's words.
    MoonshineModel(std::shared_ptr<const MoonshineLibrary> library, const StoredModel& stored,
                   Use use);
    ~MoonshineModel();
    MoonshineModel(const MoonshineModel&) = delete;
    MoonshineModel& operator=(const MoonshineModel&) = delete;

    const std::string& name() const { return name_; }

    /// Recognises a whole recording at once. The result lives until the next call on this model.
    const moonshine::Transcript& transcribe(std::span<const float> samples, int sampleRate);

  private:
    friend class MoonshineStream;

    std::shared_ptr<const MoonshineLibrary> library_;
    std::string name_;
    moonshine::Calls::Handle handle_ = moonshine::unknown;
};

/// Sound on its way through a model, from the moment at which the stream is made. Confined to the
/// thread of its model. Every operation throws std::runtime_error with the engine's words.
class MoonshineStream {
  public:
    explicit MoonshineStream(std::shared_ptr<MoonshineModel> model);
    ~MoonshineStream();
    MoonshineStream(const MoonshineStream&) = delete;
    MoonshineStream& operator=(const MoonshineStream&) = delete;

    /// Takes sound of `speechSampleRate`, one channel. Quick.
    void add(std::span<const float> samples);

    /// Recognises what has been added: all lines since the stream was made. They live until the
    /// next call. Takes as long as it takes.
    const moonshine::Transcript& transcribe();

    /// No more sound: `transcribe` then completes the last line.
    void stop();

  private:
    std::shared_ptr<MoonshineModel> model_;
    moonshine::Calls::Handle handle_;
};

} // namespace tessarune
