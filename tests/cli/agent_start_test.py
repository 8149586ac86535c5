#!/usr/bin/env python3
"""Which process becomes the resident agent, and what a second start does."""

import time

from agent_case import LONG, NO_BUS, AgentCase, Ran, main, wait_until

DONE = Ran(0, "", "")


class AgentStart(AgentCase):
    shows_windows = True

    def setUp(self):
        super().setUp()
        self.write_rules()

    def assert_settings_shown(self):
        """And closes them, so that they can be shown again."""
        self.close_settings()

    def assert_no_settings(self, seconds=0.3):
        time.sleep(seconds)
        self.assertEqual(self.settings(), [])

    def test_of_two_at_once_one_stays(self):
        caller = self.caller()
        for _ in range(10):
            both = [self.start("--agent"), self.start("--agent")]
            wait_until(lambda: any(child.poll() is not None for child in both), LONG, "end of one agent")
            over, = (child for child in both if child.poll() is not None)
            stays, = (child for child in both if child is not over)
            self.assertEqual(self.finish(over), DONE)
            wait_until(caller.owner, LONG, "an agent")
            self.assertEqual(caller.owner(), stays.pid)
            self.assertIsNone(stays.poll())
            self.assertEqual(self.settings(), [])
            self.end(stays)
            wait_until(lambda: not caller.owner(), LONG, "end of the other")

    def test_the_bus_starts_one_that_stays(self):
        caller = self.caller()
        self.assertEqual(caller.activate().error, "")
        self.assert_settings_shown()
        self.assertEqual(self.agents(), [caller.owner()])

    def test_agent_shows_nothing_of_itself(self):
        self.start_agent()
        self.assert_no_settings(1.3)
        self.wait_for_log(" started (agent)\n")

    def test_start_by_the_person_shows_the_settings(self):
        first = self.start()
        caller = self.caller()
        wait_until(lambda: caller.owner() == first.pid, LONG, "the application on the bus")
        self.assert_settings_shown()
        self.wait_for_log(" started\n")
        self.assertIsNone(first.poll())
        self.end(first)

    def test_start_that_brings_a_link_shows_no_settings(self):
        browser = self.start_browser()
        caller = self.caller()

        # A person's start shows them when a second has passed without a link.
        def start_in_time():
            begun = time.monotonic()
            first = self.start()
            wait_until(caller.owner, LONG, "the application on the bus")
            self.assertEqual(caller.open("https://a/").error, "")
            if time.monotonic() - begun < 1:
                return first
            self.end(first)
            wait_until(lambda: not caller.owner(), LONG, "its end on the bus")
            return None
        first = wait_until(start_in_time, LONG, "a start and a link within a second")
        wait_until(lambda: browser.messages, LONG, "the link")
        self.assertEqual(set(self.links(browser)), {"https://a/"})
        self.assert_no_settings(1.3)
        self.end(first)

    def test_second_start_shows_the_settings_of_the_first(self):
        agent = self.start_agent()
        self.assertEqual(self.run_program(), DONE)
        self.assert_settings_shown()
        self.assertEqual(self.agents(), [agent.pid])
        self.assertEqual(self.run_program("--agent"), DONE)
        self.assert_no_settings()

    def test_own_links_show_the_settings_of_the_running_agent(self):
        agent = self.start_agent()
        for link in ("ferrivane:settings", "FERRIVANE://x", "Ferrivane:"):
            self.assertEqual(self.run_program(link), DONE)
            self.assert_settings_shown()
        self.assertEqual(self.caller().open("ferrivane:settings", "FERRIVANE://x").error, "")
        self.assert_settings_shown()
        self.assert_no_settings()
        self.assertEqual(self.agents(), [agent.pid])
        self.assertNotIn("WARN", self.log())

    def test_own_links_start_an_agent(self):
        for link in ("ferrivane:settings", "FERRIVANE://x"):
            self.assertEqual(self.run_program(link), DONE)
            self.assert_settings_shown()
            agent, = self.agents()
            self.assertEqual(agent, self.caller().owner())
            self.processes.end([agent])

    def test_own_link_without_a_bus_starts_the_application(self):
        child = self.start("ferrivane:", env=NO_BUS)
        self.assert_settings_shown()
        self.assert_no_settings(1.3)
        self.assertIsNone(child.poll())
        self.wait_for_log("[WARN] no session bus: links reach Ferrivane only as operands\n")
        self.end(child)

    def test_link_as_operand_is_routed_beside_the_agent(self):
        browser = self.start_browser()
        agent = self.start_agent()
        for number, options in enumerate(([], ["--agent"])):
            self.assertEqual(self.run_program(*options, f"https://a/{number}"), DONE)
            self.assertEqual(browser.arguments(number)[-1], f"https://a/{number}".encode())
        self.assertEqual(self.caller().owner(), agent.pid)
        self.end(agent)
        self.assertEqual(self.log().count(" started"), 1)

    def test_link_as_operand_makes_no_agent(self):
        self.start_browser()
        for options in ([], ["--agent"]):
            self.assertEqual(self.run_program(*options, "https://a/"), DONE)
        self.assertNotIn(" started", self.log())
        self.assertIsNone(self.caller().owner())

    def test_link_and_own_link_together(self):
        browser = self.start_browser()
        agent = self.start_agent()
        self.assertEqual(self.run_program("https://a/", "ferrivane:settings", "https://b/"), DONE)
        self.assert_settings_shown()
        self.assertEqual(self.links(browser), ["https://a/", "https://b/"])
        self.assertEqual(self.caller().owner(), agent.pid)

    def test_actions_of_the_desktop_entry(self):
        self.install_editor()
        self.start_agent()
        caller = self.caller()
        self.assertEqual(caller.action("settings").error, "")
        self.assert_settings_shown()
        files = {"edit-rules": self.rules_file, "show-log": self.log_file}
        for times, (action, file) in enumerate(files.items(), 1):
            self.assertEqual(caller.action(action).error, "")
            wait_until(lambda: len(self.opened()) == times, LONG, action)
            self.assertEqual(self.opened()[-1], str(file))
        self.assertEqual(caller.action("nonsense").error, "org.freedesktop.DBus.Error.InvalidArgs")
        self.assert_no_settings()

    def test_agent_stays_when_the_settings_are_closed(self):
        agent = self.start_agent()
        browser = self.start_browser()
        caller = self.caller()
        for number, keys in enumerate(("ctrl+w", "alt+F4", "ctrl+w")):
            self.assertEqual(caller.activate().error, "")
            self.close_settings(keys)
            self.assertEqual(caller.open(f"https://a/{number}").error, "")
            self.assertEqual(browser.arguments(number)[-1], f"https://a/{number}".encode())
        self.assertEqual(self.agents(), [agent.pid])
        self.assertEqual(self.end(agent), DONE)

    def test_settings_that_are_shown_come_to_the_front(self):
        self.start_agent()
        caller = self.caller()
        self.assertEqual(caller.activate().error, "")
        window = self.wait_for_settings()

        # The toolkit asks for the keys once more after the window has them: that may undo it.
        def minimised():
            self.display.minimise(window)
            return not self.settings()
        wait_until(minimised, LONG, "an icon")
        self.assertEqual(caller.activate().error, "")
        self.assertEqual(self.wait_for_settings(), window)
        self.assertEqual(caller.activate().error, "")
        time.sleep(0.2)
        self.assertEqual(self.wait_for_settings(), window)

    def test_status_tells_of_the_agent_and_starts_none(self):
        def line(**options):
            return next(line for line in self.run_program("--status", **options).out.splitlines()
                        if line.startswith("Agent:"))
        self.assertEqual(line(), "Agent:    not running")
        self.assertEqual(self.agents(), [])
        agent = self.start_agent()
        self.assertEqual(line(), f"Agent:    running (pid {agent.pid})")
        self.assertEqual(line(env=NO_BUS), "Agent:    not running")
        before = self.processes.all()
        self.assertEqual(line(env={"DBUS_SESSION_BUS_ADDRESS": None}), "Agent:    not running")
        self.assertEqual(self.processes.all(), before)

    def test_token_of_a_start_is_not_logged(self):
        self.start_agent()
        self.assertEqual(self.run_program(env={"XDG_ACTIVATION_TOKEN": "to ken"}), DONE)
        self.assert_settings_shown()
        self.assertNotIn("to ken", self.log())


class AgentWithoutDisplay(AgentCase):
    session = {"DISPLAY": ":97"}  # none is there

    def refusal(self):
        return f"Ferrivane: cannot show the settings: no display; the rules are in {self.rules_file}\n"

    def test_agent_that_cannot_show_the_settings_says_where_the_rules_are(self):
        agent = self.start_agent()
        browser = self.start_browser()
        caller = self.caller()
        for _ in range(2):
            self.assertEqual(self.run_program(), DONE)
        self.assertEqual(caller.action("settings").error, "")
        self.assertEqual(caller.open("https://a/").error, "")
        self.assertEqual(browser.arguments()[-1], b"https://a/")
        self.assertEqual(self.end(agent), Ran(0, "", 3 * self.refusal()))

    def test_start_by_the_person(self):
        for env in ({}, {"DISPLAY": ""}, NO_BUS):
            with self.subTest(env):
                child = self.start(env=env, bufsize=0)
                self.assertEqual(child.stderr.readline().decode(), self.refusal())
                time.sleep(0.3)
                self.assertIsNone(child.poll())
                self.assertEqual(self.end(child).err, "")


if __name__ == "__main__":
    main()
