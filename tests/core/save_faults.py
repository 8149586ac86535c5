#!/usr/bin/env python3
"""Interrupts a save at every system call it makes, by errors and by a kill.

    save_faults.py FAULT_PROBE

The file must hold the old bytes or the new ones, the new ones exactly when success was reported; it
keeps its mode, a symbolic link stays one, and no temporary file is left: after an error none at all,
after a kill none once the next save is through.
"""

import subprocess
import sys
import tempfile
from pathlib import Path

from faults import KILL, Probe, expect_calls, finish, under_fire

OLD_RULES, NEW_RULES = "200", "300"
NEW_FILE, EXISTING, LINKED, LEFTOVER = "new file", "existing file", "linked file", "leftover"

probe = Probe(sys.argv[1])


class Place:
    """A folder set up for one save, and what is in it afterwards."""

    def __init__(self, root, scenario):
        self.scenario = scenario
        self.folder = Path(tempfile.mkdtemp(dir=root))
        self.path = self.folder / "rules.json"
        self.file = self.path
        if scenario == NEW_FILE:
            self.path = self.file = self.folder / "a" / "b" / "rules.json"
        if scenario == LINKED:
            (self.folder / "dotfiles").mkdir()
            self.file = self.folder / "dotfiles" / "rules"
            self.path.symlink_to("dotfiles/rules")
        if scenario == LEFTOVER:
            (self.folder / leftover_name).write_text("half")
        if scenario != NEW_FILE:
            self.file.write_bytes(old_bytes)
            self.file.chmod(0o640)

    def contents(self):
        return self.file.read_bytes() if self.file.exists() else None

    def strays(self):
        return [p.name for p in self.folder.rglob("*.tmp")]

    def fault_after(self, succeeded):
        """What is wrong after a save that reported success or an error, or was killed (None)."""
        before = None if self.scenario == NEW_FILE else old_bytes
        contents = self.contents()
        if contents not in (before, new_bytes):
            return f"a mixture of {len(contents or b'')} bytes"
        if succeeded is not None and (contents == new_bytes) != succeeded:
            return f"success is {succeeded}, but the file is {'new' if not succeeded else 'old'}"
        if contents is not None:
            mode = self.file.stat().st_mode & 0o7777
            if mode != (0o600 if self.scenario == NEW_FILE else 0o640):
                return f"mode {mode:o}"
        if self.scenario == LINKED and not self.path.is_symlink():
            return "the link was replaced"
        # A leftover of somebody else may outlive a save that could not list the folder.
        strays = [name for name in self.strays() if name != leftover_name]
        if succeeded is not None and strays:
            return f"left behind: {strays}"
        return None


def attempt(root, scenario, call, number, fault):
    """One save with one fault; the text of what went wrong, or None."""
    place = Place(root, scenario)
    injected = probe.run_with_fault(call, number, fault, "save", place.path, NEW_RULES)
    if fault == KILL:
        wrong = place.fault_after(None)
        if wrong is None:
            again = probe.run("save", place.path, NEW_RULES)
            wrong = place.fault_after(again.returncode == 0) or (
                f"next save: {again.stderr}" if again.returncode != 0 or place.strays() else None)
        return wrong
    if injected.returncode not in (0, 1):
        return f"status {injected.returncode}: {injected.stderr[:500]}"
    wrong = place.fault_after(injected.returncode == 0)
    if wrong is None and injected.returncode == 1 and not injected.stderr.strip():
        wrong = "an error without a description"
    return wrong


def check_process_with_the_pid_of_a_dead_one(root):
    """In a container every run of a program can have the same pid, and so can what it left."""
    folder = Path(tempfile.mkdtemp(dir=root))
    script = """for n in 1 2 9; do echo half > "$1/.rules.json.$$-$n.tmp"; done
                exec "$2" save "$1/rules.json" "$3" """
    result = subprocess.run(["sh", "-c", script, "sh", str(folder), probe.program, NEW_RULES],
                            capture_output=True, text=True)
    names = [path.name for path in folder.iterdir()]
    if result.returncode == 0 and names == ["rules.json"]:
        return []
    return [f"same pid as a dead process: {result.stderr}{names}"]


def main():
    with tempfile.TemporaryDirectory(prefix="fv-", dir="/tmp") as root:
        failures = check_process_with_the_pid_of_a_dead_one(root)
        for scenario in (NEW_FILE, EXISTING, LINKED, LEFTOVER):
            calls = probe.calls("save", Place(root, scenario).path, NEW_RULES)
            expect_calls(calls, "openat", "write", "fsync", "rename")
            failures += under_fire(scenario, calls, lambda *fault, s=scenario: attempt(root, s, *fault))
    return finish(failures)


with tempfile.TemporaryDirectory(prefix="fv-", dir="/tmp") as samples:
    for sample_rules in (OLD_RULES, NEW_RULES):
        assert probe.run("save", Path(samples) / sample_rules, sample_rules).returncode == 0
    old_bytes = (Path(samples) / OLD_RULES).read_bytes()
    new_bytes = (Path(samples) / NEW_RULES).read_bytes()
with subprocess.Popen(["true"]) as ended:
    leftover_name = f".rules.json.{ended.pid}-1.tmp"
sys.exit(main())
