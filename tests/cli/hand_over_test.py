#!/usr/bin/env python3
"""Links for a running browser: what arrives at its socket, byte for byte."""

import fcntl
import os
import shutil
import threading
import time

from fake_browser import LONGEST_MESSAGE, FakeBrowser
from program_case import ProgramCase, Ran, main

OPENED = Ran(0, "", "")
# In this process, which listens in the browser's stead.
HANDED_OVER = f"[INFO]   handed to running Chrome (pid {os.getpid()}) over its singleton socket (N ms)"
NOT_USED = "[WARN] singleton socket not used ({}); starting Chrome's binary instead"
RELAYED = f"[INFO]   handed to running Chrome (pid {os.getpid()}); helper exited 0 (N ms)"


class HandOver(ProgramCase):
    def setUp(self):
        super().setUp()
        self.chromium = self.install_browser()
        self.write_rules(("host", "work.example", "Work"))

    def start_browser(self, **options):
        browser = FakeBrowser(self.user_data, self.root / "s", **options)
        self.addCleanup(browser.close)
        return browser

    def test_message_is_the_folder_the_program_and_its_switches(self):
        browser = self.start_browser()
        self.assertEqual(self.run_program("https://work.example/a", cwd=self.root), OPENED)
        self.assertEqual(browser.message(), [b"START", b"/", os.fsencode(self.chromium),
                                             b"--profile-directory=Profile 2", b"https://work.example/a"])
        self.assertEqual(self.log_lines(), [
            '[INFO] https://work.example/… from SENDER → Work [Profile 2] via rule #1 '
            '(host "work.example")', HANDED_OVER])

    def test_unknown_profile_is_not_asked_for(self):
        self.write_rules(defaultProfile="Gone")
        browser = self.start_browser()
        self.assertEqual(self.run_program("https://a/"), OPENED)
        self.assertEqual(browser.arguments(), [b"https://a/"])
        self.assertEqual(self.log_lines(), [
            '[INFO] https://a/… from SENDER → profile "Gone" NOT FOUND via default',
            "[WARN] opening without --profile-directory so Chrome does not create a new profile; "
            "known profiles: Home [Default], Work [Profile 2]", HANDED_OVER])

    def test_any_byte_arrives_as_it_is(self):
        browser = self.start_browser()
        links = [b"https://a/\n", b"https://a/\r\n--x", b"https://a/\xff\xfe\xc3(", b"https://a/\t\x01\x7f",
                 "https://a/\u202e\u2066\u200f".encode(), b"https://a/%00",
                 "https://ä.example/ß?é".encode(), b"https://a/\"'`$(x)\\", b"x:", b"https:"]
        self.assertEqual(self.run_program(*links), OPENED)
        for number, link in enumerate(links):
            self.assertEqual(browser.arguments(number), [b"--profile-directory=Default", link])

    def test_sender_is_named_and_chooses_the_rule(self):
        mail = self.root / "apps/mail"
        shutil.copy(os.environ["SENDER"], mail)
        self.write_entry("org.example.Mail", f"{mail} %U")
        self.write_rules(("app", "org.example.mail", "Work"))
        browser = self.start_browser()
        self.assertEqual(self.run_program("https://a/", before=[mail]), OPENED)
        self.assertEqual(browser.arguments(), [b"--profile-directory=Profile 2", b"https://a/"])
        self.assertIn(' [INFO] https://a/… from org.example.Mail (org.example.Mail) → Work [Profile 2] via '
                      'rule #1 (app "org.example.mail")\n', self.log())

    def test_any_byte_is_logged_as_it_is(self):
        self.write_rules(logFullURLs=True)
        self.start_browser()
        self.run_program(b"https://a/\xff\n" + "\u202e".encode())
        self.assertIn(" [INFO] https://a/\udcff\n\u202e from ", self.log())

    def link_for_message_of(self, size):
        parts = [b"START", b"/", os.fsencode(self.chromium), b"--profile-directory=Default", b"https://a/"]
        return b"https://a/" + b"x" * (size - len(b"\0".join(parts)))

    def test_longest_message_arrives_whole(self):
        browser = self.start_browser()
        link = self.link_for_message_of(LONGEST_MESSAGE)
        self.assertEqual(self.run_program(link), OPENED)
        self.assertEqual(browser.arguments(), [b"--profile-directory=Default", link])
        self.assertEqual(self.log_lines()[1], HANDED_OVER)

    def test_longer_message_is_left_to_the_browsers_binary_uncut(self):
        browser = self.start_browser()
        whole = len(self.link_for_message_of(LONGEST_MESSAGE)), LONGEST_MESSAGE
        longest_operand = 131071  # that Linux hands to a program
        for number, length in enumerate((whole[0] + 1, longest_operand)):
            link = b"https://a/" + b"x" * (length - len(b"https://a/"))
            self.assertEqual(self.run_program(link), OPENED)
            size = length - whole[0] + whole[1]
            self.assertEqual(self.log_lines()[-2:], [
                NOT_USED.format(f"message of {size} bytes exceeds Chrome's limit"), RELAYED])
            self.assertEqual(self.starts_of_browser()[number].arguments,
                             [b"--profile-directory=Default", link])
        self.assertEqual(browser.messages, [])

    def test_answers_that_are_no_consent_lead_to_the_browsers_binary(self):
        rows = {b"SHUTDOWN": "Chrome answered shutdown", b"NO\n": 'Chrome answered unexpected("NO")',
                b"\xff\xfe": 'Chrome answered unexpected("\ufffd\ufffd")', b"": "Chrome did not answer"}
        browser = self.start_browser()
        for number, (answer, reason) in enumerate(rows.items()):
            with self.subTest(answer):
                browser.answer = answer
                self.assertEqual(self.run_program("https://a/"), OPENED)
                self.assertEqual(self.log_lines()[-2:], [NOT_USED.format(reason), RELAYED])
                self.assertEqual(len(self.starts_of_browser()), number + 1)

    def test_socket_whose_cookie_does_not_match_is_not_spoken_to(self):
        browser = self.start_browser()
        cookie = self.root / "s/SingletonCookie"
        cookie.unlink()
        cookie.symlink_to("other")
        # Nothing that could be trusted listens: as if the browser did not run.
        self.install_browser(stays=True)
        self.assertEqual(self.run_program("https://a/"), OPENED)
        self.assertEqual(browser.connections, 0)
        pid, = self.running_browsers()
        self.assertEqual(self.log_lines()[-1], f"[INFO]   launched Chrome (pid {pid}) (N ms)")

    def test_token_is_given_to_the_first_link(self):
        browser = self.start_browser()
        self.assertEqual(self.run_program("https://work.example/", "https://a/",
                                          env={"XDG_ACTIVATION_TOKEN": "to ken"}), OPENED)
        self.assertEqual(browser.arguments(0), [b"--profile-directory=Profile 2",
                                                b"--xdg-activation-token=to ken", b"https://work.example/"])
        self.assertEqual(browser.arguments(1), [b"--profile-directory=Default", b"https://a/"])
        self.assertNotIn("to ken", self.log())

    def test_empty_token_is_none(self):
        browser = self.start_browser()
        self.run_program("https://a/", env={"XDG_ACTIVATION_TOKEN": ""})
        self.assertEqual(browser.arguments(), [b"--profile-directory=Default", b"https://a/"])

    def test_links_wait_while_another_process_is_at_it(self):
        browser = self.start_browser()
        lock = self.root / "run/ferrivane-launch.lock"
        with open(lock, "w") as held:
            fcntl.flock(held, fcntl.LOCK_EX)
            child = self.start("https://a/")
            time.sleep(0.3)
            self.assertEqual(browser.connections, 0)
            self.assertIsNone(child.poll())
        self.assertEqual(self.finish(child), OPENED)
        self.assertEqual(browser.arguments(), [b"--profile-directory=Default", b"https://a/"])

    def test_links_of_many_processes_all_arrive(self):
        browser = self.start_browser()
        ended = []
        threads = [threading.Thread(target=lambda n=n: ended.append(self.run_program(f"https://a/{n}")))
                   for n in range(12)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(ended, [OPENED] * 12)
        self.assertEqual(sorted(message.split(b"\0")[-1] for message in browser.messages),
                         sorted(b"https://a/%d" % n for n in range(12)))
        self.assertEqual(self.log_lines().count(HANDED_OVER), 12)

    def test_hundred_links_of_one_process_arrive_in_order(self):
        browser = self.start_browser()
        links = [f"https://a/{number}" for number in range(100)]
        self.assertEqual(self.run_program(*links), OPENED)
        self.assertEqual([message.split(b"\0")[-1].decode() for message in browser.messages], links)


if __name__ == "__main__":
    main()
