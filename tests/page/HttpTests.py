"""Runs the examples of docs/http.md against a page."""

import re
import subprocess
import sys
import unittest

from ScriptedPage import PATIENCE, SOURCE, ScriptedPage

EXAMPLE = re.compile(r"```(sh|python)\n(.*?)```\n<!-- prints: (.*?) -->", re.S)


class HttpTests(unittest.TestCase):
    def test_each_example_runs_and_prints_what_the_page_says(self):
        text = (SOURCE / "docs/http.md").read_text(encoding="utf-8")
        examples = EXAMPLE.findall(text)
        self.assertEqual(len(examples), len(re.findall(r"```(?:sh|python)\n", text)), "every example says what it prints")
        self.assertEqual({language for language, _, _ in examples}, {"sh", "python"})
        with ScriptedPage() as page:
            for language, code, prints in examples:
                with self.subTest(code=code):
                    code = code.replace("http://127.0.0.1:8080", page.url).replace("YOUR_TOKEN", page.token)
                    self.assertNotIn(":8080", code)
                    program = [sys.executable, "-c"] if language == "python" else ["bash", "-e", "-c"]
                    run = subprocess.run([*program, code], capture_output=True, text=True, timeout=PATIENCE)
                    self.assertEqual(run.returncode, 0, run.stderr)
                    self.assertRegex(run.stdout, prints)
                    self.assertEqual(run.stderr, "")

