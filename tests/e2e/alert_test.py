#!/usr/bin/env python3
"""What the person sees, and can do, when a link cannot be opened."""

import subprocess
import time

from agent_browser_case import AgentBrowserCase
from browser_case import LONG, main, wait_until

TITLE = "Ferrivane"  # of its windows
LINK = "https://work.example/päth?q=1&b=<b>&c=%20'\"#fragment"


class Alert(AgentBrowserCase):
    """No browser is installed."""
    loaded = ()

    def setUp(self):
        super().setUp()
        self.desktop.stop_browsers()
        entry = self.desktop.root / "data/applications/chromium.desktop"
        text = entry.read_text()
        entry.unlink()
        self.addCleanup(entry.write_text, text)
        self.set_clipboard("before")

    def tearDown(self):
        self.desktop.processes.end(self.processes())
        super().tearDown()

    def processes(self):
        return self.desktop.processes.running(self.desktop.ferrivane)

    def ask(self, *command):
        return subprocess.run(command, env=self.desktop.env, capture_output=True, timeout=LONG).stdout

    def alert(self):
        """The active window, if it is one of ours."""
        window = self.ask("xdotool", "getactivewindow").strip()
        return window if window and self.ask("xdotool", "getwindowname", window) == b"Ferrivane\n" else None

    def wait_for_alert(self, other_than=None):
        return wait_until(lambda: self.alert() not in (None, other_than) and self.alert(), LONG, "an alert")

    def answer(self, key):
        window = self.wait_for_alert()
        self.ask("xdotool", "key", key)
        wait_until(lambda: self.alert() != window, LONG, "end of the alert")

    def set_clipboard(self, text):
        # It goes on in the background, to hand the text out.
        subprocess.run(["xclip", "-i", "-selection", "clipboard"], input=text.encode(), env=self.desktop.env,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True, timeout=LONG)

    def clipboard(self):
        return self.ask("xclip", "-o", "-selection", "clipboard").decode()

    def assert_copied(self, link):
        """An alert is gone before its link is handed out."""
        wait_until(lambda: self.clipboard() == link, LONG, f"{link} in the clipboard")

    def open_alone(self, link):
        """By a process of its own, not by the agent."""
        sent = self.desktop.send(link)
        self.assertEqual(sent.status, 1)
        self.assertIn("Google Chrome is not installed", sent.stderr)
        self.assertEqual(len(self.processes()), 1)

    def open_by_agent(self, *links):
        with self.desktop.bus.connect() as caller:
            for link in links:
                self.assertEqual(caller.open(link).error, "")

    def size(self, window):
        geometry = self.ask("xdotool", "getwindowgeometry", "--shell", window).decode()
        values = dict(line.split("=") for line in geometry.splitlines())
        return int(values["WIDTH"]), int(values["HEIGHT"])

    def test_copy_link_of_a_process_that_ends_when_the_clipboard_is_taken(self):
        self.open_alone(LINK)
        self.answer("Return")
        self.assert_copied(LINK)
        self.assertEqual(self.clipboard(), LINK)
        time.sleep(1)
        self.assertEqual(self.clipboard(), LINK)
        self.assertEqual(len(self.processes()), 1)
        self.set_clipboard("after")
        wait_until(lambda: not self.processes(), LONG, "end of the process")
        self.assertEqual(self.clipboard(), "after")

    def test_ok_copies_nothing_and_the_process_ends(self):
        for key in ("Escape", "alt+F4"):
            with self.subTest(key):
                self.open_alone(LINK)
                self.answer(key)
                wait_until(lambda: not self.processes(), LONG, "end of the process")
                self.assertEqual(self.clipboard(), "before")

    def test_ok_button_copies_nothing(self):
        self.open_alone(LINK)
        self.wait_for_alert()
        self.ask("xdotool", "key", "Tab")
        self.answer("Return")
        wait_until(lambda: not self.processes(), LONG, "end of the process")
        self.assertEqual(self.clipboard(), "before")

    def test_copy_link_of_the_agent_more_than_once(self):
        agent = self.start_agent()
        for number in range(3):
            link = f"{LINK}{number}"
            self.open_by_agent(link)
            self.answer("Return")
            self.assert_copied(link)
            self.assertEqual(self.clipboard(), link)
        self.set_clipboard("after")
        self.open_by_agent(LINK)
        self.answer("Escape")
        self.assertEqual(self.clipboard(), "after")
        self.assertEqual(self.agent(), agent)

    def test_alerts_come_one_after_another(self):
        self.start_agent()
        links = [f"{LINK}{number}" for number in range(4)]
        self.open_by_agent(links[0])
        self.wait_for_alert()
        self.open_by_agent(*links[1:])
        log = self.desktop.log
        wait_until(lambda: log().count("[ERROR]   Chrome launch failed: ") >= 4, LONG, "every link routed meanwhile")
        for link in links:
            self.answer("Return")
            self.assert_copied(link)
        time.sleep(0.3)
        self.assertIsNone(self.alert())

    def test_links_of_several_operands_each_get_an_alert(self):
        sent = self.desktop.send("https://a/1", "https://a/2")
        self.assertEqual(sent.status, 1)
        for link in ("https://a/1", "https://a/2"):
            self.answer("Return")
            self.assert_copied(link)

    def test_links_are_opened_while_an_alert_waits(self):
        self.start_agent()
        self.open_by_agent(LINK)
        window = self.wait_for_alert()
        self.desktop._register_browser()
        self.desktop.write_profiles()
        link = self.link()
        self.open_by_agent(link)
        self.assert_fetched(link)
        # The search finds nothing when a window of the browser goes away meanwhile.
        wait_until(lambda: window in self.ask("xdotool", "search", "--name", "^Ferrivane$").split(), LONG,
                   "the alert, still")
        self.desktop.stop_browsers()
        self.answer("Escape")

    def test_long_link_fits_on_the_screen_and_is_copied_whole(self):
        self.open_alone("https://work.example/")
        usual = self.size(self.wait_for_alert())
        self.answer("Escape")
        wait_until(lambda: not self.processes(), LONG, "end of the process")
        link = "https://work.example/" + "abcdefghi/" * 300
        self.open_alone(link)
        width, height = self.size(self.wait_for_alert())
        self.note(f"{usual} usually, {width, height} with a long link")
        self.assertEqual(width, usual[0])
        self.assertLess(usual[1], height)
        self.assertLess(height, 300)
        self.answer("Return")
        self.assert_copied(link)

    def test_markup_and_controls_do_not_change_the_window(self):
        self.open_alone("https://a/")
        usual = self.size(self.wait_for_alert())
        self.answer("Escape")
        wait_until(lambda: not self.processes(), LONG, "end of the process")
        link = "https://a/<h1>big</h1>&amp;"
        self.open_alone(link)
        self.assertEqual(self.size(self.wait_for_alert()), usual)
        self.answer("Return")
        self.assert_copied(link)


if __name__ == "__main__":
    main()
