#!/usr/bin/env python3
"""The icon of the agent in a panel: when it is there, and what a panel is told of it."""

import os
import shutil
import time
from pathlib import Path

from agent_case import LONG, NO_BUS, main, wait_until
from tray_case import ITEM, Lines, TrayCase

ICON = "com.hollowmere.ferrivane-symbolic"
SVG = Path(__file__).resolve().parents[2] / f"resources/icons/{ICON}.svg"


def switches(process):
    """How often its threads have waited for something so far."""
    return [line for task in sorted(Path(f"/proc/{process}/task").iterdir())
            for line in (task / "status").read_text().splitlines() if line.startswith("voluntary")]


class TrayIcon(TrayCase):
    def test_icon_is_shown_at_the_start_if_the_person_chose_so(self):
        self.choose_icon()
        watcher = self.start_watcher()
        self.start_agent()
        self.assertRegex(self.registered(watcher), r"^:\d+\.\d+$")
        self.assertTrue(watcher.nothing_for(0.3))

    def test_none_is_shown_otherwise(self):
        watcher = self.start_watcher()
        for chosen in (None, "false", "perhaps"):
            if chosen:
                self.choose_icon(chosen)
            agent = self.start_agent()
            self.assertTrue(watcher.nothing_for(0.5))
            self.end(agent)

    def test_panel_that_comes_later_is_found(self):
        self.choose_icon()
        agent = self.start_agent()
        time.sleep(0.3)
        watcher = self.start_watcher()
        self.registered(watcher)
        self.assertIsNone(agent.poll())

    def test_panel_that_comes_again_is_found_each_time(self):
        self.choose_icon()
        self.start_agent()
        names = set()
        for _ in range(5):
            watcher = self.start_watcher()
            names.add(self.registered(watcher))
            self.assertTrue(watcher.nothing_for(0.1))
            self.end_watcher(watcher)
        self.assertEqual(len(names), 1)

    def test_panel_that_another_one_replaces(self):
        self.choose_icon()
        self.start_agent()
        first = self.start_watcher()
        name = self.registered(first)
        second = self.start_watcher()
        self.assertEqual(self.registered(second), name)

    def test_panel_that_never_answers_does_no_harm(self):
        self.choose_icon()
        watcher = self.start_watcher("silent")
        browser = self.start_browser()
        self.start_agent()
        name = self.registered(watcher)
        self.assertEqual(self.properties(name, ITEM)["Title"], "Ferrivane")
        self.assertEqual(self.caller().open("https://a/").error, "")
        self.assertEqual(browser.arguments()[-1], b"https://a/")

    def test_without_a_panel_everything_else_works_and_the_choice_is_kept(self):
        preferences = self.choose_icon()
        before = preferences.read_text()
        browser = self.start_browser()
        agent = self.start_agent()
        self.assertEqual(self.caller().open("https://a/").error, "")
        self.assertEqual(browser.arguments()[-1], b"https://a/")
        time.sleep(0.3)
        self.assertEqual(preferences.read_text(), before)
        agent.terminate()
        self.assertEqual(self.finish(agent)[1:], ("", ""))

    def test_without_a_bus_there_is_none(self):
        self.choose_icon()
        watcher = self.start_watcher()
        agent = self.start("--agent", env=NO_BUS)
        self.wait_for_log("no session bus")
        self.assertTrue(watcher.nothing_for(0.5))
        self.assertIsNone(agent.poll())
        agent.terminate()
        self.assertEqual(self.finish(agent)[1:], ("", ""))

    def test_icon_goes_with_the_agent(self):
        self.choose_icon()
        watcher = self.start_watcher()
        agent = self.start_agent()
        name = self.registered(watcher)
        self.end(agent)
        self.assertEqual(watcher.next(), f"gone {name}")

    def test_what_a_panel_is_told(self):
        self.choose_icon()
        watcher = self.start_watcher()
        self.start_agent()
        told = self.properties(self.registered(watcher), ITEM)
        pixmaps = told.pop("IconPixmap")
        self.assertEqual(told, {
            "Category": "ApplicationStatus", "Id": "com.hollowmere.ferrivane", "Title": "Ferrivane",
            "Status": "Active", "WindowId": 0, "IconThemePath": "", "IconName": "",
            "IconAccessibleDesc": "Ferrivane", "OverlayIconName": "", "OverlayIconPixmap": [],
            "AttentionIconName": "", "AttentionIconPixmap": [], "AttentionMovieName": "",
            "ToolTip": ("", [], "Ferrivane", ""), "ItemIsMenu": False, "Menu": "/Menu"})
        self.assertEqual([(width, height) for width, height, _ in pixmaps],
                         [(size, size) for size in (16, 22, 24, 32, 48)])
        for size, _, data in pixmaps:
            self.assert_looks_like_the_drawing(size, data[0::4])
            self.assertEqual({tuple(data[i + 1:i + 4]) for i in range(0, len(data), 4)}, {(0x87,) * 3})

    def assert_looks_like_the_drawing(self, size, cover):
        """The picture that the installed icon shows, pixel by pixel, but for the edges' finish."""
        self.assertEqual(len(cover), size * size)
        path = self.root / "icon.rgba"
        self.processes.start(["rsvg-convert", "-w", str(size), "-h", str(size), "-o", self.root / "icon.png",
                              SVG]).wait(LONG)
        self.processes.start(["convert", self.root / "icon.png", f"rgba:{path}"]).wait(LONG)
        drawn = path.read_bytes()[3::4]
        self.assertEqual(len(drawn), len(cover))
        difference = sum(abs(a - b) for a, b in zip(cover, drawn)) / sum(drawn)
        self.assertLess(difference, 0.15, size)

    def test_installed_icon_is_named(self):
        self.choose_icon()
        watcher = self.start_watcher()
        for variable, folder in (("XDG_DATA_HOME", "data"), ("XDG_DATA_DIRS", "no-data")):
            self.assertIn(folder, self.env[variable])
            path = self.root / folder / "icons/hicolor/symbolic/apps"
            path.mkdir(parents=True)
            shutil.copy(SVG, path)
            agent = self.start_agent()
            name = self.registered(watcher)
            self.assertEqual(self.property(name, ITEM, "IconName"), ICON)
            self.assertEqual(len(self.property(name, ITEM, "IconPixmap")), 5)
            self.end(agent)
            self.assertEqual(watcher.next(), f"gone {name}")
            shutil.rmtree(path)

    def test_agent_at_rest_sleeps_through(self):
        self.choose_icon()
        watcher = self.start_watcher()
        agent = self.start_agent()
        self.properties(self.registered(watcher), ITEM)

        def has_slept():  # after what is left to do, and after the memory is given back
            before = switches(agent.pid)
            time.sleep(3)
            return switches(agent.pid) == before
        wait_until(has_slept, LONG, "three seconds of sleep")

    def test_icon_that_is_taken_away_leaves_the_panel_and_can_come_back(self):
        probe = Lines(self, os.environ["ICON_PROBE"])
        watcher = self.start_watcher()
        names = []
        for _ in range(3):
            probe.tell("show")
            self.assertEqual(probe.next(), "done")
            names.append(self.registered(watcher))
            self.assertEqual(self.properties(names[-1], ITEM)["ToolTip"], ("", [], "Tip", ""))
            probe.tell("remove")
            self.assertEqual(probe.next(), "done")
            self.assertEqual(watcher.next(), f"gone {names[-1]}")
        self.assertEqual(len(set(names)), 3)
        self.assertTrue(watcher.nothing_for(0.1))
        probe.tell("remove")
        self.assertEqual(probe.next(), "done")

    def test_icon_that_is_shown_twice_is_one(self):
        probe = Lines(self, os.environ["ICON_PROBE"])
        watcher = self.start_watcher()
        probe.tell("show")
        first = self.registered(watcher)
        probe.tell("show")
        said = sorted([watcher.next(), watcher.next()])
        self.assertEqual(said[0], f"gone {first}")
        self.assertRegex(said[1], "^registered :")

    def test_showing_and_removing_leaves_nothing_behind(self):
        probe = Lines(self, os.environ["ICON_PROBE"])

        def descriptors():
            return len(os.listdir(f"/proc/{probe.process.pid}/fd"))

        def rounds(number):
            for _ in range(number):
                for order in ("show", "remove"):
                    probe.tell(order)
                    self.assertEqual(probe.next(), "done")
        rounds(3)
        wait_until(lambda: descriptors() < 20, LONG, "few descriptors")
        time.sleep(0.2)
        before = descriptors()
        rounds(50)
        wait_until(lambda: descriptors() <= before, LONG, "descriptors closed")

    def test_entry_that_starts_the_agent_with_the_session(self):
        probe = Lines(self, os.environ["ICON_PROBE"])
        entry = self.root / "config/autostart/com.hollowmere.ferrivane.desktop"
        probe.tell("login")
        self.assertEqual(probe.next(), "done")
        program = os.path.realpath(os.environ["ICON_PROBE"])
        self.assertIn(f"\nTryExec={program}\n", entry.read_text())
        judged = self.processes.start(["desktop-file-validate", entry])
        self.assertEqual(judged.wait(LONG), 0)
        probe.tell("no login")
        self.assertEqual(probe.next(), "done")
        self.assertFalse(entry.exists())


if __name__ == "__main__":
    main()
