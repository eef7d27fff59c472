#include "Tessarune/platform/speech-engine/MoonshineModel.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <charconv>
#include <vector>

namespace tessarune {

namespace {

const moonshine::Transcript nothing{nullptr, 0};

/// Whether the model has the file that the engine needs to time words. If word times are requested
/// without it, the engine prints an error at each load.
bool timesWords(const StoredModel& model) {
    return std::any_of(model.files.begin(), model.files.end(), [](const ModelFile& file) {
        return file.name.find("_with_attention") != std::string::npos;
    });
}

std::uint32_t architectureOf(const StoredModel& model) {
    const auto detail = model.details.find("architecture");
    std::uint32_t number = 0;
    if (detail != model.details.end()) {
        const char* const end = detail->second.data() + detail->second.size();
        const auto [rest, failed] = std::from_chars(detail->second.data(), end, number);
        if (failed == std::errc() && rest == end)
            return number;
    }
    throw ModelDamaged(localized("%@: the type of the model was not recorded", {model.name}));
}

} // namespace

MoonshineModel::MoonshineModel(std::shared_ptr<const MoonshineLibrary> library,
                               const StoredModel& stored, Use use)
    : library_(std::move(library)), name_(stored.name) {
    ModelStore::verify(stored);
    const std::string interval = Text::shortest(use.passInterval);
    const std::vector<moonshine::Option> options{
        {"return_audio_data", "false"},
        {"transcription_interval", interval.c_str()},
        {"word_timestamps", timesWords(stored) ? "true" : "false"},
        {"decode_incomplete_lines", use.decodesOpenLines ? "true" : "false"}};
    handle_ = library_->check(library_->calls().loadTranscriberFromFiles(
                                  stored.folder.c_str(), architectureOf(stored), options.data(),
                                  options.size(), moonshine::interfaceVersion),
                              localized("The speech model %@ cannot be loaded", {name_}).c_str());
}

MoonshineModel::~MoonshineModel() {
    if (handle_ >= 0)
        library_->calls().freeTranscriber(handle_);
}

const moonshine::Transcript& MoonshineModel::transcribe(std::span<const float> samples,
                                                        int sampleRate) {
    moonshine::Transcript* transcript = nullptr;
    library_->check(library_->calls().transcribeWithoutStreaming(
                        handle_, samples.data(), samples.size(), sampleRate, 0, &transcript),
                    localizationKey("The speech engine could not transcribe a recording"));
    return transcript != nullptr ? *transcript : nothing;
}

MoonshineStream::MoonshineStream(std::shared_ptr<MoonshineModel> model)
    : model_(std::move(model)),
      handle_(model_->library_->check(model_->library_->calls().createStream(model_->handle_, 0),
                                      localizationKey("The speech engine cannot open a stream"))) {
    const std::int32_t started = model_->library_->calls().startStream(model_->handle_, handle_);
    if (started < 0)
        model_->library_->calls().freeStream(model_->handle_, handle_);
    model_->library_->check(started, localizationKey("The speech engine does not start"));
}

MoonshineStream::~MoonshineStream() {
    model_->library_->calls().freeStream(model_->handle_, handle_);
}

void MoonshineStream::add(std::span<const float> samples) {
    if (samples.empty())
        return;
    model_->library_->check(
        model_->library_->calls().addAudioToStream(model_->handle_, handle_, samples.data(),
                                                   samples.size(), speechSampleRate, 0),
        localizationKey("The speech engine does not accept sound"));
}

const moonshine::Transcript& MoonshineStream::transcribe() {
    moonshine::Transcript* transcript = nullptr;
    model_->library_->check(
        model_->library_->calls().transcribeStream(model_->handle_, handle_, 0, &transcript),
        localizationKey("The speech engine failed"));
    return transcript != nullptr ? *transcript : nothing;
}

void MoonshineStream::stop() {
    model_->library_->check(model_->library_->calls().stopStream(model_->handle_, handle_),
                            localizationKey("The speech engine does not stop"));
}

} // namespace tessarune
