#!/usr/bin/env python3
"""--status: what is installed, running and set up."""

import contextlib
import os
import socket
import subprocess

from fake_browser import FakeBrowser
from program_case import LONG, PROGRAM, ProgramCase, Ran, main, wait_until

VERSION = os.environ["FERRIVANE_VERSION"]
OWN_ID = "com.hollowmere.ferrivane"


class Status(ProgramCase):
    def report(self, **options):
        ran = self.run_program("--status", **options)
        self.assertEqual((ran.status, ran.err), (0, ""))
        return ran.out.splitlines()

    def line(self, label, **options):
        """The report's line that begins with `label`, without it."""
        found = [line for line in self.report(**options) if line.startswith(label)]
        self.assertEqual(len(found), 1, label)
        return found[0][len(label):].lstrip()

    def set_default_browser(self, entry):
        (self.root / "config").mkdir(exist_ok=True)
        (self.root / "config/mimeapps.list").write_text(
            f"[Default Applications]\nx-scheme-handler/http={entry}\nx-scheme-handler/https={entry}\n")

    def test_nothing_installed(self):
        self.assertEqual(self.run_program("--status"), Ran(0, f"""\
Ferrivane {VERSION} (unbundled binary)
Sandbox:  no
Config:   {self.rules_file}  (missing; created on first run)
Log:      {self.log_file}
Agent:    not running
Default browser: none
Chrome:   NOT FOUND
Profiles: cannot read (open failed: No such file or directory)
""", ""))

    def test_everything_in_place(self):
        self.write_rules()
        self.install_browser()
        self.write_profiles(
            Default={"name": "Home"},
            Profile_2={"name": "Work and more", "user_name": "me@work.example", "hosted_domain": "work.example"},
            Profile_10={"name": "Größe e\u0301", "hosted_domain": "NO_HOSTED_DOMAIN"},
            Profile_3={"name": "", "hosted_domain": "school.example"})
        own = self.write_entry(OWN_ID, f"{PROGRAM} %U")
        self.set_default_browser(own.name)
        browser = FakeBrowser(self.user_data, self.root / "s")
        self.addCleanup(browser.close)
        self.assertEqual(self.run_program("--status"), Ran(0, f"""\
Ferrivane {VERSION}
Sandbox:  no
Config:   {self.rules_file}
Log:      {self.log_file}
Agent:    not running
Default browser: {own}
Chrome:   {self.entry} (running)
Profiles:
  Home         [Default]
  Größe e\u0301      [Profile 10]
  Work and mor [Profile 2]  me@work.example, managed by work.example
  Profile 3    [Profile 3]  managed by school.example
""", ""))
        self.assertEqual(browser.messages, [])

    def test_browser_that_does_not_run(self):
        self.install_browser()
        self.assertEqual(self.line("Chrome:"), f"{self.entry} (not running)")

    def test_browser_that_has_left_its_links_behind(self):
        self.install_browser()
        FakeBrowser(self.user_data, self.root / "s").close()
        self.assertEqual(self.line("Chrome:"), f"{self.entry} (not running)")

    def test_google_chrome_before_chromium(self):
        chromium = self.install_browser()
        chrome = self.write_entry("google-chrome", f"{chromium} %U")
        self.assertEqual(self.line("Chrome:"), f"{chrome} (not running)")

    def test_catalogue_of_the_browser_that_is_shown(self):
        self.install_browser()
        other = self.root / "elsewhere"
        other.mkdir()
        (other / "Local State").write_text("{}")
        self.assertEqual(self.line("Profiles:", env={"CHROME_USER_DATA_DIR": str(other)}),
                         f"cannot read (no profile.info_cache in {other}/Local State)")

    def test_default_browser_is_whoever_the_desktop_names(self):
        self.install_browser()
        self.set_default_browser("chromium.desktop")
        self.assertEqual(self.line("Default browser:"), str(self.entry))
        self.set_default_browser("not-installed.desktop")
        self.assertEqual(self.line("Default browser:"), "none")

    def test_sandbox_marker_counts_whatever_its_value(self):
        for value in ("", "org.example"):
            self.assertEqual(self.line("Sandbox:", env={"APP_SANDBOX_CONTAINER_ID": value}),
                             "yes — Chrome reached through the helper script")

    def test_installed_is_what_a_visible_entry_starts(self):
        unbundled = f"Ferrivane {VERSION} (unbundled binary)"
        rows = {
            "this program": (f"{PROGRAM} %U", "", f"Ferrivane {VERSION}"),
            "hidden": (f"{PROGRAM} %U", "NoDisplay=true\n", unbundled),
            "another program": ("/bin/sh", "", unbundled),
            "a program that is gone": ("/no/such/program", "", unbundled),
        }
        for name, (command, more, expected) in rows.items():
            with self.subTest(name):
                self.write_entry(OWN_ID, command, more)
                self.assertEqual(self.report()[0], expected)

    @staticmethod
    def listens(path):
        with socket.socket(socket.AF_UNIX) as probe:
            return probe.connect_ex(str(path)) == 0

    @contextlib.contextmanager
    def bus(self, path):
        daemon = self.processes.start(["dbus-daemon", "--session", "--nofork", f"--address=unix:path={path}"],
                                      stderr=subprocess.DEVNULL)
        try:
            wait_until(lambda: self.listens(path), LONG, "a bus")
            yield {"DBUS_SESSION_BUS_ADDRESS": f"unix:path={path}"}
        finally:
            daemon.terminate()
            daemon.wait()

    @contextlib.contextmanager
    def owner_of_own_name(self, address):
        """Its pid."""
        owner = self.processes.start([os.environ["BUS_STAND_IN"], OWN_ID], env=self.env | address,
                                     stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        try:
            self.assertEqual(owner.stdout.readline(), b"owned\n")
            yield owner.pid
        finally:
            owner.communicate()

    def test_agent_is_the_owner_of_the_name_on_the_bus(self):
        with self.bus(self.root / "bus") as address:
            self.assertEqual(self.line("Agent:", env=address), "not running")
            with self.owner_of_own_name(address) as pid:
                self.assertEqual(self.line("Agent:", env=address), f"running (pid {pid})")
                self.assertEqual(self.line("Agent:"), "not running")
            self.assertEqual(self.line("Agent:", env=address), "not running")

    def test_bus_in_the_runtime_folder_needs_no_address(self):
        with self.bus(self.root / "run/bus") as address, self.owner_of_own_name(address) as pid:
            self.assertEqual(self.line("Agent:"), f"running (pid {pid})")

    def test_bus_that_does_not_answer_is_no_agent(self):
        for address in (f"unix:path={self.root}/none", "nonsense", "unix:"):
            self.assertEqual(self.line("Agent:", env={"DBUS_SESSION_BUS_ADDRESS": address}), "not running")

    def test_bus_that_takes_the_connection_and_says_nothing_is_no_agent(self):
        with socket.socket(socket.AF_UNIX) as mute:
            mute.bind(str(self.root / "run/bus"))
            mute.listen()
            self.assertEqual(self.line("Agent:"), "not running")

    def test_no_bus_is_ever_started(self):
        # The desktop's own library would start one for a display.
        trace = self.root / "trace"
        ran = self.run_program(
            "--status", env={"DISPLAY": ":97", "ASAN_OPTIONS": "detect_leaks=0"},
            before=["strace", "-f", "-qq", "-o", trace, "-e", "trace=execve,fork,vfork"])
        self.assertEqual((ran.status, ran.err), (0, ""))
        started = [line for line in trace.read_text().splitlines() if "execve(" in line]
        self.assertEqual(len(started), 1, started)


if __name__ == "__main__":
    main()
