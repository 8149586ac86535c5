#!/usr/bin/env python3
"""Links that start the browser's binary: none runs yet, or the one that runs cannot be reached."""

import os
import re

from fake_browser import FakeBrowser
from program_case import ProgramCase, Ran, main

OPENED = Ran(0, "", "")
FAILED = "Couldn't open the link in Google Chrome: {}\nhttps://a/…\n"
DEFAULT = b"--profile-directory=Default"


class Start(ProgramCase):
    def setUp(self):
        super().setUp()
        self.chromium = self.install_browser()
        self.write_rules(("host", "work.example", "Work"))

    def start_browser_that_refuses(self):
        """A browser that runs and takes no link."""
        browser = FakeBrowser(self.user_data, self.root / "s", answer=b"SHUTDOWN")
        self.addCleanup(browser.close)

    def assert_launched(self, *arguments):
        """The browser was started once, with these arguments, and is what the log says that it is."""
        start, = self.starts_of_browser()
        self.assertEqual(start.arguments, list(arguments))
        browser, = self.running_browsers()
        self.assertEqual(self.log_lines()[-1], f"[INFO]   launched Chrome (pid {browser}) (N ms)")
        return start

    def test_cold_launch(self):
        self.install_browser(stays=True)
        self.assertEqual(self.run_program("https://work.example/a b", cwd=self.root), OPENED)
        start = self.assert_launched(b"--profile-directory=Profile 2", b"https://work.example/a b")
        self.assertEqual((start.folder, start.token), ("/", "no token"))
        self.assertEqual(self.log_lines()[:-1], [
            '[INFO] https://work.example/… from SENDER → Work [Profile 2] via rule #1 '
            '(host "work.example")'])

    def test_links_left_behind_by_a_browser_that_crashed_are_a_cold_launch(self):
        FakeBrowser(self.user_data, self.root / "s").close()
        self.install_browser(stays=True)
        self.assertEqual(self.run_program("https://a/"), OPENED)
        self.assert_launched(DEFAULT, b"https://a/")

    def test_switches_of_the_entry_come_first(self):
        self.install_browser(stays=True)
        self.write_entry("chromium", f'env A=1 {self.chromium} --first "--second=x y" %U')
        self.assertEqual(self.run_program("https://a/"), OPENED)
        self.assert_launched(b"--first", b"--second=x y", DEFAULT, b"https://a/")

    def test_any_byte_is_passed_on_to_a_cold_launch(self):
        self.install_browser(stays=True)
        link = b"https://a/\n\xff\xc3(" + "\u202e\u2066".encode() + b"\"'`$(touch x)\\;&|*"
        self.assertEqual(self.run_program(link), OPENED)
        self.assert_launched(DEFAULT, link)

    def test_longest_operand_is_passed_on_to_a_cold_launch(self):
        self.install_browser(stays=True)
        link = b"https://a/".ljust(131071, b"x")
        self.assertEqual(self.run_program(link), OPENED)
        self.assert_launched(DEFAULT, link)

    def test_any_byte_is_passed_on_to_a_relay(self):
        self.start_browser_that_refuses()
        links = [b"https://a/\n", b"https://a/\xff\xc3(", "https://a/\u202e\u2066".encode(),
                 b"https://a/\"'`$(touch x)\\;&|*", b"https://a/".ljust(131071, b"x")]
        self.assertEqual(self.run_program(*links), OPENED)
        self.assertEqual([start.arguments for start in self.starts_of_browser()],
                         [[DEFAULT, link] for link in links])

    def test_token_goes_into_the_environment_of_a_cold_launch(self):
        self.install_browser(stays=True)
        self.run_program("https://a/", env={"XDG_ACTIVATION_TOKEN": "to ken"})
        self.assertEqual(self.assert_launched(DEFAULT, b"https://a/").token, "to ken")

    def test_token_goes_into_the_environment_of_the_first_relay_alone(self):
        self.start_browser_that_refuses()
        self.run_program("https://a/", "https://b/", env={"XDG_ACTIVATION_TOKEN": "to ken"})
        self.assertEqual([start[1:] for start in self.starts_of_browser()],
                         [("to ken", [DEFAULT, b"https://a/"]), ("no token", [DEFAULT, b"https://b/"])])

    def test_browser_that_fails_at_its_start_opens_nothing(self):
        self.install_browser(status=3)
        self.assertEqual(self.run_program("https://a/"),
                         Ran(1, "", FAILED.format("Chrome ended with status 3 at its start")))
        self.assertEqual(self.log_lines()[-1],
                         "[ERROR]   Chrome launch failed: Chrome ended with status 3 at its start")

    def test_relay_says_how_it_ended(self):
        self.start_browser_that_refuses()
        for status in (0, 1, 21):
            with self.subTest(status):
                self.install_browser(status)
                self.assertEqual(self.run_program("https://a/"), OPENED)
                self.assertEqual(self.log_lines()[-2:], [
                    "[WARN] singleton socket not used (Chrome answered shutdown); starting Chrome's "
                    "binary instead",
                    f"[INFO]   handed to running Chrome (pid {os.getpid()}); helper exited {status} (N ms)"])

    def test_end_of_the_browser_is_noticed_whatever_signals_the_caller_ignores(self):
        before = ["env", "--ignore-signal=CHLD,PIPE,HUP,INT,TERM"]
        self.install_browser(status=3)
        self.assertEqual(self.run_program("https://a/", before=before),
                         Ran(1, "", FAILED.format("Chrome ended with status 3 at its start")))
        self.start_browser_that_refuses()
        self.assertEqual(self.run_program("https://a/", before=before), OPENED)
        self.assertEqual(self.log_lines()[-1],
                         f"[INFO]   handed to running Chrome (pid {os.getpid()}); helper exited 3 (N ms)")

    def test_relay_is_the_program_without_the_entrys_switches(self):
        self.start_browser_that_refuses()
        self.write_entry("chromium", f"{self.chromium} --first %U")
        self.run_program("https://a/")
        self.assertEqual(self.starts_of_browser()[0].arguments, [DEFAULT, b"https://a/"])

    def test_what_the_system_refuses_is_told_in_its_words(self):
        # No program takes an argument of this length.
        self.write_profiles(**{"Default": {"name": "Home"}, "x" * 131072: {"name": "Long"}})
        self.write_rules(defaultProfile="Long")
        reason = f"cannot start {self.chromium}: Argument list too long"
        for refuses in (False, True):
            if refuses:
                self.start_browser_that_refuses()
            with self.subTest("relay" if refuses else "cold launch"):
                self.assertEqual(self.run_program("https://a/secret"), Ran(1, "", FAILED.format(reason)))
                self.assertEqual(self.log_lines()[-1], f"[ERROR]   Chrome launch failed: {reason}")
        self.assertEqual(self.starts_of_browser(), [])

    def test_the_callers_files_and_streams_do_not_reach_the_browser(self):
        self.start_browser_that_refuses()
        self.chromium.write_text('#!/bin/sh\nls -l /proc/$$/fd >"$0.part"; mv "$0.part" "$0.files"\n')
        reading, writing = os.pipe()
        with open(self.root / "secret", "w") as secret:
            self.assertEqual(self.run_program("https://a/", pass_fds=[writing, secret.fileno()]), OPENED)
        os.close(writing)
        self.assertEqual(os.read(reading, 1), b"")
        os.close(reading)
        files = re.findall(r" (\d+) -> (\S+)", (self.root / "apps/chromium.files").read_text())
        shell = str(self.chromium)  # which reads its script
        self.assertEqual({target for _, target in files} - {shell, f"{shell}.part"}, {"/dev/null"}, files)


if __name__ == "__main__":
    main()
