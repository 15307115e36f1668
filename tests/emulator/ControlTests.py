"""The remote control: what can be asked while the emulator runs, from where, and what comes back."""

import json
import socket
import subprocess
import unittest

from RunningEmulator import PATIENCE, PROGRAM, Client, Emulator, Folder, run

CONTROL = ("--control-port", "0", "--scenario", "product-9")


class RequestTests(unittest.TestCase):
    def setUp(self):
        self.emulator = self.enterContext(Emulator(*CONTROL))
        self.client = self.enterContext(self.emulator.client())
        self.control = self.enterContext(self.emulator.control())

    def ask(self, request):
        reply = self.control.ask(request)
        self.assertEqual(reply["ok"], True, reply)
        return reply

    def refuse(self, request):
        reply = self.control.ask(request)
        self.assertEqual(reply["ok"], False, reply)
        return reply["error"]

    def device(self):
        return self.ask("state")["devices"][0]

    def test_set_acts_on_what_the_client_reads(self):
        self.ask("pause")
        self.ask("set 9 0 noise 0")
        self.ask({"do": "set", "product": 9, "device": 0, "what": "value", "to": 36.5})
        self.assertEqual(self.client.value("readcurval 9"), 36.5)
        self.ask("set 9 0 target 38")
        self.assertEqual(self.client.value("readsetpoint 9 0 -1"), 38.0)
        self.ask("set 9 0 error  broken")
        self.assertEqual(self.client.ask("readcurval 9")[:15], "0_readcurval 9_")
        self.assertIn("broken", self.client.ask("readcurval 9"))
        self.ask("set 9 0 error")
        self.assertEqual(self.client.value("readcurval 9"), 36.5)

    def test_wrong_values_are_refused_and_change_nothing(self):
        before = self.device()
        self.ask("pause")
        for request in ("set 9 0 target 99", "set 9 5 target 37", "set 8 0 target 37", "set 9 0 colour 3", "set 9 0 value warm",
                        "set 9 0 value nan", "set 9.5 0 value 3"):
            with self.subTest(request=request):
                self.refuse(request)
        after = self.device()
        self.assertEqual({key: before[key] for key in before if key != "value"}, {key: after[key] for key in after if key != "value"})

    def test_parameter_and_status_are_what_the_client_gets(self):
        self.ask("parameter 9 64 MY-NAME")
        self.assertEqual(self.client.ask("bl-param-read 9 64"), "0_bl-param-read 9 64_MY-NAME\r")
        self.ask("status 9 1 4")
        self.assertEqual(self.client.ask("status"), "0_status_9 1 4 \r")
        self.ask("status 9 1 0")
        self.assertEqual(self.client.ask("status"), "0_status_ \r")

    def test_faults_come_and_go(self):
        wire = self.ask("start checkcon*; always; code 7")["number"]
        device = self.ask({"do": "start", "fault": "unplug 9"})["number"]
        self.assertEqual(self.client.ask("checkcon 9"), "7_checkcon 9_0\r")
        listed = {fault["number"]: fault for fault in self.ask("faults")["faults"]}
        self.assertEqual(listed[wire]["fired"], 1)
        self.assertEqual(listed[wire]["from"], "remote control")
        self.assertIsNone(listed[device]["secondsLeft"])
        self.ask(f"stop {wire}")
        self.assertEqual(self.client.ask("checkcon 9"), "0_checkcon 9_0\r")
        self.ask("stop all")
        self.assertEqual(self.client.ask("checkcon 9"), "0_checkcon 9_1\r")
        self.refuse(f"stop {wire}")
        self.assertIn("chance", self.refuse("start status; chance 2; silent"))
        self.assertEqual(self.ask("faults")["faults"], [])

    def test_time_stands_steps_and_runs_faster(self):
        self.ask("pause")
        seconds = self.ask("state")["seconds"]
        self.assertEqual(self.ask("state")["seconds"], seconds)
        self.assertEqual(self.ask("step 90")["seconds"], seconds + 90)
        self.ask("speed 100000")
        self.ask("resume")
        self.ask("wait time 20000 within 6000")
        self.assertEqual(self.ask("state")["speed"], 100000)
        self.refuse("speed 0")
        self.refuse("step -1")

    def test_stop_all_leaves_what_the_command_line_started(self):
        with Emulator("--control-port", "0", "--fault", "status; always; code 7") as emulator, emulator.control() as control:
            control.ask("start findstat; always; code 7")
            control.ask("stop all")
            self.assertEqual([fault["from"] for fault in control.ask("faults")["faults"]], ["--fault 1"])

    def test_rules_of_a_scenario_end_with_it(self):
        with Folder() as folder:
            (folder / "mine.json").write_text('{"faults": ["status; always; code 7"]}')
            self.ask(f"load {folder / 'mine.json'}")
            self.assertEqual(self.client.ask("status")[0], "7")
            self.ask("load product-9")
            self.assertEqual(self.client.ask("status")[0], "0")

    def test_load_begins_anew_and_leaves_the_faults_that_were_started(self):
        self.ask("start status; always; code 7")
        self.ask("start freeze 9 0")
        self.ask("load product-12")
        self.assertEqual(self.client.ask("listconprod"), "0_listconprod_12\r")
        self.assertEqual([fault["fault"] for fault in self.ask("faults")["faults"]], ["status; always; code 7"])
        self.refuse("load no-such-scenario")
        self.assertEqual(self.client.ask("listconprod"), "0_listconprod_12\r")

    def test_wait_ends_when_it_is_so(self):
        number = self.ask("start findstat; nth 2; code 7")["number"]
        self.ask("watch on")  # tells what had come before it was so
        for until, sent in (("command readcurval*", ["status", "readcurval 9"]), ("commands 2", ["status", "status"]),
                            (f"fault {number}", ["findstat", "status", "findstat"])):
            with self.subTest(until=until):
                self.control.say(json.dumps({"do": "wait", "until": until, "within": 600, "id": until}))
                with self.emulator.control() as other:  # its answer shows that the wait began, or is about to
                    other.ask("state")
                for command in sent:
                    self.client.ask(command)
                self.assertEqual([self.control.hear()["exchange"]["command"] for _ in sent], sent)
                reply = self.control.hear()
                self.assertEqual((reply["ok"], reply["id"]), (True, until))

    def test_value_is_waited_for_from_below_and_from_above(self):
        self.ask("speed 1000")
        for start, low, high in (25, 30, 60), (50, 0, 45):
            self.ask(f"set 9 0 value {start}")
            self.ask(f"wait value 9 0 {low} {high} within 600")
            value = self.device()["value"]
            self.assertTrue(low <= value <= high, value)

    def test_wait_that_does_not_come_ends_in_its_time_and_in_turn(self):
        self.control.say("wait command findstat within 0.2")
        self.control.say(json.dumps({"do": "faults", "id": 2}))
        self.assertIn("within 0.2 s", self.control.hear()["error"])
        self.assertEqual(self.control.hear()["id"], 2)
        for until in "", "rain", "value 9 0 1", "time soon", "fault x", "commands 1.5":
            with self.subTest(until=until):
                self.refuse(f"wait {until}")

    def test_requests_behind_a_wait_are_kept_up_to_a_limit(self):
        self.control.say("wait command findstat within 600")
        for _ in range(1001):
            self.control.say("faults")
        self.assertIn("too many", self.control.hear()["error"])
        self.client.ask("findstat")
        self.assertIn("waited", self.control.hear())
        self.assertEqual({self.control.hear()["ok"] for _ in range(1000)}, {True})
        self.ask("state")

    def test_fault_whose_time_is_over_is_gone(self):
        number = self.ask("start freeze 9 0 for 30")["number"]
        self.ask("pause")
        self.ask("step 10")
        self.assertLessEqual(self.ask("faults")["faults"][0]["secondsLeft"], 20)
        self.ask("step 21")
        self.assertEqual(self.ask("faults")["faults"], [])
        self.refuse(f"stop {number}")

    def test_watch_tells_every_exchange_until_it_is_off(self):
        self.ask("watch on")
        self.client.ask("checkcon 9")
        self.assertEqual(self.control.hear()["exchange"], {"command": "checkcon 9", "replies": [{"bytes": "0_checkcon 9_1\\r", "delayMs": 0}]})
        self.control.say("watch off")
        self.control.hear()
        self.client.ask("checkcon 9")
        self.ask("state")
        self.refuse("watch perhaps")

    def test_what_is_not_understood_is_said_and_harms_nothing(self):
        for request in ("dance", "{", "{}", "[1]", '{"do": 3}', '{"do": "set"}', '{"do": "set", "product": 9, "device": 0, "what": "value", "to": 1, "colour": 2}',
                        '{"do": "set", "product": "9", "device": 0, "what": "value", "to": 1}', '{"do": "stop", "fault": [1]}', "state now", "set 9",
                        '{"do": "speed", "to": 1e999}', '{"do": "load", "scenario": "\\ud800"}', "x" * 60000):
            with self.subTest(request=request[:60]):
                self.refuse(request)
        self.ask("state")


class RoadTests(unittest.TestCase):
    def test_standard_input_is_a_remote_control_too(self):
        with Emulator("--control-input", "--scenario", "product-9") as emulator, emulator.client() as client:
            emulator.say("parameter 9 64 BY-INPUT")
            emulator.wait_for(r'^\{"ok":true\}$')
            self.assertEqual(client.ask("bl-param-read 9 64"), "0_bl-param-read 9 64_BY-INPUT\r")
            emulator.say("quit")
            self.assertEqual(emulator.process.wait(PATIENCE), 0)

    def test_end_of_input_ends_the_emulator_only_where_that_is_asked(self):
        with Emulator("--control-input", until_eof=False) as stays, stays.client() as client:
            with Emulator("--control-input") as goes:
                stays.process.stdin.close()
                goes.process.stdin.close()
                self.assertEqual(goes.process.wait(PATIENCE), 0)
            self.assertEqual(client.ask("checkcon 9"), "0_checkcon 9_1\r")

    def test_ctl_says_requests_and_its_exit_code_tells_whether_they_were_done(self):
        with Emulator(*CONTROL) as emulator:
            port = ("--control-port", str(emulator.control_port))
            self.assertEqual(json.loads(run("ctl", *port, "state"))["scenario"], "product-9")
            run("ctl", *port, "set", "9", "0", "target", "38.5")
            run("ctl", *port, "start", "readcurval 9*; every 2; code 2")
            self.assertIn('"ok":false', run("ctl", *port, "set", "9", "0", "target", "-1", expect=1))
            said = run("ctl", *port, text="speed 2\n\nnonsense\nfaults\n", expect=1)
            self.assertEqual(len(said.splitlines()), 3)
            run("ctl", *port, "quit")
            self.assertEqual(emulator.process.wait(PATIENCE), 0)
        self.assertIn("no emulator", run("ctl", *port, "state", expect=2))

    def test_ctl_goes_on_watching_until_the_emulator_ends(self):
        with Emulator(*CONTROL) as emulator, emulator.client() as client:
            words = [PROGRAM, "ctl", "--control-port", str(emulator.control_port), "watch", "on"]
            with subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True) as watching:
                self.assertEqual(json.loads(watching.stdout.readline()), {"ok": True})
                for command in "status", "checkcon 9":
                    client.ask(command)
                    self.assertEqual(json.loads(watching.stdout.readline())["exchange"]["command"], command)
                emulator.process.stdin.close()
                self.assertEqual(watching.wait(PATIENCE), 0)

    def test_foreign_page_in_a_browser_controls_nothing(self):
        with Emulator(*CONTROL) as emulator, emulator.client() as client:
            body = b'{"do": "quit"}\n'
            with socket.create_connection(("127.0.0.1", emulator.control_port), PATIENCE) as page:
                page.sendall(b"POST / HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: %d\r\n\r\n%s" % (len(body), body))
                self.assertEqual(page.recv(100), b"")
            self.assertEqual(client.ask("checkcon 9"), "0_checkcon 9_1\r")

    def test_too_long_line_and_too_many_clients_are_dropped(self):
        with Emulator(*CONTROL) as emulator:
            with emulator.control() as control:
                control.say("x" * 70000)
                self.assertTrue(control.is_dropped())
            controls = [emulator.control() for _ in range(32)]
            for control in controls:
                self.assertTrue(control.ask("state")["ok"])
            with emulator.control() as one_more:
                self.assertTrue(one_more.is_dropped())
            for control in controls:
                control.__exit__()
            # It learns of their going when it comes to it.
            self.assertTrue(any(self.is_heard(emulator) for _ in range(1000)))

    @staticmethod
    def is_heard(emulator):
        with emulator.control() as control:
            try:
                control.say("state")
                return control.file.readline() != ""
            except ConnectionError:
                return False

    def test_one_who_does_not_read_is_dropped(self):
        with Emulator(*CONTROL) as emulator, emulator.client() as client, emulator.control() as deaf:
            deaf.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 65536)  # else the system keeps tens of megabytes
            deaf.ask("watch on")
            commands = 120  # 14 MB of lines, of which the system keeps 4
            for _ in range(commands):
                client.ask("x" * 60000)
            heard = 0
            while some := deaf.socket.recv(1 << 20):
                heard += len(some)
            self.assertLess(heard, commands * 120000)

    def test_restart_takes_the_server_away_and_brings_it_back(self):
        with Emulator(*CONTROL) as emulator, emulator.control() as control:
            control.ask("start restart for 1000000")
            emulator.wait_for("the server is away")
            with Client(emulator.port) as client:
                client.send("checkcon 9")
                with self.assertRaises(ConnectionRefusedError):
                    client.receive()
            control.ask("stop all")
            emulator.wait_for("the server is back")
            with Client(emulator.port) as client:
                self.assertEqual(client.ask("checkcon 9"), "0_checkcon 9_1\r")


if __name__ == "__main__":
    unittest.main()
