#!/usr/bin/env python3
"""The usage, and where it says that things are."""

import os
import pwd

from program_case import ProgramCase, Ran, main

USAGE = """\
Ferrivane — opens links in the right Google Chrome profile.

Usage:
  Ferrivane                       run as the background agent (what the desktop starts for a link)
  Ferrivane --test <url> [--from <app>]
                                  show which profile a URL would open in; <app> is a bundle id,
                                  app name or a substring of the app path, e.g. com.tdesktop.Telegram
  Ferrivane --status              config path, Chrome profiles, current default browser
  Ferrivane --set-default         make Ferrivane the default browser
  Ferrivane --restore-default     make Google Chrome the default browser again
  Ferrivane --help

Config: {config}/ferrivane/rules.json
Log:    {state}/ferrivane/ferrivane.log
"""


class Help(ProgramCase):
    def usage(self):
        return USAGE.format(config=self.root / "config", state=self.root / "state")

    def test_usage(self):
        for arguments in (["--help"], ["-h"], ["--help", "-x"], ["--agent", "-h"], ["--status", "--help"],
                          ["https://a/", "--help"]):
            with self.subTest(arguments):
                self.assertEqual(self.run_program(*arguments), Ran(0, self.usage(), ""))

    def test_usage_instead_of_a_test_without_a_link(self):
        for arguments in (["--test"], ["--test", ""], ["--from", "Mail", "--test"],
                          ["--test", "https://a/", "--test"], ["--status", "--test"]):
            with self.subTest(arguments):
                self.assertEqual(self.run_program(*arguments), Ran(2, self.usage(), ""))

    def test_folders_come_from_the_environment_or_lie_in_the_home(self):
        home = self.env["HOME"]
        account = pwd.getpwuid(os.getuid()).pw_dir
        nothing = {"XDG_CONFIG_HOME": None, "XDG_STATE_HOME": None}
        rows = {
            "both named": ({}, self.root / "config", self.root / "state"),
            "neither named": (nothing, f"{home}/.config", f"{home}/.local/state"),
            "named empty": ({"XDG_CONFIG_HOME": "", "XDG_STATE_HOME": ""},
                            f"{home}/.config", f"{home}/.local/state"),
            "named relative": ({"XDG_CONFIG_HOME": "config", "XDG_STATE_HOME": "./state"},
                               f"{home}/.config", f"{home}/.local/state"),
            "one named": ({"XDG_STATE_HOME": None}, self.root / "config", f"{home}/.local/state"),
            "no home": (nothing | {"HOME": None}, f"{account}/.config", f"{account}/.local/state"),
            "home relative": (nothing | {"HOME": "home"},
                              f"{account}/.config", f"{account}/.local/state"),
        }
        for name, (env, config, state) in rows.items():
            with self.subTest(name):
                self.assertEqual(self.run_program("--help", env=env),
                                 Ran(0, USAGE.format(config=config, state=state), ""))

    def test_commands_write_no_file(self):
        for arguments in (["--help"], ["--test"], ["--test", "https://a/"], ["--status"],
                          ["--set-default"]):
            self.run_program(*arguments)
        files = [path for path in self.root.rglob("*") if not path.is_dir()]
        self.assertEqual(files, [])


if __name__ == "__main__":
    main()
