#pragma once

namespace tessarune {

/// How `tessarune-terminal` ends; documented in docs/terminal.md. The numbers are those of
/// sysexits.h where it has one that fits.
enum class ExitStatus : int {
    ok = 0,
    usage = 64,
    differs = 65, ///< a run could not be replayed to its own captions
    unreadableFile = 66,
    noSuchRecording = 67,
    noSuchSource = 68,
    noSoundServer = 69,
    internal = 70,
    cannotWrite = 73,
    ioError = 74,   ///< output was lost, or the recordings cannot be read
    dataInUse = 75, ///< another Tessarune records into the same data folder
    notAllowed = 77,
    noModel = 78,
    stoppedTwice = 130, ///< ended at once: the second Ctrl-C, or one when nothing runs yet
};

} // namespace tessarune
