"""The same sources give the same bytes: a second build of what the package runs, in a folder of another name."""

import os
import shutil
import tempfile
import unittest
from pathlib import Path

from Package import BUILD, SOURCE, run

WITHOUT_BUILDS = shutil.ignore_patterns(".git", "build")


class ReproducibilityTests(unittest.TestCase):
    def test_Programs_BuiltInAnotherFolder_AreByteForByteTheSame(self):
        with tempfile.TemporaryDirectory(prefix="oko-second-build-") as scratch:
            copy = Path(scratch) / "of-the-same-sources"
            shutil.copytree(SOURCE, copy, ignore=WITHOUT_BUILDS)
            # Where a compiler cache is used it compiles once more, with the same names of files.
            environment = {**os.environ, "CCACHE_BASEDIR": str(copy), "CCACHE_RECACHE": "1"}
            run("cmake", "--preset", "windows-x64", cwd=copy, env=environment)
            run("cmake", "--build", "--preset", "windows-x64", "--target", "OkoLabBoldLine", "oko-host",
                "oko-control-emulator", cwd=copy, env=environment)
            for name in ("bin/OkoLabBoldLine.dll", "debug/OkoLabBoldLine.dll.debug", "src/libOkoLabBoldLine.dll.a",
                         "bin/oko-host.exe", "bin/oko-control-emulator.exe"):
                with self.subTest(name):
                    same = (copy / "build/windows-x64" / name).read_bytes() == (BUILD / name).read_bytes()
                    self.assertTrue(same, "differs")
