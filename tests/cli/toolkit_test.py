#!/usr/bin/env python3
"""What loads the toolkit, on a desktop where all of it could be shown, and what its windows leave behind."""

import os
import re
import time
from pathlib import Path

from agent_case import LONG, MIB, AgentCase, Ran, main, takes_at_rest, wait_until

TOOLKIT = re.compile(r"libQt\d|ferrivane-ui")
# How often the settings are opened, and after how many times nothing more may be taken.
ROUNDS, WARM = int(os.environ.get("ROUNDS", 20)), 10
MORE = 2 * MIB  # what the allocator may do of its own


def toolkit_of(process):
    """The toolkit's files in its memory."""
    lines = Path(f"/proc/{process}/maps").read_text().splitlines()
    return {os.path.basename(line.split()[-1]) for line in lines if TOOLKIT.search(line)}


class Toolkit(AgentCase):
    shows_windows = True

    def setUp(self):
        super().setUp()
        self.write_rules(("app", "Mail", "Work"), ("host", "example.com", "Work"))
        self.write_entry("com.hollowmere.ferrivane", f"{self.program} %U")

    def opened_files(self, *arguments):
        """Those that the command and all that it starts look for; every one of them has ended."""
        trace = self.root / "trace"
        ran = self.run_program(*arguments, before=["strace", "-f", "-qq", "-s", "4096", "-e", "signal=none", "-e",
                                                   "trace=execve,open,openat,openat2", "-o", trace],
                               env={"ASAN_OPTIONS": "detect_leaks=0"})
        lines = trace.read_text(errors="surrogateescape").splitlines()
        trace.unlink()
        self.assertTrue(any("execve(" in line for line in lines), lines)
        return ran, lines

    def test_no_command_loads_it(self):
        self.install_browser()
        for arguments, told in ((["--help"], "--set-default"), (["--test", "https://a/"], "Home [Default]"),
                                (["--test", "https://a/", "--from", "Mail"], "Work [Profile 2]"),
                                (["--status"], "Agent:    not running"), (["--set-default"], "https: ok"),
                                (["--status"], "Agent:    not running"), (["--restore-default"], "https: ok")):
            with self.subTest(arguments):
                ran, lines = self.opened_files(*arguments)
                self.assertEqual((ran.status, ran.err), (0, ""))
                self.assertIn(told, ran.out)
                self.assertEqual([line for line in lines if TOOLKIT.search(line)], [])

    def test_no_link_that_is_opened_loads_it(self):
        browser = self.start_browser()
        ran, lines = self.opened_files("https://a/", "https://example.com/")
        self.assertEqual(ran, Ran(0, "", ""))
        self.assertEqual(self.links(browser), ["https://a/", "https://example.com/"])
        self.assertEqual([line for line in lines if TOOLKIT.search(line)], [])
        self.assertTrue(any("ferrivane-desktop" in line for line in lines), "it has looked for the front window")

    def test_agent_loads_it_when_the_settings_are_opened_and_not_before(self):
        browser = self.start_browser()
        agent = self.start_agent()
        caller = self.caller()
        for number in range(3):
            self.assertEqual(caller.open(f"https://a/{number}", f"https://example.com/{number}").error, "")
        wait_until(lambda: len(browser.messages) == 6, LONG, "the links")
        time.sleep(1)  # whatever is due after a link
        self.assertEqual(toolkit_of(agent.pid), set())
        self.assertEqual(caller.activate().error, "")
        self.wait_for_settings()
        names = " ".join(toolkit_of(agent.pid))
        for part in ("ferrivane-ui", "libQt6Core", "libQt6Gui", "libQt6Widgets"):
            self.assertIn(part, names)
        self.close_settings()
        self.assertEqual(caller.open("https://b/").error, "")
        wait_until(lambda: len(browser.messages) == 7, LONG, "a link after the settings")

    def test_a_link_that_cannot_be_opened_loads_it_for_its_alert(self):
        agent = self.start_agent()
        self.assertEqual(self.caller().open("https://a/").error, "")
        wait_until(lambda: toolkit_of(agent.pid), LONG, "the toolkit")

    def test_settings_that_are_opened_again_and_again_take_no_more(self):
        self.install_browser()
        # Sanitizers keep what was freed for a while; a little is enough here.
        agent = self.start_agent(env={"ASAN_OPTIONS": self.env["ASAN_OPTIONS"] + ":quarantine_size_mb=1"})
        caller = self.caller()

        def rounds(number):
            for _ in range(number):
                self.assertEqual(caller.activate().error, "")
                self.close_settings()
        rounds(WARM)
        before = takes_at_rest(agent.pid)
        rounds(ROUNDS - WARM)
        self.assert_takes_no_more(agent.pid, before, MORE)


if __name__ == "__main__":
    main()
