#!/usr/bin/env python3
"""The process as its caller sees it: when it ends, what it leaves on the disk, what it holds."""

import os
import select
import stat
import subprocess

from fake_browser import FakeBrowser
from program_case import LONG, ProgramCase, Ran, main

OPENED = Ran(0, "", "")
HANDED_OVER = f"[INFO]   handed to running Chrome (pid {os.getpid()}) over its singleton socket (N ms)"
NOT_INSTALLED = "Couldn't open the link in Google Chrome: Google Chrome is not installed\nhttps://a/…\n"


def mode(path):
    return stat.S_IMODE(path.stat().st_mode)


class Process(ProgramCase):
    def start_browser(self):
        self.install_browser()
        browser = FakeBrowser(self.user_data, self.root / "s")
        self.addCleanup(browser.close)
        return browser

    def test_streams_are_at_their_end_when_the_process_has_ended(self):
        self.start_browser()
        child = self.start("https://a/")
        child.wait(LONG)
        # Whoever finishes the work in the background must have let go of them before.
        for stream in (child.stdout, child.stderr):
            self.assertEqual(select.select([stream], [], [], 0)[0], [stream])
            self.assertEqual(stream.read(), b"")
            stream.close()

    def test_reason_of_a_failure_is_written_when_the_process_has_ended(self):
        child = self.start("https://a/")
        child.wait(LONG)
        os.set_blocking(child.stderr.fileno(), False)
        self.assertEqual(child.stderr.read().decode(), NOT_INSTALLED)
        child.stdout.close()
        child.stderr.close()

    def test_log_is_whole_when_the_process_has_ended(self):
        browser = self.start_browser()
        self.write_rules()
        links = [f"https://a/{number}" for number in range(50)]
        child = self.start(*links)
        child.wait(LONG)
        lines = self.log_lines()
        self.assertEqual(lines, ["[INFO] https://a/… from SENDER → Home [Default] via default",
                                 HANDED_OVER] * 50)
        self.assertEqual(len(browser.messages), 50)
        self.finish(child)

    def test_closed_streams_take_nothing_from_the_work(self):
        for closed in ("<&-", ">&-", "2>&-", "<&- >&-", "<&- >&- 2>&-"):
            with self.subTest(closed):
                before = ["sh", "-c", f'exec "$0" "$@" {closed}']
                self.assertEqual(self.run_program("https://a/", before=before).status, 1)
        browser = self.start_browser()
        for number, closed in enumerate(("<&-", ">&-", "2>&-", "<&- >&-", ">&- 2>&-", "<&- >&- 2>&-")):
            with self.subTest(closed):
                before = ["sh", "-c", f'exec "$0" "$@" {closed}']
                self.assertEqual(self.run_program("https://a/", before=before), OPENED)
                self.assertEqual(browser.arguments(number)[-1], b"https://a/")
                self.assertEqual(self.log_lines()[-1], HANDED_OVER)
        self.assertNotIn("Couldn't", self.log())

    def test_output_that_nobody_reads_stops_no_link(self):
        browser = self.start_browser()
        # One that fails: too long for the socket, and the relay cannot be started.
        (self.root / "apps/chromium").write_bytes(b"\x7fELF no program")
        reading, writing = os.pipe()
        os.close(reading)
        child = self.start("https://a/" + "x" * 40_000, "https://b/", stdout=writing, stderr=writing)
        os.close(writing)
        self.assertEqual(child.wait(LONG), 1)
        self.assertEqual(browser.arguments()[-1], b"https://b/")
        self.assertEqual(self.log_lines()[-1], HANDED_OVER)

    def test_signals_that_the_caller_ignores_change_nothing(self):
        self.start_browser()
        before = ["env", "--ignore-signal=CHLD,PIPE,HUP,INT,TERM"]
        self.assertEqual(self.run_program("https://a/", before=before), OPENED)

    def test_files_are_for_their_owner_alone(self):
        self.start_browser()
        for umask in ("000", "022", "077"):
            with self.subTest(umask):
                for folder in ("state", "home"):
                    subprocess.run(["rm", "-rf", self.root / folder], check=True)
                self.rules_file.unlink(missing_ok=True)
                if self.rules_file.parent.exists():
                    self.rules_file.parent.rmdir()
                before = ["sh", "-c", f'umask {umask}; exec "$0" "$@"']
                self.assertEqual(self.run_program("https://a/", before=before), OPENED)
                files = [self.log_file, self.rules_file, self.root / "run/ferrivane-launch.lock"]
                folders = [self.log_file.parent, self.log_file.parent.parent, self.rules_file.parent]
                self.assertEqual([oct(mode(file)) for file in files], ["0o600"] * 3)
                self.assertEqual([oct(mode(folder)) for folder in folders], ["0o700"] * 3)

    def test_nothing_but_its_own_files_appears(self):
        self.start_browser()
        before = set(self.root.rglob("*"))
        self.run_program("https://a/")
        self.assertEqual({str(path.relative_to(self.root)) for path in set(self.root.rglob("*")) - before},
                         {"config/ferrivane", "config/ferrivane/rules.json", "state", "state/ferrivane",
                          "state/ferrivane/ferrivane.log", "run/ferrivane-launch.lock"})

    def test_first_link_writes_rules_that_can_be_edited(self):
        self.start_browser()
        self.run_program("https://a/")
        self.assertEqual(self.log_lines()[0], f"[INFO] created starter config at {self.rules_file}")
        self.assertEqual(self.rules_file.read_text(),
                         '{\n  "defaultProfile": "Default",\n  "logFullURLs": false,\n  "rules": []\n}\n')
        self.run_program("https://a/")
        self.assertEqual(len(self.log_lines()), 5)

    def test_rules_that_cannot_be_written_stop_no_link(self):
        browser = self.start_browser()
        self.rules_file.parent.touch()
        self.assertEqual(self.run_program("https://a/"), OPENED)
        self.assertEqual(self.log_lines(), [
            f"[ERROR] cannot create config: cannot create folder {self.rules_file.parent}: File exists",
            f"[ERROR] cannot read {self.rules_file}: open failed: Not a directory; using built-in defaults",
            "[INFO] https://a/… from SENDER → Home [Default] via default", HANDED_OVER])
        self.assertEqual(browser.arguments(), [b"--profile-directory=Default", b"https://a/"])

    def test_log_that_cannot_be_written_stops_no_link(self):
        browser = self.start_browser()
        rows = {"a file in the folder's place": lambda: (self.root / "state").touch(),
                "a folder in the file's place": lambda: self.log_file.mkdir(parents=True),
                "a pipe that nobody reads": lambda: (self.log_file.parent.mkdir(parents=True),
                                                     os.mkfifo(self.log_file))}
        for number, (name, arrange) in enumerate(rows.items()):
            with self.subTest(name):
                subprocess.run(["rm", "-rf", self.root / "state"], check=True)
                arrange()
                self.assertEqual(self.run_program("https://a/"), OPENED)
                self.assertEqual(browser.arguments(number)[-1], b"https://a/")

    def test_lock_lies_beside_the_log_where_there_is_no_runtime_folder(self):
        self.start_browser()
        for folder in (None, "", "run"):
            self.assertEqual(self.run_program("https://a/", env={"XDG_RUNTIME_DIR": folder}), OPENED)
        self.assertEqual(mode(self.log_file.parent / "ferrivane-launch.lock"), 0o600)
        self.assertEqual(os.listdir(self.root / "run"), [])

    def test_lock_that_cannot_be_made_stops_no_link(self):
        self.start_browser()
        lock = self.root / "run/ferrivane-launch.lock"
        lock.symlink_to(self.root / "elsewhere")
        self.assertEqual(self.run_program("https://a/"), OPENED)
        self.assertFalse((self.root / "elsewhere").exists())


if __name__ == "__main__":
    main()
