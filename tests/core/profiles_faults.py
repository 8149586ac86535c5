#!/usr/bin/env python3
"""Interrupts the reading of the browser's catalogue at every system call: an error or the whole list.

    profiles_faults.py FAULT_PROBE
"""

import json
import sys
import tempfile
from pathlib import Path

from faults import INTERRUPTED, KILL, Probe, expect_calls, finish, under_fire

PROFILES = {f"Profile {number}": {"name": f"Name {number}"} for number in range(1000, 2000)}

probe = Probe(sys.argv[1])


def attempt(path, call, number, fault):
    result = probe.run_with_fault(call, number, fault, "profiles", path)
    if fault == KILL:
        return None
    if result.returncode == 0:
        return None if result.stdout == whole else f"{result.stdout.count('|')} profiles and no error"
    if result.returncode != 1 or result.stdout or not result.stderr.strip():
        return f"status {result.returncode}: {result.stdout[:100]}{result.stderr[:500]}"
    if not result.stderr.startswith(("open failed: ", "read failed: ")):
        return f"the cause is not told: {result.stderr}"
    return "given up" if (call, fault) == ("read", INTERRUPTED) else None


def main():
    with tempfile.TemporaryDirectory(prefix="fv-", dir="/tmp") as root:
        path = Path(root) / "Local State"
        path.write_text(json.dumps({"profile": {"info_cache": PROFILES}}))
        calls = probe.calls("profiles", path)
        expect_calls(calls, "openat", "read", "close")
        failures = under_fire("catalogue", calls, lambda *fault: attempt(path, *fault))
        if probe.run("profiles", path).stdout != whole:
            failures.append("catalogue: not what was written")
    return finish(failures)


whole = "".join(f"{directory}|{profile['name']}\n" for directory, profile in PROFILES.items())
sys.exit(main())
