#!/usr/bin/env python3
"""Interrupts a save at every system call it makes, by every error and by a kill.

    save_faults.py SAVE_CONFIG

The file must hold the old bytes or the new ones, the new ones exactly when success was reported; it
keeps its mode, a symbolic link stays one, and no temporary file is left: after an error none at all,
after a kill none once the next save is through.
"""

import os
import re
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ERRORS = ("ENOSPC", "EIO", "EACCES", "EROFS", "EDQUOT", "EINTR", "EMFILE", "ENOMEM")
# What the allocator and the C++ library do on their own account.
NOT_OF_THE_SAVE = {"brk", "mmap", "munmap", "mprotect", "madvise", "mremap", "futex", "getrandom",
                   "rt_sigprocmask", "sched_yield", "prctl", "sigaltstack"}
OLD_RULES, NEW_RULES = "200", "300"
NEW_FILE, EXISTING, LINKED, LEFTOVER = "new file", "existing file", "linked file", "leftover"

program = str(Path(sys.argv[1]).resolve())
# The leak checker cannot work in a traced process.
environment = {**os.environ, "ASAN_OPTIONS": "detect_leaks=0"}


def save(path, rules, *tracing):
    command = [*tracing, program, str(path), rules]
    return subprocess.run(command, env=environment, capture_output=True, text=True)


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
            (self.folder / f".rules.json.{dead_process}-1.tmp").write_text("half")
        if scenario != NEW_FILE:
            self.file.write_bytes(old_bytes)
            self.file.chmod(0o640)

    def contents(self):
        return self.file.read_bytes() if self.file.exists() else None

    def strays(self):
        return [str(p) for p in self.folder.rglob("*.tmp")]

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
        strays = [s for s in self.strays() if str(dead_process) not in s or succeeded is None]
        if succeeded is not None and strays:
            return f"left behind: {strays}"
        return None


def calls_of_the_save(root, scenario):
    """Each system call between the two marks, as its name and its number among its name's calls."""
    place = Place(root, scenario)
    log = place.folder / "trace"
    result = save(place.path, NEW_RULES, "strace", "-f", "-o", str(log))
    assert result.returncode == 0, result.stderr
    counts, calls, inside = {}, [], False
    probes = set()  # the sanitizers find out what memory may be read by writing it into a pipe
    for line in log.read_text().splitlines():
        match = re.match(r"\d+ +(\w+)\((.*)", line)
        if not match:
            continue
        name, arguments = match.groups()
        counts[name] = counts.get(name, 0) + 1
        descriptor = re.match(r"\d+", arguments)
        is_probe = name.startswith("pipe") or (descriptor and descriptor.group() in probes)
        if name.startswith("pipe"):
            probes.update(re.findall(r"\d+", arguments.split("]")[0]))
        elif name == "close" and is_probe:
            probes.discard(descriptor.group())
        if arguments.startswith('"/save begins"'):
            inside = True
        elif arguments.startswith('"/save ends"'):
            return calls
        elif inside and name not in NOT_OF_THE_SAVE and not is_probe:
            calls.append((name, counts[name]))
    raise AssertionError("the marks are missing in the trace")


def attempt(root, scenario, call, number, fault):
    """One save with one fault; the text of what went wrong, or None."""
    place = Place(root, scenario)
    name = f"{scenario}: {call} number {number}, {fault}"
    injected = save(place.path, NEW_RULES, "strace", "-f", "-o", "/dev/null", "-e", f"trace={call}",
                    "-e", f"inject={call}:{fault}:when={number}")
    if fault.startswith("signal"):
        if injected.returncode not in (-9, 137):
            return f"{name}: was not killed, status {injected.returncode}"
        wrong = place.fault_after(None)
        if wrong is None:
            again = save(place.path, NEW_RULES)
            wrong = place.fault_after(again.returncode == 0) or (
                f"next save: {again.stderr}" if again.returncode != 0 or place.strays() else None)
    elif injected.returncode not in (0, 1):
        wrong = f"status {injected.returncode}: {injected.stderr[:500]}"
    else:
        wrong = place.fault_after(injected.returncode == 0)
        if wrong is None and injected.returncode == 1 and not injected.stderr.strip():
            wrong = "an error without a description"
    return f"{name}: {wrong}" if wrong else None


def check_process_with_the_pid_of_a_dead_one(root):
    """In a container every run of a program can have the same pid, and so can what it left."""
    folder = Path(tempfile.mkdtemp(dir=root))
    script = """for n in 1 2 9; do echo half > "$1/.rules.json.$$-$n.tmp"; done
                exec "$2" "$1/rules.json" "$3" """
    result = subprocess.run(["sh", "-c", script, "sh", str(folder), program, NEW_RULES],
                            capture_output=True, text=True)
    names = [path.name for path in folder.iterdir()]
    if result.returncode == 0 and names == ["rules.json"]:
        return []
    return [f"same pid as a dead process: {result.stderr}{names}"]


def main():
    failures = []
    with tempfile.TemporaryDirectory(prefix="fv-", dir="/tmp") as root:
        failures += check_process_with_the_pid_of_a_dead_one(root)
        for scenario in (NEW_FILE, EXISTING, LINKED, LEFTOVER):
            calls = calls_of_the_save(root, scenario)
            for needed in ("openat", "write", "fsync", "rename"):
                assert needed in [name for name, _ in calls], f"no {needed} in {calls}"
            faults = [f"error={e}" for e in ERRORS] + ["signal=SIGKILL"]
            with ThreadPoolExecutor(os.cpu_count()) as pool:
                outcomes = list(pool.map(
                    lambda job: attempt(root, scenario, *job),
                    [(call, number, fault) for call, number in calls for fault in faults]))
            failures += [outcome for outcome in outcomes if outcome]
            print(f"{scenario}: {len(calls)} calls, {len(outcomes)} saves interrupted", flush=True)
    print("\n".join(failures))
    return 1 if failures else 0


with tempfile.TemporaryDirectory(prefix="fv-", dir="/tmp") as samples:
    for sample_rules in (OLD_RULES, NEW_RULES):
        assert save(Path(samples) / sample_rules, sample_rules).returncode == 0
    old_bytes = (Path(samples) / OLD_RULES).read_bytes()
    new_bytes = (Path(samples) / NEW_RULES).read_bytes()
with subprocess.Popen(["true"]) as ended:
    dead_process = ended.pid
sys.exit(main())
