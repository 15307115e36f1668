"""A second build of these sources, from nothing, in a folder of another name."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

from Package import BUILD, SOURCE


def without_builds(folder, names):
    return {".git", "build"} & set(names) if Path(folder) == SOURCE else set()


class SecondBuildTests(unittest.TestCase):
    """Subclasses call build once and compare."""

    @classmethod
    def setUpClass(cls):
        scratch = cls.enterClassContext(tempfile.TemporaryDirectory(prefix="oko-second-build-"))
        cls.copy = Path(scratch) / "of-the-same-sources"
        shutil.copytree(SOURCE, cls.copy, ignore=without_builds)
        # A compiler cache, where one is used, compiles once more, with the same names of files.
        cls.environment = {**os.environ, "CCACHE_BASEDIR": str(cls.copy), "CCACHE_RECACHE": "1"}
        # Its programs run in a Wine prefix of the copy: another lane may stop that of this tree.
        cls.environment.pop("OKO_WINEPREFIX", None)

    @classmethod
    def run_there(cls, *command):
        """Runs a command in the copy and gives its output. It ends when the suite does, not earlier."""
        done = subprocess.run(command, cwd=cls.copy, env=cls.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        if done.returncode != 0:
            raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout}")
        return done.stdout

    def assert_same_bytes(self, preset, *names):
        for name in names:
            with self.subTest(name):
                same = (self.copy / "build" / preset / name).read_bytes() == (BUILD / name).read_bytes()
                self.assertTrue(same, "differs")
