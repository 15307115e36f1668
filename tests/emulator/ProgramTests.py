"""The emulator as a program: its options, its output, its ends."""

import re
import signal
import subprocess
import unittest

from RunningEmulator import PATIENCE, PROGRAM, Client, Emulator, Folder, run


class StartTests(unittest.TestCase):
    def test_free_port_is_taken_said_and_answered_on(self):
        with Emulator() as first, Emulator() as second:
            self.assertNotEqual(first.port, second.port)
            for emulator in first, second:
                with emulator.client() as client:
                    self.assertEqual(client.ask("checkcon 9"), "0_checkcon 9_1\r")

    def test_taken_port_ends_with_its_code(self):
        with Emulator() as emulator:
            said = run("--port", str(emulator.port), expect=2)
            self.assertIn(f"port {emulator.port} is in use", said)

    def test_placeholder_makes_room_and_ends(self):
        with Emulator("--placeholder", quiet=False) as placeholder:
            with placeholder.client() as client:
                self.assertEqual(client.ask("status"), "")
                process = subprocess.Popen([PROGRAM, "--port", str(placeholder.port), "--until-eof", "--quiet"],
                                           stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
                self.assertIn("answering on", process.stdout.readline())
                placeholder.wait_for(r"^\(end of output\)$")
                self.assertEqual(client.ask("checkcon 9"), "0_checkcon 9_1\r")
                process.communicate("")

    def test_words_of_a_client_that_starts_its_server_name_the_port(self):
        with Emulator() as free:
            port = free.port
        process = subprocess.Popen([PROGRAM, "--until-eof", "server", "address=localhost", f"port={port}"],
                                   stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.assertIn(f":{port} ", process.stdout.readline())
        process.communicate("")
        self.assertEqual(process.returncode, 0)


class EndTests(unittest.TestCase):
    def test_end_of_input_ends_it(self):
        with Emulator() as emulator:
            emulator.process.stdin.close()
            self.assertEqual(emulator.process.wait(PATIENCE), 0)

    def test_signals_end_it_with_its_last_words(self):
        for number in signal.SIGINT, signal.SIGTERM, signal.SIGHUP:
            with Emulator("--fault", "status; always; silent") as emulator:
                emulator.process.send_signal(number)
                self.assertEqual(emulator.process.wait(PATIENCE), 0)
                emulator.wait_for("never fired")

    def test_time_ends_it_though_a_reply_is_still_to_come(self):
        with Emulator("--for", "300ms", "--fault", "*; always; late 60000") as emulator, emulator.client() as client:
            client.send("status")
            self.assertEqual(emulator.process.wait(PATIENCE), 0)


class RefusalTests(unittest.TestCase):
    def test_what_would_be_ignored_or_do_harm_is_refused(self):
        with Emulator() as free:
            pass
        with Folder() as folder:
            record = folder / "run.txt"
            record.write_text("0.1\tstatus\t0_status_ \\r\n")
            for arguments, said in (
                (["--for", "0"], "no time to run for"),
                (["--for", "-3"], "not a duration"),
                (["--speed", "0"], "--speed"),
                (["--fault", "raedcurval*; always; silent"], "--fault 1: the pattern"),
                (["--fault", "status; chance 2; silent"], "--fault 1: the trigger"),
                (["--fault", "status; between 5 3; silent"], "--fault 1: the trigger"),
                (["--fault", "status; always; silent", "--fault", "freeze 99 0"], "--fault 2: "),
                (["--no-such-option"], "--no-such-option"),
                (["word"], "\"word\" is no word that starts a server"),
                (["server", "port=0"], "names no port"),
                (["--replay", str(record), "--fault", "status; always; silent"], "--fault"),
                (["--replay", str(record), "--scenario", "product-9"], "--missing model"),
                (["--replay", str(record), "--speed", "2"], "--missing model"),
                (["--replay", str(record), "--record", str(record)], "at the same time"),
                (["--replay", str(record), "--record", f"{folder}/./run.txt"], "at the same time"),
                (["--record", str(record)], "--overwrite"),
                (["--append"], "--record"),
                (["--record", str(record), "--overwrite", "--append"], "--overwrite does not go with --append"),
                (["--placeholder", "--record", str(folder / "new.txt")], "--placeholder does not go with --record"),
                (["--placeholder", "--speed", "2"], "--placeholder does not go with --speed"),
                (["--check", str(record), "--replay", str(record)], "--check does not go with --replay"),
                (["--check", str(record), "--fault", "status; always; silent"], "--check does not go with --fault"),
                (["--server", "127.0.0.1:1"], "--server goes with --check"),
                (["--tolerance", "1"], "--tolerance goes with --check"),
                (["--start", str(record)], "--start goes with --proxy"),
                (["--missing", "perhaps"], "none of refuse, silent and model"),
                (["--missing", "model"], "--replay"),
                (["--timing", "recorded"], "--replay or --check"),
                (["--show", str(record), "--fault", "status; always; silent"], "--fault"),
                (["--proxy", "127.0.0.1:1", "--scenario", "product-9"], "--scenario"),
                (["--proxy", "127.0.0.1:1", "--fault", "*; always; freeze 9 0"], "a real one"),
                (["--proxy", f"127.0.0.1:{free.port}", "--start", str(record)], "cannot start"),
            ):
                with self.subTest(arguments=arguments):
                    done = subprocess.run([PROGRAM, "--port", "0", "--until-eof", *arguments], stdin=subprocess.DEVNULL,
                                          capture_output=True, text=True, timeout=PATIENCE)
                    self.assertIn(done.returncode if done.returncode < 100 else 100, (1, 100), done.stdout)
                    self.assertIn(said, done.stdout + done.stderr)
                    self.assertEqual(record.read_text(), "0.1\tstatus\t0_status_ \\r\n")


class AnswerTests(unittest.TestCase):
    def test_late_reply_of_one_client_delays_no_other(self):
        with Emulator("--fault", "status; always; late 60000", "--fault", "findstat; always; late 50") as emulator:
            with emulator.client() as slow, emulator.client() as quick:
                slow.send("status")
                for _ in range(50):
                    quick.ask("listprod")
                self.assertIn("findstat", slow.ask("findstat"))

    def test_largest_datagram_gets_an_answer(self):
        with Emulator() as emulator, emulator.client() as client:
            client.send(b"x" * 65507)
            answer = client.receive()
            self.assertEqual(len(answer), 65507)
            self.assertTrue(answer.startswith("3_xxx"))
            self.assertEqual(client.ask("checkcon 9"), "0_checkcon 9_1\r")

    def test_same_seed_repeats_a_run(self):
        said = []
        for seed in "1", "1", "2":
            with Emulator("--seed", seed, "--fault", "*; chance 0.5; code 7") as emulator, emulator.client() as client:
                said.append([client.ask("checkcon 9")[0] for _ in range(64)])
        self.assertEqual(said[0], said[1])
        self.assertNotEqual(said[0], said[2])


class OutputTests(unittest.TestCase):
    def test_rules_that_never_fired_are_told_at_the_end(self):
        rules = ("status; always; code 2", "findstat; always; code 2", "status; nth 9; code 2")
        with Emulator(*(word for rule in rules for word in ("--fault", rule))) as emulator, emulator.client() as client:
            client.ask("status")
            emulator.process.stdin.close()
            emulator.wait_for(r'"findstat; always; code 2" never fired: no command fitted its pattern')
            emulator.wait_for(r'"status; nth 9; code 2" never fired: its trigger never came for any of the 1 command')
            emulator.wait_for(r"^\(end of output\)$")
            self.assertFalse([line for line in emulator.lines if "never fired" in line and "always; code 2" in line and "status" in line])

    def test_every_exchange_is_shown_and_none_where_it_is_quiet(self):
        for quiet in False, True:
            with Emulator(quiet=quiet) as emulator, emulator.client() as client:
                for _ in range(300):
                    client.ask("checkcon 9")
                emulator.process.stdin.close()
                emulator.wait_for(r"^\(end of output\)$")
                shown = [line for line in emulator.lines if line.endswith("\tcheckcon 9\t0_checkcon 9_1\\r")]
                self.assertEqual(len(shown), 0 if quiet else 300)

    def test_reader_that_does_not_read_delays_no_answer_and_learns_what_is_missing(self):
        process = subprocess.Popen([PROGRAM, "--port", "0", "--until-eof"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        ready = process.stdout.readline().decode()
        with Client(int(re.search(r":(\d+) ", ready).group(1))) as client:
            noise = b"x" * 60000
            for _ in range(120):  # 14 MB of lines; the pipe holds 64 KB of them
                client.send(noise)
                client.receive()
        process.stdin.close()
        written = process.stdout.read()
        self.assertRegex(written, rb"\n\(\d+ lines are missing here: they came faster than they could be shown\)\n")
        self.assertEqual(process.wait(PATIENCE), 0)
        process.stdout.close()

    def test_commands_are_shown_as_the_library_sends_them(self):
        said = run("--commands")
        for command in "readcurval 9", "readcurval 12(1)", "readsetpoint 9 0 -1", "findstat":
            self.assertRegex(said, rf"(?m)^{re.escape(command)}( |$)")


if __name__ == "__main__":
    unittest.main()
