"""What the tests that drive the program from outside have in common.

Each test has a home and XDG folders of its own below one temporary folder, and nothing else of the
session: no display, no bus, no installed applications but those that it installs. At its end no
process may be left, and no file outside is written at any time.
"""

import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from typing import NamedTuple

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))
from processes import LONG, Processes, shorten, wait_until  # noqa: E402

PROGRAM = Path(os.environ["FERRIVANE"]).resolve()


class Ran(NamedTuple):
    """How a command ended. Texts keep bytes that are not UTF-8 as Python's surrogates."""
    status: int
    out: str
    err: str


class ProgramCase(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        # Not in $TMPDIR: sockets lie below, and their paths must stay short.
        self.root = Path(tempfile.mkdtemp(prefix="fv", dir="/tmp"))
        self.addCleanup(shutil.rmtree, self.root, ignore_errors=True)
        folders = {"HOME": "home", "XDG_CONFIG_HOME": "config", "XDG_STATE_HOME": "state",
                   "XDG_DATA_HOME": "data", "XDG_RUNTIME_DIR": "run", "XDG_CONFIG_DIRS": "no-config",
                   "XDG_DATA_DIRS": "no-data"}
        self.env = {variable: str(self.root / folder) for variable, folder in folders.items()}
        for folder in ("home", "run"):
            (self.root / folder).mkdir(mode=0o700)
        reports = f"log_path={self.root / 'sanitizer'}"
        self.env |= {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8",
                     "ASAN_OPTIONS": reports, "UBSAN_OPTIONS": reports}
        self.processes = Processes(self.env)
        self.addCleanup(self.processes.end_all)  # also when the test cannot begin

    def tearDown(self):
        try:
            self.processes.end(self.running_browsers())
            wait_until(lambda: not self.processes.all(), LONG,
                       "end of every process that the test has started")
        finally:
            self.processes.end_all()
        reports = [path.read_text() for path in self.root.glob("sanitizer*")]
        self.assertEqual(reports, [])

    # Running the program.

    def start(self, *arguments, cwd="/", env=None, before=(), **options):
        """`env` changes variables; None takes one away. `before` is put before the command."""
        variables = {**self.env, **(env or {})}
        variables = {name: value for name, value in variables.items() if value is not None}
        options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE} | options
        return self.processes.start([*before, PROGRAM, *arguments], cwd=cwd, env=variables, **options)

    def finish(self, child):
        try:
            out, err = child.communicate(timeout=LONG)
        except subprocess.TimeoutExpired:
            child.kill()
            raise AssertionError(f"still running after {LONG} s: {shorten(child.args)}; log:\n"
                                 f"{shorten(self.log(), 2000)}") from None
        return Ran(child.returncode, _text(out), _text(err))

    def run_program(self, *arguments, **options):
        return self.finish(self.start(*arguments, **options))

    # Its files.

    @property
    def rules_file(self):
        return self.root / "config/ferrivane/rules.json"

    @property
    def log_file(self):
        return self.root / "state/ferrivane/ferrivane.log"

    def write_rules(self, *rules, text=None, **keys):
        """Rules as (kind, match, profile) or (kind, match, profile, comment); or the file's text."""
        names = ("kind", "match", "profile", "comment")
        config = {"rules": [dict(zip(names, rule)) for rule in rules], **keys}
        self.rules_file.parent.mkdir(parents=True, exist_ok=True)
        self.rules_file.write_text(json.dumps(config) if text is None else text)

    def log(self):
        try:
            return _text(self.log_file.read_bytes())
        except FileNotFoundError:
            return ""

    def log_lines(self):
        """Without their time stamps, and with "N" for an elapsed time.

        "SENDER" stands for whoever has started the tests, be it a terminal or a service.
        """
        lines = []
        for line in self.log().splitlines():
            self.assertRegex(line, r"^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \[(INFO|WARN|ERROR)\] ")
            line = re.sub(r" \(\d+ ms\)$", " (N ms)", line[24:])
            lines.append(re.sub(r" from [^→]+ → ", " from SENDER → ", line))
        return lines

    # Its surroundings.

    @property
    def user_data(self):
        return self.root / "config/chromium"

    @property
    def entry(self):
        return self.root / "data/applications/chromium.desktop"

    def write_entry(self, identifier, command, more=""):
        path = self.root / f"data/applications/{identifier}.desktop"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f"[Desktop Entry]\nType=Application\nName={identifier}\nExec={command}\n{more}")
        return path

    def write_profiles(self, **profiles):
        """The browser's catalogue: by directory, "_" standing for a blank, what is known of each."""
        cache = {directory.replace("_", " "): value for directory, value in profiles.items()}
        self.user_data.mkdir(parents=True, exist_ok=True)
        (self.user_data / "Local State").write_text(json.dumps({"profile": {"info_cache": cache}}))

    def install_browser(self, status=0, stays=False):
        """A browser that writes down how it was started; its path.

        It ends with the status, or stays as the running browser, though one that takes no link.
        Profiles: Home [Default] and Work [Profile 2].
        """
        path = self.root / "apps/chromium"
        path.parent.mkdir(exist_ok=True)
        end = f"exit {status}"
        if stays:
            program = path.with_name("chrome")  # by this name a browser is known
            shutil.copy(os.environ["STAND_IN_BROWSER"], program)
            end = f"exec {program} --user-data-dir={self.user_data}"
        path.write_text('#!/bin/sh\n'
                        'number=0\n'
                        'while [ -e "$0.$number.start" ]; do number=$((number + 1)); done\n'
                        'printf "%s\\0" "$PWD" "${XDG_ACTIVATION_TOKEN-no token}" "$@" >"$0.part"\n'
                        'mv "$0.part" "$0.$number.start"\n'
                        f'{end}\n')
        path.chmod(0o755)
        self.write_entry("chromium", f"{path} %U")
        self.write_profiles(Default={"name": "Home"}, Profile_2={"name": "Work"})
        return path

    def running_browsers(self):
        """The pids of installed browsers that stay."""
        return self.processes.running(self.root / "apps/chrome")

    def starts_of_browser(self):
        """What each start of the installed browser was given, one after another."""
        starts = []
        while (file := self.root / f"apps/chromium.{len(starts)}.start").exists():
            folder, token, *arguments = file.read_bytes().split(b"\0")[:-1]
            starts.append(Start(_text(folder), _text(token), arguments))
        return starts


class Start(NamedTuple):
    """What a started browser was given."""
    folder: str
    token: str
    arguments: list[bytes]


def _text(data):
    return (data or b"").decode(errors="surrogateescape")


def main():
    unittest.main(module="__main__", verbosity=2)
