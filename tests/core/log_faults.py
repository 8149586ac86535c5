#!/usr/bin/env python3
"""Interrupts the log at every system call it makes for two lines, by errors and by a kill.

    log_faults.py FAULT_PROBE

Once with a small file, once with one that has to be moved aside. Whatever fails: no line that was there
is lost or torn, the older generation goes only when a newer one takes its place, one error costs one
line at most, and the next process that logs finds nothing in its way.
"""

import re
import sys
import tempfile
from pathlib import Path

from faults import KILL, Probe, expect_calls, finish, under_fire

LINES = ["first", "second"]
SMALL, LARGE = 1, 2049  # kilobytes; it is moved aside above 2048
OLDER = "from long ago\n"

probe = Probe(sys.argv[1])


class Place:
    def __init__(self, root):
        self.folder = Path(tempfile.mkdtemp(dir=root))
        self.file, self.older = self.folder / "ferrivane.log", self.folder / "ferrivane.log.1"
        self.older.write_text(OLDER)

    def log(self, filler, *lines):
        return "log", self.folder, filler, *lines

    def lines(self):
        """What was logged under fire, or what is wrong with the files."""
        names = sorted(path.name for path in self.folder.iterdir())
        if names[-1] != self.older.name or len(names) > 2:
            return f"files: {names}"
        older, newer = self.older.read_text(), self.file.read_text() if self.file.exists() else ""
        was_moved = older != OLDER
        text = (older if was_moved else "") + newer
        logged = []
        for line in text.splitlines(keepends=True):
            match = re.fullmatch(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \[INFO\] (\w+)\n|(f{1023}\n)", line)
            if not match:
                return f"a torn line: {line[:100]!r}"
            logged.append(match[1] or "filler")
        return logged


def attempt(root, filler, call, number, fault):
    place = Place(root)
    result = probe.run_with_fault(call, number, fault, *place.log(filler, *LINES))
    if fault != KILL and (result.returncode != 0 or result.stderr):
        return f"status {result.returncode}: {result.stderr[:500]}"
    before = ["before"] * 100 + ["filler"] * filler
    found = place.lines()
    if found[:len(before)] != before:
        return found if isinstance(found, str) else f"{len(found)} of {len(before)} earlier lines, or others"
    logged = found[len(before):]
    if fault == KILL:
        if logged != LINES[:len(logged)]:
            return f"logged before it was killed: {logged}"
    elif len(logged) < len(LINES) - 1 or logged != [line for line in LINES if line in logged]:
        return f"logged: {logged}"
    again = probe.run(*place.log(0, "again"))
    after = place.lines()
    if again.returncode != 0 or after[len(found):] != ["before"] * 100 + ["again"]:
        return f"afterwards: {after if isinstance(after, str) else after[len(found):]}"
    return None


def main():
    failures = []
    with tempfile.TemporaryDirectory(prefix="fv-", dir="/tmp") as root:
        for name, filler in (("append", SMALL), ("move aside", LARGE)):
            calls = probe.calls(*Place(root).log(filler, *LINES))
            expect_calls(calls, "openat", "flock", "write", "close", *(["rename"] if filler == LARGE else []))
            assert len(calls) >= 6 * len(LINES), calls
            # A folder that is not closed keeps its lock.
            failures += under_fire(name, calls, lambda *fault, f=filler: attempt(root, f, *fault),
                                   closing_fails=False)
        never_moved = attempt(root, LARGE, "rename", "1+", "error=EIO")
        failures += [f"never moved aside: {never_moved}"] if never_moved else []
    return finish(failures)


sys.exit(main())
