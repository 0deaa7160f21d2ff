"""A ringtone as another program sees it."""

import array
import json
import subprocess


class Ringtone:
    def __init__(self, path):
        probe = ["ffprobe", "-v", "error", "-of", "json", "-show_format", "-show_streams", path]
        facts = json.loads(subprocess.run(probe, check=True, capture_output=True).stdout)
        self._streams = facts["streams"]
        self._path = path
        self.brand = facts["format"]["tags"]["major_brand"]
        self.codec = self._streams[0]["codec_name"]
        self.channels = self._streams[0]["channels"]
        self.seconds = float(self._streams[0]["duration"])

    @property
    def stream_count(self):
        return len(self._streams)

    def loudness(self, second):
        """The loudest sample of a tenth of a second, from 0 to 32768."""
        decode = ["ffmpeg", "-nostdin", "-loglevel", "error", "-i", self._path, "-ss", str(second)]
        decode += ["-t", "0.1", "-ac", "1", "-f", "s16le", "-"]
        samples = subprocess.run(decode, check=True, capture_output=True).stdout
        return max(map(abs, array.array("h", samples)), default=0)
