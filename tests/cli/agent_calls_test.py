#!/usr/bin/env python3
"""Calls that are many, large, or not meant well."""

import sys
import time

from agent_case import LONG, MIB, AgentCase, main, takes_at_rest, wait_until

REFUSED = "org.freedesktop.DBus.Error.InvalidArgs"
UNKNOWN = "org.freedesktop.DBus.Error.UnknownMethod"
SWITCH = "[WARN] refused a link that Chrome would take for a switch"
SWITCHES = ("-", "--", "-x", "--gpu-launcher=touch x", " --x", "\t--x", "\n--x", "\r\n \t-x", "\v-x", "\f-x")


class AgentCalls(AgentCase):
    def setUp(self):
        super().setUp()
        self.write_rules()
        self.browser = self.start_browser()
        self.agent = self.start_agent()
        self.bus_caller = self.caller()
        self.routed = 0

    def tearDown(self):
        try:
            # Whatever was called, links are still taken.
            self.assertEqual(self.bus_caller.open("https://after.example/").error, "")
            self.wait_for_links(self.routed + 1)
            self.assertEqual(self.links(self.browser)[-1], "https://after.example/")
            self.assertEqual(self.bus_caller.owner(), self.agent.pid)
        finally:
            super().tearDown()

    def wait_for_links(self, number):
        wait_until(lambda: len(self.browser.messages) >= number, LONG, f"{number} links")

    def test_texts_that_would_be_switches_are_refused(self):
        for text in SWITCHES:
            with self.subTest(text):
                before = self.log_lines().count(SWITCH)
                self.assertEqual(self.bus_caller.open(text).error, REFUSED)
                self.wait_for_log(SWITCH, before + 1)
        self.assertEqual(self.browser.messages, [])

    def test_good_links_of_a_call_are_opened_in_spite_of_bad_ones(self):
        self.assertEqual(self.bus_caller.open("https://a/", "--x", "", " -y", "https://b/").error, "")
        self.wait_for_links(2)
        self.assertEqual(self.links(self.browser), ["https://a/", "https://b/"])
        self.wait_for_log(SWITCH, times=2)
        self.assertEqual(self.log_lines().count(SWITCH), 2)
        self.routed = 2

    def test_call_without_a_link_is_refused(self):
        for links in ((), ("",)):
            self.assertEqual(self.bus_caller.open(*links).error, REFUSED)
        self.wait_for_log("[WARN] GetURL event without a URL", times=2)

    def test_monstrous_links_are_refused(self):
        for size in (2 << 20, 10 << 20):
            self.assertEqual(self.bus_caller.open("https://a/" + "x" * (size - 10)).error, REFUSED)
            self.wait_for_log(f"[WARN] refused a link of {size} bytes")
        self.assertLess(len(self.log()), 2000)

    def test_monstrous_calls_do_not_add_up(self):
        def calls(number):
            for _ in range(number):
                self.assertEqual(self.bus_caller.open("https://a/" + "x" * (10 << 20)).error, REFUSED)

        calls(2)  # the library keeps its buffer
        before = takes_at_rest(self.agent.pid)
        calls(6)
        self.assert_takes_no_more(self.agent.pid, before, 25 * MIB)  # of 60

    def test_calls_that_do_not_exist_are_answered_with_an_error(self):
        call = self.bus_caller.call
        self.assertEqual(call("Open", "s", "https://a/").error, REFUSED)
        self.assertEqual(call("Open", "as", ["https://a/"]).error, REFUSED)
        self.assertEqual(call("Open").error, REFUSED)
        self.assertEqual(call("Activate", "s", "x").error, REFUSED)
        self.assertEqual(call("Shut", "asa{sv}", ["https://a/"], {}).error, UNKNOWN)
        self.assertEqual(call("Open", "asa{sv}", ["https://a/"], {}, path="/org/example").error, UNKNOWN)
        self.assertEqual(call("Open", "asa{sv}", ["https://a/"], {}, interface="org.example.X").error, UNKNOWN)
        self.assertEqual(self.browser.messages, [])

    def test_platform_data_of_another_type_is_as_good_as_none(self):
        data = {"desktop-startup-id": ("u", 1), "activation-token": ("as", ["x"]), "other": ("s", "x")}
        self.assertEqual(self.bus_caller.call("Open", "asa{sv}", ["https://a/"], data).error, "")
        self.assertEqual(self.browser.arguments(), [b"--profile-directory=Default", b"https://a/"])
        self.routed = 1

    def test_token_is_given_to_the_first_link_of_the_call(self):
        self.bus_caller.open("https://a/", "https://b/", activation_token="to ken")
        self.assertEqual(self.browser.arguments(0)[1], b"--xdg-activation-token=to ken")
        self.assertEqual(self.browser.arguments(1), [b"--profile-directory=Default", b"https://b/"])
        self.routed = 2

    def send_all(self, links):
        """A hundred at a time; the errors of the replies."""
        errors = []
        for start in range(0, len(links), 100):
            numbers = [self.bus_caller.send_open(link) for link in links[start:start + 100]]
            errors += [self.bus_caller.reply(number).error for number in numbers]
        return errors

    def test_token_that_is_too_long_for_one_is_none(self):
        self.assertEqual(self.bus_caller.open("https://a/", activation_token="t" * 4097).error, "")
        self.assertEqual(self.browser.arguments(), [b"--profile-directory=Default", b"https://a/"])
        self.routed = 1

    def test_thousands_of_calls_leave_nothing_behind(self):
        def all_kinds(refused, good):
            self.assertEqual(set(self.send_all(["--x"] * refused)), {REFUSED})
            links = [f"https://a/{number}" for number in range(good)]
            self.assertEqual(set(self.send_all(links)), {""})
            self.wait_for_links(good)
            self.assertEqual(self.links(self.browser), links)
            self.browser.messages.clear()

        all_kinds(3000, 3000)
        before = takes_at_rest(self.agent.pid)
        all_kinds(10_000, 3000)
        self.assert_takes_no_more(self.agent.pid, before, MIB)

    def test_flood_of_calls_does_not_shut_out_others(self):
        numbers = [self.bus_caller.send_open("--x") for _ in range(3000)]
        with self.bus.connect() as other:
            started = time.monotonic()
            self.assertEqual(other.action("nonsense").error, REFUSED)
            waited = time.monotonic() - started
        print(f"\n    {waited:.1f} s behind {len(numbers)} calls", end=" ", file=sys.stderr)
        self.assertEqual({self.bus_caller.reply(number).error for number in numbers}, {REFUSED})

    def test_links_of_several_callers_go_one_at_a_time_and_each_once(self):
        self.browser.delay = 0.001
        callers = [self.caller() for _ in range(5)]
        calls = [(caller, caller.send_open(f"https://{name}.example/{number}"))
                 for number in range(100) for name, caller in enumerate(callers)]
        self.assertEqual({caller.reply(call).error for caller, call in calls}, {""})
        self.wait_for_links(500)
        self.routed = 500
        links = self.links(self.browser)
        for name in range(5):
            own = [link for link in links if link.startswith(f"https://{name}.")]
            self.assertEqual(own, [f"https://{name}.example/{number}" for number in range(100)])
        self.assertEqual(self.browser.overlaps, 0)

    def test_more_than_can_wait_are_refused_and_the_others_opened(self):
        self.browser.delay = 0.0
        numbers = [self.bus_caller.send_open(*[f"https://a/{number}/{item}" for item in range(1000)])
                   for number in range(6)]
        self.assertEqual([self.bus_caller.reply(number).error for number in numbers][:4], [""] * 4)
        self.wait_for_log("[WARN] refused a link: 4096 are waiting already")
        wait_until(lambda: len(self.links(self.browser)) + self.log().count("[WARN] refused a link: ") == 6000,
                   LONG, "each link either opened or refused")
        self.routed = len(self.browser.messages)
        self.assertEqual(len(set(self.links(self.browser))), self.routed)


if __name__ == "__main__":
    main()
