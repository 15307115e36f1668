"""oko-host with the library that the tests made up: a device that does as a file says."""

import os
import pathlib
import signal
import subprocess
import time
import urllib.request

TOKEN = "open-sesame"
PATIENCE = 120  # seconds that a busy machine may take


class Host:
    def __init__(self, build, folder, port):
        self.program = pathlib.Path(build) / "bin" / "oko-host"
        self.library = pathlib.Path(build) / "bin" / "oko-fake-library.so"
        self.folder = pathlib.Path(folder)
        self.control = self.folder / "control"
        self.log = self.folder / "night.csv"
        self.port = port
        self.address = f"http://127.0.0.1:{port}/"
        self.process = None
        self.steer()

    def steer(self, *lines):
        """The device does this from now on; without lines it does its best."""
        new = self.folder / "control.new"
        new.write_text("".join(line + "\n" for line in lines))
        new.replace(self.control)

    def start(self, *more):
        environment = dict(os.environ, OKO_FAKE_CONTROL=str(self.control))
        arguments = ["serve", "--device", "simulator", "--library", str(self.library), "--http-port", str(self.port),
                     "--token", TOKEN, "--allow-set", "--every", "200ms", "--answer-within", "1s",
                     "--csv", str(self.log), "--append", "--alarm", "CO2: 4..6 for 1s", *more]
        with open(self.folder / "host.log", "ab") as log:
            self.process = subprocess.Popen([self.program, *arguments], env=environment, stdin=subprocess.DEVNULL,
                                            stdout=log, stderr=log, cwd=self.folder)
        self.await_page()

    def await_page(self):
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end and self.process.poll() is None:
            try:
                with urllib.request.urlopen(self.address + "api/channels", timeout=PATIENCE) as reply:
                    reply.read()
                return
            except OSError:
                time.sleep(0.05)
        raise RuntimeError("oko-host serves no page: " + (self.folder / "host.log").read_text())

    def stop(self):
        if self.process is None:
            return
        self.process.send_signal(signal.SIGINT)
        try:
            self.process.wait(timeout=PATIENCE)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.process = None

    def report(self, log, report):
        return subprocess.run([self.program, "report", log, "--output", report], capture_output=True, text=True, check=True)
