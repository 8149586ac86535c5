#!/usr/bin/env python3
"""What the operands of a command become, and what is said when a link cannot be opened."""

import os
import pty

from fake_browser import FakeBrowser
from program_case import LONG, ProgramCase, Ran, main, wait_until

FAILED = "Couldn't open the link in Google Chrome: Google Chrome is not installed\n"


class NoBrowser(ProgramCase):
    def test_failure_is_told_shortened_and_logged(self):
        self.assertEqual(self.run_program("https://work.example/secret"),
                         Ran(1, "", FAILED + "https://work.example/…\n"))
        self.assertEqual(self.log_lines(), [
            f"[INFO] created starter config at {self.rules_file}",
            "[ERROR] cannot read Chrome profiles: open failed: No such file or directory",
            "[INFO] https://work.example/… from SENDER → Default [Default] via default",
            "[ERROR]   Chrome launch failed: Google Chrome is not installed"])

    def test_every_link_is_told_of_in_order(self):
        ran = self.run_program("https://b/secret", "mailto:somebody@work.example", "https://a/secret")
        self.assertEqual(ran, Ran(1, "", FAILED + "https://b/…\n" + FAILED + "mailto:somebody@work.exa…\n" +
                                  FAILED + "https://a/…\n"))

    def test_a_person_at_a_terminal_is_shown_the_whole_link(self):
        ours, terminal = pty.openpty()
        child = self.start("https://work.example/secret?q#f", stderr=terminal)
        os.close(terminal)
        text = b""
        while True:
            try:
                part = os.read(ours, 4096)
            except OSError:  # nobody holds the terminal any more
                break
            if not part:
                break
            text += part
        os.close(ours)
        ran = self.finish(child)
        self.assertEqual((ran.status, ran.out), (1, ""))
        self.assertEqual(text.decode(), (FAILED + "https://work.example/secret?q#f\n").replace("\n", "\r\n"))
        self.assertNotIn("secret", self.log())

    def test_a_terminal_for_the_output_alone_changes_nothing(self):
        ours, terminal = pty.openpty()
        child = self.start("https://work.example/secret", stdout=terminal)
        os.close(terminal)
        self.assertEqual(self.finish(child).err, FAILED + "https://work.example/…\n")
        os.close(ours)

    def test_entry_whose_program_is_gone_is_no_browser(self):
        self.install_browser().unlink()
        self.assertEqual(self.run_program("https://a/"), Ran(1, "", FAILED + "https://a/…\n"))

    def test_rules_that_ask_for_full_links_change_the_log_alone(self):
        self.write_rules(logFullURLs=True)
        self.assertEqual(self.run_program("https://a/secret").err, FAILED + "https://a/…\n")
        self.assertIn("[INFO] https://a/secret from SENDER → Default [Default] via default",
                      self.log_lines())


class Operands(ProgramCase):
    def setUp(self):
        super().setUp()
        self.install_browser()
        self.write_rules()
        self.browser = FakeBrowser(self.user_data, self.root / "s")
        self.addCleanup(self.browser.close)
        self.folder = self.root / "files"
        self.folder.mkdir()

    def opened(self, *operands, **options):
        """The links that arrive in the browser, as bytes."""
        before = len(self.browser.messages)
        self.assertEqual(self.run_program(*operands, **{"cwd": self.folder} | options), Ran(0, "", ""))
        return [message.split(b"\0")[-1] for message in self.browser.messages[before:]]

    def file_url(self, name):
        return f"file://{self.folder}/{name}".encode()

    def test_links_go_as_they_are(self):
        for link in ("https://a/ b", "HTTP://A", "mailto:a@b", "x:", "localhost:8080", "file:///etc/hosts"):
            self.assertEqual(self.opened(link), [link.encode()])

    def test_order_is_kept(self):
        links = [f"https://a/{number}" for number in (3, 1, 2, 1)]
        self.assertEqual(self.opened(*links), [link.encode() for link in links])

    def test_files_become_absolute_urls(self):
        for name in ("page.html", "a page.html", "100%.html", "ä?#.html", b"\xff.html", "-x"):
            (self.folder / os.fsdecode(name)).touch()
        (self.folder / "inner").mkdir()
        rows = (("page.html", "page.html"), (self.folder / "page.html", "page.html"),
                ("a page.html", "a%20page.html"), ("100%.html", "100%25.html"),
                ("ä?#.html", "%C3%A4%3F%23.html"), (b"\xff.html", "%FF.html"), ("./-x", "-x"),
                ("inner/../page.html", "page.html"), ("inner", "inner"))
        for operand, name in rows:
            with self.subTest(operand):
                self.assertEqual(self.opened(operand), [self.file_url(name)])

    def test_everything_else_beside_a_link_is_skipped(self):
        (self.folder / "-x").touch()
        for operand in ("-x", "--agent", "-", "--renderer-cmd-prefix=touch", "no-such-file", "word", "",
                        " -x", "\t--x", " https://b/", "ferrivane:settings", "FERRIVANE://x", "1a:b",
                        "/no/such/file", "x" * 5000):
            with self.subTest(operand):
                self.assertEqual(self.opened(operand, "https://a/", operand), [b"https://a/"])

    def test_without_a_link_it_is_a_start_of_the_application(self):
        for number, operands in enumerate((["no-such-file"], ["-x"], [" -x"], ["ferrivane:settings"]), 1):
            with self.subTest(operands):
                application = self.start(*operands, cwd=self.folder)
                wait_until(lambda: self.log().count(" started\n") == number, LONG, "start of the application")
                application.terminate()
                self.finish(application)
        self.assertEqual(self.browser.connections, 0)

    def test_own_scheme_beside_a_link_is_no_command(self):
        self.assertEqual(self.opened("ferrivane:settings", "https://a/"), [b"https://a/"])

    def test_working_folder_that_is_gone(self):
        script = 'cd "$1" && rmdir "$1" && shift && exec "$@"'
        self.assertEqual(self.opened("word", "https://a/", before=["sh", "-c", script, "sh", self.folder],
                                     cwd="/"), [b"https://a/"])

    def test_twenty_thousand_operands(self):
        operands = [f"-{number}" for number in range(20_000)]
        self.assertEqual(self.opened(*operands, "https://a/"), [b"https://a/"])

    def test_one_link_that_fails_makes_the_whole_fail(self):
        link = "https://a/" + "x" * 40_000  # too long for the socket, and the relay cannot be started
        (self.root / "apps/chromium").write_bytes(b"\x7fELF no program")
        child = self.start(link, "https://b/")
        ran = self.finish(child)
        self.assertEqual((ran.status, ran.out), (1, ""))
        self.assertEqual(ran.err, "Couldn't open the link in Google Chrome: cannot start "
                                  f"{self.root}/apps/chromium: Exec format error\nhttps://a/…\n")
        self.assertEqual(self.browser.arguments(), [b"--profile-directory=Default", b"https://b/"])


if __name__ == "__main__":
    main()
