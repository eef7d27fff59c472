#include "Terminal/RunFailure.h"

#include "Tessarune/audio/AudioConverter.h"
#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/audio/RecognitionPermissionGate.h"
#include "Tessarune/audio/SoundServer.h"
#include "TessaruneCore/LocalizedError.h"
#include "TessaruneCore/text/Localization.h"

#include <system_error>

namespace tessarune {

RunFailure RunFailure::ofModel(const std::string& problem) {
    return {ExitStatus::noModel,
            problem + "\n" +
                localized("--model list shows the speech models; --model NAME downloads one, or "
                          "replaces a damaged one.")};
}

RunFailure RunFailure::ofStart(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const MediaFileError& error) {
        return {ExitStatus::unreadableFile, error.what()};
    } catch (const AudioConversionError& error) {
        return {ExitStatus::unreadableFile, error.what()};
    } catch (const SoundServerError& error) {
        return {ExitStatus::noSoundServer, error.what()};
    } catch (const LocalizedError& error) { // from the permission gate, or a failed capture
        const bool refused = error.domain() == RecognitionPermissionGate::errorDomain;
        return {refused ? ExitStatus::notAllowed : ExitStatus::noSoundServer, error.what()};
    } catch (const std::system_error& error) { // from the disk
        return {ExitStatus::cannotWrite, error.what()};
    } catch (const std::exception& error) { // from the recogniser
        return ofModel(error.what());
    }
}

} // namespace tessarune
