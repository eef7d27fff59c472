#include "Tessarune/platform/speech-engine/MoonshineLibrary.h"

#include "Tessarune/platform/model-store/ProgramPlaces.h"
#include "TessaruneCore/host/Mutex.h"
#include "TessaruneCore/text/Localization.h"

#include <dlfcn.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

namespace tessarune {

namespace {

constexpr const char* fileName = "libmoonshine.so";

/// By default the engine's runtime starts one thread per core, and idle threads spin: a pass then
/// takes nearly twice the processor time and is hardly faster. The engine reads this variable when
/// it loads a model. It is set before `main`, when no other thread can be reading the environment;
/// a value set by the user is kept.
[[maybe_unused]] const bool runsOnOneThread = setenv("MOONSHINE_ORT_SINGLE_THREAD", "1", 0) == 0;

template <typename Function>
void resolve(void* library, const char* name, Function& slot) {
    slot = reinterpret_cast<Function>(dlsym(library, name));
    if (slot == nullptr)
        throw std::runtime_error(localized("The speech engine has no function %@.", {name}));
}

moonshine::Calls resolveAll(void* library) {
    moonshine::Calls calls{};
    // Checked first: another version may lack the other functions.
    resolve(library, "moonshine_get_version", calls.getVersion);
    if (const std::int32_t version = calls.getVersion(); version != moonshine::interfaceVersion)
        throw std::runtime_error(
            localized("The speech engine has interface version %lld; version %lld is needed.",
                      {std::to_string(version), std::to_string(moonshine::interfaceVersion)}));
    resolve(library, "moonshine_error_to_string", calls.errorToString);
    resolve(library, "moonshine_free_buffer", calls.freeBuffer);
    resolve(library, "moonshine_load_transcriber_from_files", calls.loadTranscriberFromFiles);
    resolve(library, "moonshine_free_transcriber", calls.freeTranscriber);
    resolve(library, "moonshine_transcribe_without_streaming", calls.transcribeWithoutStreaming);
    resolve(library, "moonshine_create_stream", calls.createStream);
    resolve(library, "moonshine_free_stream", calls.freeStream);
    resolve(library, "moonshine_start_stream", calls.startStream);
    resolve(library, "moonshine_stop_stream", calls.stopStream);
    resolve(library, "moonshine_transcribe_add_audio_to_stream", calls.addAudioToStream);
    resolve(library, "moonshine_transcribe_stream", calls.transcribeStream);
    resolve(library, "moonshine_get_stt_dependencies", calls.getDependencies);
    return calls;
}

} // namespace

std::shared_ptr<const MoonshineLibrary> MoonshineLibrary::shared() {
    static Mutex mutex;
    static std::shared_ptr<const MoonshineLibrary> library;
    const MutexLock lock(mutex);
    if (!library)
        library = open(ProgramPlaces::engineFolders());
    return library;
}

std::shared_ptr<const MoonshineLibrary>
MoonshineLibrary::open(const std::vector<std::filesystem::path>& folders) {
    std::string searched;
    for (const auto& folder : folders) {
        const std::filesystem::path file = folder / fileName;
        searched += (searched.empty() ? "" : ", ") + file.string();
        std::error_code ignored;
        if (!std::filesystem::exists(file, ignored))
            continue;
        // RTLD_LOCAL: libraries bundled with the engine must not clash with ours.
        void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        if (library == nullptr)
            throw std::runtime_error(
                localized("The speech engine cannot be loaded: %@", {dlerror()}));
        return std::make_shared<const MoonshineLibrary>(resolveAll(library));
    }
    throw std::runtime_error(
        localized("The speech engine was not found; looked for %@.", {searched}));
}

std::int32_t MoonshineLibrary::check(std::int32_t result, std::string_view problem) const {
    if (result >= 0)
        return result;
    const char* words = calls_.errorToString(result);
    throw std::runtime_error(
        localized("%@: %@", {localized(problem),
                             words != nullptr ? words : "error " + std::to_string(result)}));
}

std::string MoonshineLibrary::dependencies(moonshine::Architecture architecture,
                                           bool withWordTimes) const {
    const std::string number = std::to_string(static_cast<std::uint32_t>(architecture));
    const std::array<moonshine::Option, 2> options{
        {{"model_arch", number.c_str()}, {"word_timestamps", withWordTimes ? "true" : "false"}}};
    char* json = nullptr;
    check(calls_.getDependencies("en", options.data(), options.size(), &json),
          localizationKey("The speech engine lists no files for this model"));
    if (json == nullptr)
        return {};
    std::string text(json);
    calls_.freeBuffer(json);
    return text;
}

} // namespace tessarune
