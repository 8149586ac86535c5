#!/usr/bin/env python3
"""Links that find no browser, or only what a browser left behind."""

import os
import signal
from pathlib import Path

from browser_case import HOME, LONG, PLAY, SHOP, WORK, BrowserCase, main, wait_until

LAUNCHED = r"\n\S+ \S+ \[INFO\]   launched Chrome \(pid {}\) \(\d+ ms\)\n"


class NotRunning(BrowserCase):
    loaded = ()

    def setUp(self):
        super().setUp()
        self.desktop.stop_browsers()
        self.desktop.write_profiles()
        self.desktop.write_rules(("url", "/work", "Work"), ("url", "/play", "Play"))

    def test_browser_is_launched_in_the_rules_profile(self):
        for profile in (WORK, PLAY):
            self.desktop.stop_browsers(signal.SIGKILL)
            self.desktop.write_profiles()
            link = self.link(f"/{profile.name.lower()}")
            sent = self.send(link)
            self.assertRegex(sent.log, LAUNCHED.format(r"\d+"))
            self.assertRegex(sent.log, LAUNCHED.format(self.desktop.browser()))
            self.assertNotIn("WARN", sent.log)
            self.assert_fetched(link, profile, settle=1)

    def test_next_link_goes_to_the_launched_browser(self):
        first, second = self.link("/work"), self.link("/play")
        self.send(first)
        self.assertRegex(self.send(second).log, r"  handed to running Chrome \(pid %d\) "
                                                r"over its" % self.desktop.browser())
        self.assert_fetched(first, WORK, settle=0.5)
        self.assert_fetched(second, PLAY)

    def test_several_links_of_one_command(self):
        links = [self.link("/work"), self.link("/play"), self.link("/else")]
        self.send(*links)
        for link, profile in zip(links, (WORK, PLAY, HOME)):
            self.assert_fetched(link, profile, settle=0.3)
        self.assertEqual(len(self.desktop.browsers()), 1)

    def test_unknown_profile_makes_no_profile(self):
        self.desktop.write_rules(("url", "/", "Nobody"))
        link = self.link()
        self.assertIn('profile "Nobody" NOT FOUND via', self.send(link).log)
        self.assert_fetched(link, settle=1)
        self.assert_profiles_unchanged()

    def test_profile_by_its_email_address(self):
        self.desktop.write_rules(default="buyer@shop.example")
        link = self.link()
        self.send(link)
        self.assert_fetched(link, SHOP)

    def test_two_links_at_once_start_one_browser(self):
        for attempt in range(int(os.environ.get("DOUBLE_STARTS", 5))):
            self.desktop.stop_browsers(signal.SIGKILL)
            self.desktop.write_profiles()
            links = self.link(f"/work/{attempt}"), self.link(f"/play/{attempt}")
            children = [self.desktop.start(link) for link in links]
            for child in children:
                _, err = child.communicate(timeout=LONG)
                self.assertEqual((child.returncode, err), (0, b""), self.desktop.log())
            for link, profile in zip(links, (WORK, PLAY)):
                self.assert_fetched(link, profile, settle=0.3)
            self.note(f"attempt {attempt + 1}: browser {self.desktop.browser()}")


class LeftBehind(BrowserCase):
    """The links of a browser that is gone: the link opens all the same, and once."""
    loaded = (WORK,)

    def setUp(self):
        super().setUp()
        self.desktop.write_rules(("url", "/", "Work"))

    def opens_once_in_a_new_browser(self, old):
        link = self.link()
        sent = self.send(link)
        self.assert_fetched(link, WORK, settle=1.5)
        self.assertNotEqual(self.desktop.browser(), old)
        self.note(sent.log.splitlines()[-1].partition("] ")[2].strip())
        return sent

    def test_browser_was_killed(self):
        old = self.desktop.browser()
        self.stop_browsers(signal.SIGKILL)
        self.opens_once_in_a_new_browser(old)

    def test_browser_was_terminated(self):
        old = self.desktop.browser()
        self.stop_browsers(signal.SIGTERM)
        self.opens_once_in_a_new_browser(old)

    def test_its_socket_folder_is_gone_too(self):
        old = self.desktop.browser()
        self.stop_browsers(signal.SIGKILL)
        socket = Path(self.desktop.user_data / "SingletonSocket").readlink()
        socket.unlink()
        self.opens_once_in_a_new_browser(old)

    def test_its_pid_now_belongs_to_another_program(self):
        old = self.desktop.browser()
        self.stop_browsers(signal.SIGKILL)
        lock = self.desktop.user_data / "SingletonLock"
        other = self.desktop.processes.start(["sleep", "60"])
        host = str(lock.readlink()).rpartition("-")[0]
        lock.unlink()
        lock.symlink_to(f"{host}-{other.pid}")
        self.opens_once_in_a_new_browser(old)
        wait_until(lambda: other.poll() is None, 1, "the other program is left alone")
        other.kill()
        other.wait()


if __name__ == "__main__":
    main()
