"""The emulator as a process of its own, on a free port, and a client of it."""

import json
import os
import re
import socket
import subprocess
import tempfile
import threading
from pathlib import Path

PROGRAM = os.environ["OKO_EMULATOR"]
PATIENCE = 120  # seconds, for what comes at once on a machine that has time


class Emulator:
    """Runs while the with statement does, and ends with its input as under a script."""

    def __init__(self, *options, quiet=True, until_eof=True):
        self.options = ["--port", "0", *(["--until-eof"] if until_eof else []), *(["--quiet"] if quiet else []), *options]
        self.lines = []
        self.changed = threading.Condition()

    def __enter__(self):
        self.process = subprocess.Popen([PROGRAM, *self.options], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=subprocess.STDOUT, text=True, encoding="utf-8", errors="replace")
        self.reader = threading.Thread(target=self._read)
        self.reader.start()
        try:
            ready = self.wait_for(r"(?:answering on 127.0.0.1:|holding port )(\d+)")
        except AssertionError:
            self.__exit__()
            raise
        self.port = int(ready.group(1))
        control = [re.search(r"remote control on 127.0.0.1:(\d+)", line) for line in self.lines]
        self.control_port = next((int(found.group(1)) for found in control if found), None)
        return self

    def __exit__(self, *_):
        if not self.process.stdin.closed:
            self.process.stdin.close()
        if "--until-eof" not in self.options:
            self.process.terminate()
        try:
            self.process.wait(PATIENCE)
        finally:
            self.process.kill()
            self.reader.join()
            self.process.stdout.close()

    def _read(self):
        for line in self.process.stdout:
            with self.changed:
                self.lines.append(line.rstrip("\n"))
                self.changed.notify_all()
        with self.changed:
            self.lines.append("(end of output)")
            self.changed.notify_all()

    def wait_for(self, pattern):
        """The first line that fits, once it is there."""
        def find():
            return next((found for found in (re.search(pattern, line) for line in self.lines) if found), None)

        with self.changed:
            self.changed.wait_for(lambda: find() or "(end of output)" in self.lines, PATIENCE)
            found = find()
            if not found:
                raise AssertionError(f"no line fits {pattern!r} in {self.lines}")
            return found

    def say(self, line):
        """A line on its standard input."""
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()

    def client(self):
        return Client(self.port)

    def control(self):
        return ControlClient(self.control_port)


class Client:
    """What the library is: a socket that sends commands and waits for their replies."""

    def __init__(self, port):
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.connect(("127.0.0.1", port))
        self.socket.settimeout(PATIENCE)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.socket.close()

    def ask(self, command):
        self.send(command)
        return self.receive()

    def send(self, command):
        self.socket.send(command if isinstance(command, bytes) else command.encode())

    def receive(self):
        return self.socket.recv(65536).decode("latin-1")

    def value(self, command):
        """The payload of a command's reply, as a number."""
        code, echo, payload = self.ask(command).rstrip("\r").split("_")
        assert (code, echo) == ("0", command), (code, echo)
        return float(payload)


class ControlClient:
    """A connection to the remote control."""

    def __init__(self, port):
        self.socket = socket.create_connection(("127.0.0.1", port), PATIENCE)
        self.file = self.socket.makefile("rw", encoding="utf-8", newline="\n")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.file.close()
        self.socket.close()

    def say(self, line):
        self.file.write(line + "\n")
        self.file.flush()

    def hear(self):
        return json.loads(self.file.readline())

    def is_dropped(self):
        """Waits until the other side has closed the connection."""
        try:
            return self.socket.recv(100) == b""
        except ConnectionResetError:  # it had not read everything
            return True

    def ask(self, request):
        self.say(request if isinstance(request, str) else json.dumps(request))
        return self.hear()


def run(*arguments, text="", expect=0):
    """Runs the program to its end. Gives what it wrote."""
    done = subprocess.run([PROGRAM, *arguments], input=text, capture_output=True, text=True, timeout=PATIENCE)
    assert done.returncode == expect, (done.returncode, done.stdout, done.stderr)
    return done.stdout + done.stderr


class Folder(tempfile.TemporaryDirectory):
    def __enter__(self):
        return Path(super().__enter__())
