"""Runs tests under Wine against the emulator of this system instead of the one for Windows.

    NativeEmulator.py EMULATOR PROGRAM [ARGUMENT...]

The tests connect to a port of this program and say an emulator's options; its output goes back over the connection, and it
ends with it. So a test of the library meets the two emulators in turn, and neither knows.
"""

import os
import re
import shlex
import socket
import socketserver
import subprocess
import sys
import threading
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def native(word):
    """A file's name under Wine as this system has it."""
    drive = re.match(r"([A-Za-z]):[\\/]", word)
    if not drive:
        return word
    prefix = Path(os.environ.get("OKO_WINEPREFIX", ROOT / "build/wine"))
    return str((prefix / "dosdevices" / (drive.group(1).lower() + ":")).resolve() / word[3:].replace("\\", "/"))


class Run(socketserver.StreamRequestHandler):
    def handle(self):
        options = self.rfile.readline().decode().strip()
        words = [native(word) for word in shlex.split(options)]
        with subprocess.Popen([sys.argv[1], *words], stdin=subprocess.PIPE, stdout=self.request.fileno(),
                              stderr=self.request.fileno()) as emulator:
            ended = threading.Thread(target=self.tell_end, args=(emulator,))
            ended.start()
            while given := self.rfile.read1(4096):
                emulator.stdin.write(given)
                emulator.stdin.flush()
            emulator.stdin.close()
            ended.join()

    def tell_end(self, emulator):
        emulator.wait()
        self.request.shutdown(socket.SHUT_RDWR)


class Launcher(socketserver.ThreadingTCPServer):
    daemon_threads = True


def main():
    with Launcher(("127.0.0.1", 0), Run) as launcher:
        threading.Thread(target=launcher.serve_forever, daemon=True).start()
        environment = dict(os.environ, OKO_NATIVE_EMULATOR_PORT=str(launcher.server_address[1]))
        result = subprocess.run([ROOT / "scripts/wine", *sys.argv[2:]], env=environment, stdin=subprocess.DEVNULL)
        launcher.shutdown()
    return result.returncode


if __name__ == "__main__":
    sys.exit(main())
