"""A page of a made-up watch, served by oko-scripted-page, and what the tests of it share."""

import os
import pathlib
import subprocess
import time
import urllib.request

SOURCE = pathlib.Path(os.environ["OKO_SOURCE_DIR"])
PROGRAM = os.environ["OKO_SCRIPTED_PAGE"]
PATIENCE = 200  # seconds that a busy machine may take


class ScriptedPage:
    def __enter__(self):
        self.process = subprocess.Popen([PROGRAM], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.url, self.token = self.process.stdout.readline().split()
        self.url = self.url.rstrip("/")
        wait_until(lambda: '"row"' in self.get("/api/channels"))
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.wait(timeout=PATIENCE)
        self.process.stdout.close()

    def say(self, word):
        self.process.stdin.write(word + "\n")
        self.process.stdin.flush()

    def get(self, path, headers=None):
        try:
            with urllib.request.urlopen(urllib.request.Request(self.url + path, headers=headers or {})) as reply:
                return reply.read().decode()
        except urllib.error.URLError:
            return ""


def wait_until(holds):
    """Returns whether it came to hold; a test that waits in vain fails with its own words."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        if holds():
            return True
        time.sleep(0.1)
    return False
