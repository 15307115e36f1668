"""The work behind scripts/mutate; see there. Needs Python 3.11 and nothing else."""

import fcntl
import os
import re
import resource
import shutil
import subprocess
import sys
import time
import tomllib
from pathlib import Path

ROOT = Path.cwd()
TABLES = ROOT / "scripts/mutations"
WORK = ROOT / "build/mutate"
COPY = WORK / "tree"
BUILD = COPY / "build/native"
TESTS = BUILD / "tests/unit/oko-unit-tests"

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
    options = ["-DCMAKE_BUILD_TYPE=", "-DCMAKE_CXX_FLAGS=-w"]
    if shutil.which("ccache"):
        options.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
    return subprocess.run(["cmake", "--preset", "native", *options], cwd=COPY, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True)


def build():
    return subprocess.run(["cmake", "--build", BUILD, "--target", "oko-unit-tests"], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True)


def limit_memory():
    resource.setrlimit(resource.RLIMIT_AS, (TEST_MEMORY_BYTES, TEST_MEMORY_BYTES))


def failed_tests():
    """The tests that fail, none when all pass. One that ends the process, or never ends, is the last one that began."""
    try:
        run = subprocess.run([TESTS], cwd=BUILD, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                             timeout=TEST_TIMEOUT_S, preexec_fn=limit_memory)
        output, end = run.stdout, "" if run.returncode == 0 else "ended the process"
    except subprocess.TimeoutExpired as timeout:
        output, end = timeout.stdout or b"", "never ends"
    text = output.decode(errors="replace")
    failed = list(dict.fromkeys(re.findall(r"^\[  FAILED  \] (\w+\.\w+)", text, re.MULTILINE)))
    complete = re.search(r"^\[==========\] .* ran\.", text, re.MULTILINE)
    if end and not (failed and complete):
        begun = re.findall(r"^\[ RUN      \] (\w+\.\w+)", text, re.MULTILINE)
        failed.append(f"{begun[-1] if begun else '?'} ({end})")
    return failed


def judge(entry):
    """Makes one break in the copy, and mends it again. Gives whether a test saw it, and a text."""
    path = COPY / entry["file"]
    source = path.read_text(encoding="utf-8") if path.is_file() else ""
    if source.count(entry["old"]) != 1:
        return False, f"DOES NOT FIT: its text is there {source.count(entry['old'])} times"
    path.write_text(source.replace(entry["old"], entry["new"]), encoding="utf-8")
    try:
        built = build()
        if built.returncode != 0:
            return False, "DOES NOT COMPILE:\n" + built.stdout
        failed = failed_tests()
    finally:
        path.write_text(source, encoding="utf-8")
    if not failed:
        return False, "NOT CAUGHT"
    shown = 3
    more = f" and {len(failed) - shown} more" if len(failed) > shown else ""
    return True, ", ".join(failed[:shown]) + more


def main():
    pattern = sys.argv[1] if len(sys.argv) > 1 else ""
    breaks = load_breaks(pattern)
    if not breaks:
        sys.exit(f"mutate: no break has \"{pattern}\" in its file or name")
    WORK.mkdir(parents=True, exist_ok=True)
    lock = open(WORK / "lock", "w", encoding="utf-8")
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        sys.exit("mutate: another run works here")
    copy_tree()
    for step in (configure, build):
        done = step()
        if done.returncode != 0:
            sys.exit(done.stdout + "mutate: the copy does not build")
    if failed := failed_tests():
        sys.exit("mutate: these fail without any break: " + ", ".join(failed))

    caught = 0
    started = time.monotonic()
    for entry in breaks:
        seen, text = judge(entry)
        caught += seen
        print(f"{'   ' if seen else '!! '}{entry['file']}: {entry['name']}\n        {text}", flush=True)
    print(f"{caught} of {len(breaks)} caught in {time.monotonic() - started:.0f} s")
    sys.exit(0 if caught == len(breaks) else 1)


main()
