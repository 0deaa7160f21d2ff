"""The language of the desktops, which a machine need not have."""

import functools
import pathlib
import subprocess
import tempfile

LANGUAGE = "es_ES.UTF-8"


@functools.cache
def locales():
    """A folder with its locale for LOCPATH, until the process ends."""
    _folder.append(tempfile.TemporaryDirectory(prefix="quibel-locales-"))
    locale = pathlib.Path(_folder[0].name) / LANGUAGE
    subprocess.run(["localedef", "-i", "es_ES", "-f", "UTF-8", locale], check=True)
    return locale.parent


_folder = []
