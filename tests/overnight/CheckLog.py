"""Holds the log of a watch against the transcript of the server that it watched: no row and no event may be lost.

    CheckLog.py LOG.csv TRANSCRIPT ROWS LINK_LOSSES TARGET_CHANGES
"""

import csv
import re
import sys
from collections import Counter

# The full incubator's channels in the order of a round, and what reads each.
COMMANDS = ["readcurval 9", "bl-param-read 9 107", "bl-param-read 9 119", "bl-param-read 9 109", "bl-param-read 9 110",
            "bl-param-read 9 108", "bl-param-read 9 189", "bl-param-read 9 132", "bl-param-read 15 206",
            "bl-param-read 15 209", "readcurval 12(0)", "readcurval 12(1)", "readcurval 15(0)"]
FIXED_COLUMNS = 5  # time, seconds, row, subject, text
COLUMNS_OF_A_CHANNEL = 4
READS_OF_INIT = 2  # it asks which zones and sensors there are


def read_log(name):
    with open(name, encoding="utf-8", newline="") as file:
        rows = list(csv.reader(line for line in file if not line.startswith("#")))
    return [row for row in rows[1:] if row[2] == "sample"], [row for row in rows[1:] if row[2] != "sample"]


def read_transcript(name):
    with open(name, encoding="utf-8") as file:
        return [line.rstrip("\n").split("\t") for line in file]


def number_of(replies):
    """What the server said, as a number; None where it refused, kept silent or said none."""
    match = re.fullmatch(r"[012]_.*_(-?\d+(?:\.\d+)?)\\r", replies[0])
    return float(match[1]) if match else None


def check_channel(samples, exchanges, index, command):
    said = [number_of(replies) for _, asked, *replies in exchanges if asked == command]
    kept = [float(row[FIXED_COLUMNS + COLUMNS_OF_A_CHANNEL * index] or "nan") for row in samples]
    kept = [None if value != value else value for value in kept]
    # Before the first row Init asks. What is read while the watch ends is in no row.
    for first in range(READS_OF_INIT + 1):
        if said[first:first + len(kept)] == kept:
            return None
    return f"{command}: the server told {len(said)} times, the log has {len(kept)} rows, and they differ"


def main():
    samples, events = read_log(sys.argv[1])
    exchanges = read_transcript(sys.argv[2])
    wanted_rows = int(sys.argv[3])
    faults = [f"{len(samples)} rows, and not {wanted_rows}"] if len(samples) != wanted_rows else []
    faults += [fault for index, command in enumerate(COMMANDS) if (fault := check_channel(samples, exchanges, index, command))]

    kinds = Counter(row[2] for row in events)
    for kind, wanted in (("link lost", int(sys.argv[4])), ("link back", int(sys.argv[4])),
                         ("target changed", int(sys.argv[5])), ("started", 1), ("ended", 1)):
        if kinds[kind] != wanted:
            faults.append(f"{kinds[kind]} events \"{kind}\", and not {wanted}")
    # The library logs the refusals of temperature and humidity, not those of gas.
    refused = sum(1 for _, asked, *replies in exchanges if replies[0].startswith("3_") and asked not in COMMANDS[10:12])
    logged = sum(1 for row in events if row[2] == "log" and "will not be executed" in row[4])
    if refused != logged:
        faults.append(f"the server refused {refused} times, the log tells of {logged}")

    values = sum(1 for row in samples for index in range(len(COMMANDS)) if row[FIXED_COLUMNS + COLUMNS_OF_A_CHANNEL * index])
    print(f"{len(samples)} rows with {values} values and {len(events)} events, held against {len(exchanges)} exchanges, "
          f"{refused} of them refused")
    for fault in faults:
        print("fault: " + fault, file=sys.stderr)
    return 1 if faults or refused == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
