#!/usr/bin/env python3
"""A browser that does not answer, and links that do not fit into a message."""

import os
import signal
import threading

from browser_case import LONG, WORK, BrowserCase, main, shorten, wait_until

NOT_USED = "[WARN] singleton socket not used ({}); starting Chrome's binary instead\n"
MESSAGE_LIMIT = 32768


class Trouble(BrowserCase):
    loaded = (WORK,)

    def setUp(self):
        super().setUp()
        self.desktop.write_rules(default="Work")

    def test_hung_browser_gets_the_link_by_a_second_one(self):
        link, pid = self.link(), self.desktop.browser()
        before = len(self.desktop.log())

        def resume():
            try:
                wait_until(lambda: "socket not used" in self.desktop.log()[before:], LONG, "an end of the wait")
            finally:
                os.kill(pid, signal.SIGCONT)
        os.kill(pid, signal.SIGSTOP)
        resumes = threading.Thread(target=resume)
        resumes.start()
        try:
            sent = self.desktop.send(link)
        finally:
            resumes.join()
        self.note(f"ended after {sent.seconds:.1f} s")
        self.assertEqual(sent[:3], (0, "", ""), sent.log)
        self.assertIn(NOT_USED.format("Chrome did not answer"), sent.log)
        wait_until(lambda: self.server.fetched(link), LONG, link)
        self.assertEqual({hit.language for hit in self.server.fetched(link)}, {WORK.language})
        self.assertEqual(self.desktop.browser(), pid)
        after = self.link("/after")
        self.assertIn(f"handed to running Chrome (pid {pid}) over its singleton socket",
                      self.send(after).log)
        self.assert_fetched(after, WORK)

    def link_for_message_of(self, size):
        """A link with which the whole message to the browser has this size."""
        parts = ["START", "/", str(self.desktop.browser_command), "--profile-directory=Profile 1"]
        link = self.link(f"/{size}/")
        return link + "x" * (size - sum(len(part) + 1 for part in parts) - len(link))

    def test_longest_message_is_handed_over_whole(self):
        link = self.link_for_message_of(MESSAGE_LIMIT)
        self.assertIn(" over its singleton socket (", self.send(link).log)
        self.assert_fetched(link, WORK)

    def test_longer_message_is_left_to_a_second_browser(self):
        link, pid = self.link_for_message_of(MESSAGE_LIMIT + 1), self.desktop.browser()
        sent = self.send(link)
        self.assertIn(f" {MESSAGE_LIMIT + 1}", sent.log)
        self.assertRegex(sent.log, r"\[WARN\] singleton socket not used \(.*\); starting Chrome's ")
        # The second browser has the same limit. The first one reads what fits and hangs up, and the
        # second one takes that for an answer or for a fault, ends the first one and opens the whole
        # link itself. Which, is the browsers' affair.
        # Helper processes of one that was killed end a moment later.
        wait_until(lambda: len(self.desktop.browsers()) == 1, LONG, "a single browser")
        now = self.desktop.browser()
        self.assertIn("  launched Chrome (pid {}) (".format(now) if now != pid else
                      f"  handed to running Chrome (pid {pid}); helper exited 0 (", sent.log)
        start = link.partition(str(self.server.server_port))[2][:-1000]
        wait_until(lambda: [hit for hit in self.server.hits if hit.path.startswith(start)], LONG,
                   f"{shorten(link)} in either length")
        longest = max(len(hit.path) for hit in self.server.hits)
        self.note(f"browser {pid}, then {now}; a path of {longest} characters arrived")


if __name__ == "__main__":
    main()
