"""scripts/tidy finds what is planted in a copy of this tree, wherever it stands, and says so by its exit status, too."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

TREE = Path(__file__).resolve().parents[2]

UNUSED = "included header cstddef is not used directly"
LITERAL = "redundant boolean literal"
# What each file holds, and what is to be said of it: a test or a header is looked at for its includes alone.
INCLUDES = "#pragma once\n\n#include <cstddef>\n"
ALL = "namespace {\n[[maybe_unused]] bool Same(bool so) { return so == true; }\n}  // namespace\n"
PLANTED = {
    "src/base/Planted.cpp": (ALL, LITERAL),
    "src/platform/win32/Planted.cpp": ("#include <windows.h>\n\n" + ALL, LITERAL),
    "src/link/Planted.h": (INCLUDES, UNUSED),
    "src/ui/win32/Planted.h": (INCLUDES, UNUSED),
    "tests/unit/PlantedTests.cpp": ("#include <cstddef>\n", UNUSED),
    "tests/windows/PlantedTests.cpp": ("#include <cstddef>\n", UNUSED),
    "tools/common/text/Planted.cpp": (ALL, LITERAL),
    "tools/host/commands/Planted.cpp": (ALL, LITERAL),
    "tools/host/platform/win32/Planted.cpp": (ALL, LITERAL),
    "tools/emulator/net/Planted.cpp": (ALL, LITERAL),
    "tests/host/PlantedTests.cpp": ("#include <cstddef>\n", UNUSED),
    "tests/emulator/PlantedTests.cpp": ("#include <cstddef>\n", UNUSED),
}
SOUND = "src/base/Sound.cpp"
BROKEN = "src/base/Broken.cpp"


# A tree of two sources.
PROJECT = """cmake_minimum_required(VERSION 3.25)
project(Small LANGUAGES CXX)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
file(GLOB sources src/*/*.cpp)
add_library(small OBJECT ${sources})
target_include_directories(small PRIVATE src)
"""
HOUR = 60 * 60
START = 20_000 * 24 * HOUR  # whose seventh holds none of the two


class TreeTest(unittest.TestCase):
    """With a tree of its own, in which scripts/tidy runs."""

    @classmethod
    def setUpClass(cls):
        cls.copy = Path(tempfile.mkdtemp(prefix="oko-tidy-"))
        cls.addClassCleanup(shutil.rmtree, cls.copy)

    @classmethod
    def take(cls, *names):
        for name in names:
            (cls.copy / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(TREE / name, cls.copy / name)

    def tidy(self, *arguments):
        run = subprocess.run(("scripts/tidy", *arguments), cwd=self.copy, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        return run.returncode, run.stdout


class TidyTests(TreeTest):

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        names = subprocess.run(("git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"), cwd=TREE, check=True,
                               capture_output=True, text=True).stdout.split("\0")
        cls.take(*(name for name in names if (TREE / name).is_file()))
        subprocess.run(("git", "init", "--quiet"), cwd=cls.copy, check=True)
        for name, (text, _) in PLANTED.items():
            (cls.copy / name).write_text(text)
        (cls.copy / SOUND).write_text("namespace {\n[[maybe_unused]] bool Same(bool so) { return so; }\n}  // namespace\n")
        (cls.copy / BROKEN).write_text("#include \"base/Nowhere.h\"\n")

    def test_Finding_WhereverItStands_IsPrintedAndFails(self):
        for name, (_, finding) in PLANTED.items():
            with self.subTest(name):
                status, said = self.tidy(name)
                self.assertEqual(status, 1, said)
                self.assertRegex(said, f"{name}:[0-9]+:[0-9]+: error: {finding}")
                self.assertIn("tidy: findings", said)

    def test_Finding_AmongSoundFiles_Fails(self):
        status, said = self.tidy(SOUND, "src/base/Planted.cpp", SOUND)
        self.assertEqual(status, 1, said)
        self.assertIn(LITERAL, said)

    def test_SoundFile_Passes(self):
        status, said = self.tidy(SOUND)
        self.assertEqual(status, 0, said)
        self.assertNotIn("tidy: findings", said)

    def test_FileThatDoesNotCompile_Fails(self):
        status, said = self.tidy(BROKEN)
        self.assertEqual(status, 1, said)
        self.assertIn("'base/Nowhere.h' file not found", said)

    def test_FileThatIsNotThere_IsRefused(self):
        status, said = self.tidy("src/base/Nowhere.cpp")
        self.assertEqual(status, 2, said)


class ChangeTests(TreeTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.take("scripts/tidy", "scripts/tidy_files.py", "scripts/setup", ".clang-tidy", "CMakePresets.json", "cmake/mingw-w64-x86_64.cmake")
        cls.write("CMakeLists.txt", PROJECT)
        cls.write(".gitignore", "build/\n")
        for folder in ("include", "tools", "bench", "examples"):
            cls.write(f"{folder}/Sound.cpp", "")
        cls.write("src/base/Both.h", "#pragma once\n\nbool Both(bool one, bool other);\n")
        cls.write("src/base/Both.cpp", '#include "base/Both.h"\n\nbool Both(bool one, bool other) { return one && other == true; }\n')
        cls.write("src/base/Sound.cpp", "namespace {\n[[maybe_unused]] bool Same(bool so) { return so; }\n}  // namespace\n")
        cls.git("init", "--quiet")
        cls.first = cls.commit(0)

    def setUp(self):
        self.addCleanup(self.git, "reset", "--quiet", "--hard", self.first)

    @classmethod
    def write(cls, name, text):
        (cls.copy / name).parent.mkdir(parents=True, exist_ok=True)
        (cls.copy / name).write_text(text)

    @classmethod
    def git(cls, *arguments, **environment):
        return subprocess.run(("git", "-c", "user.name=A", "-c", "user.email=a@localhost", *arguments), cwd=cls.copy, check=True,
                              stdout=subprocess.PIPE, text=True, env={**os.environ, **environment}).stdout.strip()

    @classmethod
    def commit(cls, hours):
        cls.git("add", "--all")
        cls.git("commit", "--quiet", "--message", "So", GIT_COMMITTER_DATE=f"{START + hours * HOUR} +0000")
        return cls.git("rev-parse", "HEAD")

    def test_FindingInWhatIncludesAChangedHeader_Fails(self):
        self.write("src/base/Both.h", "#pragma once\n\n// Both.\nbool Both(bool one, bool other);\n")
        self.commit(13)
        status, said = self.tidy("--change")
        self.assertEqual(status, 1, said)
        self.assertRegex(said, f"src/base/Both.cpp:[0-9]+:[0-9]+: error: {LITERAL}")

    def test_FindingThatTheChangeDoesNotTouch_WaitsForItsDay(self):
        self.write("src/base/Sound.cpp", "namespace {\n[[maybe_unused]] bool Same(bool one) { return one; }\n}  // namespace\n")
        self.commit(13)
        status, said = self.tidy("--change")
        self.assertEqual(status, 0, said)
        self.write("src/base/Sound.cpp", "")
        results = []
        for day in range(1, 8):
            base = self.git("rev-parse", "HEAD")
            self.write("Day", str(day))
            self.commit(24 * day + 13)
            results.append(self.tidy("--change", "--base", base)[0])
        self.assertEqual(sorted(results), [0, 0, 0, 0, 0, 0, 1])

    def test_FindingOfCppcheck_FailsWhereverItStands(self):
        self.write("bench/Sound.cpp", "int Zero() {\n    int nothing = 0;\n    return 1 / nothing;\n}\n")
        self.commit(13)
        status, said = self.tidy("--change", "--base", "HEAD")
        self.assertEqual(status, 1, said)
        self.assertIn("Division by zero", said)

    def test_EachRunsLogsAndLists_GoWithIt(self):
        self.tidy("--change")
        self.assertEqual(sorted(path.name for path in (self.copy / "build").iterdir()), ["tidy-native", "tidy-windows-x64"])


if __name__ == "__main__":
    unittest.main()
