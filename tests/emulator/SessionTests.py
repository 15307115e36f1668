"""A session with a server that the proxy starts, and its record."""

import os
import signal
import socket
import time
import unittest

from RunningEmulator import PATIENCE, PROGRAM, Client, Emulator, Folder

# Begins to answer when it is told to, and ends by itself should the test not come to it.
SERVER = f"""#!/bin/sh
echo $$ > process
while [ ! -e go ]; do sleep 0.02; done
exec "{PROGRAM}" --quiet --for 10m "$@"
"""


def free_port():
    with Emulator() as emulator:
        return emulator.port


class StartedServer:
    """A server's program in a folder, for a proxy to start; it ends with the block."""

    def __init__(self, folder):
        self.folder = folder
        self.port = free_port()
        self.program = folder / "server"
        self.program.write_text(SERVER)
        self.program.chmod(0o755)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.program.exists():
            self.end()

    def proxy(self, record, *options):
        return Emulator("--proxy", f"127.0.0.1:{self.port}", "--start", str(self.program), "--record", str(record),
                        *options, quiet=False)

    def begin(self, client):
        """Lets it begin, and asks until it answers."""
        (self.folder / "go").touch()
        wait_until(lambda: client.ask("status"))

    def end(self):
        """Ends it, and waits until its port is free again: a command before that would be lost."""
        os.kill(int((self.folder / "process").read_text()), signal.SIGKILL)
        self.program.unlink()
        wait_until(lambda: is_free(self.port))


def wait_until(condition):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            raise AssertionError("it has not come to it")
        time.sleep(0.05)


def is_free(port):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        try:
            probe.bind(("127.0.0.1", port))
        except OSError:
            return False
        return True


def answers(port):
    with Client(port) as client:
        try:
            return client.ask("status") != ""
        except ConnectionRefusedError:
            return False


class StartedServerTests(unittest.TestCase):
    def test_record_begins_with_the_first_answer_and_replays_to_the_same_value(self):
        with Folder() as folder, StartedServer(folder) as server:
            record = folder / "session.txt"
            with server.proxy(record) as proxy:
                with proxy.client() as client:
                    self.assertEqual(client.ask("status"), "")
                    server.begin(client)
                    value = client.value("readcurval 9")
                proxy.process.stdin.close()
                proxy.wait_for("not in the record: ")
            self.assertIn("\tstatus\t0_status_", record.read_text().splitlines()[0])
            with Emulator("--replay", str(record)) as replay, replay.client() as client:
                self.assertNotEqual(client.ask("status"), "")
                self.assertEqual(client.value("readcurval 9"), value)

    def test_answer_that_a_rule_takes_away_is_in_the_record(self):
        for effect, kept in ("empty", "\\0"), ("silent", "-"):
            with self.subTest(effect=effect), Folder() as folder, StartedServer(folder) as server:
                record = folder / "session.txt"
                with server.proxy(record, "--fault", f"findstat; always; {effect}") as proxy, proxy.client() as client:
                    self.assertEqual(client.ask("listprod"), "")
                    (folder / "go").touch()
                    wait_until(lambda: answers(server.port))
                    client.send("findstat")
                    if effect == "empty":
                        self.assertEqual(client.receive(), "")
                    self.assertNotEqual(client.ask("status"), "")
                lines = [line.split("\t")[1:] for line in record.read_text().splitlines()]
                self.assertEqual(lines[0], ["findstat", kept])
                self.assertEqual(lines[1][0], "status")

    def test_server_that_is_lost_later_is_recorded_so(self):
        with Folder() as folder, StartedServer(folder) as server:
            record = folder / "session.txt"
            with server.proxy(record) as proxy, proxy.client() as client:
                server.begin(client)
                server.end()
                self.assertEqual(client.ask("findstat"), "")
            self.assertTrue(record.read_text().endswith("\tfindstat\t\\0\n"))


if __name__ == "__main__":
    unittest.main()
