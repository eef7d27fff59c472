#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/model-store/ProgramPlaces.h"
#include "Tessarune/platform/speech-engine/SpeechModels.h"
#include "TessaruneCore/text/JSON.h"
#include "bench/quality/CaptionTrace.h"
#include "bench/quality/DisplayedWords.h"
#include "bench/quality/simulated/SimulatedRun.h"

#include <sysexits.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

/// The part of bench/quality/run that needs C++: see `usage`. Prints JSON.

namespace tessarune {
namespace {

constexpr const char* usage =
    "bench-quality captions FILE FROM   the words of what tessarune-terminal --json printed, from\n"
    "                                   this moment (seconds since 1970) of the sound on\n"
    "bench-quality batch FILE FROM      what the smallest model makes of a recording at once, "
    "from\n"
    "                                   this second on; 16 kHz, one channel\n"
    "bench-quality simulated FILE FROM  the words of the recogniser's results on simulated time\n";

JSON::Ordered asJSON(const WordHistory& history) {
    JSON::Ordered words = JSON::Ordered::array();
    for (const TracedWord& word : history.words) {
        words.push_back({{"text", word.text},
                         {"shownAt", word.shownAt},
                         {"changedAt", word.changedAt},
                         {"settledAt", word.settledAt.value_or(word.changedAt)},
                         {"isUnstable", word.isUnstable}});
    }
    return {{"words", words}, {"erased", history.erased}};
}

JSON::Ordered captions(const std::string& path, double from) {
    std::ifstream file(path);
    CaptionTrace trace(from);
    for (std::string line; std::getline(file, line);)
        trace.read(line);
    return asJSON(trace.finish());
}

JSON::Ordered simulated(ModelStore& models, const std::string& path, double from) {
    const SimulatedRun heard(models, path, from);
    JSON::Ordered found = asJSON(heard.history());
    found["processor"] = heard.processorSeconds();
    return found;
}

std::vector<float> soundOf(const std::string& path) {
    const auto file = openFFmpegMediaFile(path);
    if (file->format() != AudioFormat{speechSampleRate, 1})
        throw std::runtime_error(path + " is not of 16 kHz and one channel");
    std::vector<float> samples;
    while (const AudioBufferPtr block = file->read())
        samples.insert(samples.end(), block->samples.begin(), block->samples.end());
    return samples;
}

JSON::Ordered batch(ModelStore& store, const std::string& path, double from) {
    constexpr double passInterval = 0.2; // without effect on a batch
    MoonshineModel model(MoonshineLibrary::shared(),
                         store.find(ModelKind::speech, SpeechModels::smallest).value(),
                         MoonshineModel::Use{passInterval});
    const moonshine::Transcript& transcript = model.transcribe(soundOf(path), speechSampleRate);
    JSON::Ordered words = JSON::Ordered::array();
    for (std::uint64_t i = 0; i < transcript.lineCount; ++i) {
        const moonshine::Line& line = transcript.lines[i];
        if (static_cast<double>(line.start) < from)
            continue;
        for (const std::string& word : DisplayedWords::asSpoken(line.text))
            words.push_back({{"text", word}});
    }
    return {{"words", words}};
}

int answer(const std::vector<std::string>& arguments) {
    try {
        const double from = std::stod(arguments.at(2));
        const std::string& path = arguments.at(1);
        PosixFileSystem files;
        // This program stores no models, so the folder for new models need not exist.
        ModelStore models(files, "/nonexistent", ProgramPlaces::modelFolders());
        const auto found = arguments.at(0) == "batch"       ? batch(models, path, from)
                           : arguments.at(0) == "simulated" ? simulated(models, path, from)
                                                            : captions(path, from);
        std::printf("%s\n", found.dump().c_str());
        return EXIT_SUCCESS;
    } catch (const std::logic_error&) {
        std::fprintf(stderr, "%s", usage);
        return EX_USAGE;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench-quality: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

} // namespace
} // namespace tessarune

int main(int argc, char** argv) {
    return tessarune::answer({argv + 1, argv + argc});
}
