"""Where the packages lie, and how what is in them is run."""

import os
import subprocess
import sys
import tempfile
import zipfile
from pathlib import Path

VERSION = os.environ["OKO_VERSION"]
SOURCE = Path(os.environ["OKO_SOURCE_DIR"])
BUILD = Path(os.environ["OKO_BUILD_DIR"])
NAME = f"OkoLabBoldLine-{VERSION}-win64"
ARCHIVE = SOURCE / "build" / "package" / f"{NAME}.zip"
INSTALLER = SOURCE / "build" / "package" / f"{NAME}-setup.exe"

for made in (ARCHIVE, INSTALLER):
    if not made.exists():
        sys.exit(f"There is no {made}: scripts/package makes it.")


class Unzipped:
    """The archive's content in a folder of its own, with a blank in its name as Windows' folders have. The folder goes
    when close is called."""

    def __init__(self):
        self._scratch = tempfile.TemporaryDirectory(prefix="oko package ")
        with zipfile.ZipFile(ARCHIVE) as archive:
            archive.extractall(self._scratch.name)
        self.folder = Path(self._scratch.name) / NAME

    def close(self):
        self._scratch.cleanup()


def run(*command, **options):
    """Runs a command and gives its output; shows it when the command fails."""
    done = subprocess.run([str(word) for word in command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, **options)
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def wine(*command, **options):
    """Runs a Windows program without a screen: a message box fails at once and blocks nobody."""
    return run(SOURCE / "scripts" / "wine", *command, env={**os.environ, "DISPLAY": ""}, **options)


def files(folder):
    """The files below a folder, as names from there."""
    return sorted(path.relative_to(folder).as_posix() for path in folder.rglob("*") if path.is_file())
