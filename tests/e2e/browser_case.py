"""What the tests with a real browser have in common: one desktop per file, quick questions to it."""

import os
import signal
import sys
import time
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))
from desktop import (  # noqa: E402,F401
    HOME, LONG, PLAY, PROFILES, SHOP, WORK, Desktop, shorten, wait_until)


class BrowserCase(unittest.TestCase):
    """Each test finds the browser running with `loaded`, no rules, and nothing of other tests."""

    loaded = (HOME, WORK, PLAY)
    desktop = None
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        if not BrowserCase.desktop:
            BrowserCase.desktop = Desktop(os.environ["FERRIVANE"], os.environ["SENDER"])

    def setUp(self):
        self.server = self.desktop.server
        self.started = time.monotonic()
        if self.loaded and not self.desktop.browsers():
            self.desktop.start_browser(self.loaded)
        self.desktop.write_rules()

    def tearDown(self):
        # Whatever a test opens, the processes that opened it end.
        program = self.desktop.ferrivane
        wait_until(lambda: not self.desktop.processes.running(program), LONG, f"end of every {program}")

    def note(self, text):
        seconds = time.monotonic() - self.started
        print(f"\n    {seconds:5.1f} s  {text}", end=" ", file=sys.stderr, flush=True)

    def link(self, path="", host="127.0.0.1"):
        """A link that no other test opens."""
        return self.server.link(f"/{self.id().rpartition('.')[2]}{path}", host)

    def send(self, *operands, **options):
        """Opens them; fails unless all were opened."""
        sent = self.desktop.send(*operands, **options)
        self.note(f"{len(operands)} sent in {sent.seconds:.3f} s")
        self.assertEqual(sent[:3], (0, "", ""), shorten(sent.log, 2000))
        return sent

    def assert_fetched(self, link, profile=None, times=1, settle=0.0):
        """The link arrives in this profile, and after `settle` seconds no more often than `times`."""
        wait_until(lambda: len(self.server.fetched(link)) >= times, LONG,
                   f"{shorten(link)} fetched {times} times; "
                   f"last fetched: {shorten(self.server.hits[-1:])}; "
                   f"log:\n{shorten(self.desktop.log()[-1000:], 1000)}")
        time.sleep(settle)
        hits = self.server.fetched(link)
        self.assertEqual(len(hits), times, shorten(hits))
        if profile:
            self.assertEqual({hit.language for hit in hits}, {profile.language}, shorten(hits))

    def assert_all_arrive(self, links, before):
        """Of many at once, each in the profile given with it, and once; `before`: the log's size until then.

        A browser with too much to do for an answer in time gets a link by a second one too.
        """
        for link, _ in links:
            wait_until(lambda: self.server.fetched(link), LONG, f"{link}; log:\n{self.desktop.log()[before:]}")

        # A browser may be faster than whoever notes that it has answered.
        def unanswered():
            log = self.desktop.log()[before:]
            late = log.count("socket not used (Chrome did not answer)")
            return [late] if log.count(" over its singleton socket (") + late == len(links) else None
        late, = wait_until(unanswered, LONG, f"all over the socket; log:\n{self.desktop.log()[before:]}")
        hits = [(self.server.fetched(link), profile) for link, profile in links]
        for found, profile in hits:
            self.assertEqual({hit.language for hit in found}, {profile.language}, found)
        self.assertLessEqual(sum(len(found) for found, _ in hits), len(links) + late)
        self.assertNotIn("[ERROR]", self.desktop.log()[before:])
        self.note(f"every link has arrived, {late} not answered in time")

    def lines_of_links(self, sent):
        """What the log says of them; whether the browser is in front, it says later."""
        return [line for line in sent.log.splitlines() if "[WARN] Chrome was not frontmost " not in line]

    def assert_profiles_unchanged(self):
        """The browser has made no profile: neither a folder nor an entry in its own list."""
        folders = sorted(path.parent.name for path in self.desktop.user_data.glob("*/Preferences"))
        known = sorted(profile.directory for profile in PROFILES)
        self.assertEqual([name for name in folders if name != "System Profile"], known)

    def stop_browsers(self, number=signal.SIGTERM):
        self.desktop.stop_browsers(number)
        self.assertTrue((self.desktop.user_data / "SingletonSocket").is_symlink())


def main():
    if len(sys.argv) > 1 and not sys.argv[1].startswith("-"):
        os.environ["FERRIVANE"], os.environ["SENDER"] = sys.argv[1:3]
        del sys.argv[1:3]
    unittest.main(module="__main__", verbosity=2)
