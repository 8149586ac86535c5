#!/usr/bin/env python3
"""A life with the package: installed, made the default browser, sent links by real programs, removed.

In a system that nobody else sees (tests/support/scratch_root.py), on a desktop of its own with a real
Chromium (tests/support/desktop.py).
"""

import os
import subprocess
from pathlib import Path

from package_case import BUILD, ID, PackageCase, main

import scratch_root
from desktop import HOME, LONG, PLAY, WORK, Desktop, wait_until

PROGRAM = "/usr/bin/Ferrivane"


class Everyday(PackageCase):
    def dpkg(self, *arguments):
        self.run_command("dpkg", "--force-unsafe-io", "--path-include=/usr/share/*", *arguments)

    def setUp(self):
        super().setUp()
        self.dpkg("--install", self.made_package())
        self.addCleanup(self.dpkg, "--no-triggers", "--purge", "ferrivane")
        self.desktop = Desktop(PROGRAM, BUILD / "tests/support/sender")
        self.addCleanup(self.desktop.close)
        self.desktop.start_bus()
        # What this desktop sees of the system's applications and services: ours.
        applications = self.desktop.root / "system/applications"
        applications.mkdir()
        (applications / f"{ID}.desktop").symlink_to(f"/usr/share/applications/{ID}.desktop")
        (self.desktop.root / f"bus/services/{ID}.service").symlink_to(
            f"/usr/share/dbus-1/services/{ID}.service")

    def run_here(self, *command, **variables):
        result = subprocess.run(list(map(str, command)), env=self.desktop.env | variables, text=True,
                                capture_output=True, timeout=LONG, cwd="/")
        self.assertEqual(result.returncode, 0, f"{command}\n{result.stdout}\n{result.stderr}")
        return result.stdout

    def https_handler(self):
        return self.run_here("xdg-mime", "query", "default", "x-scheme-handler/https").strip()

    def assert_fetched(self, link, profile):
        server = self.desktop.server
        wait_until(lambda: server.fetched(link), LONG, f"{link} fetched; log:\n{self.desktop.log()}")
        self.assertEqual([hit.language for hit in server.fetched(link)], [profile.language])

    def test_from_installation_to_removal(self):
        desktop = self.desktop
        desktop.start_browser((HOME, WORK))
        self.assertEqual(self.https_handler(), "chromium.desktop")
        self.assertEqual(
            self.run_here(PROGRAM, "--set-default"),
            f"asking the desktop to make {ID}.desktop the default browser…\n  http: ok\n  https: ok\n")
        self.assertEqual(self.https_handler(), f"{ID}.desktop")

        chat, mail, terminal = map(desktop.add_application, ("Chat", "Mail", "Terminal"))
        desktop.write_rules(("app", "org.example.Chat", WORK.name), ("app", "Mail", PLAY.name),
                            ("app", str(terminal), HOME.name), default="Nobody's")
        script = desktop.root / "apps/script.sh"
        script.write_text('#!/bin/sh\nxdg-open "$1"\n')
        script.chmod(0o755)
        links = {sender: desktop.server.link(f"/{sender}") for sender in ("chat", "mail", "terminal")}
        # The first starts the program, the second goes over the bus and starts the agent, the third
        # finds it there.
        self.run_here(chat, "xdg-open", links["chat"])
        self.assert_fetched(links["chat"], WORK)
        self.assertIn("Agent:    not running\n", self.run_here(PROGRAM, "--status"))
        self.run_here(mail, "gio", "open", links["mail"])
        self.assert_fetched(links["mail"], PLAY)
        self.assertRegex(self.run_here(PROGRAM, "--status"), r"Agent:    running \(pid \d+\)\n")
        self.run_here(terminal, script, links["terminal"], XDG_CURRENT_DESKTOP="GNOME")
        self.assert_fetched(links["terminal"], HOME)
        self.assertIn(f"{links['mail'].split('/')[0]}//127.0.0.1/… from Mail (org.example.Mail) → ",
                      desktop.log())

        self.assertTrue(self.run_here(PROGRAM, "--restore-default").endswith("  http: ok\n  https: ok\n"))
        self.assertEqual(self.https_handler(), "chromium.desktop")
        rules, log = desktop.rules_file.read_text(), desktop.log()
        self.dpkg("--remove", "ferrivane")
        self.assertFalse(Path(PROGRAM).exists())
        self.assertEqual(desktop.rules_file.read_text(), rules)
        self.assertTrue(desktop.log().startswith(log))
        self.assertEqual(self.https_handler(), "chromium.desktop")


if __name__ == "__main__":
    scratch_root.enter()
    os.umask(0o022)
    main()
