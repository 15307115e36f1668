"""What scripts/tidy looks at: how each file is looked at, what a change touches, and which part of the tree has its day."""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TREE = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TREE / "scripts"))
import tidy_files  # noqa: E402

HOUR = 60 * 60
DAY = 24 * HOUR
START = 20_000 * DAY  # a day whose number, divided by 7, leaves 1


class HowTests(unittest.TestCase):
    def test_Sources_OfLibraryAndTools_GetAllChecks(self):
        self.assertEqual(tidy_files.how("src/link/Reply.cpp"), ("native", "all"))
        self.assertEqual(tidy_files.how("tools/host/check/Trial.cpp"), ("native", "all"))
        self.assertEqual(tidy_files.how("tools/emulator/Main.cpp"), ("native", "all"))
        self.assertEqual(tidy_files.how("tools/common/platform/win32/NewProcess.cpp"), ("windows-x64", "all"))

    def test_HeadersAndTests_AreLookedAtForTheirIncludes(self):
        self.assertEqual(tidy_files.how("src/link/Reply.h"), ("native", "includes"))
        self.assertEqual(tidy_files.how("tools/common/platform/win32/NewProcess.h"), ("windows-x64", "includes"))
        self.assertEqual(tidy_files.how("tests/host/check/CheckPartsTests.cpp"), ("native", "includes"))
        self.assertEqual(tidy_files.how("tests/emulator/ProxyTests.cpp"), ("native", "includes"))
        self.assertEqual(tidy_files.how("tests/windows/CheckTests.cpp"), ("windows-x64", "includes"))
        self.assertEqual(tidy_files.how("bench/LinkBench.cpp"), ("windows-x64", "includes"))

    def test_OtherFiles_AreNot(self):
        for name in ("scripts/tidy", "docs/check.md", "tests/fuzz/Fuzz.h", "src/ui/resources/ResourceIds.h",
                     "tools/host/page/none/LivePage.cpp"):
            self.assertIsNone(tidy_files.how(name), name)


class SelectionTests(unittest.TestCase):
    """In a tree of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="oko-tidy-files-")
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)
        self.git("init", "--quiet")
        self.write("src/link/Reply.h", "#pragma once\n")
        self.write("src/link/Reply.cpp", '#include "link/Reply.h"\n')
        self.write("src/channels/Channel.h", '#include <vector>\n\n#include "link/Reply.h"\n')
        self.write("src/channels/Channel.cpp", '#include "channels/Channel.h"\n')
        self.write("src/base/Alone.cpp", "#include <string>\n")
        self.write("tests/unit/ChannelTests.cpp", '#include "channels/Channel.h"\n')
        self.write("tests/unit/Fixture.h", "")
        self.write("tests/unit/FixtureTests.cpp", '#include "Fixture.h"\n')
        self.write("tests/windows/Fixture.h", "")
        self.write("tools/host/commands/win32/Languages.h.in", "")
        self.write("tools/host/commands/win32/ListCommand.cpp", '#include "Languages.h"\n')
        self.write("tools/host/show/Show.cpp", '#include "../model/Snapshot.h"\n')
        self.write("tools/host/model/Snapshot.h", "")

    def git(self, *arguments, date=None):
        stamp = {"GIT_AUTHOR_DATE": f"{date} +0000", "GIT_COMMITTER_DATE": f"{date} +0000"} if date else {}
        subprocess.run(("git", "-c", "user.name=A", "-c", "user.email=a@localhost", *arguments), check=True, env={**os.environ, **stamp})

    def write(self, name, text):
        Path(name).parent.mkdir(parents=True, exist_ok=True)
        Path(name).write_text(text)

    def commit(self, hours):
        self.git("add", "--all")
        self.git("commit", "--quiet", "--allow-empty", "--message", "So", date=START + hours * HOUR)
        return tidy_files.git("rev-parse", "HEAD")[0]

    def drags(self, *changed):
        return tidy_files.with_includers(set(changed), tidy_files.tracked()) - set(changed)

    def test_Header_DragsAllThatIncludeItByWayOfOthersToo(self):
        self.assertEqual(self.drags("src/link/Reply.h"), {"src/link/Reply.cpp", "src/channels/Channel.h",
                                                          "src/channels/Channel.cpp", "tests/unit/ChannelTests.cpp"})

    def test_Source_DragsNothing(self):
        self.assertEqual(self.drags("src/base/Alone.cpp"), set())

    def test_HeaderBesideItsIncluder_IsTheOneThatIsMeant(self):
        self.assertEqual(self.drags("tests/unit/Fixture.h"), {"tests/unit/FixtureTests.cpp"})
        self.assertEqual(self.drags("tests/windows/Fixture.h"), set())

    def test_HeaderInAFolderBeside_DragsItsIncluder(self):
        self.assertEqual(self.drags("tools/host/model/Snapshot.h"), {"tools/host/show/Show.cpp"})

    def test_HeaderThatCMakeMakes_DragsItsIncluder(self):
        self.assertIn("tools/host/commands/win32/ListCommand.cpp", self.drags("tools/host/commands/win32/Languages.h.in"))

    def test_FileNamedAsASystemsHeader_DragsNothing(self):
        self.write("tests/abi/freestanding/vector", "")
        self.assertEqual(self.drags("tests/abi/freestanding/vector"), set())

    def test_RemovedHeader_DragsItsIncluders(self):
        self.commit(0)
        Path("tools/host/model/Snapshot.h").unlink()
        changed = tidy_files.changed_since("HEAD")
        self.assertEqual(changed, {"tools/host/model/Snapshot.h"})
        self.assertIn("tools/host/show/Show.cpp", tidy_files.with_includers(changed, tidy_files.tracked()))

    def test_Base_IsTheNewestCommitThatIsAQuarterOfADayOlder(self):
        self.commit(0)
        second = self.commit(1)
        self.commit(2)
        self.commit(7)
        self.assertEqual(tidy_files.base_commit(), second)

    def test_Base_OfAYoungTree_IsItsFirstCommit(self):
        first = self.commit(0)
        self.commit(1)
        self.commit(2)
        self.assertEqual(tidy_files.base_commit(), first)

    def test_Change_OfTheOnlyCommit_IsTheWholeTree(self):
        self.commit(0)
        self.assertLessEqual({"src/base/Alone.cpp", "src/link/Reply.h"}, tidy_files.of_the_change(None, tidy_files.tracked())[0])

    def test_Change_IsWhatCommitsAndTheWorkingTreeHold(self):
        files = {"src/base/Alone.cpp", "src/base/New.cpp", "src/channels/Channel.cpp"}
        first = self.commit(0)
        self.write("src/base/Alone.cpp", "#include <vector>\n")
        self.commit(1)
        self.write("src/channels/Channel.cpp", "#include <vector>\n")
        self.write("src/base/New.cpp", "#include <vector>\n")
        wanted = tidy_files.of_the_change(first, tidy_files.tracked())[0]
        self.assertEqual(wanted, files | {name for name in tidy_files.of_the_day(tidy_files.tracked()) if tidy_files.how(name)})

    def test_Change_OfWhatDecidesOnTheFindings_IsTheWholeTree(self):
        for name in (".clang-tidy", "src/.clang-tidy"):
            with self.subTest(name):
                first = self.commit(0)
                self.write(name, "")
                self.assertEqual(tidy_files.of_the_change(first, tidy_files.tracked())[0], set(tidy_files.tracked()))
                Path(name).unlink()

    def test_UnknownBase_Fails(self):
        self.commit(0)
        with self.assertRaises(subprocess.CalledProcessError):
            tidy_files.of_the_change("nowhere", tidy_files.tracked())

    def test_SevenDays_SeeEachFileOnce(self):
        seen = []
        for day in range(7):
            self.commit(24 * day)
            seen += tidy_files.of_the_day(tidy_files.tracked())
        self.assertEqual(sorted(seen), sorted(tidy_files.tracked()))

    def test_ADay_IsThatOfTheLastCommitAndNotOfTheClock(self):
        self.commit(1)
        morning = tidy_files.of_the_day(tidy_files.tracked())
        self.commit(23)
        self.assertEqual(tidy_files.of_the_day(tidy_files.tracked()), morning)
        self.commit(23 + 7 * 24)
        self.assertEqual(tidy_files.of_the_day(tidy_files.tracked()), morning)


if __name__ == "__main__":
    unittest.main()
