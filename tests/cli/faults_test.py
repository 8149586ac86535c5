#!/usr/bin/env python3
"""Full disks, folders that nobody can write to, no descriptors left.

In a system that nobody else sees (tests/support/scratch_root.py), where disks can be small. With FAULTS=all
in the environment, also limits of descriptors so low that each link waits for 10 s.
"""

import contextlib
import errno
import json
import os
import resource
import signal
import subprocess
import time

from agent_case import LONG, AgentCase, main, wait_until
from fake_browser import FakeBrowser
from program_case import ProgramCase, Ran

import scratch_root

OPENED = Ran(0, "", "")
TO_WORK = [b"--profile-directory=Profile 2", b"https://work.example/"]
HOME_FOLDERS = ("home", "config", "state", "run")
TOO_MANY = "org.freedesktop.DBus.Error.LimitsExceeded"


class FaultCase(ProgramCase):
    def setUp(self):
        super().setUp()
        for folder in HOME_FOLDERS:
            (self.root / folder).mkdir(mode=0o700, exist_ok=True)

    def mount(self, *arguments, folder):
        subprocess.run(["mount", *arguments, folder], check=True)
        self.addCleanup(subprocess.run, ["umount", "--lazy", folder], check=True)

    def start_browser(self, **options):
        browser = FakeBrowser(self.user_data, self.root / "s", **options)
        self.addCleanup(browser.close)
        return browser

    def install(self, rules=True, **options):
        # Its own folder is elsewhere: no browser runs where it can write nothing.
        (self.root / "browser").mkdir()
        self.user_data.symlink_to(self.root / "browser")
        self.install_browser(**options)
        if rules:
            self.write_rules(("host", "work.example", "Work"))

    def assert_opened(self, browser=None):
        """A link of the rule, by a running browser or the start of one."""
        seen = len(browser.messages) if browser else len(self.starts_of_browser())
        self.assertEqual(self.run_program("https://work.example/"), OPENED)
        self.assertEqual(browser.arguments(seen) if browser else self.starts_of_browser()[seen].arguments,
                         TO_WORK)


class FullDisk(FaultCase):
    def setUp(self):
        super().setUp()
        for folder in HOME_FOLDERS:
            self.mount("-t", "tmpfs", "-o", "size=64k,nr_inodes=64,mode=700", "ferrivane",
                       folder=self.root / folder)

    def fill(self):
        """No byte fits in, whatever file it is for."""
        for folder in HOME_FOLDERS:
            with self.assertRaises(OSError) as raised, open(self.root / folder / "filler", "wb", 0) as file:
                while True:
                    file.write(b"x" * 4096)
            self.assertEqual(raised.exception.errno, errno.ENOSPC)

    def fill_with_files(self):
        """No new file either."""
        self.fill()
        for folder in HOME_FOLDERS:
            with self.assertRaises(OSError) as raised:
                for number in range(100):
                    (self.root / folder / f"filler{number}").touch()
            self.assertEqual(raised.exception.errno, errno.ENOSPC)

    def make_room(self):
        for folder in HOME_FOLDERS:
            for filler in (self.root / folder).glob("filler*"):
                filler.unlink()

    def assert_link_opens_when(self, fill):
        self.install()
        rules = self.rules_file.read_bytes()
        browser = self.start_browser()
        fill()
        self.assert_opened(browser)
        self.assertEqual(self.log(), "")
        self.make_room()
        self.assert_opened(browser)
        self.assertEqual(len(self.log_lines()), 2)
        self.assertEqual(self.rules_file.read_bytes(), rules)

    def test_link_opens_where_no_byte_can_be_written(self):
        self.assert_link_opens_when(self.fill)

    def test_link_opens_where_no_file_can_be_made(self):
        self.assert_link_opens_when(self.fill_with_files)

    def test_browser_is_started_where_nothing_can_be_written(self):
        self.install(stays=True)
        self.fill_with_files()
        self.assert_opened()

    def test_starter_rules_are_whole_or_not_there(self):
        self.install(rules=False)
        self.rules_file.parent.mkdir()
        browser = self.start_browser()
        self.fill()
        self.assertEqual(self.run_program("https://a/"), OPENED)
        self.assertEqual(list(self.rules_file.parent.iterdir()), [])
        self.make_room()
        self.assertEqual(self.run_program("https://a/"), OPENED)
        self.assertIn("rules", json.loads(self.rules_file.read_text()))
        self.assertEqual([message.split(b"\0")[-1] for message in browser.messages], [b"https://a/"] * 2)

    def test_log_that_fills_the_disk_holds_whole_lines(self):
        self.install()
        self.write_rules(logFullURLs=True)
        browser = self.start_browser()
        links = [f"https://a/{number}/" + "x" * 1000 for number in range(90)]
        self.assertEqual(self.run_program(*links), OPENED)
        self.assertEqual([message.split(b"\0")[-1].decode() for message in browser.messages], links)
        lines = self.log_lines()
        self.assertGreater(len(lines), 50)
        self.assertLess(len(lines), 180)
        for line in lines:
            self.assertRegex(line, r" via default$| \(N ms\)$")


class ReadOnlyHome(FaultCase):
    def test_link_opens(self):
        self.install()
        browser = self.start_browser()
        with self.read_only():
            self.assert_opened(browser)
        self.assertFalse(self.log_file.exists())

    def test_link_opens_without_rules(self):
        self.install(rules=False)
        browser = self.start_browser()
        with self.read_only():
            self.assertEqual(self.run_program("https://work.example/"), OPENED)
        self.assertEqual(browser.arguments(), [b"--profile-directory=Default", b"https://work.example/"])

    def test_browser_is_started(self):
        self.install(stays=True)
        with self.read_only():
            self.assert_opened()

    @contextlib.contextmanager
    def read_only(self):
        folders = [self.root / folder for folder in HOME_FOLDERS]
        for folder in folders:
            subprocess.run(["mount", "--bind", folder, folder], check=True)
            subprocess.run(["mount", "-o", "remount,bind,ro", folder], check=True)
        try:
            with self.assertRaises(OSError) as raised:
                (self.root / "config/x").touch()
            self.assertEqual(raised.exception.errno, errno.EROFS)
            yield
        finally:
            for folder in folders:
                subprocess.run(["umount", "--lazy", folder], check=True)


class FewDescriptors(FaultCase):
    ENOUGH = 11  # with fewer a link waits, in case some are given back

    def test_link_opens_or_its_failure_is_told(self):
        self.install()
        browser = self.start_browser()
        for limit in range(4 if os.environ.get("FAULTS") == "all" else self.ENOUGH, 14):
            with self.subTest(limit=limit):
                seen = len(browser.messages)
                before = ["prlimit", f"--nofile={limit}:{limit}"]
                ran = self.run_program("https://work.example/", before=before)
                if ran.status == 0:
                    self.assertEqual(ran, OPENED)
                    self.assertEqual(browser.arguments(seen), TO_WORK)
                else:
                    self.assertLess(limit, self.ENOUGH)
                    self.assertTrue(ran.err)
                    self.assertEqual(len(browser.messages), seen)


class AgentWithoutDescriptors(AgentCase):
    def setUp(self):
        super().setUp()
        self.write_rules()
        self.browser = self.start_browser()
        self.agent = self.start_agent()
        self.bus_caller = self.caller()
        self.taken = [f"https://a/{number}" for number in range(3)]

    @contextlib.contextmanager
    def no_descriptors_left(self):
        """One link has gone and two wait."""
        self.browser.may_answer.clear()
        self.assertEqual(self.bus_caller.open(*self.taken).error, "")
        self.browser.message(0)
        limits = resource.prlimit(self.agent.pid, resource.RLIMIT_NOFILE)
        descriptors = f"/proc/{self.agent.pid}/fd"
        used = len(os.listdir(descriptors))
        # Not even when the link's, the lock and the socket, and the log's two are closed.
        resource.prlimit(self.agent.pid, resource.RLIMIT_NOFILE, (used - 4, limits[1]))
        self.browser.may_answer.set()
        wait_until(lambda: len(os.listdir(descriptors)) <= used - 2, LONG, "the end of the first link")
        yield
        if self.agent.poll() is None:
            resource.prlimit(self.agent.pid, resource.RLIMIT_NOFILE, limits)

    def test_links_that_were_taken_wait_and_others_are_refused(self):
        with self.no_descriptors_left():
            for call in (lambda: self.bus_caller.open("https://refused/"), self.bus_caller.activate):
                self.assertEqual(call().error, TOO_MANY)
            time.sleep(1)
            self.assertEqual(self.links(self.browser), self.taken[:1])
        self.browser.message(2)
        self.assertEqual(self.bus_caller.open("https://after/").error, "")
        self.browser.message(3)
        self.assertEqual(self.links(self.browser), [*self.taken, "https://after/"])
        self.assertEqual(self.bus_caller.owner(), self.agent.pid)
        self.assertEqual(self.end(self.agent), OPENED)

    def test_agent_that_is_told_to_end_opens_the_links_that_it_has_taken(self):
        with self.no_descriptors_left():
            self.agent.send_signal(signal.SIGTERM)
            time.sleep(1)  # in which it could end too soon
            self.assertEqual(self.links(self.browser), self.taken[:1])
        self.assertEqual(self.finish(self.agent), OPENED)
        self.assertEqual(self.links(self.browser), self.taken)

    if os.environ.get("FAULTS") == "all":
        def test_agent_that_is_told_to_end_and_gets_none_back_tells_what_failed(self):
            with self.no_descriptors_left():
                self.agent.send_signal(signal.SIGTERM)
                ran = self.finish(self.agent)
                self.assertEqual((ran.status, ran.err.count("Couldn't open the link")), (0, 2))
                self.assertEqual(self.links(self.browser), self.taken[:1])


if __name__ == "__main__":
    scratch_root.enter()
    main()
