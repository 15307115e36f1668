"""The installer, run silently: what it puts where, and that uninstalling takes all of it away and nothing else."""

import os
import shutil
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

from Package import INSTALLER, SOURCE, VERSION, Unzipped, files, run, wine

DRIVE = Path(os.environ.get("OKO_WINEPREFIX", SOURCE / "build/wine")) / "drive_c"
FOLDER = DRIVE / "Program Files/OkoLabBoldLine"
SHORTCUT = DRIVE / "ProgramData/Microsoft/Windows/Start Menu/Programs/OKO-Lab bold line plug-in.lnk"
KEY = r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\OkoLabBoldLine"


def setUpModule():
    global package
    package = Unzipped()
    unittest.addModuleCleanup(package.close)


def entry():
    """What the uninstall entry says, by name; None without one."""
    try:
        lines = wine("reg", "query", KEY).splitlines()
    except AssertionError:
        return None
    words = [line.split(maxsplit=2) for line in lines if " REG_" in line]
    return {name: value for name, _, value in words}


def installed():
    return files(FOLDER) if FOLDER.exists() else []


def uninstall():
    """The uninstaller goes on in a copy of itself, as it must to remove its own file."""
    wine(FOLDER / "Uninstall.exe", "/S")
    end = time.monotonic() + 120
    while entry() is not None and time.monotonic() < end:
        time.sleep(0.2)


class InstallerTests(unittest.TestCase):
    def setUp(self):
        self.assertEqual(installed(), [], "an earlier installation is in the way")
        self.addCleanup(self.remove)

    @staticmethod
    def remove():
        """No test leaves anything to the next one."""
        if (FOLDER / "Uninstall.exe").exists():
            uninstall()
        shutil.rmtree(FOLDER, ignore_errors=True)

    def test_Install_PutsTheArchivesFilesInPlace(self):
        wine(INSTALLER, "/S")
        self.assertEqual(installed(), sorted([*files(package.folder), "Uninstall.exe"]))
        for name in files(package.folder):
            with self.subTest(name):
                self.assertEqual((FOLDER / name).read_bytes(), (package.folder / name).read_bytes())
        self.assertTrue(SHORTCUT.exists())

    def test_Install_EntersWhatWindowsShows(self):
        wine(INSTALLER, "/S")
        values = entry()
        self.assertEqual(values["DisplayName"], "OKO-Lab bold line plug-in")
        self.assertEqual(values["DisplayVersion"], VERSION)
        self.assertEqual(values["InstallLocation"], r"C:\Program Files\OkoLabBoldLine")
        self.assertEqual(values["UninstallString"], r'"C:\Program Files\OkoLabBoldLine\Uninstall.exe"')
        self.assertEqual(values["QuietUninstallString"], r'"C:\Program Files\OkoLabBoldLine\Uninstall.exe" /S')

    def test_InstalledHost_AnswersWithTheVersion(self):
        wine(INSTALLER, "/S")
        self.assertEqual(wine(r"C:\Program Files\OkoLabBoldLine\bin\oko-host.exe", "--version").strip(),
                         f"oko-host {VERSION}")

    def test_Install_OverAnEarlierVersion_LeavesNothingOfIt(self):
        wine(self.earlier_installer(), "/S")
        self.assertEqual(installed(), ["README.html", "Uninstall.exe", "lib/dropped.txt"])
        self.assertEqual(entry()["DisplayVersion"], "0.9.0")
        wine(INSTALLER, "/S")
        self.assertEqual(installed(), sorted([*files(package.folder), "Uninstall.exe"]))
        self.assertEqual((FOLDER / "README.html").read_bytes(), (package.folder / "README.html").read_bytes())
        self.assertEqual(entry()["DisplayVersion"], VERSION)

    def earlier_installer(self):
        """Of a version with a file that this one no longer has."""
        scratch = Path(self.enterContext(tempfile.TemporaryDirectory(prefix="oko earlier ")))
        for name in ("README.html", "lib/dropped.txt"):
            (scratch / "files" / name).parent.mkdir(parents=True, exist_ok=True)
            (scratch / "files" / name).write_text("of an earlier version")
        run("cmake", f"-DCPACK_TEMPORARY_DIRECTORY={scratch}/files", f"-DCPACK_TOPLEVEL_DIRECTORY={scratch}",
            "-DCPACK_PACKAGE_FILE_NAME=earlier", "-DCPACK_PACKAGE_VERSION=0.9.0", "-DCPACK_OKO_MAKENSIS=makensis",
            f"-DCPACK_OKO_INSTALLER_SCRIPT={SOURCE}/packaging/installer/Installer.nsi",
            "-P", SOURCE / "packaging/installer/BuildInstaller.cmake")
        return scratch / "earlier-setup.exe"

    def test_Install_WhileALibraryIsLoaded_ChangesNothingAndSaysSo(self):
        wine(INSTALLER, "/S")
        (FOLDER / "README.html").write_text("of an earlier version")
        host = subprocess.Popen([SOURCE / "scripts/wine", FOLDER / "bin/oko-host.exe", "monitor", "--device",
                                 "simulator", "--for", "2min"],
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                env={**os.environ, "DISPLAY": ""})
        try:
            host.stdout.readline()  # it writes when the library is loaded
            with self.assertRaisesRegex(AssertionError, "ended with 2"):
                wine(INSTALLER, "/S")
            self.assertEqual((FOLDER / "README.html").read_text(), "of an earlier version")
        finally:
            host.terminate()
            host.wait()
            host.stdout.close()

    def test_Uninstall_LeavesNothingBehind(self):
        wine(INSTALLER, "/S")
        uninstall()
        self.assertIsNone(entry())
        self.assertFalse(FOLDER.exists())
        self.assertFalse(SHORTCUT.exists())

    def test_Uninstall_LeavesWhatOthersPutThere(self):
        wine(INSTALLER, "/S")
        foreign = FOLDER / "bin/oko-host.ini"
        foreign.write_text("a user's settings")
        uninstall()
        self.assertEqual(installed(), ["bin/oko-host.ini"])
