#include "Tessarune/ui/desktop/DesktopListening.h"

#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <utility>

namespace tessarune {

namespace {

using Topic = DesktopNotices::Topic;

constexpr double quietWaitSeconds = 1; // only a longer wait is worth a message
constexpr std::size_t mostNames = 3;   // a message names at most so many files

} // namespace

DesktopListening::DesktopListening(Environment environment) : environment_(std::move(environment)) {
    environment_.sound.onFileEnded = [this](const std::string& problem) { fileEnded(problem); };
    observations_.follow(store().view().isListening, [this] {
        if (!isListening() && !wish_) // a stop after silence, or a start that failed
            dropFollowing();
        updateWaiting();
    });
    observations_.follow(store().view().startsAgain, [this] { updateWaiting(); });
}

void DesktopListening::connect() {
    if (!isConnecting_)
        spawn(Executor::main(environment_.host), connectToSound());
}

Task<void> DesktopListening::connectToSound() {
    isConnecting_ = true;
    environment_.notices.tell(Topic::sound, ""); // removes the notice of the last attempt
    Task<std::string> connecting = environment_.sound.connectOrSay();
    const std::string problem = co_await connecting;
    isConnecting_ = false;
    hasSound_ = problem.empty();
    const auto start = std::exchange(pendingStart_, std::nullopt);
    if (hasSound_) {
        environment_.notices.tell(Topic::sound, problem);
        store().refreshInputDevices();
        if (start && !isEnding_)
            store().startListening(*start);
    } else if (start && environment_.sound.isFile() && !following_.empty()) {
        environment_.notices.tell(problem);
        want(nextFile());
    } else {
        environment_.notices.tell(Topic::sound, problem);
        if (environment_.sound.isFile())
            listenToComputer(computerSource_);
    }
    updateWaiting();
}

/// Tells the user after a moment if the file is still not open. It is then usually a pipe, which
/// opens only when something is written to it.
Task<void> DesktopListening::tellOfWaiting() {
    Task<bool> waiting = sleep(Executor::main(environment_.host), quietWaitSeconds);
    co_await waiting;
    if (pendingStart_ && isConnecting_ && environment_.sound.isFile())
        waitingText_ = localized("Waiting for sound from %@.", {*environment_.sound.fileName});
    updateWaiting();
}

/// Whether a start will take effect later.
bool DesktopListening::isStartQueued() {
    return pendingStart_ || wantsStart() || *store().view().startsAgain ||
           (isLookingAtFile() && !isListening());
}

/// Publishes what a start waits for. Call whenever this may have changed.
void DesktopListening::updateWaiting() {
    std::optional<std::string> waiting;
    if (isStartQueued())
        waiting = pendingStart_ ? waitingText_ : std::string();
    if (*waiting_ != waiting)
        waiting_ = std::move(waiting);
}

void DesktopListening::start(const LiveSessionControlTrigger& trigger) {
    if (isEnding_ || *store().view().startsAgain)
        return;
    const bool isSaving = store().isStopping();
    if (isSaving && trigger.userInitiated && !wantsStart())
        store().startListening(trigger); // only tells the user that saving continues
    else if (wish_)
        wish_->starts = true;
    else if (isSaving)
        want({.file = {}, .isAnother = false, .starts = true});
    else if (!isListening() && !pendingStart_ && !isLookingAtFile() &&
             environment_.hasSpeechModel())
        startWithSound(trigger);
    updateWaiting();
}

void DesktopListening::startWithSound(const LiveSessionControlTrigger& trigger) {
    // Replaces the notice of an earlier start.
    environment_.notices.tell(Topic::file, followingText(), DesktopNotices::Kind::news);
    if (hasSound_)
        return store().startListening(trigger);
    pendingStart_ = trigger;
    waitingText_.clear();
    connect();
    if (environment_.sound.isFile())
        spawn(Executor::main(environment_.host), tellOfWaiting());
}

void DesktopListening::toggle(const LiveSessionControlTrigger& trigger) {
    const bool isStopping = *store().view().sessionPhase == LiveSessionPhase::stopping;
    if (isListening() || isStartQueued())
        stop(trigger);
    else if (isStopping && trigger.userInitiated)
        store().toggleListening(trigger); // only logs the command
    else
        start(trigger);
}

void DesktopListening::stop(const LiveSessionControlTrigger& trigger) {
    look_ = 0;
    if (!std::exchange(following_, {}).empty())
        environment_.notices.tell(Topic::file, "");
    if (wish_)
        wish_ = Wish{.file = {}, .source = wish_->source, .isAnother = wish_->isAnother};
    if (std::exchange(pendingStart_, std::nullopt) && environment_.sound.isFile())
        listenToComputer(computerSource_);
    store().stopListening(trigger);
    updateWaiting();
}

void DesktopListening::captionFiles(std::vector<std::filesystem::path> files) {
    if (files.empty())
        return;
    look_ = ++lastLook_;
    updateWaiting();
    spawn(Executor::main(environment_.host), lookAt(std::move(files), look_));
}

/// Searches for the first playable file. Uses a separate queue, because the disk may be slow. The
/// running session continues during the search, and is stopped only if such a file is found.
Task<void> DesktopListening::lookAt(std::vector<std::filesystem::path> files, unsigned look) {
    Host& host = environment_.host;
    const auto queue = host.serialQueue("Tessarune.file.look", QueuePriority::userInitiated);
    std::string problem;
    auto first = files.begin();
    for (; first != files.end(); ++first) {
        problem = co_await runOn(Executor::queue(host, queue),
                                 [&] { return DesktopSound::problemOf(*first); });
        if (look != look_)
            co_return;
        if (problem.empty())
            break;
        if (first + 1 != files.end())
            environment_.notices.tell(problem);
    }
    look_ = 0;
    if (first != files.end()) {
        dropFollowing();
        following_.assign(first + 1, files.end());
        want({.file = *first, .starts = true});
        co_return;
    }
    environment_.notices.tell(Topic::file, problem);
    if (!hasSound_)
        connect();
    updateWaiting();
}

/// The text that tells how many files follow the current one; empty if none does.
std::string DesktopListening::followingText() const {
    return following_.empty()
               ? std::string()
               : localized("接下来还有 %lld 个文件。", {std::to_string(following_.size())});
}

/// The next file, or the computer if there is none.
DesktopListening::Wish DesktopListening::nextFile() {
    if (following_.empty())
        return {};
    Wish wish{.file = std::move(following_.front()), .starts = true};
    following_.pop_front();
    return wish;
}

/// Drops the files that would follow, and tells the user which or how many they are.
void DesktopListening::dropFollowing() {
    const auto left = std::exchange(following_, {});
    if (left.empty())
        return;
    std::vector<std::string> names;
    names.reserve(left.size());
    for (const std::filesystem::path& file : left)
        names.push_back(DesktopSound::shownName(file));
    environment_.notices.tell(Topic::file, ""); // removes the notice of how many files follow
    environment_.notices.tell(
        names.size() > mostNames
            ? localized("还有 %lld 个文件没有生成字幕。", {std::to_string(names.size())})
            : localized("Not captioned: %@.", {Text::joined(names, localized(", "))}),
        DesktopNotices::Kind::news);
}

void DesktopListening::selectSource(const AudioSource& source) {
    if (!wish_ && !isLookingAtFile() && !environment_.sound.isFile())
        return store().selectSource(source);
    const bool restarts = isListening() || isStartQueued();
    look_ = 0;
    dropFollowing();
    want({.file = {}, .source = source, .starts = restarts});
}

void DesktopListening::fileEnded(const std::string& problem) {
    if (following_.empty())
        environment_.notices.tell(Topic::file, problem);
    else
        environment_.notices.tell(problem); // no topic: the next file's notice must not replace it
    if (!wish_)
        want(nextFile());
    else
        wish_->isAnother = true; // so that the file does not play again
}

/// Fulfils the wish after the previous session is saved. Replaces a wish that still waits.
void DesktopListening::want(Wish wish) {
    pendingStart_ = std::nullopt;
    if (!std::exchange(wish_, std::move(wish)))
        spawn(Executor::main(environment_.host), fulfilWish());
    updateWaiting();
}

Task<void> DesktopListening::fulfilWish() {
    Task<void> stopping = environment_.session.stop();
    co_await stopping;
    const Wish wish = *std::exchange(wish_, std::nullopt);
    if (!isEnding_ && wish.isAnother)
        changeSound(wish);
    if (wish.starts)
        start(wish.file || !wish.isAnother ? LiveSessionControlTrigger::programmatic()
                                           : LiveSessionControlTrigger::sourceSwitch());
    updateWaiting();
}

/// Call only while no session runs.
void DesktopListening::changeSound(const Wish& wish) {
    if (wish.file) {
        if (!environment_.sound.isFile())
            computerSource_ = *store().view().selectedSource;
        store().selectSource(AudioSource::systemAudio()); // the file plays as the system's audio
        environment_.session.setForgetsPermissions(true);
        environment_.sound.playFile(*wish.file);
        hasSound_ = false;
    } else if (environment_.sound.isFile()) {
        listenToComputer(wish.source.value_or(computerSource_));
    } else if (wish.source) {
        store().selectSource(*wish.source);
    }
}

/// Call only while no session runs.
void DesktopListening::listenToComputer(const AudioSource& source) {
    environment_.sound.listenToComputer();
    environment_.session.setForgetsPermissions(false);
    store().selectSource(source);
    hasSound_ = environment_.sound.state() == SoundServerState::connected;
}

} // namespace tessarune
