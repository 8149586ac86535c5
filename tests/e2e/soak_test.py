#!/usr/bin/env python3
"""A long day with a real browser that is quit, killed, stopped and updated while links come in.

SOAK=full in the environment: 1,000 links instead of 100. Pages close their tabs, but for the first of
each profile in each browser, so that it neither grows nor ends by itself.
"""

import json
import os
import re
import signal
import subprocess
import sys
import time
from collections import Counter
from pathlib import Path
from urllib.parse import urlsplit

from agent_browser_case import AgentBrowserCase
from browser_case import HOME, LONG, PLAY, PROFILES, WORK, main, wait_until
from soak import FULL, Account, OwnBrowser, Report, Vitals, quantiles

LINKS, EARLY = (1000, 200) if FULL else (100, 20)
EVERY = 40 if FULL else 25  # links from one trouble to the next
MOST_ON_THEIR_WAY = 8
RECENT = 3  # seconds; no browser is ended while a page is awaited for longer
STEP = 0.02
TROUBLES = ("updated", "quit", "killed", "agent stopped", "terminated", "stopped", "hung")
STOPPED = {"agent stopped": 2, "stopped": 2, "hung": 7}  # seconds; the agent waits five for an answer
ENDS = ("quit", "terminated", "killed")
NO_ANSWER = "[WARN] singleton socket not used (Chrome did not answer)"


class Trouble:
    """Something that befalls a browser, or the agent beside it, and when."""

    def __init__(self, name, process):
        self.name, self.process = name, process
        self.begin, self.end = time.time(), None
        self.pressed = 0.0  # when it was told to quit


class Soak(AgentBrowserCase):
    loaded = ()

    def setUp(self):
        super().setUp()
        self.own = OwnBrowser(self.desktop)
        self.desktop.start_browser((HOME, WORK, PLAY))
        self.desktop.rules_file.write_text(json.dumps({"logFullURLs": True, "defaultProfile": HOME.name, "rules": [
            {"kind": "url", "match": f"/{p.name.lower()}/", "profile": p.name} for p in PROFILES]}))
        self.server.stays = self.stays
        self.first_pages = set()
        self.account = Account(self.desktop.log_file)
        self.addCleanup(self.account.close)
        self.report = Report()
        self.due, self.troubles, self.trouble, self.most_processes = [], [], None, 0
        self.hits, self.seen = {}, 0
        self.agent_process = self.start_agent()
        self.bus_caller = self.desktop.bus.connect()
        self.addCleanup(self.bus_caller.close)

    def stays(self, hit):
        page = hit.browser, hit.language
        is_first = page not in self.first_pages
        self.first_pages.add(page)
        return is_first

    # Trouble.

    def begin(self, name, browser):
        self.trouble = Trouble(name, browser)
        self.troubles.append(self.trouble)
        numbers = {"terminated": signal.SIGTERM, "killed": signal.SIGKILL}
        if name in numbers:
            os.kill(self.trouble.process, numbers[name])
        elif name in STOPPED:
            os.kill(self.stopped(), signal.SIGSTOP)
        elif name == "quit":
            self.press_exit()
        elif name == "updated":
            self.own.update()
            self.assertEqual(os.readlink(f"/proc/{self.trouble.process}/exe"), f"{self.desktop.binary} (deleted)")

    def stopped(self):
        return self.agent_process if self.trouble.name == "agent stopped" else self.trouble.process

    def press_exit(self):
        """In the browser's menu, which a link would close; those that follow find the browser quitting."""
        self.await_links(lambda: (self.read(), not self.on_their_way())[1])
        if not self.trouble.pressed:
            self.trouble.begin = time.time()
        for key in ("alt+f", "x"):
            time.sleep(0.4)
            subprocess.run(["xdotool", "key", key], env=self.desktop.env, check=True, timeout=LONG)
        self.trouble.pressed = time.time()

    def go_on(self):
        """Sees to the end of the trouble."""
        trouble = self.trouble
        if not trouble:
            return
        lasts = time.time() - trouble.begin
        if trouble.name in ENDS:
            self.assertLess(lasts, LONG, f"the browser is not {trouble.name}")
            if Path(f"/proc/{trouble.process}/exe").exists():
                if trouble.name == "quit" and time.time() - trouble.pressed > 2:
                    self.press_exit()
                return
        elif trouble.name in STOPPED:
            if lasts < STOPPED[trouble.name]:
                return
            os.kill(self.stopped(), signal.SIGCONT)
        trouble.end, self.trouble = time.time(), None

    # Links.

    def read(self):
        self.account.read()
        for hit in self.server.hits[self.seen:]:
            self.seen += 1
            self.hits.setdefault(hit.path, []).append(hit)

    def look(self):
        self.read()
        self.go_on()
        self.report.progress(lambda: f"{len(self.account.links)} links, {len(self.missing())} on their way, "
                                     f"{self.trouble.name if self.trouble else 'calm'}")

    def hits_of(self, link):
        return self.hits.get(urlsplit(link.text).path, [])

    def missing(self):
        return [link for link in self.account.links.values() if not self.hits_of(link)]

    def on_their_way(self):
        """Those that may still arrive."""
        ended = {trouble.process for trouble in self.troubles if trouble.name in ENDS and trouble.end}
        return [link for link in self.missing() if link.process not in ended]

    def is_calm(self):
        self.look()
        return not self.trouble and all(time.time() - link.told < RECENT for link in self.on_their_way() if link.outcome)

    def has_room(self):
        self.look()
        return len(self.on_their_way()) < MOST_ON_THEIR_WAY

    def await_links(self, condition):
        try:
            wait_until(condition, LONG, "the links on their way")
        except AssertionError as error:
            raise AssertionError(f"{error}: {[str(link) for link in self.on_their_way()]}") from None

    def send(self, number):
        profile = PROFILES[number % len(PROFILES)]
        text = self.link(f"/{profile.name.lower()}/{number}")
        link = self.account.add(text, profile)
        return link, self.bus_caller.send_open(text)

    def run_links(self, numbers):
        calls = []
        for number in numbers:
            if number % EVERY == EVERY - 1 and number < LINKS - EVERY // 2:
                self.due.append(TROUBLES[number // EVERY % len(TROUBLES)])
            # What it is about are links that are on their way as a browser ends.
            if self.due:
                self.await_links(self.is_calm)
                browsers = self.desktop.browsers()
                if len(browsers) == 1 and str(browsers[0]) in {browser for browser, _ in self.first_pages}:
                    self.begin(self.due.pop(0), browsers[0])
            calls.append(self.send(number))
            time.sleep(STEP)
            self.await_links(self.has_room)
            if number % 20 == 0:
                self.most_processes = max(self.most_processes, len(self.desktop.processes.running(self.desktop.binary)))
        for link, call in calls:
            link.answer = self.bus_caller.reply(call).error

        def is_over():
            self.look()
            return not self.trouble and not self.account.unfinished() and not self.on_their_way()
        self.await_links(is_over)

    # What became of them.

    def was_dropped(self, link):
        """Whether the browser that has acknowledged it was quitting, or ended before it can have fetched the page."""
        return any(t.name in ENDS and t.process == link.process and t.begin - RECENT - 1 < link.told < t.end + 1
                   for t in self.troubles)

    def was_sent_twice(self, link):
        """Whether a browser left it without an answer, be it that it ended, stood still or had too much to do."""
        return any(NO_ANSWER in remark for remark in link.remarks)

    def figures(self, rows):
        links = list(self.account.links.values())
        outcomes = [link.outcome for link in links]
        fetched = [1000 * (self.hits_of(link)[0].time - link.sent) for link in links if self.hits_of(link)]
        remarks = Counter(re.sub(r"\d+", "N", remark) for link in links for remark in link.remarks)
        self.report.table("a real browser", [
            ("links sent", len(links)),
            ("  acknowledged over the socket", outcomes.count("socket")),
            *[(f"  {kind}", outcomes.count(kind)) for kind in ("relay", "launched", "error")],
            ("troubles underneath", ", ".join(f"{n} {count}" for n, count in
                                              Counter(t.name for t in self.troubles).items())),
            *[(name, len(value) if isinstance(value, list) else value) for name, value in rows],
            ("hand-over, by the log", quantiles([link.milliseconds for link in links])),
            ("  over the socket", quantiles([x.milliseconds for x in links if x.outcome == "socket"])),
            ("from the call to the page", quantiles(fetched)),
            ("most processes of the browser", self.most_processes),
            ("lines in the log", self.account.lines),
            *[(f"  {count} times", remark) for remark, count in remarks.items()]])

    def test_no_link_is_lost_whatever_befalls_the_browser(self):
        self.run_links(range(EARLY))
        early = Vitals(self.agent_process)
        self.run_links(range(EARLY, LINKS))
        end = Vitals(self.agent_process, early)  # by then has come whatever comes twice
        self.look()
        links = list(self.account.links.values())
        fetched = [link for link in links if self.hits_of(link)]
        wrong = [link for link in fetched if {hit.language for hit in self.hits_of(link)} != {link.profile.language}]
        failed = [link for link in links if link.answer or link.outcome == "error"]
        dropped = [link for link in self.missing() if link not in failed and self.was_dropped(link)]
        lost = [link for link in self.missing() if link not in failed and link not in dropped]
        doubled = [link for link in fetched if len(self.hits_of(link)) > 1]
        unexplained = [link for link in doubled if not self.was_sent_twice(link)]
        self.figures([("fetched", fetched), ("in a wrong profile", wrong), ("told to have failed", failed),
                      ("acknowledged, dropped at an end", dropped), ("lost", lost),
                      ("fetched twice", doubled), ("  without a reason", unexplained),
                      ("  not answered in time", len(doubled) - len(unexplained)),
                      (f"agent after link {EARLY}", early), ("agent at the end", end)])
        for name, some in (("dropped", dropped), ("failed", failed), ("twice", doubled)):
            for link in some:
                print(f"      {name}: {link}", file=sys.stderr)
        self.assertEqual([str(link) for link in wrong + failed + lost + unexplained], [])
        for update in [trouble for trouble in self.troubles if trouble.name == "updated"]:
            self.assertTrue([link for link in fetched if link.told > update.begin and
                             (link.outcome, link.process) == ("socket", update.process)], "links after an update")
        self.assertEqual(self.due, [], "troubles that did not come about")
        self.assertLessEqual(len(dropped), MOST_ON_THEIR_WAY * len(self.troubles))
        self.assertFalse(end.has_more_than(early), f"{end}, before {early}")
        self.assertEqual(self.agent(), self.agent_process)
        self.assert_profiles_unchanged()


if __name__ == "__main__":
    main()
