#!/usr/bin/env python3
"""Links through the agent into a real browser: many, at a cold start, and texts that are none."""

import signal
import time
from pathlib import Path

from agent_browser_case import AgentBrowserCase, bus_call
from browser_case import PLAY, WORK, main

REFUSED = "org.freedesktop.DBus.Error.InvalidArgs"


class Many(AgentBrowserCase):
    loaded = (WORK, PLAY)

    def setUp(self):
        super().setUp()
        self.desktop.write_rules(("url", "/work", "Work"), ("url", "/play", "Play"))

    def links_to_both(self, count, path=""):
        return [(self.link(f"{path}/{profile.name.lower()}/{number}"), profile)
                for number in range(count) for profile in (WORK, PLAY)]

    def test_forty_links_arrive_once_each_in_their_profile(self):
        self.start_agent()
        links = self.links_to_both(20)
        before = len(self.desktop.log())
        with self.desktop.bus.connect() as first, self.desktop.bus.connect() as second:
            calls = [(caller, caller.send_open(link))
                     for caller, (link, _) in zip([first, second, second] * 14, links)]
            self.assertEqual({caller.reply(call).error for caller, call in calls}, {""})
        self.note("every call is answered")
        self.assert_all_arrive(links, before)

    def test_links_of_one_call_arrive_in_their_profiles(self):
        links = self.links_to_both(5)
        before = len(self.desktop.log())
        with self.desktop.bus.connect() as caller:
            self.assertEqual(caller.open(*[link for link, _ in links]).error, "")
        self.assert_all_arrive(links, before)

    def test_two_links_at_once_start_one_browser(self):
        self.start_agent()
        for attempt in range(3):
            self.desktop.stop_browsers(signal.SIGKILL)
            self.desktop.write_profiles()
            links = self.links_to_both(1, f"/{attempt}")
            with self.desktop.bus.connect() as first, self.desktop.bus.connect() as second:
                calls = [(caller, caller.send_open(link))
                         for caller, (link, _) in zip((first, second), links)]
                self.assertEqual({caller.reply(call).error for caller, call in calls}, {""})
            for link, profile in links:
                self.assert_fetched(link, profile, settle=0.3)
            self.note(f"attempt {attempt + 1}: browser {self.desktop.browser()}")

    def test_first_link_starts_both_agent_and_browser(self):
        self.desktop.stop_browsers(signal.SIGKILL)
        self.desktop.write_profiles()
        link = self.link("/work")
        self.run_command("gio", "open", link)
        self.assert_fetched(link, WORK, settle=0.5)
        self.desktop.browser()


class Switches(AgentBrowserCase):
    """No text becomes a switch of the browser."""
    loaded = (WORK,)

    def setUp(self):
        super().setUp()
        self.traces = self.desktop.root / "t/traces"
        self.traces.mkdir(exist_ok=True)
        run = f"touch {self.traces}/made"
        self.switches = [
            f"--renderer-cmd-prefix={run}", f" --gpu-launcher={run}", f"--no-sandbox --utility-cmd-prefix={run}",
            f"--load-extension={self.traces}", "\t--x", f"\n--renderer-cmd-prefix={run}",
            f"\r\n --gpu-launcher={run}", f"\v--utility-cmd-prefix={run}", "-", "--", f"-gpu-launcher={run}"]
        self.links = [f"{self.link()}{white}{switch}" for white in (" ", "\n", "\t")
                      for switch in self.switches[:3]]

    def assert_nothing_came_of_it(self):
        time.sleep(0.3)
        self.assertEqual(list(self.traces.iterdir()), [])
        for pid in self.desktop.processes.all():
            try:
                arguments = Path(f"/proc/{pid}/cmdline").read_text(errors="replace").split("\0")
            except OSError:
                continue
            found = [word for word in arguments if word.strip().startswith("-") and
                     any(switch.strip() in word for switch in self.switches if len(switch) > 2)]
            self.assertEqual(found, [], arguments)

    def send_all(self):
        with self.desktop.bus.connect() as caller:
            for text in self.switches:
                self.assertEqual(caller.open(text).error, REFUSED, repr(text))
                self.assertEqual(caller.open(text, desktop_startup_id=text, activation_token=text).error, REFUSED)
            for link in self.links:
                self.assertEqual(caller.open(link).error, "", repr(link))
        for text in self.switches:
            self.assertEqual(self.desktop.send(text).status if text.strip() != text else 0, 0, repr(text))
            self.run_command("gio", "open", text, status=None)
            self.run_command("gio", "open", "--", text, status=None)
        for link in self.links:
            self.assertEqual(self.desktop.send(link).status, 0)
            self.run_command("gio", "open", link, status=None)
            self.run_command("xdg-open", link, status=None)

    def test_running_browser_gets_none(self):
        agent, browser = self.start_agent(), self.desktop.browser()
        self.send_all()
        link = self.link("/after")
        self.run_command(*bus_call(link))
        self.assert_fetched(link)
        self.assert_nothing_came_of_it()
        self.assertEqual((self.agent(), self.desktop.browser()), (agent, browser))

    def test_browser_that_is_started_gets_none(self):
        self.desktop.stop_browsers()
        agent = self.start_agent()
        with self.desktop.bus.connect() as caller:
            for text in self.switches:
                self.assertEqual(caller.open(text).error, REFUSED, repr(text))
            self.assertEqual(self.desktop.browsers(), [])
            self.assertEqual(caller.open(self.links[0], activation_token=self.switches[0]).error, "")
        link = self.link("/after")
        self.run_command(*bus_call(link))
        self.assert_fetched(link)
        self.assert_nothing_came_of_it()
        self.assertEqual(self.agent(), agent)


if __name__ == "__main__":
    main()
