"""Holds docs/emulator.md against the program, and runs its examples."""

import os
import re
import socket
import subprocess
import sys
import unittest
from pathlib import Path

from RunningEmulator import PROGRAM, run

PAGE = (Path(os.environ["OKO_SOURCE_DIR"]) / "docs/emulator.md").read_text(encoding="utf-8")
EXAMPLE = re.compile(r"```(sh|python)\n(.*?)```\n<!-- prints: (.*?) -->", re.S)


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as server:
        return server.getsockname()[1]


class DocumentationTests(unittest.TestCase):
    def test_each_example_runs_and_prints_what_the_page_says(self):
        examples = EXAMPLE.findall(PAGE)
        self.assertEqual(len(examples), len(re.findall(r"```(?:sh|python)\n", PAGE)), "every example says what it prints")
        self.assertEqual({language for language, _, _ in examples}, {"sh", "python"})
        environment = dict(os.environ, PATH=f"{Path(PROGRAM).parent}:{os.environ['PATH']}")
        for language, code, prints in examples:
            with self.subTest(code=code):
                port = str(free_port())
                code = code.replace("60001", port).replace(" ctl ", f" ctl --control-port {port} ")
                program = [sys.executable, "-c"] if language == "python" else ["bash", "-e", "-c"]
                done = subprocess.run([*program, code], stdin=subprocess.PIPE, capture_output=True, text=True, timeout=120,
                                      env=environment)
                self.assertEqual(done.returncode, 0, done.stderr)
                self.assertRegex(done.stdout, prints)

    def test_page_shows_the_commands_as_the_program_does(self):
        self.assertIn(f"```text\n{run('--commands')}```", PAGE)

    def test_page_has_every_request_with_what_it_does(self):
        requests = re.findall(r"^  (\S.*?)  +(\S.*)$", run("ctl", "--help").split("Requests:")[1], re.M)
        self.assertGreater(len(requests), 10)
        for example, description in requests:
            self.assertIn(f"| `{example}` | {description} |", PAGE)

    def test_page_has_every_option(self):
        options = set(re.findall(r"^  (?:-\w,)?(--[\w-]+)", run("--help"), re.M)) - {"--help", "--version", "--list-scenarios"}
        self.assertGreater(len(options), 20)
        for option in options:
            self.assertRegex(PAGE, rf"`{option}[ `\\]")


if __name__ == "__main__":
    unittest.main()
