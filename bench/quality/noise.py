"""Noise that is the same on every computer: made from a seed, mixed at a ratio to the speech."""

import math
import random
from array import array

RATE = 16000


def low_pass(values, hertz):
    keep = math.exp(-2 * math.pi * hertz / RATE)
    state, result = 0.0, []
    for value in values:
        state = keep * state + (1 - keep) * value
        result.append(state)
    return result


def high_pass(values, hertz):
    return [value - low for value, low in zip(values, low_pass(values, hertz))]


def white(count, chance):
    return [chance.gauss(0, 1) for _ in range(count)]


def rumble(count, chance, _):
    """Traffic, wind, a hand on the desk: falls by 12 dB per octave above 60 Hz."""
    return high_pass(low_pass(low_pass(white(count, chance), 60), 60), 20)


def hum(count, chance, _):
    """Mains: 50 Hz and its harmonics, the odd ones louder."""
    parts = [(k, (1.0 if k % 2 else 0.4) / k, chance.uniform(0, 2 * math.pi)) for k in range(1, 16)]
    period = [sum(loud * math.sin(2 * math.pi * 50 * k * i / RATE + phase) for k, loud, phase in parts)
              for i in range(RATE // 50)]
    return [period[i % len(period)] for i in range(count)]


def hiss(count, chance, _):
    return high_pass(white(count, chance), 2000)


def babble(count, chance, speech):
    """Six of the measured recordings at once, each starting at a random place."""
    voices = [(list(chance.choice(speech)), chance.random()) for _ in range(6)]
    total = [0.0] * count
    for voice, start in voices:
        first = int(start * len(voice))
        for i in range(count):
            total[i] += voice[(first + i) % len(voice)]
    return total


def music(count, chance, _):
    """Chords of struck strings, a new one every half second, with a beat."""
    total = [0.0] * count
    step = RATE // 2
    for first in range(0, count, step):
        root = 110 * 2 ** (chance.choice((0, 5, 7, 9)) / 12)
        notes = [root * ratio for ratio in (1, 1.26, 1.5, 2, chance.choice((3, 4, 5)))]
        for i in range(first, min(first + step, count)):
            t = (i - first) / RATE
            sound = sum(math.sin(2 * math.pi * note * t) + 0.4 * math.sin(6 * math.pi * note * t)
                        for note in notes)
            total[i] = sound * math.exp(-3 * t) + 3 * chance.gauss(0, 1) * math.exp(-60 * t)
    return total


def clicks(count, chance, _):
    """Keys and crackle: four per second, each lasting some milliseconds."""
    total = [0.0] * count
    for _ in range(4 * count // RATE):
        at, loud = chance.randrange(count), chance.uniform(0.3, 1)
        for i in range(at, min(at + 200, count)):
            total[i] += loud * chance.gauss(0, 1) * math.exp((at - i) / 30)
    return total


KINDS = {made.__name__: made for made in (rumble, hum, hiss, babble, music, clicks)}


def loudness(values):
    """The root mean square."""
    return math.sqrt(sum(value * value for value in values) / len(values))


def speech_loudness(sound):
    """The loudness of the speech in `sound`, without the pauses. The sound is cut into parts of
    20 ms, and one of them is the reference: the part that is louder than 95 % of all parts. A part
    is a pause if it is at least 25 dB softer than the reference. A part that is louder than the
    reference, such as a thump on the desk, is limited to the loudness of the reference."""
    step = RATE // 50
    parts = sorted(loudness(sound[i:i + step]) for i in range(0, len(sound) - step, step))
    loud = parts[len(parts) * 95 // 100]
    return loudness([min(part, loud) for part in parts if part > loud * 10 ** (-25 / 20)])


def mixed(sound, kind, decibels, seed, speech):
    """`sound` with noise that is `decibels` softer than its speech. A mixture that would clip is
    made softer. `speech`: the sounds from which babble is made."""
    made = KINDS[kind](len(sound), random.Random(f"{kind} {seed}"), speech)
    factor = speech_loudness(sound) / loudness(made) * 10 ** (-decibels / 20)
    both = [value + factor * extra for value, extra in zip(sound, made)]
    level = min(1.0, 32000 / max(abs(value) for value in both))
    return array("h", [round(value * level) for value in both])
