#!/usr/bin/env python3
"""An agent whose display ends, while its bus goes on: the session is over, and the next one has another."""

import socket
import time
from pathlib import Path

from agent_case import LONG, AgentCase, Display, Ran, main, wait_until

ENDING = "[INFO] the session has ended; ending too"
ENDED = Ran(0, "", "")
NOTICED = 0.8  # seconds after which an agent has looked for its display, by far


def connections(display):
    """How many clients the X server has, those included whom it has not heard yet."""
    listening = "01"
    return len([line for line in Path("/proc/net/unix").read_text().splitlines()
                if line.endswith(display.socket) and line.split()[5] != listening])


def variables(process):
    return dict(entry.partition("=")[::2] for entry in Path(f"/proc/{process}/environ").read_text().split("\0"))


def wake_ups(process):
    """Of all its threads, so far."""
    return sum(int(line.split()[1]) for status in Path(f"/proc/{process}/task").glob("*/status")
               for line in status.read_text().splitlines() if "ctxt_switches" in line)


class DisplayCase(AgentCase):
    def setUp(self):
        super().setUp()
        self.write_rules()
        self.displays = []

    def tearDown(self):
        try:
            self.processes.end(self.agents())
            for display in self.displays:
                display.end()
        finally:
            super().tearDown()

    def new_display(self):
        display = Display(self.processes)
        self.displays.append(display)
        wait_until(lambda: connections(display) == 1, LONG, "the window manager alone on its display")
        return display

    def wait_for_watch(self, display):
        wait_until(lambda: connections(display) > 1, LONG, "a connection of the agent")

    def set_environment(self, caller, **values):
        """Of what the bus starts from now on."""
        self.assertEqual(caller.bus_call("UpdateActivationEnvironment", "a{ss}", values).error, "")

    def start_watching(self, display, **options):
        agent = self.start_agent(**options)
        self.wait_for_watch(display)
        return agent

    def new_compositor(self, name="wayland-0"):
        """A socket, as far as an agent is concerned."""
        listener = socket.socket(socket.AF_UNIX)
        self.addCleanup(listener.close)
        listener.bind(str(self.root / "run" / name))
        listener.listen()
        listener.settimeout(LONG)
        return listener

    def connection(self, compositor):
        connection, _ = compositor.accept()
        self.addCleanup(connection.close)
        return connection

    def assert_ended(self, agent):
        self.assertEqual(self.finish(agent), ENDED)
        self.assertEqual([line for line in self.log_lines() if line == ENDING], [ENDING])

    def queue_links(self, caller, browser):
        """Links that the agent has taken, most of which it has not opened."""
        links = [f"https://a/{number}" for number in range(100)]
        calls = [caller.send_open(link) for link in links]
        self.assertEqual({caller.reply(call).error for call in calls}, {""})
        self.assertLess(len(browser.messages), 100)
        return links


class EndOfXServer(DisplayCase):
    def setUp(self):
        super().setUp()
        self.first = self.new_display()
        self.env["DISPLAY"] = self.first.name

    def test_idle_agent_ends_with_its_server(self):
        agent = self.start_watching(self.first)
        caller = self.caller()
        self.first.end()
        self.assert_ended(agent)
        self.assertEqual(self.log_lines()[-1], ENDING)
        self.assertIsNone(caller.owner())

    def test_agent_that_is_just_connecting_ends_with_its_server(self):
        self.first.stop_answering()
        agent = self.start_watching(self.first)
        self.first.kill()
        self.assert_ended(agent)

    def test_every_answered_link_is_opened(self):
        browser = self.start_browser(delay=0.01)
        agent = self.start_watching(self.first)
        links = self.queue_links(self.caller(), browser)
        self.first.end()
        self.assert_ended(agent)
        self.assertEqual(self.links(browser), links)

    def test_an_open_alert_does_not_keep_it(self):
        agent = self.start_agent()
        self.assertEqual(self.caller().open("https://a/").error, "")
        wait_until(self.first.active, LONG, "the alert")
        self.first.end()
        self.finish(agent)  # by the toolkit, which then ends a process itself

    def test_next_agent_has_the_display_of_its_time(self):
        browser = self.start_browser()
        caller = self.caller()
        self.set_environment(caller, DISPLAY=self.first.name)
        self.assertEqual(caller.open("https://a/0").error, "")
        old = caller.owner()
        self.assertEqual(variables(old)["DISPLAY"], self.first.name)
        self.wait_for_watch(self.first)
        second = self.new_display()
        self.set_environment(caller, DISPLAY=second.name)
        self.first.end()
        wait_until(lambda: caller.owner() != old, LONG, "end of the agent")
        self.assertEqual(caller.open("https://a/1").error, "")
        self.assertEqual(browser.arguments(1)[-1], b"https://a/1")
        new = caller.owner()
        self.assertEqual(variables(new)["DISPLAY"], second.name)
        self.display = second
        self.assertEqual(caller.activate().error, "")
        self.wait_for_settings()
        self.processes.end([new])

    def test_a_name_that_is_no_compositors_is_passed_over(self):
        agent = self.start_watching(self.first, env={"WAYLAND_DISPLAY": "wayland-97"})
        self.first.end()
        self.assert_ended(agent)

    def test_what_the_server_tells_wakes_it_once(self):
        agent = self.start_watching(self.first)
        self.wait_for_rest(agent)
        self.assertEqual(connections(self.first), 2, "the window manager's and one of the agent's")
        before = wake_ups(agent.pid)
        self.first.press("U2603")  # on no key, so that the keyboard's mapping is changed for it
        wait_until(lambda: wake_ups(agent.pid) > before, LONG, "the new mapping")
        self.wait_for_rest(agent)

    def wait_for_rest(self, agent):
        def rests():
            before = wake_ups(agent.pid)
            time.sleep(0.4)
            return wake_ups(agent.pid) == before
        wait_until(rests, LONG, "a while in which it sleeps")


class EndOfCompositor(DisplayCase):
    session = {"WAYLAND_DISPLAY": "wayland-0"}

    def test_idle_agent_ends_with_its_compositor(self):
        compositor = self.new_compositor()
        for display in ("wayland-0", str(self.root / "run/wayland-0")):
            with self.subTest(display):
                agent = self.start_agent(env={"WAYLAND_DISPLAY": display})
                connection = self.connection(compositor)
                connection.setblocking(False)
                with self.assertRaises(BlockingIOError, msg="it asks for nothing"):
                    connection.recv(1)
                self.assertIsNone(agent.poll())
                connection.close()
                self.assert_ended(agent)
                self.log_file.unlink()

    def test_every_answered_link_is_opened(self):
        compositor = self.new_compositor()
        browser = self.start_browser(delay=0.01)
        agent = self.start_agent()
        connection = self.connection(compositor)
        links = self.queue_links(self.caller(), browser)
        connection.close()
        self.assert_ended(agent)
        self.assertEqual(self.links(browser), links)

    def test_next_agent_has_the_compositor_of_its_time(self):
        first, second = self.new_compositor(), self.new_compositor("wayland-1")
        caller = self.caller()
        self.set_environment(caller, WAYLAND_DISPLAY="wayland-0")
        self.start_browser()
        self.assertEqual(caller.open("https://a/0").error, "")
        old = caller.owner()
        connection = self.connection(first)
        self.set_environment(caller, WAYLAND_DISPLAY="wayland-1")
        connection.close()
        wait_until(lambda: caller.owner() != old, LONG, "end of the agent")
        self.assertEqual(caller.open("https://a/1").error, "")
        self.connection(second)
        self.assertEqual(variables(caller.owner())["WAYLAND_DISPLAY"], "wayland-1")

    def test_the_x_server_of_a_compositor_is_left_alone(self):
        compositor, display = self.new_compositor(), self.new_display()
        agent = self.start_agent(env={"DISPLAY": display.name})
        connection = self.connection(compositor)
        time.sleep(NOTICED)
        self.assertEqual(connections(display), 1)
        display.end()
        time.sleep(0.3)
        self.assertIsNone(agent.poll())
        connection.close()
        self.assert_ended(agent)


class NoDisplay(DisplayCase):
    def test_agent_without_a_display_stays(self):
        browser = self.start_browser()
        for number, env in enumerate(({}, {"DISPLAY": ":97", "WAYLAND_DISPLAY": "wayland-97"})):
            with self.subTest(env):
                agent = self.start_agent(env=env)
                time.sleep(NOTICED)
                self.assertEqual(self.caller().open(f"https://a/{number}").error, "")
                self.assertEqual(browser.arguments(number)[-1], f"https://a/{number}".encode())
                self.assertEqual(self.end(agent), ENDED)
        self.assertNotIn(ENDING, self.log_lines())

    def test_a_display_that_a_login_forwards_is_not_held(self):
        listener = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(listener.close)
        listener.setblocking(False)
        agent = self.start_agent(env={"DISPLAY": f"localhost:{listener.getsockname()[1] - 6000}"})
        time.sleep(NOTICED)
        with self.assertRaises(BlockingIOError):
            listener.accept()
        self.assertEqual(self.end(agent), ENDED)


if __name__ == "__main__":
    main()
