"""What the tests of the resident agent have in common: a session bus of its own for each test."""

import os
import re
import signal
import sys
import time
from pathlib import Path
from typing import NamedTuple

from fake_browser import FakeBrowser
from program_case import LONG, PROGRAM, ProgramCase, Ran, main, wait_until  # noqa: F401

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))
from display import Display  # noqa: E402
from session_bus import SessionBus, write_description  # noqa: E402,F401

NO_BUS = {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"}
MIB = 1 << 20


class Takes(NamedTuple):
    """What a process takes."""
    memory: int  # bytes that it has written and shares with nobody
    descriptors: int

    def __str__(self):
        return f"{self.memory / MIB:.1f} MiB and {self.descriptors} descriptors"


def takes(process):
    text = Path(f"/proc/{process}/smaps_rollup").read_text()
    return Takes(int(re.search(r"^Private_Dirty: +(\d+) kB", text, re.MULTILINE)[1]) * 1024,
                 len(os.listdir(f"/proc/{process}/fd")))


def takes_at_rest(process):
    time.sleep(3)  # it gives memory back after two seconds without work, and looks for its display before
    return takes(process)


class AgentCase(ProgramCase):
    session = {}  # variables of the whole session, the bus included
    shows_windows = False  # on a display of the test's own

    def setUp(self):
        super().setUp()
        self.env |= self.session
        self.display = Display(self.processes) if self.shows_windows else None
        if self.display:
            self.env["DISPLAY"] = self.display.name
            leaks = self.root / "leaks"
            leaks.write_text("leak:libfontconfig.so\n")
            self.env["LSAN_OPTIONS"] = f"suppressions={leaks}:print_suppressions=0"
        # Without blanks, wherever it was built: neither the bus nor a desktop knows how to quote.
        self.program = self.root / "Ferrivane"
        self.program.symlink_to(PROGRAM)
        self.bus = SessionBus(self.processes, self.root / "bus")
        self.env["DBUS_SESSION_BUS_ADDRESS"] = self.bus.address
        self.bus.start()
        self.bus.install(self.program)

    def tearDown(self):
        try:
            self.processes.end(self.processes.running(PROGRAM))
            if self.display:
                self.display.end()
            if self.bus.daemon.poll() is None:
                self.bus.stop()
        finally:
            super().tearDown()

    # The settings.

    def settings(self):
        """The visible windows of the application."""
        return [window for agent in self.agents() for window in self.display.windows(agent)]

    def wait_for_settings(self):
        """Their window, once the keys go to it."""
        def window():
            active = self.display.active()
            return active if self.settings() == [active] else None
        window = wait_until(window, LONG, "the settings, active")
        self.assertEqual(self.display.name_of(window), "Ferrivane")
        return window

    def close_settings(self, keys="ctrl+w"):
        self.wait_for_settings()
        self.display.press(keys)
        wait_until(lambda: not self.settings(), LONG, f"end of the settings after {keys}")

    # Documents that the application opens.

    def install_editor(self):
        editor = self.root / "editor"
        editor.write_text('#!/bin/sh\nprintf "%s\\n" "$1" >>"$0.opened"\n')
        editor.chmod(0o755)
        entry = self.write_entry("org.example.Editor", f"{editor} %f").name
        kinds = ("application/json", "application/octet-stream", "text/plain", "text/x-log")
        (self.root / "config/mimeapps.list").write_text(
            "[Default Applications]\n" + "".join(f"{kind}={entry}\n" for kind in kinds))

    def opened(self):
        path = self.root / "editor.opened"
        return path.read_text().splitlines() if path.exists() else []

    # Its browser, its bus and itself.

    def start_browser(self, **options):
        self.install_browser()
        browser = FakeBrowser(self.user_data, self.root / "s", **options)
        self.addCleanup(browser.close)
        return browser

    def caller(self):
        caller = self.bus.connect()
        self.addCleanup(caller.close)
        return caller

    def start_agent(self, *arguments, **options):
        """Its process, once it owns its name."""
        agent = self.start("--agent", *arguments, **options)
        self.addCleanup(agent.communicate)
        caller = self.caller()
        wait_until(lambda: caller.owner() == agent.pid, LONG, "an agent on the bus")
        return agent

    def agents(self):
        return self.processes.running(PROGRAM)

    def end(self, agent, number=signal.SIGTERM):
        agent.send_signal(number)
        return self.finish(agent)

    def wait_for_log(self, text, times=1):
        wait_until(lambda: self.log().count(text) >= times, LONG, f"{text!r} in the log")

    def assert_takes_no_more(self, process, before, more):
        """Than `before`, and this many bytes, once it has come to rest."""
        def is_over():
            now = takes(process)
            return now if now.memory < before.memory + more and now.descriptors <= before.descriptors else None
        try:
            after = wait_until(is_over, LONG, "rest")
        except AssertionError:
            self.fail(f"{before}, then {takes(process)}")
        print(f"\n    {before}, then {after}", end=" ", file=sys.stderr, flush=True)

    def links(self, browser):
        """Those that have arrived, in the order of their arrival."""
        return [message.split(b"\0")[-1].decode() for message in list(browser.messages)]
