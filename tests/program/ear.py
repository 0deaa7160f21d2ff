"""What a person on a virtual desktop would hear."""

import array
import os
import select
import subprocess

from waiting import wait_until

RATE = 8000
# A tenth of a second of 16-bit samples.
PIECE_BYTES = RATE // 10 * 2


class Ear:
    """Listens to what the sound server plays."""

    def __init__(self, desktop):
        self._recorder = subprocess.Popen(
            ["parec", "--device=speakers.monitor", f"--rate={RATE}", "--channels=1",
             "--format=s16le"],  # no latency: that would hurry the server
            env=desktop.environment, stdout=subprocess.PIPE, bufsize=0,
        )  # fmt: skip
        self._recorded = b""

    def close(self):
        self._recorder.terminate()
        self._recorder.wait()
        self._recorder.stdout.close()

    def wait_for_sound(self, seconds=0.5):
        """Until that much was heard in all."""
        self._wait("sound", lambda loudest: loudest > 1000, seconds, pauses=True)

    def wait_for_silence(self, seconds=0.5):
        """Until nothing was heard for that long."""
        self._wait("silence", lambda loudest: loudest == 0, seconds, pauses=False)

    def _wait(self, what, wanted, seconds, pauses):
        heard = 0

        def long_enough():
            nonlocal heard
            for piece in self._pieces():
                if wanted(max(map(abs, piece))):
                    heard += 1
                elif not pauses:
                    heard = 0
            return heard >= seconds * 10

        wait_until(long_enough, f"{seconds} s of {what}", seconds=20)

    def _pieces(self):
        """What was recorded since, by tenths of a second."""
        recorder = self._recorder.stdout
        if select.select([recorder], [], [], 0.1)[0]:
            self._recorded += os.read(recorder.fileno(), 2 * PIECE_BYTES)
        while len(self._recorded) >= PIECE_BYTES:
            piece, self._recorded = self._recorded[:PIECE_BYTES], self._recorded[PIECE_BYTES:]
            yield array.array("h", piece)
