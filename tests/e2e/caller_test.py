#!/usr/bin/env python3
"""Whoever opens a link is not kept waiting, and nothing of ours outlives it."""

import os
import signal
import time
from pathlib import Path

from browser_case import LONG, BrowserCase, main


class Caller(BrowserCase):
    def test_hand_over_lets_go_of_the_output(self):
        link = self.link()
        self.send(link)
        self.assert_fetched(link)

    def test_cold_launch_lets_go_of_the_output(self):
        self.desktop.stop_browsers()
        self.desktop.write_profiles()
        link = self.link()
        self.send(link)
        self.assert_fetched(link)

    def test_launched_browser_stands_on_its_own(self):
        self.desktop.stop_browsers()
        self.desktop.write_profiles()
        self.send(self.link())
        pid = self.desktop.browser()
        self.assertEqual(os.getsid(pid), pid)
        for number in (0, 1, 2):
            self.assertEqual(str(Path(f"/proc/{pid}/fd/{number}").readlink()), "/dev/null")

    def test_browser_survives_the_end_of_the_callers_process_group(self):
        self.desktop.stop_browsers()
        self.desktop.write_profiles()
        link = self.link()
        caller = self.desktop.start(link, through=["sh", "-c", '"$0" "$@"; exec sleep 60'])
        self.assert_fetched(link)
        pid = self.desktop.browser()
        # As a terminal does it that is closed.
        os.killpg(caller.pid, signal.SIGHUP)
        caller.communicate(timeout=LONG)
        time.sleep(1)
        self.assertEqual(self.desktop.browser(), pid)

    def test_failure_is_told_by_status_and_on_standard_error(self):
        entry = self.desktop.root / "data/applications/chromium.desktop"
        text = entry.read_text()
        entry.unlink()
        try:
            sent = self.desktop.send(self.link("/secret"))
        finally:
            entry.write_text(text)
        # What is left waits for an answer to its alert.
        self.desktop.processes.end(self.desktop.processes.running(self.desktop.ferrivane))
        self.assertEqual(sent.status, 1)
        self.assertIn("Google Chrome is not installed", sent.stderr)
        self.assertNotIn("secret", sent.stderr)
        self.assertIn("[ERROR]   Chrome launch failed: Google Chrome is not installed\n", sent.log)

    def test_first_link_writes_the_starter_rules(self):
        self.desktop.rules_file.unlink()
        link = self.link()
        self.send(link)
        self.assertTrue(self.desktop.rules_file.is_file())
        self.assert_fetched(link)


if __name__ == "__main__":
    main()
