#include "Terminal/EventLogFile.h"

#include "Terminal/RunFailure.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/SystemErrors.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace tessarune {

namespace fs = std::filesystem;

namespace {

/// False for pipes and character devices, which have no contents that could be lost.
bool hasContents(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error) || fs::is_block_file(path, error);
}

} // namespace

void EventLogFile::fail(const std::string& why) const {
    throw RunFailure(ExitStatus::cannotWrite,
                     localized("cannot write the event log %@: %@", {path_.string(), why}));
}

void EventLogFile::check(const std::optional<fs::path>& source) const {
    std::error_code error;
    // Compares files instead of paths, because one file may have two names.
    if (source && fs::equivalent(*source, path_, error))
        fail(localized("it is the sound file to be captioned"));
    const bool exists = fs::exists(path_, error);
    if (hasContents(path_) && !overwrites_)
        fail(localized("it already exists; --overwrite replaces it"));
    const fs::path folder = path_.has_parent_path() ? path_.parent_path() : fs::path(".");
    const int mode = exists ? W_OK : W_OK | X_OK;
    if (fs::is_directory(path_, error))
        fail(systemMessage(EISDIR));
    if (!exists && !fs::is_directory(folder, error))
        fail(localized("there is no folder %@", {folder.string()}));
    if (::access((exists ? path_ : folder).c_str(), mode) != 0)
        fail(exists ? systemMessage(errno)
                    : localized("the folder %@ is read-only", {folder.string()}));
}

EventLogFile::~EventLogFile() {
    std::error_code error;
    if (isUnusedNewFile_)
        fs::remove(path_, error); // at worst, an empty log stays
}

void EventLogFile::open() {
    std::error_code error;
    const bool isNew = !fs::exists(fs::symlink_status(path_, error));
    const bool mayExist = overwrites_ || (fs::exists(path_, error) && !hasContents(path_));
    writer_ = ASREventLog::Writer::open(host_, path_,
                                        mayExist ? LineLogWriter::Existing::isAppendedTo
                                                 : LineLogWriter::Existing::isRefused);
    if (!writer_)
        fail(errno == ENXIO ? localized("no program reads this pipe") : systemMessage(errno));
    isUnusedNewFile_ = isNew;
}

void EventLogFile::begin() {
    isUnusedNewFile_ = false;
    std::error_code error;
    if (fs::is_regular_file(path_, error))
        fs::resize_file(path_, 0, error);
    if (error)
        fail(systemMessage(error.value()));
}

void EventLogFile::append(const ASREvent& event, double t) {
    if (writer_)
        writer_->append(event, t);
}

void EventLogFile::close() {
    if (!writer_)
        return;
    writer_->close();
    if (!writer_->hasLostLines())
        return;
    const std::string lost = localized("part of it was lost");
    const int error = writer_->writeError();
    const bool isReasonKnown = error != 0 && error != EAGAIN; // EAGAIN: the reader stopped reading
    fail(isReasonKnown ? localized("%@: %@", {lost, systemMessage(error)}) : lost);
}

} // namespace tessarune
