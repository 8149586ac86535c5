#!/usr/bin/env python3
"""The settings window with a real pointer, a real keyboard, a real browser and its profiles."""

import json
import os
import shutil
import subprocess
import time
from pathlib import Path

from agent_browser_case import AgentBrowserCase
from browser_case import HOME, LONG, PLAY, WORK, main, wait_until

CLIENT = Path(__file__).resolve().parents[1] / "support/accessibility_client.py"
PYTHON = "/usr/bin/python3"  # the system's: others lack the client's modules
STEP = 0.02


class Settings(AgentBrowserCase):
    """What is where on the screen is asked of the bus of assistive programs; nothing is done over it."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.desktop.bus.install_accessibility()

    def setUp(self):
        super().setUp()
        self.entry = self.desktop.root / "config/mimeapps.list"
        self.addCleanup(self.entry.write_text, self.entry.read_text())
        self.client = None

    def tearDown(self):
        if self.client:
            self.client.stdin.close()
            self.client.wait(LONG)
            self.client.stdout.close()
        super().tearDown()

    def environment(self):
        return self.desktop.env | {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}

    def start_application(self, *options):
        child = self.desktop.processes.start([self.program, *options], env=self.environment(),
                                             stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_until(lambda: self.agent() == child.pid, LONG, "the application on the bus")
        return child

    def x(self, *words):
        return subprocess.run(["xdotool", *map(str, words)], env=self.desktop.env, capture_output=True,
                              text=True, timeout=LONG).stdout.strip()

    def window(self):
        found = self.x("search", "--all", "--onlyvisible", "--pid", self.agent(), "--name", "^Ferrivane$")
        return found.splitlines()[-1] if found else None

    def wait_for_window(self):
        window = wait_until(self.window, LONG, "the settings window")
        wait_until(lambda: self.x("getactivewindow") == window, LONG, "its activation")
        return window

    def close_window(self):
        """A browser that has just got a link may still come to the front in between."""
        def is_closed():
            window = self.window()
            if window and self.x("getactivewindow") == window:
                self.key("ctrl+w")
            elif window:
                self.x("windowactivate", "--sync", window)
            return not self.window()
        wait_until(is_closed, LONG, "end of the window")

    # What is seen.

    def everything(self):
        if not self.client:
            self.client = self.desktop.processes.start([PYTHON, CLIENT], env=self.environment(),
                                                       stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.client.stdin.write('["everything"]\n')
        self.client.stdin.flush()
        return json.loads(self.client.stdout.readline())["value"]

    def item(self, name):
        items = [item for item in self.everything() if name in (item["name"], item["description"])]
        self.assertEqual(len(items), 1, (name, items))
        return items[0]

    def middle(self, name):
        x, y, width, height = self.item(name)["place"]
        return x + width // 2, y + height // 2

    def is_focused(self, name):
        return any("focused" in item["states"] for item in self.everything()
                   if name in (item["name"], item["description"]))

    def shows(self, text):
        return any(item["name"] == text for item in self.everything())

    # What the person does.

    def click(self, name, button=1):
        self.x("mousemove", *self.middle(name), "click", button)

    def type(self, text):
        self.x("type", "--delay", "5", text)

    def key(self, *keys):
        self.x("key", "--delay", "20", *keys)

    def drag(self, start, end, look=None):
        self.x("mousemove", *start, "mousedown", 1)
        steps = 12
        for step in range(1, steps + 1):
            self.x("mousemove", *(round(a + (b - a) * step / steps) for a, b in zip(start, end)))
            time.sleep(STEP)
        time.sleep(0.2)
        try:
            if look:
                look()
        finally:
            self.x("mouseup", 1)

    def rules(self):
        return json.loads(self.desktop.rules_file.read_text())["rules"]

    def wait_for_matches(self, *matches):
        try:
            wait_until(lambda: [rule["match"] for rule in self.rules()] == [*matches], LONG, "the rules")
        except AssertionError:
            self.assertEqual([rule["match"] for rule in self.rules()], [*matches])

    def test_from_the_first_start_to_a_link_in_its_profile(self):
        before = time.monotonic()
        application = self.start_application()
        self.wait_for_window()
        self.assertGreater(time.monotonic() - before, 1)
        self.note("the window is there")

        self.entry.write_text("[Default Applications]\n")
        self.key("ctrl+w")
        wait_until(lambda: not self.window(), LONG, "its end")
        with self.desktop.bus.connect() as caller:
            caller.activate()
        self.wait_for_window()

        # A rule by the keyboard alone: the button behind the banner's and the empty list's.
        self.key("Tab")
        wait_until(lambda: self.is_focused("Add rule"), LONG, "focus on the button")
        self.key("space")
        wait_until(lambda: self.is_focused("Text to match, rule 1"), LONG, "focus in the field")
        self.type("/for-work")
        self.wait_for_matches("/for-work")
        self.key("Tab", "w")  # its profile by its first letter, as the browser names it
        wait_until(lambda: self.rules()[0]["profile"] == WORK.directory, LONG,
                   f"the profile in the rule: {self.desktop.rules_file.read_text()}")
        self.note("the rule is there")

        link = self.link("/for-work")
        self.click("Link to try")
        self.type(link)
        expected = f"→ {WORK.name} [{WORK.directory}]   (rule #1)"
        wait_until(lambda: self.shows(expected), LONG, f"{expected} among {[i['name'] for i in self.everything()]}")

        self.click("Make Ferrivane the default")
        wait_until(lambda: self.shows("Ferrivane is your default browser. Links from other apps go through "
                                      "your rules."), LONG, "the banner")
        self.assertIn("x-scheme-handler/https=com.hollowmere.ferrivane.desktop", self.entry.read_text())
        self.note("it is the default browser")

        self.run_command("gio", "open", link)
        self.assert_fetched(link, WORK)
        with self.desktop.bus.connect() as caller:
            def is_in_front():  # for good: a browser that has just got a link may come there once more
                caller.activate()
                return self.window() and self.x("getactivewindow") == self.window()
            wait_until(is_in_front, LONG, "the settings in front of the browser's window")
        self.close_window()
        other = self.link("/for-work/closed")
        self.run_command("gio", "open", other)
        self.assert_fetched(other, WORK)
        self.assertIsNone(application.poll())

    def test_rows_are_dragged_to_their_places(self):
        names = ["one", "two", "three", "four"]
        self.desktop.write_rules(*[("url", name, PLAY.directory) for name in names])
        self.start_application("--agent")
        with self.desktop.bus.connect() as caller:
            caller.activate()
        self.wait_for_window()

        def row(number):
            return self.middle(f"Drag to reorder, rule {number}")
        self.drag(row(4), row(2))
        self.wait_for_matches("one", "four", "two", "three")
        self.drag(row(1), row(3))
        self.wait_for_matches("four", "two", "one", "three")
        # By the row itself, left of its handle, onto the list behind the last row.
        x, y = row(1)
        _, top, _, height = self.item("Rules")["place"]
        self.drag((x - 12, y), (x + 200, top + height - 8))
        self.wait_for_matches("two", "one", "three", "four")
        # Over a field, which takes no rule for a text.
        self.drag(row(4), self.middle("Text to match, rule 1"))
        self.wait_for_matches("four", "two", "one", "three")
        before = self.desktop.rules_file.read_text()
        self.drag(row(2), (5, 5))
        time.sleep(0.3)
        self.assertEqual(self.desktop.rules_file.read_text(), before, "dropped outside")
        self.drag(row(3), row(1), look=lambda: self.key("Escape"))
        time.sleep(0.3)
        self.assertEqual(self.desktop.rules_file.read_text(), before, "given up")

    def test_links_go_on_while_a_rule_is_dragged(self):
        self.desktop.write_rules(("url", "/x", PLAY.directory), ("url", "/y", WORK.directory))
        self.start_application("--agent")
        with self.desktop.bus.connect() as caller:
            caller.activate()
            self.wait_for_window()
            link = self.link("/y")

            def send():
                self.assertEqual(caller.open(link).error, "")
                self.assert_fetched(link, WORK)
            self.drag(self.middle("Drag to reorder, rule 2"), self.middle("Drag to reorder, rule 1"), look=send)
        self.wait_for_matches("/y", "/x")

    def test_a_rule_dragged_to_the_edge_scrolls_the_list(self):
        self.desktop.write_rules(*[("url", f"rule{number}", "Work") for number in range(40)])
        self.start_application("--agent")
        with self.desktop.bus.connect() as caller:
            caller.activate()
        self.wait_for_window()
        x, top, _, height = self.item("Rules")["place"]

        def wait_for_the_end():
            def is_last_in_sight():
                fields = [item["place"] for item in self.everything() if item["name"] == "Text to match, rule 40"]
                return any(y + own <= top + height for _, y, _, own in fields)
            wait_until(is_last_in_sight, LONG, "the last rule")
        self.drag(self.middle("Drag to reorder, rule 1"), (x + 200, top + height - 3), look=wait_for_the_end)
        wait_until(lambda: self.rules()[-1]["match"] == "rule0", LONG, "the rule at the end")

    def show_window_of(self, path):
        """Starts the application of this path, which a window says to be its own."""
        child = self.desktop.processes.start([path, os.environ["WINDOW_STAND_IN"], "--of-parent", path],
                                             stdin=subprocess.PIPE, stdout=subprocess.PIPE)

        def end():
            child.communicate(timeout=LONG)
        self.addCleanup(end)
        self.assertEqual(child.stdout.readline(), b"shown\n")

    def test_rule_for_one_of_two_running_copies_holds_for_its_links(self):
        copies = [self.desktop.root / "apps" / folder / "chat" for folder in ("one", "two")]
        copies[0].parent.mkdir()
        self.desktop.add_application("Chat", file="one/chat")
        copies[1].parent.mkdir()
        shutil.copy(*copies)
        for copy in copies:
            self.show_window_of(copy)
        self.desktop.write_rules(("app", "", WORK.directory))
        self.start_application("--agent")
        with self.desktop.bus.connect() as caller:
            caller.activate()
        self.wait_for_window()
        self.click("Fill in from a running app, rule 1")
        time.sleep(0.3)
        self.key("Down", "Return")
        self.wait_for_matches(str(copies[0]))

        link = self.link("/tried")
        self.click("Link to try")
        self.type(link)
        self.click("unknown app")
        time.sleep(0.3)
        in_work = f"→ {WORK.name} [{WORK.directory}]   (rule #1)"
        self.key("Down", "Return")
        wait_until(lambda: self.shows(in_work), LONG, f"{in_work} among {[i['name'] for i in self.everything()]}")
        self.key("Down")
        wait_until(lambda: not self.shows(in_work), LONG, "another result for the other copy")
        for copy, profile in zip(copies, (WORK, HOME)):
            link = self.link(f"/{copy.parent.name}")
            self.run_command(copy, "gio", "open", link)
            self.assert_fetched(link, profile)

    def test_pointer_and_menus(self):
        self.desktop.write_rules(("url", "one", "Work"), ("url", "two", "Work"))
        self.start_application("--agent")
        with self.desktop.bus.connect() as caller:
            caller.activate()
        self.wait_for_window()
        self.click("Text to match, rule 1")
        self.key("End")
        self.type("!")
        self.wait_for_matches("one!", "two")
        self.assertTrue(self.is_focused("Text to match, rule 1"))
        x, y, width, height = self.item("Rules")["place"]
        self.x("mousemove", x + 100, y + height - 10, "click", 1)
        wait_until(lambda: not self.is_focused("Text to match, rule 1"), LONG, "end of the editing")
        self.click("Drag to reorder, rule 1", button=3)
        time.sleep(0.3)
        self.key("Down", "Return")  # the first that is enabled: down
        self.wait_for_matches("two", "one!")
        self.click("Remove rule, rule 1")
        self.wait_for_matches("one!")


if __name__ == "__main__":
    main()
