""".ci/run, in a folder where all that it calls is made up, fails when scripts/tidy does, whenever that ends, and leaves nothing of it."""

import os
import shutil
import signal
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

TREE = Path(__file__).resolve().parents[2]
FINDING = "src/link/Reply.cpp:1:1: error: included header cstddef is not used directly"
SOUND = "#!/bin/sh\n"
WAIT = "until [ -e {} ]; do sleep 0.05; done\n"


class CiTests(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="oko-ci-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        (self.folder / ".ci").mkdir()
        shutil.copy(TREE / ".ci/run", self.folder / ".ci/run")
        for script in (TREE / "scripts").iterdir():
            self.script(script.name, SOUND)

    def script(self, name, text):
        path = self.folder / "scripts" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        path.chmod(0o755)

    def tidy(self, before="", status=0):
        """What scripts/tidy does: waits for what `before` says, and ends."""
        self.script("tidy", f"{SOUND}echo $$ >tidy-began\n{before}{f'echo {FINDING!r}' if status else ':'} >&2\n>tidy-ended\nexit {status}\n")

    def run_ci(self):
        environment = dict(os.environ, PATH=f"{self.folder / 'scripts/bin'}:{os.environ['PATH']}")
        run = subprocess.run((".ci/run",), cwd=self.folder, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        return run.returncode, run.stdout

    def test_NoFinding_Passes(self):
        self.tidy()
        status, said = self.run_ci()
        self.assertEqual(status, 0, said)

    def test_FindingBeforeTheTestsEnd_IsPrintedAndFails(self):
        self.tidy(status=1)
        self.script("test", SOUND + WAIT.format("tidy-ended"))
        status, said = self.run_ci()
        self.assertEqual(status, 1, said)
        self.assertIn(FINDING, said)

    def test_FindingAfterTheTestsEnded_IsWaitedForPrintedAndFails(self):
        self.tidy(before=WAIT.format("tests-ended") + "sleep 0.5\n", status=1)
        self.script("test", SOUND + ">tests-ended\n")
        status, said = self.run_ci()
        self.assertEqual(status, 1, said)
        self.assertIn(FINDING, said)

    def test_OnceTheTestsHaveEnded_TidyGivesWayToNobody(self):
        self.tidy(before=WAIT.format("renice-asked"))
        self.script("test", SOUND + WAIT.format("tidy-began") + ">tests-ended\n")
        self.script("bin/renice", SOUND + "[ -e tests-ended ] && echo $* >renice-new && mv renice-new renice-asked\nexit 1\n")
        status, said = self.run_ci()
        self.assertEqual(status, 0, said)
        group = (self.folder / "tidy-began").read_text().strip()
        self.assertEqual((self.folder / "renice-asked").read_text(), f"--priority 0 --pgrp {group}\n")

    def test_FindingWhoseLogIsGone_Fails(self):
        self.tidy(status=1)
        self.script("test", SOUND + WAIT.format("tidy-ended") + "rm -f build/*\n")
        self.assertNotEqual(self.run_ci()[0], 0)

    def test_TidyThatIsKilled_Fails(self):
        self.tidy(before="kill -9 $$\n")
        self.assertNotEqual(self.run_ci()[0], 0)

    def test_FailingTests_FailAndLeaveNothingOfTidy(self):
        self.tidy(before="sleep 1000 &\nwait\n")
        self.script("test", SOUND + WAIT.format("tidy-began") + "exit 3\n")
        self.assertEqual(self.run_ci()[0], 3)
        group = int((self.folder / "tidy-began").read_text())
        while self.lives(group):  # until it ends, or the suite's patience does
            time.sleep(0.05)

    def test_RunThatIsEnded_LeavesNothingOfTidy(self):
        self.tidy(before="sleep 1000 &\nwait\n")
        self.script("test", SOUND + WAIT.format("tidy-began") + "echo testing\nsleep 1000\n")
        with subprocess.Popen((".ci/run",), cwd=self.folder, stdout=subprocess.PIPE, text=True, start_new_session=True) as run:
            while run.stdout.readline() != "testing\n":
                pass
            os.killpg(run.pid, signal.SIGTERM)  # .ci/run and the tests, as their group
        group = int((self.folder / "tidy-began").read_text())
        while self.lives(group):  # until it ends, or the suite's patience does
            time.sleep(0.05)

    @staticmethod
    def lives(group):
        """Whether a process of the group still runs; one that has ended may wait for whoever takes note of it."""
        for status in Path("/proc").glob("[0-9]*/stat"):
            try:
                fields = status.read_text().rpartition(")")[2].split()
            except OSError:
                continue
            if int(fields[2]) == group and fields[0] not in "ZX":
                return True
        return False


if __name__ == "__main__":
    unittest.main()
