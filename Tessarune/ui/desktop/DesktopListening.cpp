#include "Tessarune/ui/desktop/DesktopListening.h"

#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Localization.h"

#include <utility>

namespace tessarune {

namespace {

using Topic = DesktopNotices::Topic;

constexpr double quietWaitSeconds = 1; // only a longer wait is worth a message

} // namespace

DesktopListening::DesktopListening(Environment environment) : environment_(std::move(environment)) {
    environment_.sound.onFileEnded = [this](const std::string& problem) { fileEnded(problem); };
}

void DesktopListening::connect() {
    if (!isConnecting_)
        spawn(Executor::main(environment_.host), connectToSound());
}

Task<void> DesktopListening::connectToSound() {
    isConnecting_ = true;
    environment_.notices.tell(Topic::sound, ""); // removes that of the last attempt
    Task<std::string> connecting = environment_.sound.connectOrSay();
    const std::string problem = co_await connecting;
    isConnecting_ = false;
    hasSound_ = problem.empty();
    environment_.notices.tell(Topic::sound, problem);
    const auto start = takePendingStart();
    if (hasSound_) {
        store().refreshInputDevices();
        if (start && !isEnding_)
            store().startListening(*start);
    } else if (environment_.sound.isFile()) {
        listenToComputer(computerSource_);
    }
}

/// Tells the user after a moment that a file still has no sound: a file opens at once, but a pipe
/// opens only when something is written to it.
Task<void> DesktopListening::tellOfWaiting() {
    Task<bool> waiting = sleep(Executor::main(environment_.host), quietWaitSeconds);
    co_await waiting;
    if (pendingStart_ && isConnecting_ && environment_.sound.isFile())
        waiting_ = localized("Waiting for sound from %@.", {*environment_.sound.fileName});
}

std::optional<LiveSessionControlTrigger> DesktopListening::takePendingStart() {
    waiting_ = std::nullopt;
    return std::exchange(pendingStart_, std::nullopt);
}

void DesktopListening::start(const LiveSessionControlTrigger& trigger) {
    if (isEnding_)
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
}

void DesktopListening::startWithSound(const LiveSessionControlTrigger& trigger) {
    environment_.notices.tell(Topic::file, ""); // of an earlier start
    if (hasSound_)
        return store().startListening(trigger);
    pendingStart_ = trigger;
    waiting_ = "";
    connect();
    if (environment_.sound.isFile())
        spawn(Executor::main(environment_.host), tellOfWaiting());
}

void DesktopListening::toggle(const LiveSessionControlTrigger& trigger) {
    if (pendingStart_ || wantsStart() || isLookingAtFile())
        return stop(trigger);
    const bool isStopping = *store().view().sessionPhase == LiveSessionPhase::stopping;
    if (isListening() || (isStopping && trigger.userInitiated))
        store().toggleListening(trigger);
    else
        start(trigger);
}

void DesktopListening::stop(const LiveSessionControlTrigger& trigger) {
    if (std::exchange(look_, 0) != 0 && !pendingStart_)
        waiting_ = std::nullopt;
    if (wish_)
        wish_ = Wish{.file = {}, .source = wish_->source, .isAnother = wish_->isAnother};
    if (takePendingStart() && environment_.sound.isFile())
        listenToComputer(computerSource_);
    store().stopListening(trigger);
}

void DesktopListening::captionFile(const std::filesystem::path& file) {
    look_ = ++lastLook_;
    if (!isListening())
        waiting_ = "";
    spawn(Executor::main(environment_.host), lookAt(file, look_));
}

/// On a queue of its own, because the disk may be slow. The running session continues meanwhile,
/// and if the file cannot be heard.
Task<void> DesktopListening::lookAt(std::filesystem::path file, unsigned look) {
    Host& host = environment_.host;
    const auto queue = host.serialQueue("Tessarune.file.look", QueuePriority::userInitiated);
    const std::string problem =
        co_await runOn(Executor::queue(host, queue), [&] { return DesktopSound::problemOf(file); });
    if (look != look_)
        co_return;
    look_ = 0;
    if (problem.empty()) {
        want({.file = file, .starts = true});
        co_return;
    }
    if (!pendingStart_)
        waiting_ = std::nullopt;
    environment_.notices.tell(Topic::file, problem);
    if (!hasSound_)
        connect();
}

void DesktopListening::selectSource(const AudioSource& source) {
    if (!wish_ && !isLookingAtFile() && !environment_.sound.isFile())
        return store().selectSource(source);
    const bool restarts = isListening() || pendingStart_ || wantsStart() || isLookingAtFile();
    look_ = 0;
    want({.file = {}, .source = source, .starts = restarts});
}

void DesktopListening::fileEnded(const std::string& problem) {
    environment_.notices.tell(Topic::file, problem);
    if (!wish_)
        want({});
    else
        wish_->isAnother = true; // the file is not heard again
}

/// Replaces a wish that is still waiting.
void DesktopListening::want(Wish wish) {
    takePendingStart();
    if (!std::exchange(wish_, std::move(wish)))
        spawn(Executor::main(environment_.host), fulfilWish());
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
}

/// No session runs.
void DesktopListening::changeSound(const Wish& wish) {
    if (wish.file) {
        if (!environment_.sound.isFile())
            computerSource_ = *store().view().selectedSource;
        store().selectSource(AudioSource::systemAudio()); // which a file replaces
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
