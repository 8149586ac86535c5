#!/usr/bin/env python3
"""The system that tests may write to is theirs alone."""

import os
import subprocess
import sys
from pathlib import Path

from package_case import PackageCase, main

import scratch_root
from processes import LONG, wait_until

SECONDS = f"297.{os.getpid()}"  # no other test's
WRITES = f"""
import pathlib, subprocess, sys
sys.path.insert(0, sys.argv[1])
import scratch_root
for name in sys.argv[2:]:
    path = pathlib.Path(name)
    path.unlink() if path.exists() else path.write_text("here")
print(scratch_root.is_inside(), *sorted(map(str, scratch_root.written())))
subprocess.Popen(["sleep", "{SECONDS}"], stdout=subprocess.DEVNULL)
sys.exit(7)
"""


def sleepers():
    """Processes that are still what the program above has left."""
    return [path for path in Path("/proc").glob("[0-9]*/cmdline") if _read(path) == f"sleep\0{SECONDS}\0".encode()]


def _read(path):
    try:
        return path.read_bytes()
    except OSError:
        return b""


class ScratchRoot(PackageCase):
    def test_what_is_done_there_is_seen_there_only(self):
        new = [f"/{folder}/fv-{self.root.name}" for folder in scratch_root.FOLDERS]
        gone = "/etc/passwd"
        support = Path(scratch_root.__file__).parent
        output = self.root / "output"
        with output.open("w") as file:
            status = scratch_root.run([sys.executable, "-c", WRITES, support, *new, gone], stdout=file)
        self.assertEqual(status, 7)
        self.assertEqual(output.read_text().split(), ["True", *sorted(new)])
        self.assertEqual([Path(name).exists() for name in [*new, gone]], [False] * 3 + [True])
        self.assertFalse(scratch_root.is_inside())
        wait_until(lambda: not sleepers(), LONG, "end of what was started in there")

    def test_files_that_a_container_mounts_are_seen(self):
        """A container is played by a mount namespace around it."""
        hosts = self.root / "hosts"
        hosts.write_text("127.0.0.1 here.example\n")
        program = ("import sys; sys.path.insert(0, sys.argv[1]); import scratch_root\n"
                   "scratch_root.run(['cat', '/etc/hosts'])")
        out = self.run_command(*scratch_root.as_root(self.env), "unshare", "--mount", "sh", "-c",
                               'mount --bind "$0" /etc/hosts && exec "$@"', hosts,
                               sys.executable, "-c", program, Path(scratch_root.__file__).parent)
        self.assertEqual(out, "127.0.0.1 here.example\n")

    def test_ends_with_the_program_that_asked_for_it(self):
        support = Path(scratch_root.__file__).parent
        program = ("import sys; sys.path.insert(0, sys.argv[1]); import scratch_root\n"
                   f"scratch_root.run(['sleep', '{SECONDS}'])")
        child = subprocess.Popen([sys.executable, "-c", program, support])
        try:
            wait_until(sleepers, LONG, "start in there")
        finally:
            child.terminate()
            child.wait()
        wait_until(lambda: not sleepers(), LONG, "end of what was started in there")


if __name__ == "__main__":
    main()
