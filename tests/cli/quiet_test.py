#!/usr/bin/env python3
"""What a link's road does not touch, as the system calls of the whole process tree tell."""

import re
import socket

from fake_browser import FakeBrowser
from program_case import LONG, ProgramCase, Ran, main, wait_until

OPENED = Ran(0, "", "")
DESKTOP = re.compile(r"lib(Qt|gio|glib|gobject|gmodule|xcb|X11|wayland|dbus)|ferrivane-desktop")
NO_BUS = {"DBUS_SESSION_BUS_ADDRESS": None, "XDG_RUNTIME_DIR": None}
# The byte by which the caller is let go.
RELEASE = re.compile(r' write\(\d+, "\\[01]", 1[ )]')
CHANGES = re.compile(r" (mkdir|rmdir|rename|unlink|symlink|link|chmod|chown|truncate|mknod|utime)")


class Quiet(ProgramCase):
    def setUp(self):
        super().setUp()
        self.install_browser()
        # A desktop that wants to be talked to.
        self.bus = socket.socket(socket.AF_UNIX)
        self.addCleanup(self.bus.close)
        self.bus.bind(str(self.root / "run/bus"))
        self.bus.listen()
        self.bus.setblocking(False)
        self.desktop = {"DISPLAY": ":97", "WAYLAND_DISPLAY": "wayland-97", "QT_QPA_PLATFORM": "xcb",
                        "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.root}/run/bus"}

    def start_browser(self):
        browser = FakeBrowser(self.user_data, self.root / "s")
        self.addCleanup(browser.close)
        return browser

    def traced(self, *arguments, expected=OPENED, env=None, meanwhile=lambda: None):
        """The system calls, each behind the number of its process."""
        trace = self.root / "trace"
        calls = "trace=%file,%network,execve,write"
        child = self.start(
            *arguments, before=["strace", "-f", "-qq", "-s", "4096", "-e", "signal=none", "-e", calls,
                                "-o", trace],
            env={**self.desktop, "ASAN_OPTIONS": "detect_leaks=0", **(env or {})})
        meanwhile()
        ran = self.finish(child)
        if expected is not None:
            self.assertEqual(ran, expected)
        lines = trace.read_text(errors="surrogateescape").splitlines()
        trace.unlink()
        self.assertTrue(any("execve(" in line for line in lines), lines)
        return lines

    def assert_quiet(self, lines):
        self.assertEqual([line for line in lines if DESKTOP.search(line) and "openat(" in line], [])
        self.assertEqual([line for line in lines if "AF_INET" in line or "AF_NETLINK" in line], [])
        with self.assertRaises(BlockingIOError):
            self.bus.accept()

    def connections(self, lines):
        return {re.search(r'sun_path="([^"]*)"', line)[1] for line in lines if " connect(" in line}

    def until_release(self, lines):
        """The calls before the one by which the caller is let go."""
        release, = (number for number, line in enumerate(lines) if RELEASE.search(line))
        return lines[:release]

    def test_hand_over_talks_to_the_browser_alone(self):
        browser = self.start_browser()
        lines = self.traced("https://a/", "https://b/")
        self.assert_quiet(lines)
        self.assertEqual(self.connections(lines), {str(self.root / "s/SingletonSocket")})
        self.assertEqual(len([line for line in lines if "execve(" in line]), 1)
        self.assertEqual(len(browser.messages), 2)

    def test_display_is_asked_only_once_the_caller_is_let_go(self):
        self.start_browser()
        lines = self.traced("https://a/", env={"WAYLAND_DISPLAY": None})
        self.assert_quiet(self.until_release(lines))
        self.assertTrue(any("ferrivane-desktop" in line for line in lines))

    def test_cold_launch_is_quiet_until_the_caller_is_let_go(self):
        self.install_browser(stays=True)
        pids = []

        def end_browser():  # for the trace ends only with the last process
            wait_until(lambda: " launched Chrome (pid " in self.log(), LONG, "outcome in the log")
            pids.extend(self.running_browsers())
            self.processes.end(pids)

        lines = self.until_release(self.traced("https://a/", meanwhile=end_browser))
        self.assert_quiet(lines)
        self.assertEqual(self.connections(lines), {str(self.user_data / f"s{pids[0]}/SingletonSocket")})

    def test_failure_is_quiet_until_the_caller_is_let_go(self):
        self.entry.unlink()
        lines = self.until_release(self.traced("https://a/", expected=None))
        self.assert_quiet(lines)
        self.assertEqual([line for line in lines if " socket(" in line], [])

    def test_commands_that_need_no_desktop_load_none(self):
        self.write_rules()
        for arguments in (["--help"], ["--test", "https://a/"], ["--test"], ["--set-default"]):
            with self.subTest(arguments):
                lines = self.traced(*arguments, expected=None)
                self.assert_quiet(lines)
                self.assertEqual([line for line in lines if " socket(" in line], [])
                self.assertEqual(len([line for line in lines if "execve(" in line]), 1)

    def test_status_uses_no_network(self):
        lines = self.traced("--status", expected=None, env=NO_BUS)
        self.assertEqual([line for line in lines if "AF_INET" in line], [])

    def test_nothing_outside_the_persons_folders_is_changed(self):
        self.start_browser()
        for arguments in (["https://a/"], ["--status"], ["--test", "https://a/"]):
            with self.subTest(arguments):
                lines = self.traced(*arguments, expected=None, env=NO_BUS)
                changes = [line for line in lines
                           if CHANGES.search(line) or re.search(r"O_(WRONLY|RDWR|CREAT|TRUNC)", line)]
                allowed = re.compile(rf'"({re.escape(str(self.root))}/|/dev/null")')
                self.assertEqual([line for line in changes if not allowed.search(line)], [])
                self.assertTrue(arguments[0].startswith("--") or any("ferrivane.log" in line for line in changes))

    def test_browsers_own_files_are_never_changed(self):
        self.start_browser()
        lines = self.traced("https://a/")
        written = [line for line in lines if str(self.user_data) in line and
                   (CHANGES.search(line) or re.search(r"O_(WRONLY|RDWR|CREAT|TRUNC)", line))]
        self.assertEqual(written, [])


if __name__ == "__main__":
    main()
