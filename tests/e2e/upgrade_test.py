#!/usr/bin/env python3
"""An agent that outlives the installation of a newer version."""

import os
import shutil
import subprocess
import time

from agent_browser_case import AgentBrowserCase
from browser_case import LONG, main, wait_until

TITLE = b"Ferrivane\n"


class Upgrade(AgentBrowserCase):
    """No browser is installed, so that every link ends in an alert."""
    loaded = ()

    def setUp(self):
        super().setUp()
        (self.desktop.root / "data/applications/chromium.desktop").unlink(missing_ok=True)
        self.folder = self.desktop.root / "installed"
        self.folder.mkdir()
        self.addCleanup(shutil.rmtree, self.folder)
        self.built = self.desktop.ferrivane.parent
        for file in (self.desktop.ferrivane, *self.built.glob("ferrivane-*.so")):
            shutil.copy(file, self.folder)
        self.program = self.folder / "Ferrivane"
        self.desktop.bus.install(self.program)
        with self.desktop.bus.connect() as caller:
            caller.bus_call("ReloadConfig")

    def install_next_version(self):
        """As a package manager does it: file by file, each at once."""
        new = self.folder / "new"
        shutil.copy(os.environ["NEXT_VERSION"], new)
        new.rename(self.program)
        for part in ("desktop", "ui"):
            (module,) = self.folder.glob(f"ferrivane-{part}-*.so")
            module.rename(self.folder / f"ferrivane-{part}-99.0.0.so")

    def ask(self, *command):
        return subprocess.run(command, env=self.desktop.env, capture_output=True, timeout=LONG).stdout

    def has_alert(self):
        window = self.ask("xdotool", "getactivewindow").strip()
        return bool(window) and self.ask("xdotool", "getwindowname", window) == TITLE

    def answer_alerts(self):
        """Every alert, one after another."""
        def is_over():
            if not self.has_alert():
                time.sleep(0.5)  # the next one may be on its way
            if self.has_alert():
                self.ask("xdotool", "key", "Escape")
                return False
            return True
        wait_until(self.has_alert, LONG, f"an alert; log:\n{self.desktop.log()}")
        wait_until(is_over, LONG, "end of the alerts")

    def test_starts_itself_anew_before_it_shows_an_alert(self):
        agent = self.start_agent()
        self.install_next_version()
        links = [f"https://upgrade{number}.example/" for number in range(5)]
        with self.desktop.bus.connect() as caller:
            calls = [caller.send_open(link) for link in links]
            self.assertEqual({caller.reply(call).error for call in calls}, {""})
        wait_until(lambda: "Ferrivane 99.0.0 started (agent)" in self.desktop.log(), LONG,
                   f"the next version; log:\n{self.desktop.log()}")
        wait_until(lambda: all(f"{link}… from " in self.desktop.log() for link in links), LONG,
                   f"every link in the log:\n{self.desktop.log()}")
        self.answer_alerts()
        self.assertTrue(os.path.exists(f"/proc/{agent}"), "in the same process")

    def test_the_settings_are_those_of_the_next_version(self):
        agent = self.start_agent()
        self.install_next_version()
        with self.desktop.bus.connect() as caller:
            self.assertEqual(caller.activate().error, "")
        wait_until(lambda: "Ferrivane 99.0.0 started" in self.desktop.log(), LONG,
                   f"the next version; log:\n{self.desktop.log()}")
        wait_until(self.has_alert, LONG, "its settings, whose window has the same name")
        wait_until(lambda: agent not in self.desktop.processes.all(), LONG, "end of the one before")
        self.ask("xdotool", "key", "ctrl+q")
        wait_until(lambda: not self.agent(), LONG, "end of the next version")

    def test_without_anything_to_show_it_goes_on(self):
        before = len(self.desktop.log())
        agent = self.start_agent()
        self.install_next_version()
        with self.desktop.bus.connect() as caller:
            self.assertEqual(caller.open("-refused").error, "org.freedesktop.DBus.Error.InvalidArgs")
            self.assertEqual(caller.owner(), agent)
        self.assertNotIn("99.0.0", self.desktop.log()[before:])


if __name__ == "__main__":
    main()
