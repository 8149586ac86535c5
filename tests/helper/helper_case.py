"""What the tests of the helper script have in common: a private home, and programs that record."""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from typing import NamedTuple

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))
from processes import LONG, Processes, wait_until  # noqa: E402,F401

SCRIPT = Path(__file__).resolve().parents[2] / "resources/ferrivane-helper.sh"
SHELLS = {"dash": ["dash"], "bash": ["bash"], "bash as sh": ["bash", "--posix"],
          "zsh as sh": ["zsh", "--emulate", "sh"]}


class Ran(NamedTuple):
    status: int
    err: str


class HelperCase(unittest.TestCase):
    maxDiff = None
    shell = None  # the one that each_shell is at

    def setUp(self):
        self.root = Path(tempfile.mkdtemp(prefix="fv", dir="/tmp"))
        self.addCleanup(shutil.rmtree, self.root, ignore_errors=True)
        self.home = self.root / "home"
        self.home.mkdir()
        self.env = {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "HOME": str(self.home),
                    "XDG_DATA_HOME": str(self.root / "data"), "XDG_DATA_DIRS": str(self.root / "shared")}
        self.processes = Processes(self.env)
        self.addCleanup(self.processes.end_all)

    def run_script(self, *arguments, shell=("sh",), env=None, before=(), seconds=LONG):
        child = self.processes.start([*before, *shell, SCRIPT, *arguments], env=self.env | (env or {}),
                                     cwd="/", stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                     stderr=subprocess.PIPE)
        out, err = child.communicate(timeout=seconds)
        self.assertEqual(out, b"")
        return Ran(child.returncode, err.decode())

    def refused(self, *arguments, status=2, **options):
        """It ends with the status and one line."""
        ran = self.run_script(*arguments, **options)
        self.assertEqual(ran.status, status, ran.err)
        self.assertRegex(ran.err, r"\Aferrivane-helper: [^\n]+\n\Z")
        return ran.err

    def program(self, name, end="exit 0"):
        """A program that records its arguments, then does this; its path."""
        path = self.root / "apps" / name
        path.parent.mkdir(exist_ok=True)
        path.write_text('#!/bin/sh\nset -e\nprintf "%s\\0" "$@" >"$0.part"\nmv "$0.part" "$0.arguments"\nset +e\n'
                        f"{end}\n")
        path.chmod(0o755)
        return path

    def assert_not_started(self, program):
        self.assertFalse(Path(f"{program}.arguments").exists())

    def arguments_of(self, program):
        """What it was started with, once it was. The record is gone then."""
        record = Path(f"{program}.arguments")
        wait_until(record.exists, LONG, f"a start of {program}")
        words = record.read_bytes().split(b"\0")[:-1]
        record.unlink()
        return [os.fsdecode(word) for word in words]

    def install(self, identifier, command, more="", folder="data"):
        path = self.root / folder / "applications" / f"{identifier}.desktop"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f"[Desktop Entry]\nType=Application\nName=x\nExec={command}\n{more}")
        return path

    def each_shell(self):
        for self.shell, command in SHELLS.items():
            yield command
        self.shell = None

    def _formatMessage(self, msg, standard):
        message = super()._formatMessage(msg, standard)
        return f"{self.shell}: {message}" if self.shell else message


def main():
    unittest.main(module="__main__", verbosity=2)
