#!/usr/bin/env python3
"""The copy of Chrome's list of profiles is whole, private, or not there."""

import os
import signal
import time

from helper_case import LONG, SCRIPT, HelperCase, main, wait_until


class Profiles(HelperCase):
    def setUp(self):
        super().setUp()
        self.source = self.home / ".config/google-chrome/Local State"
        self.source.parent.mkdir(parents=True)
        self.source.write_text("new")
        self.folder = self.root / "a $(b) 'c'"
        self.folder.mkdir()
        self.out = self.folder / "out\n.json"

    def names(self):
        return sorted(path.name for path in self.folder.iterdir())

    def test_copy_is_for_the_person_alone(self):
        for shell in self.each_shell():
            self.assertEqual(self.run_script("profiles", self.out, shell=shell), (0, ""))
            self.assertEqual(self.out.read_text(), "new")
            self.assertEqual(self.out.stat().st_mode & 0o7777, 0o600)
            self.assertEqual(self.names(), [self.out.name])
            self.out.unlink()

    def test_earlier_copy_is_replaced_as_a_whole(self):
        for shell in self.each_shell():
            self.out.write_text("old")
            self.out.chmod(0o644)
            with self.out.open() as reader:
                self.assertEqual(self.run_script("profiles", self.out, shell=shell), (0, ""))
                self.assertEqual(reader.read(), "old")
            self.assertEqual((self.out.read_text(), self.out.stat().st_mode & 0o777), ("new", 0o600))

    def test_link_at_the_destination_is_replaced_and_not_followed(self):
        target = self.root / "target"
        self.out.symlink_to(target)
        self.assertEqual(self.run_script("profiles", self.out), (0, ""))
        self.assertFalse(self.out.is_symlink() or target.exists())

    def test_failure_leaves_everything_as_it_was(self):
        self.out.write_text("old")
        for shell in self.each_shell():
            self.source.rename(self.source.with_name("away"))
            self.refused("profiles", self.out, status=1, shell=shell)
            self.source.mkdir()
            self.refused("profiles", self.out, status=1, shell=shell)
            self.source.rmdir()
            self.source.with_name("away").rename(self.source)
            self.refused("profiles", self.folder, status=1, shell=shell)
            self.refused("profiles", self.root / "nowhere/out", status=1, shell=shell)
            self.assertEqual((self.names(), self.out.read_text()), ([self.out.name], "old"))

    def test_full_disk_leaves_no_half_copy(self):
        self.source.write_text("x" * 200_000)
        self.out.write_text("old")
        for shell in self.each_shell():
            # What may be written at most; writing more fails, as on a full disk.
            before = ["sh", "-c", "trap '' XFSZ; ulimit -f 20; exec \"$@\"", "sh"]
            self.refused("profiles", self.out, status=1, shell=shell, before=before)
            self.assertEqual((self.names(), self.out.read_text()), ([self.out.name], "old"))

    def test_end_half_way_leaves_nothing(self):
        # A source that never ends.
        self.source.unlink()
        os.mkfifo(self.source)
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            child = self.processes.start(["sh", SCRIPT, "profiles", self.out], env=self.env,
                                         start_new_session=True)
            with open(self.source, "wb", buffering=0) as pipe:
                pipe.write(b"half")
                wait_until(lambda: any(path.stat().st_size for path in self.folder.iterdir()), LONG,
                           "half a copy")
                os.killpg(child.pid, number)
                self.assertNotEqual(child.wait(LONG), 0)
            self.assertEqual(self.names(), [])

    def test_readers_see_whole_copies_only(self):
        texts = {"a" * 50_000, "b" * 60_000}
        deadline = time.monotonic() + 2
        while time.monotonic() < deadline:
            for text in texts:
                self.source.write_text(text)
                child = self.processes.start(["sh", SCRIPT, "profiles", self.out], env=self.env)
                while child.poll() is None:
                    if self.out.exists():
                        self.assertIn(self.out.read_text(), texts)
                self.assertEqual(child.returncode, 0)

    def test_home_of_the_account_counts_without_a_variable(self):
        # Nothing is there for this user, or it is not ours to copy: only the message is looked at.
        ran = self.run_script("profiles", self.out, env={"HOME": "relative"},
                              before=["env", "-u", "XDG_CONFIG_HOME"])
        self.assertIn(ran.status, (0, 1))
        self.assertNotIn("unbound", ran.err)


if __name__ == "__main__":
    main()
