"""find_package(OkoLabBoldLine) in a host's project: with MinGW, and with a compiler and linker of Microsoft's kind."""

import shutil
import tempfile
import unittest
from pathlib import Path

from Package import SOURCE, VERSION, Unzipped, run, wine


def setUpModule():
    global package
    package = Unzipped()
    unittest.addModuleCleanup(package.close)


def configure(folder, toolchain, version=VERSION):
    return run("cmake", "-G", "Ninja", "-S", SOURCE / "tests/package/host", "-B", folder, f"--toolchain={toolchain}",
               f"-DCMAKE_PREFIX_PATH={package.folder}", f"-DOKO_WANTED_VERSION={version}", "-DCMAKE_BUILD_TYPE=Debug")


class HostProjectTests(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory(prefix="oko host ")))

    def build(self, toolchain):
        configure(self.folder, toolchain)
        run("cmake", "--build", self.folder)
        shutil.copy(package.folder / "bin/OkoLabBoldLine.dll", self.folder)
        return self.folder / "host.exe"

    def test_Host_OfMinGW_LinksAndRuns(self):
        wine(self.build(SOURCE / "cmake/mingw-w64-x86_64.cmake"))

    def test_Host_OfMicrosoftsLinker_LinksAndRuns(self):
        wine(self.build(SOURCE / "tests/package/host/MicrosoftLayout.cmake"))

    def test_Host_ThatWantsTheNextMajorVersion_IsRefused(self):
        wanted = f"{int(VERSION.split('.')[0]) + 1}.0"
        with self.assertRaisesRegex(AssertionError, f'compatible with requested version "{wanted}"'):
            configure(self.folder, SOURCE / "cmake/mingw-w64-x86_64.cmake", wanted)
