#pragma once

namespace tessarune {

/// The exit statuses of `tessarune-terminal`; see docs/terminal.md. The numbers are those of
/// sysexits.h where it has a suitable one.
enum class ExitStatus : int {
    ok = 0,
    usage = 64,
    differs = 65, ///< the replay of a run differs from its captions, or is impossible
    unreadableFile = 66,
    noSuchRecording = 67, ///< no recording or diagnostics run matches, or several do
    noSuchSource = 68,
    noSoundServer = 69,
    internal = 70,
    cannotWrite = 73,
    ioError = 74,   ///< output was lost, or recordings or settings cannot be read
    dataInUse = 75, ///< another Tessarune has the same data folder
    notAllowed = 77,
    noModel = 78,
    interrupted = 130, ///< the second Ctrl-C of a session, or the first one of other work
};

} // namespace tessarune
