"""Shared by the measuring scripts: paths, long sound, and measuring the cost of programs."""
import os
import pty
import threading
import time
import wave
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PROGRAMS = ROOT / "build/release/bin"
SAMPLE = ROOT / "build/engines/samples/two_cities.wav"


def write_long_sound(path, seconds):
    """Writes the sample speech, repeated until it lasts at least `seconds`."""
    with wave.open(str(SAMPLE)) as sample, wave.open(str(path), "wb") as long:
        long.setparams(sample.getparams())
        frames = sample.readframes(sample.getnframes())
        for _ in range(int(seconds * sample.getframerate() / sample.getnframes()) + 1):
            long.writeframes(frames)


def start_on_terminal(command, environment=None):
    """Starts the command on a new terminal, whose output is discarded; returns the process ID."""
    child, terminal = pty.fork()
    if child == 0:
        os.execvpe(str(command[0]), [str(word) for word in command], environment or os.environ)

    def discard_output():
        try:
            while os.read(terminal, 65536):
                pass
        except OSError:
            pass  # on Linux this means that the other side of the terminal is closed
        os.close(terminal)

    threading.Thread(target=discard_output, daemon=True).start()
    return child


@dataclass
class Cost:
    wall: float
    processor: float


def run(command, environment=None):
    """Runs the command to its end. Returns its wall-clock and processor time (user and system)."""
    begin = time.monotonic()
    _, status, usage = os.wait4(start_on_terminal(command, environment), 0)
    if status != 0:
        raise SystemExit(f"{command[0]} failed")
    return Cost(time.monotonic() - begin, usage.ru_utime + usage.ru_stime)
