#!/usr/bin/env python3
"""An agent without a bus, without a display, and one whose session ends."""

import contextlib
import os
import pty
import signal

from agent_case import LONG, NO_BUS, AgentCase, main, wait_until

ALONE = "[WARN] no session bus: links reach Ferrivane only as operands"
ENDING = "[INFO] the session has ended; ending too"
TITLE = "Couldn't open the link in Google Chrome: Google Chrome is not installed\n"


def signal_is_caught(pid, number):
    with open(f"/proc/{pid}/status") as lines:
        caught, = (line.split()[1] for line in lines if line.startswith("SigCgt:"))
    return bool(int(caught, 16) & 1 << (number - 1))


class AgentEnd(AgentCase):
    def setUp(self):
        super().setUp()
        self.write_rules()

    def test_without_a_bus_it_runs_alone_until_it_is_told_to_end(self):
        agent = self.start("--agent", env=NO_BUS)
        self.wait_for_log(" started (agent)")
        self.assertEqual(self.log_lines()[0], ALONE)
        self.assertIsNone(agent.poll())
        self.assertEqual(self.end(agent), (-signal.SIGTERM, "", ""))

    def test_without_a_display_links_are_routed_and_failures_told_on_standard_error(self):
        agent = self.start_agent()
        caller = self.caller()
        self.assertEqual(caller.open("https://secret.example/path").error, "")
        self.wait_for_log("Chrome launch failed: ")
        browser = self.start_browser()
        self.assertEqual(caller.open("https://a/").error, "")
        self.assertEqual(browser.arguments()[-1], b"https://a/")
        self.assertEqual(self.end(agent).err, TITLE + "https://secret.example/…\n")

    def test_a_terminal_gets_the_whole_link(self):
        reading, writing = pty.openpty()
        agent = self.start_agent(stderr=writing)
        os.close(writing)
        self.caller().open("https://secret.example/path")
        self.wait_for_log("Chrome launch failed: ")
        self.end(agent)
        told = b""
        with contextlib.suppress(OSError):  # nobody holds the terminal any more
            while part := os.read(reading, 4096):
                told += part
        os.close(reading)
        self.assertEqual(told.decode().replace("\r", ""), TITLE + "https://secret.example/path\n")

    def test_without_a_display_it_says_that_it_cannot_show_the_settings(self):
        agent = self.start_agent()
        caller = self.caller()
        self.assertEqual(caller.activate().error, "")
        self.assertEqual(caller.owner(), agent.pid)
        self.assertEqual(self.end(agent).err, "Ferrivane: cannot show the settings: no display; the "
                                              f"rules are in {self.rules_file}\n")

    def test_display_that_does_not_answer_is_none(self):
        agent = self.start_agent(env={"DISPLAY": ":97", "WAYLAND_DISPLAY": "wayland-97"})
        caller = self.caller()
        for _ in range(2):
            self.assertEqual(caller.open("https://a/").error, "")
        self.wait_for_log("Chrome launch failed: ", times=2)
        self.assertEqual(caller.open("--x").error, "org.freedesktop.DBus.Error.InvalidArgs")
        self.assertEqual(caller.owner(), agent.pid)
        self.assertEqual(self.end(agent).err, (TITLE + "https://a/…\n") * 2)

    def every_answered_link_is_opened_after(self, end):
        """`end` is what happens to the agent when it has answered 200 calls and opened a few links."""
        browser = self.start_browser(delay=0.005)
        agent = self.start_agent()
        caller = self.caller()
        links = [f"https://a/{number}" for number in range(200)]
        calls = [caller.send_open(link) for link in links]
        self.assertEqual({caller.reply(call).error for call in calls}, {""})
        self.assertLess(len(browser.messages), 200)
        end(agent)
        self.assertEqual(self.finish(agent), (0, "", ""))
        self.assertEqual(self.links(browser), links)

    def test_every_answered_link_is_opened_when_the_bus_ends(self):
        self.every_answered_link_is_opened_after(lambda _: self.bus.stop(signal.SIGTERM))
        self.assertIn(ENDING, self.log_lines())

    def test_every_answered_link_is_opened_when_the_bus_is_killed(self):
        self.every_answered_link_is_opened_after(lambda _: self.bus.stop(signal.SIGKILL))
        self.assertIn(ENDING, self.log_lines())

    def test_every_answered_link_is_opened_when_it_is_told_to_end(self):
        self.every_answered_link_is_opened_after(lambda agent: agent.send_signal(signal.SIGTERM))

    def test_no_answered_link_is_lost_when_calls_come_while_it_ends(self):
        browser = self.start_browser(delay=0.002)
        agent = self.start_agent()
        caller = self.caller()
        answered = []
        for number in range(400):
            link = f"https://a/{number}"
            if not caller.open(link).error:  # later ones go to an agent that the bus starts anew
                answered.append(link)
            if number == 100:
                agent.send_signal(signal.SIGTERM)
        self.assertEqual(self.finish(agent).status, 0)
        wait_until(lambda: len(browser.messages) >= len(answered), LONG, "every answered link")
        self.assertEqual(len(answered), 400)
        self.assertEqual(sorted(self.links(browser)), sorted(answered))

    def test_told_twice_it_ends_at_once(self):
        self.start_browser(delay=5)
        agent = self.start_agent()
        self.assertEqual(self.caller().open(*[f"https://a/{number}" for number in range(9)]).error, "")
        agent.send_signal(signal.SIGTERM)
        wait_until(lambda: not signal_is_caught(agent.pid, signal.SIGTERM), LONG, "the first to be heard")
        agent.send_signal(signal.SIGTERM)
        self.assertEqual(self.finish(agent).status, -signal.SIGTERM)

    def test_idle_agent_ends_with_the_bus(self):
        agent = self.start_agent()
        self.bus.stop(signal.SIGKILL)
        wait_until(lambda: agent.poll() is not None, LONG, "end of the agent")
        self.assertEqual(self.finish(agent), (0, "", ""))
        self.assertEqual(self.log_lines()[-1], ENDING)

    def test_application_started_by_the_bus_ends_with_it(self):
        caller = self.caller()
        self.assertEqual(caller.open("https://a/").error, "")
        agent, = self.agents()
        self.bus.stop(signal.SIGKILL)
        wait_until(lambda: agent not in self.processes.all(), LONG, "end of the agent")
        self.assertEqual(self.log_lines()[-1], ENDING)


if __name__ == "__main__":
    main()
