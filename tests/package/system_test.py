#!/usr/bin/env python3
"""The package in a system: dpkg installs it, the system knows it, and dpkg takes it away again.

The system is a view of this one that nobody else has, see tests/support/scratch_root.py.
"""

from pathlib import Path

from package_case import ID, VERSION, PackageCase, main

import scratch_root

CACHE = Path("/usr/share/applications/mimeinfo.cache")


class System(PackageCase):
    def setUp(self):
        super().setUp()
        self.addCleanup(self.dpkg, "--no-triggers", "--purge", "ferrivane")

    def dpkg(self, *arguments):
        # Small systems are often set up to leave manuals out.
        return self.run_command("dpkg", "--force-unsafe-io", "--path-include=/usr/share/*", *arguments)

    def ours(self):
        """Our files in the system, beside dpkg's log."""
        return {str(path) for path in scratch_root.written()
                if "ferrivane" in str(path).lower() and not path.is_relative_to("/var/log")}

    def test_installed(self):
        self.dpkg("--install", self.made_package())
        out = self.run_command("/usr/bin/Ferrivane", "--status",
                               env={"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"})
        self.assertEqual(out.splitlines()[0], f"Ferrivane {VERSION}")
        self.assertRegex(CACHE.read_text(), f"(?m)^x-scheme-handler/https=(.*;)?{ID}.desktop;")
        self.assertIn(f"x-scheme-handler/ferrivane={ID}.desktop;", CACHE.read_text())
        self.assertEqual(self.run_command("man", "-w", "Ferrivane"),
                         "/usr/share/man/man1/Ferrivane.1.gz\n")
        self.assertEqual(self.run_command("dpkg", "--verify", "ferrivane"), "")

    def check_removal(self, *options):
        rules = self.home / ".config/ferrivane/rules.json"
        log = self.home / ".local/state/ferrivane/ferrivane.log"
        for file in (rules, log):
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text("the person's\n")
        self.assertIn("/usr/bin/Ferrivane", self.ours())
        self.dpkg(*options, "ferrivane")
        self.assertEqual(self.ours(), set())
        self.assertFalse(Path("/usr/lib/ferrivane").exists())
        known = self.run_command("dpkg-query", "--show", "--showformat", "${Package}\n")
        self.assertNotIn("ferrivane", known.split())
        self.assertEqual([file.read_text() for file in (rules, log)], ["the person's\n"] * 2)

    def test_removed(self):
        self.dpkg("--install", self.made_package())
        self.check_removal("--remove")
        self.assertNotIn(ID, CACHE.read_text())

    def test_purged(self):
        self.dpkg("--no-triggers", "--install", self.made_package())
        self.check_removal("--no-triggers", "--purge")


if __name__ == "__main__":
    scratch_root.enter()
    main()
