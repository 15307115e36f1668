"""Says which sources clang-tidy has to look at, and how: three lines for each, the preset that compiles it, "all" or "includes", and
its name. Used by scripts/tidy, whose options these are."""

import argparse
import os
import posixpath
import re
import subprocess
import sys
import zlib
from pathlib import Path

QUARTER_OF_A_DAY = 6 * 60 * 60
DAY = 24 * 60 * 60
PARTS = 7  # of the tree, one a day

# What is compiled for Windows alone, and what neither of the two presets compiles.
WINDOWS = re.compile(r"/win32/|^tests/(windows|dialogs|pictures|abi|endure/windows)/|^bench/|^examples/")
NEITHER = re.compile(r"/resources/|/(page|check)/none/|^tests/fuzz/|^tests/abi/(Caller|freestanding)|^tests/package/"
                     r"|^bench/(Simulator|Emulator)Bench")
# What decides on every file's findings.
EVERYTHING = re.compile(r"(^|/)\.clang-tidy$")

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]', re.MULTILINE)


def git(*arguments):
    run = subprocess.run(("git", *arguments), check=True, stdout=subprocess.PIPE, text=True)
    return [name for name in run.stdout.split("\0" if "-z" in arguments else "\n") if name]


def tracked():
    """All files of the tree, those that are new and not ignored among them."""
    return [name for name in git("ls-files", "-z", "--cached", "--others", "--exclude-standard") if Path(name).is_file()]


def is_source(name):
    return name.endswith((".cpp", ".h"))


def how(name):
    """The preset and the checks; none for what no preset compiles."""
    if not is_source(name) or NEITHER.search(name):
        return None
    all_checks = name.endswith(".cpp") and name.startswith(("src/", "tools/"))
    return "windows-x64" if WINDOWS.search(name) else "native", "all" if all_checks else "includes"


def base_commit():
    """The newest commit that is a quarter of a day older than the last one, or else the first one; none where there is no other."""
    commits = [line.split() for line in git("log", "--format=%ct %H")]
    last = int(commits[0][0])
    older = [commit for commit in commits if int(commit[0]) <= last - QUARTER_OF_A_DAY]
    if older:
        return max(older, key=lambda commit: int(commit[0]))[1]
    return commits[-1][1] if len(commits) > 1 else None


def changed_since(base):
    """What the commits since then and the working tree have changed, added or removed."""
    return {*git("diff", "-z", "--name-only", "--no-renames", base), *git("ls-files", "-z", "--others", "--exclude-standard")}


def includes_of(name, by_end):
    """The files that its #include lines may mean: the one beside it, or else each whose path ends so."""
    for quote, what in INCLUDE.findall(Path(name).read_text(encoding="utf-8", errors="replace")):
        beside = posixpath.normpath(posixpath.join(posixpath.dirname(name), what))
        file_name = posixpath.basename(what)
        candidates = by_end.get(file_name, [])
        if quote == '"' and beside in candidates:
            yield beside
        else:
            plain = re.sub(r"^(\.\.?/)+", "", what)
            yield from (path for path in candidates if path == plain or path.endswith("/" + plain))


def with_includers(changed, files):
    """These files, and all that include them, by way of others too. What was removed counts as if it were still there."""
    by_end = {}
    for made in {path.removesuffix(".in") for path in {*files, *changed}}:  # CMake makes X.h of X.h.in
        if is_source(made):
            by_end.setdefault(posixpath.basename(made), []).append(made)
    includers = {}
    for name in filter(is_source, files):
        for included in includes_of(name, by_end):
            includers.setdefault(included, set()).add(name)
    found, waiting = set(), [path.removesuffix(".in") for path in changed]
    while waiting:
        path = waiting.pop()
        if path not in found:
            found.add(path)
            waiting.extend(includers.get(path, ()))
    return found


def of_the_day(files):
    """A seventh of the tree: another one each day, so that a week sees all."""
    day = int(git("log", "-1", "--format=%ct")[0]) // DAY
    return {name for name in files if zlib.crc32(name.encode()) % PARTS == day % PARTS}


def of_the_change(base, files):
    base = git("rev-parse", "--verify", base + "^{commit}")[0] if base else base_commit()
    changed = changed_since(base) if base else set(files)
    if any(EVERYTHING.search(name) for name in changed):
        return set(files), "all, for what decides on the findings has changed"
    touched, seventh = with_includers(changed, files), of_the_day(files)
    wanted = {name for name in touched | seventh if how(name)}
    return wanted, f"{len(wanted & touched)} of the change since {base[:12] if base else 'ever'}, {len(wanted - touched)} more of the day"


def main():
    parser = argparse.ArgumentParser(prog="scripts/tidy", description=__doc__)
    parser.add_argument("--change", action="store_true")
    parser.add_argument("--base", metavar="REV")
    parser.add_argument("files", nargs="*", metavar="FILE")
    options = parser.parse_args()
    if options.base and not options.change or options.files and options.change:
        parser.error("--base goes with --change, and files do not")
    files = tracked()
    if options.files:
        wanted, why = {os.path.relpath(name) for name in options.files}, "as named"
        for name in sorted(wanted):
            if not Path(name).is_file() or not how(name):
                parser.error(f"{name} is no source that a preset compiles")
    elif options.change:
        try:
            wanted, why = of_the_change(options.base, files)
        except subprocess.CalledProcessError as error:
            parser.error(str(error))
    else:
        wanted, why = set(files), "all"
    looks = sorted((*how(name), name) for name in wanted if how(name))
    print(f"tidy: {len(looks)} files ({why})", file=sys.stderr)
    for look in sorted(looks, key=lambda look: look[1]):  # what takes long begins first
        print(*look, sep="\n")


if __name__ == "__main__":
    main()
