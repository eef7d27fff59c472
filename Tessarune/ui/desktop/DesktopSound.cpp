#include "Tessarune/ui/desktop/DesktopSound.h"

#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/media/SwresampleConverter.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/TextColumns.h"

#include <exception>
#include <utility>

namespace tessarune {

namespace {

Task<std::string> outcomeOf(Task<void> connecting) {
    std::string problem;
    try {
        co_await connecting;
    } catch (const SoundServerError& error) {
        problem = localized("There is no sound server: %@", {error.what()});
    } catch (const std::exception& error) {
        problem = error.what();
    }
    co_return problem;
}

std::string textOf(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& error) {
        return localized("The sound was interrupted: %@", {error.what()});
    }
}

} // namespace

std::string DesktopSound::problemOf(const std::filesystem::path& file) {
    std::error_code unknown;
    const auto kind = std::filesystem::status(file, unknown).type();
    // A pipe or a terminal is not checked, because the data that a check reads would be missing
    // from the sound.
    if (kind == std::filesystem::file_type::fifo || kind == std::filesystem::file_type::character ||
        file == "-" || file == "/dev/stdin")
        return {};
    try {
        openFFmpegMediaFile(file);
        return {};
    } catch (const std::exception& error) {
        return error.what();
    }
}

std::string DesktopSound::shownName(const std::filesystem::path& file) {
    return Text::printableLine(file.filename().string());
}

void DesktopSound::playFile(const std::filesystem::path& file) {
    const FileSoundServer::Media media{openAwaitedFFmpegMediaFile, makeSwresampleConverter};
    const unsigned turn = ++turn_;
    file_ = std::make_unique<FileSoundServer>(host_, media, file, FileSoundServer::Pace::realTime(),
                                              [this, turn](const std::exception_ptr& failure) {
                                                  if (turn == turn_ && onFileEnded)
                                                      onFileEnded(failure ? textOf(failure)
                                                                          : std::string());
                                              });
    fileName = shownName(file);
}

void DesktopSound::listenToComputer() {
    file_.reset();
    ++turn_;
    fileName = std::string();
}

Task<std::string> DesktopSound::connectOrSay() {
    for (;;) {
        const unsigned turn = turn_;
        Task<std::string> trying = outcomeOf(connect(Executor::main(host_)));
        std::string problem = co_await trying;
        if (turn == turn_)
            co_return problem;
    }
}

Task<void> DesktopSound::connect(Executor resumeOn) {
    return heard().connect(std::move(resumeOn));
}

SoundDevices DesktopSound::devices() const {
    SoundDevices all = computer_.devices();
    if (!file_)
        return all;
    SoundDevices file = file_->devices();
    file.inputs = std::move(all.inputs);
    file.defaultInputID = std::move(all.defaultInputID);
    return file;
}

SoundServer::Subscription DesktopSound::observe(Executor executor, std::function<void()> onChange) {
    return heard().observe(std::move(executor), std::move(onChange));
}

Task<std::unique_ptr<RecordStream>>
DesktopSound::openRecordStream(RecordRequest request, RecordHandlers handlers, Executor executor) {
    return heard().openRecordStream(std::move(request), std::move(handlers), std::move(executor));
}

Task<std::unique_ptr<PlaybackStream>> DesktopSound::openPlaybackStream(PlaybackRequest request,
                                                                       Executor executor) {
    return computer_.openPlaybackStream(std::move(request), std::move(executor));
}

} // namespace tessarune
