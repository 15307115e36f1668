"""What the emulator does with transcripts, as a program: recording, replaying, checking, showing, and the proxy."""

import unittest

from RunningEmulator import Emulator, Folder, run

RECORD = "0.1 0.5\tlistprod\t0_listprod_9 \\r\n0.7 0\tstatus\t0_status_ \\r\n1.5 0\tstatus\t0_status_9 1 4 \\r\n"


class FolderTests(unittest.TestCase):
    def setUp(self):
        self.folder = self.enterContext(Folder())
        self.record = self.write("record.txt", RECORD)

    def write(self, name, text):
        (self.folder / name).write_text(text, encoding="utf-8", newline="\n")
        return str(self.folder / name)

    def commands(self, name):
        """The commands of a record."""
        return [line.split("\t")[1] for line in (self.folder / name).read_text(encoding="utf-8").splitlines()]


class RecordTests(FolderTests):
    def test_what_a_client_has_seen_is_in_the_record_while_it_runs(self):
        with Emulator("--record", str(self.folder / "new.txt")) as emulator, emulator.client() as client:
            for command in "checkcon 9", "status":
                client.ask(command)
                self.assertEqual(self.commands("new.txt")[-1], command)

    def test_quiet_records_without_showing(self):
        with Emulator("--record", str(self.folder / "new.txt")) as emulator, emulator.client() as client:
            client.ask("checkcon 9")
            emulator.process.stdin.close()
            emulator.wait_for(r"^\(end of output\)$")
            self.assertFalse([line for line in emulator.lines if "checkcon" in line])
        self.assertEqual(self.commands("new.txt"), ["checkcon 9"])

    def test_record_that_is_there_goes_on_or_is_replaced_as_asked(self):
        for option, kept in ("--append", ["listprod", "status", "status"]), ("--overwrite", []):
            self.write("record.txt", RECORD)
            with Emulator("--record", self.record, option) as emulator, emulator.client() as client:
                client.ask("checkcon 9")
                self.assertEqual(self.commands("record.txt"), [*kept, "checkcon 9"])

    def test_replay_may_be_recorded_in_another_file(self):
        with Emulator("--replay", self.record, "--record", str(self.folder / "new.txt")) as emulator, emulator.client() as client:
            client.ask("listprod")
            self.assertEqual(self.commands("new.txt"), ["listprod"])


class ReplayTests(FolderTests):
    def test_replies_come_at_once_unless_the_recorded_timing_is_asked_for(self):
        record = self.write("slow.txt", RECORD.replace("0.1 0.5", "0.1 3600") + "2 0.05\tfindstat\t0_findstat_0 \\r\n")
        for timing, first in ([], "listprod"), (["--timing", "at-once"], "listprod"), (["--timing", "recorded"], "status"):
            with Emulator("--replay", record, *timing) as emulator, emulator.client() as client:
                client.send("listprod")
                client.send("status")
                self.assertEqual(client.receive().split("_")[1], first, timing)
        with Emulator("--replay", record, "--timing", "recorded") as emulator, emulator.client() as client:
            self.assertEqual(client.ask("findstat"), "0_findstat_0 \r")

    def test_missing_answer_is_the_one_that_was_chosen_and_is_warned_of_once(self):
        for options, answer in (([], "3_checkcon 9_e not in the record\r"), (["--missing", "refuse"], "3_checkcon 9_e not in the record\r"),
                                (["--missing", "silent"], None), (["--missing", "model", "--scenario", "product-9"], "0_checkcon 9_1\r"),
                                (["--missing", "model", "--scenario", "product-12"], "0_checkcon 9_0\r")):
            with self.subTest(options=options), Emulator("--replay", self.record, *options) as emulator, emulator.client() as client:
                for _ in range(2):
                    client.send("checkcon 9")
                    client.send("listprod")
                    if answer:
                        self.assertEqual(client.receive(), answer)
                    self.assertEqual(client.receive(), "0_listprod_9 \r")
                emulator.process.stdin.close()
                emulator.wait_for(r"^\(end of output\)$")
                self.assertEqual([line for line in emulator.lines if "warning" in line],
                                 ["warning: the record has no answer to \"checkcon 9\""])

    def test_replies_come_in_turn_and_the_last_stays(self):
        with Emulator("--replay", self.record) as emulator, emulator.client() as client:
            self.assertEqual([client.ask("status") for _ in range(3)], ["0_status_ \r", "0_status_9 1 4 \r", "0_status_9 1 4 \r"])


class CheckTests(FolderTests):
    def check(self, record, server, *options, expect):
        return run("--check", record, "--server", f"127.0.0.1:{server.port}", *options, expect=expect)

    def test_exit_code_tells_whether_there_are_differences(self):
        other = self.write("other.txt", RECORD.replace("0_listprod_9 ", "0_listprod_9.05 "))
        with Emulator("--replay", self.record) as server:
            self.assertEqual(self.check(self.record, server, expect=0), "no differences in 3 exchanges\n")
        for options, code, end in ([], 3, "\n1 difference in 3 exchanges\n"), (["--tolerance", "0.1"], 0, "no differences in 3 exchanges\n"):
            with self.subTest(options=options), Emulator("--replay", self.record) as server:
                self.assertTrue(self.check(other, server, *options, expect=code).endswith(end))

    def test_check_that_was_stopped_is_no_success(self):
        with Emulator("--fault", "*; always; late 60000") as server:
            self.assertIn("stopped: 3 of 3 exchanges were not compared", self.check(self.record, server, "--for", "300ms", expect=3))

    def test_pauses_are_kept_where_the_recorded_timing_is_asked_for(self):
        record = self.write("long.txt", RECORD.replace("0.7 0", "3600.7 0"))
        with Emulator("--replay", record) as server:
            self.check(record, server, expect=0)
        with Emulator("--replay", record, "--record", str(self.folder / "seen.txt")) as server:
            self.assertIn("stopped: ", self.check(record, server, "--timing", "recorded", "--for", "300ms", expect=3))
        self.assertLessEqual(len(self.commands("seen.txt")), 1)


class ShowTests(FolderTests):
    def test_record_is_shown_with_what_is_odd(self):
        said = run("--show", self.write("odd.txt", RECORD + "2.5\tfind 9\t-\n"))
        self.assertRegex(said, r"(?m)^ +2\.500 +- +find 9 +- +no answer$")
        self.assertIn("4 exchanges, 1 without an answer\n", said)

    def test_line_that_cannot_be_read_is_named(self):
        self.assertIn("bad.txt: line 4: ", run("--show", self.write("bad.txt", RECORD + "nonsense\n"), expect=1))


class ProxyTests(FolderTests):
    def proxy(self, port, *options):
        return Emulator("--proxy", f"127.0.0.1:{port}", *options)

    def test_record_of_a_session_replays_to_the_same_answers(self):
        commands = ["listprod", "readcurval 9", "readsetpoint 9 0 -1", "readcurval 9"]
        with Emulator("--scenario", "product-9") as server, self.proxy(server.port, "--record", str(self.folder / "new.txt")) as proxy:
            with proxy.client() as client:
                said = [client.ask(command) for command in commands]
            proxy.wait_for(f"answering on 127.0.0.1:{proxy.port} for 127.0.0.1:{server.port}$")
        self.assertEqual(self.commands("new.txt"), commands)
        with Emulator("--replay", str(self.folder / "new.txt")) as replay, replay.client() as client:
            self.assertEqual([client.ask(command) for command in commands], said)

    def test_rules_change_the_real_replies_and_those_that_never_fired_are_told(self):
        with Emulator("--scenario", "product-9") as server, \
                self.proxy(server.port, "--fault", "status; always; code 7", "--fault", "findstat; always; code 7") as proxy:
            with proxy.client() as client:
                self.assertEqual(client.ask("status"), "7_status_ \r")
                self.assertEqual(client.ask("checkcon 9"), "0_checkcon 9_1\r")
            proxy.process.stdin.close()
            proxy.wait_for(r"^\(end of output\)$")
            self.assertEqual([line for line in proxy.lines if "never fired" in line],
                             ['--fault 2: "findstat; always; code 7" never fired: no command fitted its pattern'])

    def test_server_that_is_not_there_answers_with_nothing(self):
        with Emulator() as gone:
            pass
        with self.proxy(gone.port) as proxy, proxy.client() as client:
            self.assertEqual(client.ask("status"), "")


if __name__ == "__main__":
    unittest.main()
