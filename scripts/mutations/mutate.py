"""The work behind scripts/mutate; see there. Needs Python 3.11 and nothing else."""

import fcntl
import os
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import time
import tomllib
from dataclasses import dataclass
from datetime import date
from functools import partial
from pathlib import Path

ROOT = Path.cwd()
TABLES = ROOT / "scripts/mutations"
WORK = ROOT / "build/mutate"
COPY = WORK / "tree"
BUILD = COPY / "build/native"


@dataclass(frozen=True)
class Ring:
    """The tests that look at the breaks of a folder: what is built, GoogleTest's program, unittest's modules."""
    folder: str
    targets: tuple
    program: str
    modules: tuple = ()


RINGS = (
    Ring("src/", ("oko-unit-tests",), "tests/unit/oko-unit-tests"),
    Ring("tools/emulator/", ("oko-emulator-tests", "oko-control-emulator"), "tests/emulator/oko-emulator-tests",
         ("ProgramTests", "TranscriptProgramTests", "SessionTests", "ControlTests", "DocumentationTests")),
)

# Some breaks end in an endless loop or a dead lock, with records that grow; a healthy run takes a few seconds.
TEST_TIMEOUT_S = 120
TEST_MEMORY_BYTES = 4 << 30


def load_breaks(pattern):
    """All breaks whose file or name contains the pattern, in the order of the tables."""
    breaks = []
    for table in sorted(TABLES.glob("*.toml")):
        breaks += tomllib.loads(table.read_text(encoding="utf-8"))["break"]
    return [entry for entry in breaks if pattern.lower() in f"{entry['file']}: {entry['name']}".lower()]


def copy_tree():
    """Brings the copy up to date. A file that did not change keeps its time, so that it is not built again."""
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                            check=True, capture_output=True).stdout.decode().split("\0")
    wanted = {name for name in listed if name and (ROOT / name).is_file()}
    for name in wanted:
        source, target = ROOT / name, COPY / name
        if not target.is_file() or source.read_bytes() != target.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)
    for folder, folders, files in os.walk(COPY):
        if Path(folder) == COPY:
            folders[:] = [name for name in folders if name != "build"]
        for name in files:
            if (Path(folder) / name).relative_to(COPY).as_posix() not in wanted:
                (Path(folder) / name).unlink()


def configure():
    # A break may leave a function or a parameter without use: no warnings here. And nobody debugs this build.
    options = ["-DCMAKE_BUILD_TYPE=", "-DCMAKE_CXX_FLAGS=-w", "-DOKO_UNITY=OFF"]
    return subprocess.run(["cmake", "--preset", "native", *options], cwd=COPY, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True)


def ring_of(entry):
    return next((ring for ring in RINGS if entry["file"].startswith(ring.folder)), RINGS[0])


def build(ring):
    return subprocess.run(["cmake", "--build", BUILD, "--target", *ring.targets], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True)


def limit_memory():
    resource.setrlimit(resource.RLIMIT_AS, (TEST_MEMORY_BYTES, TEST_MEMORY_BYTES))


def run_tests(command, folder, forms):
    """The tests that fail, none when all pass. One that ends the process, or never ends, is the last one that began.
    `forms` say how the output names a test that begins, one that failed, and the end of all."""
    begun, failed, all_over = forms
    environment = dict(os.environ, OKO_SOURCE_DIR=str(COPY), OKO_EMULATOR=str(BUILD / "bin/oko-control-emulator"))
    with subprocess.Popen(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=limit_memory) as process:
        try:
            output, _ = process.communicate(timeout=TEST_TIMEOUT_S)
            end = "" if process.returncode == 0 else "ended the process"
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)  # and the programs that the tests started
            output, end = process.communicate()[0], "never ends"
    text = output.decode(errors="replace")
    names = list(dict.fromkeys(re.findall(failed, text, re.MULTILINE)))
    if end and not (names and re.search(all_over, text, re.MULTILINE)):
        names.append(f"{(['?'] + re.findall(begun, text, re.MULTILINE))[-1]} ({end})")
    return names


GOOGLE_TEST = (r"^\[ RUN      \] (\w+\.\w+)", r"^\[  FAILED  \] (\w+\.\w+)", r"^\[==========\] .* ran\.")
UNITTEST = (r"^test_\w+ \(([\w.]+)\)", r"^(?:FAIL|ERROR): \w+ \(([\w.]+)\)", r"^Ran \d+ test")


def failed_tests(ring):
    """The tests of the ring that fail; Python's only when none of GoogleTest's does, for they start programs."""
    if failed := run_tests([BUILD / ring.program], BUILD, GOOGLE_TEST):
        return failed
    for module in ring.modules:
        command = [sys.executable, "-B", "-m", "unittest", "--verbose", "--failfast", module]
        if failed := run_tests(command, COPY / "tests/emulator", UNITTEST):
            return failed
    return []


def misfit(entry, tree):
    """Why the break cannot be made in that tree; nothing where it can."""
    path = tree / entry["file"]
    count = path.read_text(encoding="utf-8").count(entry["old"]) if path.is_file() else 0
    return "" if count == 1 else f"DOES NOT FIT: its text is there {count} times"


def judge(entry):
    """Makes one break in the copy, and mends it again. Gives whether a test saw it, and a text."""
    if problem := misfit(entry, COPY):
        return False, problem
    path = COPY / entry["file"]
    source = path.read_text(encoding="utf-8")
    path.write_text(source.replace(entry["old"], entry["new"]), encoding="utf-8")
    try:
        built = build(ring_of(entry))
        if built.returncode != 0:
            return False, "DOES NOT COMPILE:\n" + built.stdout
        failed = failed_tests(ring_of(entry))
    finally:
        path.write_text(source, encoding="utf-8")
    if not failed:
        return False, "NOT CAUGHT"
    shown = 3
    more = f" and {len(failed) - shown} more" if len(failed) > shown else ""
    return True, ", ".join(failed[:shown]) + more


def check_fits():
    """Ends the program; as a failure when a break no longer fits the sources."""
    problems = [f"mutate: {entry['file']}: {entry['name']}: {problem}"
                for entry in load_breaks("") if (problem := misfit(entry, ROOT))]
    sys.exit("\n".join(problems) or 0)


def main():
    if sys.argv[1:] == ["--fits"]:
        check_fits()
    seconds = float("inf")
    if sys.argv[1:2] == ["--seconds"]:
        seconds = float(sys.argv[2])
        del sys.argv[1:3]
    pattern = sys.argv[1] if len(sys.argv) > 1 else ""
    breaks = load_breaks(pattern)
    if seconds != float("inf"):
        random.Random(date.today().toordinal()).shuffle(breaks)  # those that a short run leaves out come another day
    if not breaks:
        sys.exit(f"mutate: no break has \"{pattern}\" in its file or name")
    WORK.mkdir(parents=True, exist_ok=True)
    lock = open(WORK / "lock", "w", encoding="utf-8")
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        sys.exit("mutate: another run works here")
    copy_tree()
    rings = [ring for ring in RINGS if any(ring_of(entry) == ring for entry in breaks)]
    for step in (configure, *(partial(build, ring) for ring in rings)):
        done = step()
        if done.returncode != 0:
            sys.exit(done.stdout + "mutate: the copy does not build")
    for ring in rings:
        if failed := failed_tests(ring):
            sys.exit("mutate: these fail without any break: " + ", ".join(failed))

    caught = tried = 0
    started = time.monotonic()
    for entry in breaks:
        if time.monotonic() - started > seconds:
            break
        seen, text = judge(entry)
        caught += seen
        tried += 1
        print(f"{'   ' if seen else '!! '}{entry['file']}: {entry['name']}\n        {text}", flush=True)
    left = f", {len(breaks) - tried} not tried" if tried < len(breaks) else ""
    print(f"{caught} of {tried} caught in {time.monotonic() - started:.0f} s{left}")
    sys.exit(0 if caught == tried else 1)


main()
