#include "Terminal/RunFailure.h"

#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/audio/RecognitionPermissionGate.h"
#include "Tessarune/audio/SoundServer.h"
#include "TessaruneCore/LocalizedError.h"
#include "TessaruneCore/text/Localization.h"

#include <system_error>

namespace tessarune {

RunFailure RunFailure::ofStart(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const MediaFileError& error) {
        return {ExitStatus::unreadableFile, error.what()};
    } catch (const SoundServerError& error) {
        return {ExitStatus::noSoundServer, error.what()};
    } catch (const LocalizedError& error) {
        const bool refused = error.domain() == RecognitionPermissionGate::errorDomain;
        return {refused ? ExitStatus::notAllowed : ExitStatus::noSoundServer, error.what()};
    } catch (const std::system_error& error) {
        return {ExitStatus::cannotWrite, error.what()};
    } catch (const std::exception& error) {
        return {ExitStatus::noModel,
                std::string(error.what()) + "\n" +
                    localized("--model list shows the speech models; --model NAME downloads one, "
                              "or replaces a damaged one.")};
    }
}

} // namespace tessarune
