"""Fetches speech, joins it into recordings (16 kHz, one channel), and finds the ends of words."""

import functools
import hashlib
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import wave
from array import array
from dataclasses import dataclass
from pathlib import Path

from corpus import ALIGNER, LEAD_INS, PACKAGES, PRONUNCIATIONS, RECORDINGS

ROOT = Path(__file__).resolve().parents[2]
HERE = ROOT / "build" / "quality"
CACHE = Path(os.environ.get("XDG_CACHE_HOME") or Path.home() / ".cache") / "tessarune" / "downloads"
RATE = 16000
GAP = 0.5  # seconds between joined clips
LEAD_GAP = 3.0  # after a lead-in, so that its last line ends
TAIL = 1.5  # after the last word, so that the last line ends by itself


@dataclass
class Recording:
    name: str
    kind: str
    sound: array  # of 16-bit samples
    words: list  # (word, its end in seconds)


def fail(text):
    sys.exit(f"quality: {text}")


def sha256(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def fetched(fetch, sums, suffix):
    """The file that `fetch(folder)` downloads, verified and cached."""
    CACHE.mkdir(parents=True, exist_ok=True)
    for wanted in sums:
        kept = CACHE / f"{wanted}{suffix}"
        if kept.is_file() and sha256(kept) == wanted:
            return kept
    with tempfile.TemporaryDirectory(dir=CACHE) as folder:
        fetch(folder)
        files = [path for path in Path(folder).iterdir() if path.is_file()]
        if len(files) != 1 or sha256(files[0]) not in sums:
            fail(f"{[path.name for path in files]} is not what is pinned in corpus.py")
        kept = CACHE / f"{sha256(files[0])}{suffix}"
        files[0].rename(kept)
    return kept


def call(command, folder=None):
    if subprocess.run(command, cwd=folder, stdout=subprocess.DEVNULL).returncode != 0:
        fail(f"{' '.join(command[:6])} … failed")


def pip_download(folder, asked, form):
    """`form`: --no-binary or --only-binary."""
    call([sys.executable, "-m", "pip", "download", "--quiet", "--disable-pip-version-check",
          "--no-deps", form, ":all:", "--dest", folder, asked])


def package(name):
    """The folder with the unpacked package."""
    if name == "samples":
        return ROOT / "build" / "engines" / "samples"
    client, asked, wanted, _ = PACKAGES[name]
    place = HERE / "packages" / f"{name}-{wanted[:12]}"
    if place.is_dir():
        return place
    print(f"quality: fetching {asked}", file=sys.stderr)
    with tempfile.TemporaryDirectory(dir=HERE) as beside:
        if client == "debian":
            archive = fetched(lambda to: call(["apt-get", "download", asked], to), [wanted], ".deb")
            unpacked = Path(beside) / name
            call(["dpkg-deb", "-x", str(archive), str(unpacked)])
        else:
            archive = fetched(lambda to: pip_download(to, asked, "--no-binary"), [wanted], ".tar.gz")
            call(["tar", "-xzf", str(archive), "-C", beside])
            (unpacked,) = Path(beside).iterdir()
        place.parent.mkdir(exist_ok=True)
        unpacked.rename(place)
    return place


def samples(path):
    command = ["ffmpeg", "-v", "error", "-i", str(path), "-ac", "1", "-ar", str(RATE), "-f", "s16le", "-"]
    result = subprocess.run(command, stdout=subprocess.PIPE)
    if result.returncode != 0:
        fail(f"{path} cannot be read")
    return array("h", result.stdout)


def silence(seconds):
    return array("h", bytes(2 * int(seconds * RATE)))


def seconds(sound):
    return len(sound) / RATE


def write(path, sound):
    with wave.open(str(path), "wb") as file:
        file.setparams((1, 2, RATE, 0, "NONE", ""))
        file.writeframes(sound.tobytes())


@functools.cache
def aligner():
    """The forced aligner; its wheel is unpacked into the build tree, not installed."""
    asked, *sums = ALIGNER
    place = HERE / "aligner"
    if not place.is_dir():
        print(f"quality: fetching {asked}", file=sys.stderr)
        wheel = fetched(lambda to: pip_download(to, asked, "--only-binary"), sums, ".whl")
        with tempfile.TemporaryDirectory(dir=HERE) as beside:
            shutil.unpack_archive(wheel, Path(beside) / place.name, "zip")
            (Path(beside) / place.name).rename(place)
    sys.path.insert(0, str(place))
    from pocketsphinx import Decoder

    # Without pruning it finds the best path; the recordings are short enough for that.
    decoder = Decoder(lm=None, loglevel="FATAL", bestpath=False, beam=0, wbeam=0, pbeam=0)
    for word, phones in PRONUNCIATIONS.items():
        if decoder.lookup_word(word) is None:
            decoder.add_word(word, phones, True)
    return decoder


def aligned(sound, text):
    """[(word, its end in seconds)] of a clip. Cached, as aligning takes a fifth of the clip's length."""
    key = hashlib.sha256(sound.tobytes() + text.encode() + repr(PRONUNCIATIONS).encode()).hexdigest()
    kept = HERE / "alignments" / f"{key}.json"
    if kept.is_file():
        return json.loads(kept.read_text())
    decoder = aligner()
    unknown = [word for word in text.split() if decoder.lookup_word(word) is None]
    if unknown:
        fail(f"corpus.py has no pronunciation of {unknown}")
    decoder.set_align_text(text)
    decoder.start_utt()
    decoder.process_raw(sound.tobytes(), full_utt=True)
    decoder.end_utt()
    found = [(re.sub(r"\(\d+\)$", "", part.word), (part.end_frame + 1) / 100)
             for part in decoder.seg() if part.word[0] not in "<[+("]
    if [word for word, _ in found] != text.split():
        fail(f"no alignment of “{text[:40]}…”")
    kept.parent.mkdir(exist_ok=True)
    kept.write_text(json.dumps(found))
    return found


def recording(name):
    kind, clips = RECORDINGS[name]
    sound, words = array("h"), []
    for source, path, text in clips:
        clip = samples(package(source) / path)
        words += [(word, seconds(sound) + end) for word, end in aligned(clip, text)]
        sound += clip + silence(GAP)
    return Recording(name, kind, sound + silence(TAIL - GAP), words)


def lead_in(name):
    sound = array("h")
    for source, path in LEAD_INS[name]:
        sound += samples(package(source) / path) + silence(GAP)
    return sound + silence(LEAD_GAP - GAP) if sound else sound
