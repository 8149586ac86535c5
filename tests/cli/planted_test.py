#!/usr/bin/env python3
"""What others may lay where the program reads, writes or loads something."""

import os
import shutil

import system_calls
from agent_case import LONG, PROGRAM, AgentCase, Ran, main, wait_until

OPENED = Ran(0, "", "")
HUGE = 65 << 20  # one MiB more than is read


class Files(AgentCase):
    def plant(self, path):
        """What may lie in a file's place, one after another."""
        def huge():
            path.touch()
            os.truncate(path, HUGE)
        for name, lay in (("a pipe", lambda: os.mkfifo(path)), ("a folder", path.mkdir), ("a huge file", huge),
                          ("a link to itself", lambda: path.symlink_to(path)),
                          ("an endless device", lambda: path.symlink_to("/dev/zero"))):
            if path.is_dir():
                path.rmdir()
            path.unlink(missing_ok=True)
            lay()
            yield f"{name} as {path.name}"

    def test_what_lies_in_place_of_a_file_stops_no_link(self):
        browser = self.start_browser()
        self.write_rules()
        number = 0
        for path in (self.rules_file, self.user_data / "Local State", self.root / "run/ferrivane-launch.lock",
                     self.log_file):
            path.parent.mkdir(parents=True, exist_ok=True)
            for name in self.plant(path):
                with self.subTest(name):
                    self.assertEqual(self.run_program("https://a/"), OPENED)
                    self.assertEqual(browser.arguments(number), [b"--profile-directory=Default", b"https://a/"])
                    number += 1
            if path.name in ("rules.json", "Local State"):
                self.assertEqual(self.log().count("read failed: File too large"), 1, path.name)
                self.log_file.unlink()
            path.unlink()


class Parts(AgentCase):
    shows_windows = True

    def test_parts_are_loaded_from_beside_the_program_alone(self):
        elsewhere = self.root / "elsewhere"
        elsewhere.mkdir()
        parts = [f"ferrivane-{part}-{os.environ['FERRIVANE_VERSION']}.so" for part in ("desktop", "ui")]
        for name in parts:
            (elsewhere / name).write_text("planted")
        trace = self.root / "trace"
        # Without a browser, for the alert that says so takes both.
        child = self.start("https://a/", cwd=elsewhere, before=system_calls.strace(trace), env={
            "LD_LIBRARY_PATH": f"{elsewhere}:", "PATH": f"{elsewhere}:{self.env['PATH']}"})
        wait_until(self.display.active, LONG, "the alert")
        self.display.press("Escape")
        self.assertEqual(self.finish(child).status, 1)
        strace = os.path.realpath(shutil.which("strace"))
        wait_until(lambda: not self.processes.running(strace), LONG, "the end of the trace")
        opened = {path for call in system_calls.read(trace) if call.name == "openat" for path in call.paths}
        self.assertEqual({path for path in opened if os.path.basename(path) in parts},
                         {str(PROGRAM.parent / name) for name in parts})


if __name__ == "__main__":
    main()
