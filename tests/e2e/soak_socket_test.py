#!/usr/bin/env python3
"""A long day of the agent beside a browser that is no more than its socket: links by the thousand.

SOAK=full in the environment: 10,000 of them, and the browser ends and comes back underneath.
"""

import itertools
import os
import signal
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "cli"))
from agent_case import LONG, AgentCase, FakeBrowser, main, wait_until  # noqa: E402
from soak import FULL, Account, Report, Vitals, quantiles  # noqa: E402

LINKS, EARLY = (10_000, 1000) if FULL else (300, 100)
BLOCK = 50
PROFILES = ("Default", "Profile 2")


class Soak(AgentCase):
    def setUp(self):
        super().setUp()
        self.write_rules(("url", "/work/", "Work"), logFullURLs=True)
        self.account = Account(self.log_file)
        self.addCleanup(self.account.close)
        self.report = Report()
        self.install_browser()
        self.browsers, self.numbers, self.latencies = [], itertools.count(), []
        self.open_browser()
        self.agent = self.start_agent().pid
        self.bus_caller = self.caller()

    def open_browser(self):
        """A new one on the same folder, whether the one before has tidied up or not."""
        for name in ("Lock", "Socket", "Cookie"):
            (self.user_data / f"Singleton{name}").unlink(missing_ok=True)
        self.browser = FakeBrowser(self.user_data, self.root / f"s{len(self.browsers)}")
        self.browsers.append(self.browser)

    def tearDown(self):
        try:
            self.browser.close()
        finally:
            super().tearDown()

    # Sending.

    def send(self):
        """The link and the number of the call."""
        number = next(self.numbers)
        profile = PROFILES[number % 2]
        link = f"https://a.example/{'work' if number % 2 else 'home'}/{number}"
        return self.account.add(link, profile), self.bus_caller.send_open(link)

    def take_answer(self, link, call):
        link.answer = self.bus_caller.reply(call).error
        self.assertEqual(link.answer, "", link)

    def send_one(self):
        """And waits until the browser has it."""
        before = len(self.browser.messages)
        started = time.monotonic()
        link, call = self.send()
        self.browser.message(before)
        self.latencies.append(1000 * (time.monotonic() - started))
        self.take_answer(link, call)

    def send_block(self, meanwhile=lambda: None):
        sent = [self.send() for _ in range(BLOCK)]
        meanwhile()
        for link, call in sent:
            self.take_answer(link, call)

    def settle(self):
        """Waits until every link has ended."""
        def is_over():
            self.account.read()
            return not self.account.unfinished()
        wait_until(is_over, LONG, "the end of every link in the log")

    def run_links(self, count):
        """One at a time and in blocks by turns, until there have been that many."""
        while len(self.account.links) < count:
            for _ in range(BLOCK):
                self.send_one()
            self.send_block()
            self.settle()
            self.report.progress(lambda: f"{len(self.account.links)} links")

    # What became of them.

    def arrivals(self):
        """Of each link, the profiles in which it has reached the browser, by socket or by a start."""
        found = {}
        messages = [message.split(b"\0")[3:] for browser in self.browsers for message in browser.messages]
        starts = [start.arguments for start in self.starts_of_browser()]
        for profile, link in messages + starts:
            found.setdefault(link.decode(), []).append(profile.decode().partition("=")[2])
        return found

    def check(self, doubled=()):
        arrivals = self.arrivals()
        self.assertEqual(set(arrivals), set(self.account.links))
        for text, profiles in arrivals.items():
            link = self.account.links[text]
            self.assertEqual(set(profiles), {link.profile}, link)
            self.assertLessEqual(len(profiles), 1 + (text in doubled), link)
        return arrivals

    def figures(self, title, early, end, lines):
        outcomes = [link.outcome for link in self.account.links.values()]
        self.report.table(title, [
            ("links, all arrived", len(outcomes)),
            *[(f"  by {kind}", outcomes.count(kind)) for kind in ("socket", "relay", "launched", "error")],
            ("from the call to the browser", quantiles(self.latencies)),
            ("hand-over, by the log", quantiles([x.milliseconds for x in self.account.links.values()])),
            (f"agent after link {EARLY}", early), ("agent at the end", end), ("lines in the log", lines)])

    def test_links_all_arrive_and_leave_nothing_behind(self):
        self.run_links(EARLY)
        early = Vitals(self.agent)
        self.run_links(LINKS)
        lines = self.account.lines - len(self.account.others)
        end = Vitals(self.agent, early)
        arrivals = self.check()
        self.figures("calm", early, end, lines)
        self.assertEqual({link.outcome for link in self.account.links.values()}, {"socket"})
        self.assertEqual({len(profiles) for profiles in arrivals.values()}, {1})
        self.assertEqual(lines, 2 * len(self.account.links))
        self.assertEqual([text for text in self.account.others if " started (agent)" not in text], [])
        self.assertFalse(end.has_more_than(early), f"{end}, before {early}")

    # Trouble.

    def stop_agent(self):
        os.kill(self.agent, signal.SIGSTOP)
        time.sleep(0.5)
        os.kill(self.agent, signal.SIGCONT)

    def answer_late(self):
        """As a stopped browser does that goes on before it is given up."""
        time.sleep(0.02)
        self.browser.delay = 2
        time.sleep(0.1)
        self.browser.delay = 0

    def refuse(self, answer):
        self.settle()
        self.browser.answer = answer
        sent = [self.send() for _ in range(3)]
        for link, call in sent:
            self.take_answer(link, call)
        self.settle()
        self.browser.answer = b"ACK"
        self.doubled.update(link.text for link, _ in sent)

    def end_browser(self, tidies_up):
        """The links that come while there is none are given to one that is started."""
        def end():
            time.sleep(0.02)
            self.browser.close()
            if tidies_up:
                for name in ("Lock", "Socket", "Cookie"):
                    (self.user_data / f"Singleton{name}").unlink()
            starts = len(self.starts_of_browser())
            wait_until(lambda: len(self.starts_of_browser()) > starts, LONG, "a start of the browser")
            self.open_browser()
        self.send_block(end)

    def update_browser(self):
        path = self.root / "apps/chromium"
        new = path.with_name("new")
        new.write_text(path.read_text())
        new.chmod(0o755)
        new.rename(path)

    def test_links_survive_a_browser_that_ends_and_comes_back(self):
        self.doubled = set()
        self.run_links(EARLY)
        early = Vitals(self.agent)
        troubles = [("agent stopped", lambda: self.send_block(self.stop_agent)),
                    ("answer late", lambda: self.send_block(self.answer_late)),
                    ("shutting down", lambda: self.refuse(b"SHUTDOWN")),
                    ("hung up", lambda: self.refuse(b""))]
        if FULL:
            troubles += [("updated", lambda: self.send_block(self.update_browser)),
                         ("quit", lambda: self.end_browser(True)),
                         ("killed", lambda: self.end_browser(False))]
        rounds = 5 if FULL else 1
        for number in range(rounds * len(troubles)):
            name, trouble = troubles[number % len(troubles)]
            trouble()
            self.settle()
            self.report.progress(lambda: f"{len(self.account.links)} links, {name}")
            self.run_links(EARLY + (LINKS - EARLY) * (number + 1) // (rounds * len(troubles)))
        end = Vitals(self.agent, early)
        self.check(self.doubled)
        self.figures("with trouble underneath", early, end, self.account.lines)
        self.assertNotIn("error", [link.outcome for link in self.account.links.values()])
        self.assertFalse(end.has_more_than(early), f"{end}, before {early}")


if __name__ == "__main__":
    main()
