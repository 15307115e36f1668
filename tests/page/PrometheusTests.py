"""The files of docs/prometheus, used by Debian's prometheus and promtool on a page."""

import json
import pathlib
import re
import socket
import subprocess
import tempfile
import unittest
import urllib.parse
import urllib.request

from ScriptedPage import PATIENCE, SOURCE, ScriptedPage, wait_until

PROGRAMS = SOURCE / "build/prometheus/usr/bin"
FILES = SOURCE / "docs/prometheus"


def promtool(*arguments, **options):
    return subprocess.run([PROGRAMS / "promtool", *arguments], capture_output=True, text=True, timeout=PATIENCE, **options)


def free_port():
    with socket.socket() as listener:
        listener.bind(("127.0.0.1", 0))
        return listener.getsockname()[1]


class Prometheus:
    """A server of its own, with the files of docs/prometheus; only faster, and with the page as its target."""

    def __init__(self, folder, page):
        self.folder = pathlib.Path(folder)
        self.url = f"http://127.0.0.1:{free_port()}"
        target = page.url.removeprefix("http://")
        config = (FILES / "prometheus.yml").read_text(encoding="utf-8")
        config = config.replace("15s", "200ms").replace("127.0.0.1:8080", target)
        rules = re.sub(r"for: \d+m", "for: 1s", (FILES / "oko-host.rules.yml").read_text(encoding="utf-8"))
        (self.folder / "prometheus.yml").write_text(config, encoding="utf-8")
        (self.folder / "oko-host.rules.yml").write_text(rules, encoding="utf-8")

    def __enter__(self):
        self.log = open(self.folder / "log", "w", encoding="utf-8")
        self.process = subprocess.Popen(
            [PROGRAMS / "prometheus", f"--config.file={self.folder}/prometheus.yml",
             f"--storage.tsdb.path={self.folder}/data", f"--web.listen-address={self.url.removeprefix('http://')}"],
            stdin=subprocess.DEVNULL, stdout=self.log, stderr=self.log)
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait(timeout=PATIENCE)
        self.log.close()

    def ask(self, path):
        try:
            with urllib.request.urlopen(self.url + path, timeout=PATIENCE) as reply:
                return json.load(reply)["data"]
        except urllib.error.HTTPError as error:
            raise AssertionError(f"{path}: {error.read().decode()}") from error
        except OSError:
            return {}

    def query(self, expression):
        return self.ask("/api/v1/query?" + urllib.parse.urlencode({"query": expression})).get("result", [])

    def firing(self):
        alerts = self.ask("/api/v1/alerts").get("alerts", [])
        return {alert["labels"]["alertname"] for alert in alerts if alert["state"] == "firing"}


class PrometheusTests(unittest.TestCase):
    def test_configuration_and_rules_are_accepted(self):
        run = promtool("check", "config", FILES / "prometheus.yml")
        self.assertEqual(run.returncode, 0, run.stderr + run.stdout)
        run = promtool("check", "rules", FILES / "oko-host.rules.yml")
        self.assertEqual(run.returncode, 0, run.stderr + run.stdout)
        self.assertIn("8 rules found", run.stdout)

    def test_metrics_follow_the_conventions(self):
        with ScriptedPage() as page:
            run = promtool("check", "metrics", input=page.get("/metrics", {"Accept": "text/plain"}))
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, "", ""))

    def test_page_names_every_alert_and_metric(self):
        text = (SOURCE / "docs/prometheus.md").read_text(encoding="utf-8")
        alerts = re.findall(r"alert: (\w+)", (FILES / "oko-host.rules.yml").read_text(encoding="utf-8"))
        self.assertEqual(re.findall(r"^\| `(Oko\w+)` \|", text, re.M), alerts)
        with ScriptedPage() as page:
            metrics = page.get("/metrics", {"Accept": "text/plain"})
        for name in re.findall(r"^# TYPE (\w+)", metrics, re.M):
            if "_target_" not in name and "_band_" not in name:
                self.assertIn(f"`{name}`", text)

    def test_it_scrapes_and_an_alert_fires_while_the_device_is_silent(self):
        with tempfile.TemporaryDirectory() as folder, ScriptedPage() as page, Prometheus(folder, page) as server:
            self.assertTrue(wait_until(lambda: server.query("oko_temperature_celsius")), server.ask("/api/v1/targets"))
            self.assertEqual([float(sample["value"][1]) for sample in server.query("oko_gas_concentration_ratio")], [0.05])
            targets = server.ask("/api/v1/targets")["activeTargets"]
            self.assertEqual([(target["health"], target["lastError"]) for target in targets], [("up", "")])
            metadata = server.ask("/api/v1/metadata")
            self.assertEqual(metadata["oko_channel_state"][0]["type"], "stateset")
            self.assertEqual(metadata["oko_temperature_celsius"][0]["unit"], "celsius")
            self.assert_dashboard_finds_its_metrics(server)
            self.assertNotIn("OkoDeviceSilent", server.firing())

            page.say("silent")
            self.assertTrue(wait_until(lambda: {"OkoDeviceSilent", "OkoAlarm"} <= server.firing()), server.firing())
            self.assertEqual(server.query("oko_temperature_celsius"), [])
            page.say("answering")
            self.assertTrue(wait_until(lambda: not {"OkoDeviceSilent", "OkoAlarm"} & server.firing()), server.firing())

    def assert_dashboard_finds_its_metrics(self, server):
        dashboard = json.loads((FILES / "grafana.json").read_text(encoding="utf-8"))
        expressions = [target["expr"] for panel in dashboard["panels"] for target in panel["targets"]]
        self.assertGreater(len(expressions), 10)
        for expression in expressions:
            expression = expression.replace("$instance", ".+").replace("$__rate_interval", "10s")
            self.assertTrue(wait_until(lambda: server.query(expression)), expression)

