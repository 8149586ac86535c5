#!/usr/bin/env python3
"""A sandboxed program reaches the browser through the helper script, and touches nothing itself."""

import re
import shutil
import subprocess
from pathlib import Path

from browser_case import LONG, WORK, BrowserCase, main, shorten, wait_until

MARKER = "APP_SANDBOX_CONTAINER_ID"
SCRIPT = Path(__file__).resolve().parents[2] / "resources/ferrivane-helper.sh"
NOT_INSTALLED = "[WARN] helper script not installed; opening in Chrome without a profile\n"


class SandboxCase(BrowserCase):
    def setUp(self):
        super().setUp()
        self.desktop.env[MARKER] = ""
        self.installed = self.desktop.root / "data/ferrivane/scripts/ferrivane-helper.sh"
        self.temporary = Path(self.desktop.env["TMPDIR"])
        self.desktop.write_rules(default="Work")

    def tearDown(self):
        del self.desktop.env[MARKER]
        shutil.rmtree(self.installed.parent, ignore_errors=True)
        super().tearDown()
        self.assertEqual([path.name for path in self.temporary.glob("chrome-local-state-*")], [])

    def install_script(self, more=""):
        self.installed.parent.mkdir(parents=True, exist_ok=True)
        self.installed.write_text(SCRIPT.read_text() + more)
        self.installed.chmod(0o755)

    def without_browser(self):
        self.desktop.stop_browsers()
        self.desktop.write_profiles()

    def status(self):
        return subprocess.run([self.desktop.ferrivane, "--status"], env=self.desktop.env, check=True,
                              stdout=subprocess.PIPE, text=True).stdout

    def line(self, label):
        return re.search(f"^{label} *(.*)$", self.status(), re.M).group(1)


class WithScript(SandboxCase):
    def test_running_browser_gets_the_link_in_its_profile(self):
        for name, more in (("ready", ""), ("outdated", "\n")):
            self.install_script(more)
            link, pid = self.link(f"/{name}"), self.desktop.browser()
            sent = self.send(link)
            self.assertRegex(sent.log, r" → Work \[Profile 1\] via default\n\S+ \S+ \[INFO\]   handed to "
                                       rf"running Chrome \(pid {pid}\) through the helper script \(\d+ ms\)\n$")
            self.assert_fetched(link, WORK, settle=0.5)
            self.assertEqual(self.desktop.browser(), pid)

    def test_browser_that_does_not_run_is_started_with_the_link_in_its_profile(self):
        for name, more in (("ready", ""), ("outdated", "\n")):
            self.without_browser()
            self.install_script(more)
            link = self.link(f"/{name}")
            sent = self.send(link)
            self.assertRegex(sent.log, r" → Work \[Profile 1\] via default\n\S+ \S+ \[INFO\]   "
                                       r"launched Chrome through the helper script \(\d+ ms\)\n$")
            self.assert_fetched(link, WORK, settle=0.5)
            self.desktop.browser()

    def test_links_at_the_same_time_start_one_browser(self):
        self.without_browser()
        self.install_script()
        links = [self.link(f"/{number}") for number in range(3)]
        children = [self.desktop.start(link) for link in links]
        for child in children:
            child.communicate(timeout=LONG)
            self.assertEqual(child.returncode, 0)
        for link in links:
            self.assert_fetched(link, WORK)
        self.desktop.browser()

    def test_hostile_link_arrives(self):
        self.install_script()
        address = self.link("/")
        self.send(address + "$(id)`id`%s';x=\"1\"&|*\n")
        self.assert_fetched(address + "$(id)%60id%60%s';x=%221%22&%7C*", WORK)

    def test_failure_of_the_script_is_told(self):
        self.installed.parent.mkdir(parents=True)
        self.installed.write_text("#!/bin/sh\nexit 3\n")
        self.installed.chmod(0o755)
        link = self.link()
        sent = self.desktop.send(link)
        self.assertEqual(sent.status, 1)
        # Its alert is open.
        self.desktop.processes.end(self.desktop.processes.running(self.desktop.ferrivane))
        self.assertIn("[ERROR] cannot read Chrome profiles: the helper script ended with status 3\n", sent.log)
        self.assertIn("[ERROR]   Chrome launch failed: the helper script ended with status 3\n", sent.log)

    def test_status_shows_what_the_script_reads(self):
        self.install_script()
        self.assertEqual(self.line("Sandbox:"), "yes — Chrome reached through the helper script")
        self.assertTrue(self.line("Chrome:").endswith("/chromium.desktop (running)"))
        self.assertRegex(self.status(), r"\nProfiles:\n  Home         \[Default\].*\n"
                                        r"  Work         \[Profile 1\].*\n")
        self.desktop.stop_browsers()
        self.assertTrue(self.line("Chrome:").endswith("/chromium.desktop (not running)"))


class WithoutScript(SandboxCase):
    def expected(self, pid):
        return (r"\[ERROR\] cannot read Chrome profiles: helper script is not installed at "
                + re.escape(str(self.installed)) + r"\n\S+ \S+ \[INFO\] .* → profile \"Work\" NOT FOUND via "
                r"default\n(.*\n)+\S+ \S+ " + re.escape(NOT_INSTALLED) + r"\S+ \S+ \[INFO\]   opened in Chrome "
                rf"\(pid {pid}\) without a profile — helper script missing \(\d+ ms\)\n$")

    def test_running_browser_gets_the_link_alone(self):
        link, pid = self.link(), self.desktop.browser()
        sent = self.send(link)
        self.assertRegex(sent.log, self.expected(pid))
        self.assert_fetched(link, settle=0.5)
        self.assertEqual(self.desktop.browser(), pid)
        self.assert_profiles_unchanged()

    def test_browser_that_does_not_run_is_started_with_the_link_alone(self):
        self.without_browser()
        link = self.link()
        sent = self.send(link)
        self.assert_fetched(link, settle=0.5)
        self.assertRegex(sent.log, self.expected(self.desktop.browser()))

    def test_script_that_may_not_be_executed_is_missing(self):
        self.install_script()
        self.installed.chmod(0o644)
        link = self.link()
        self.assertIn(NOT_INSTALLED, self.send(link).log)
        self.assert_fetched(link)

    def test_warning_comes_once_per_link(self):
        log = self.send(self.link("/a"), self.link("/b")).log
        self.assertEqual(log.count(NOT_INSTALLED), 2)

    def test_status_says_what_is_missing(self):
        self.assertEqual(self.line("Sandbox:"), "yes — Chrome reached through the helper script")
        self.assertEqual(self.line("Profiles:"),
                         f"cannot read (helper script is not installed at {self.installed})")


class Untouched(SandboxCase):
    """Seen by the system calls of the program alone: each child is let go when it becomes another."""

    def trace(self, *operands):
        file = self.desktop.root / "trace"
        child = self.desktop.processes.start(
            ["strace", "-f", "-b", "execve", "-qq", "-s", "200", "-o", file, "-e", "trace=%file,%network",
             self.desktop.ferrivane, *operands], cwd="/", stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        out, err = child.communicate(timeout=LONG)
        self.assertEqual(child.returncode, 0, err)
        # The program's second process may go on for a while.
        wait_until(lambda: not self.desktop.processes.running(self.desktop.ferrivane), LONG, "its end")
        return file.read_text()

    def of_the_browser(self, trace):
        """The calls that name anything of the browser's own."""
        names = (str(self.desktop.user_data), "Singleton")
        return [line for line in trace.splitlines() if any(name in line for name in names)]

    def assert_untouched(self, trace):
        self.assertEqual(shorten(self.of_the_browser(trace)), "[]")

    def test_hand_over(self):
        self.install_script()
        link = self.link()
        trace = self.trace(link)
        self.assertIn(str(self.installed), trace)
        self.assert_untouched(trace)
        self.assert_fetched(link, WORK)

    def test_launch(self):
        self.without_browser()
        self.install_script()
        link = self.link()
        self.assert_untouched(self.trace(link))
        self.assert_fetched(link, WORK)

    def test_link_alone(self):
        for path in ("/running", "/started"):
            link = self.link(path)
            self.assert_untouched(self.trace(link))
            self.assert_fetched(link)
            self.without_browser()

    def test_status_and_dry_run(self):
        for install in (lambda: None, self.install_script):
            install()
            self.assert_untouched(self.trace("--status"))
            self.assert_untouched(self.trace("--test", "https://a/"))

    def test_outside_a_sandbox_the_same_eyes_see_both(self):
        del self.desktop.env[MARKER]
        try:
            calls = self.of_the_browser(self.trace(self.link()))
        finally:
            self.desktop.env[MARKER] = ""
        self.assertTrue([call for call in calls if "Local State" in call], calls)
        self.assertTrue([call for call in calls if "connect(" in call], calls)


if __name__ == "__main__":
    main()
