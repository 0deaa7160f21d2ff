"""What the screen reader Orca says on a desktop."""

import re
import subprocess

from waiting import wait_until

SPOKEN = re.compile(r"SPEECH OUTPUT: '(.*?)' ?\[?\{'established'", re.DOTALL)

# What is said goes into its file line by line.
WRITE_AT_ONCE = """
import orca.debug
orca.debug.debugFile.reconfigure(line_buffering=True)
"""


class Orca:
    """A running Orca, until the desktop ends."""

    def __init__(self, desktop):
        self._log = desktop.log_path("orca-debug")
        settings = desktop.home / ".local" / "share" / "orca"
        settings.mkdir(parents=True)
        (settings / "orca-customizations.py").write_text(WRITE_AT_ONCE)
        desktop.start("speech-dispatcher", "--run-single", "--timeout", "0")
        # It waits long for a Braille display that is not there.
        desktop.start("orca", "--replace", "--disable=braille", f"--debug-file={self._log}")
        wait_until(
            self.spoken, lambda: "the screen reader:\n" + desktop.log("orca"), seconds=60
        )

    def spoken(self):
        """All that was said so far, a line each."""
        if not self._log.exists():
            return []
        said = SPOKEN.findall(self._log.read_text(errors="replace"))
        return [" ".join(line.split()) for line in said]


def version():
    """Its first number, as it words things otherwise with each."""
    answer = subprocess.run(["orca", "--version"], check=True, capture_output=True, text=True)
    return int(answer.stdout.split(".")[0])
