#include "Tessarune/platform/model-store/ProgramPlaces.h"

#include "TessaruneCore/text/Localization.h"

#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace tessarune::ProgramPlaces {

namespace {

using Path = std::filesystem::path;

/// The possible folders, best first. `variable` is the environment variable with which a developer
/// or a package puts another folder first. `installed` is relative to the program's folder, `built`
/// to the folder "build" of the sources.
std::vector<Path> places(const char* variable, const char* installed, const char* built) {
    std::vector<Path> found;
    if (const char* value = std::getenv(variable); value != nullptr && *value != '\0')
        found.emplace_back(value);
    std::error_code failed;
    const Path program = std::filesystem::read_symlink("/proc/self/exe", failed);
    if (!failed) {
        const Path folder = program.parent_path();
        found.push_back((folder / installed).lexically_normal());
        // From build/<preset>/bin to build, where scripts/setup unpacks its downloads.
        found.push_back((folder / "../.." / built).lexically_normal());
    }
    return found;
}

} // namespace

std::vector<Path> engineFolders() {
    return places("TESSARUNE_ENGINES", TESSARUNE_LIBDIR_FROM_BIN "/tessarune", "engines/speech");
}

std::vector<Path> modelFolders() {
    return places("TESSARUNE_MODELS", TESSARUNE_DATADIR_FROM_BIN "/tessarune/models", "models");
}

Path sampleSpeech() {
    const char* const name = "two_cities.wav";
    const std::vector<Path> folders = places(
        "TESSARUNE_SAMPLES", TESSARUNE_DATADIR_FROM_BIN "/tessarune/samples", "engines/samples");
    for (const Path& folder : folders) {
        Path file = folder / name;
        if (std::filesystem::exists(file))
            return file;
    }
    throw std::runtime_error(
        localized("The sample speech that comes with Tessarune is missing: %@. Captions of other "
                  "sound do not need it.",
                  {folders.empty() ? name : (folders.front() / name).string()}));
}

} // namespace tessarune::ProgramPlaces
