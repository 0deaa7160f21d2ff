"""Songs and things that are no songs, made on the spot."""

import array
import math
import subprocess
import wave

from waiting import PATIENCE


def tone(path, seconds, rate=44100, sounding=None):
    """Writes a WAV file with a stereo tone of 440 Hz at half of full scale, or with
    silence after the first sounding seconds. Returns path, which may be bytes."""
    period = [round(16384 * math.sin(2 * math.pi * 440 * i / rate)) for i in range(rate)]
    second = array.array("h", [sample for value in period for sample in (value, value)])
    with open(path, "wb") as file, wave.open(file) as song:
        song.setparams((2, 2, rate, 0, "NONE", None))
        for begun in range(math.ceil(seconds)):
            silent = sounding is not None and begun >= sounding
            whole = array.array("h", bytes(4 * rate)) if silent else second
            song.writeframes(whole[: 2 * round(rate * min(1, seconds - begun))])
    return path


def endless(path):
    """Writes a WAV file of 90 days, which take minutes to read and hardly any room on disk."""
    rate = 8000
    size = 90 * 24 * 3600 * rate
    with open(path, "wb") as file:
        # Its size stands in 64 bits, and not in the 32 of a plain one (EBU Tech 3306).
        file.write(b"RF64" + b"\xff" * 4 + b"WAVEds64")
        for value, width in ((28, 4), (72 + size, 8), (size, 8), (size, 8), (0, 4)):
            file.write(value.to_bytes(width, "little"))
        file.write(b"fmt ")
        for value, width in ((16, 4), (1, 2), (1, 2), (rate, 4), (rate, 4), (1, 2), (8, 2)):
            file.write(value.to_bytes(width, "little"))
        file.write(b"data" + b"\xff" * 4)
        file.truncate(80 + size)
    return path


def encoded(path, seconds, *options):
    """Writes a tone through ffmpeg, in the format that path's extension names."""
    sine = f"sine=frequency=440:sample_rate=44100:duration={seconds}"
    _ffmpeg("-f", "lavfi", "-i", sine, "-ac", "2", *options, path)
    return path


def slow_to_export(path):
    """Writes a song that takes long to convert: many channels at a high rate."""
    noise = "anoisesrc=r=384000:d=45:a=0.2"
    _ffmpeg("-f", "lavfi", "-i", noise, "-ac", "8", "-compression_level", "0", path)
    return path


def picture(path):
    _ffmpeg("-f", "lavfi", "-i", "testsrc=duration=1:size=64x64", "-frames:v", "1", path)
    return path


def silent_film(path):
    """Writes a video that has no sound track."""
    _ffmpeg("-f", "lavfi", "-i", "testsrc=duration=1:size=64x64", "-an", path)
    return path


def _ffmpeg(*arguments):
    subprocess.run(
        ["ffmpeg", "-nostdin", "-loglevel", "error", "-y", *map(str, arguments)],
        check=True,
        timeout=60 * PATIENCE,
    )
