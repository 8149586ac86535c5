#!/usr/bin/env python3
"""A wall clock that jumps by years, to and fro, whenever it is looked at."""

import contextlib
import fcntl
import os
import re
import time

from fake_browser import FakeBrowser
from program_case import LONG, ProgramCase, Ran, main

TO_WORK = [b"--profile-directory=Profile 2", b"https://work.example/"]


class HungBrowser(FakeBrowser):
    """Takes connections, and nothing else."""

    def _serve(self):
        held = []
        with contextlib.suppress(OSError):
            while True:
                held.append(self._listener.accept()[0])
        for connection in held:
            connection.close()


class JumpingClock(ProgramCase):
    def test_no_limit_of_time_is_of_the_wall_clock(self):
        self.install_browser()
        self.write_rules(("host", "work.example", "Work"))
        browser = HungBrowser(self.user_data, self.root / "s")
        self.addCleanup(browser.close)
        lock = self.root / "run/ferrivane-launch.lock"
        with open(lock, "w") as held:
            fcntl.flock(held, fcntl.LOCK_EX)
            child = self.start("https://work.example/", env={"LD_PRELOAD": os.environ["JUMPING_CLOCK"]})
            time.sleep(0.3)
            self.assertIsNone(child.poll(), "the lock is waited for")
        self.assertEqual(self.finish(child), Ran(0, "", ""))
        self.assertEqual(self.starts_of_browser()[0].arguments, TO_WORK)
        years = {int(line[:4]) for line in self.log().splitlines()}
        self.assertNotIn(time.localtime().tm_year, years, "the clock has jumped")
        self.assertEqual([line for line in self.log_lines() if "[WARN]" in line],
                         ["[WARN] singleton socket not used (Chrome did not answer); starting Chrome's "
                          "binary instead"])
        elapsed = int(re.search(r"helper exited 0 \((\d+) ms\)", self.log())[1])
        self.assertGreaterEqual(elapsed, 5000)
        self.assertLess(elapsed, LONG * 1000)


if __name__ == "__main__":
    main()
