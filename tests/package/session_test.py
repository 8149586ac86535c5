#!/usr/bin/env python3
"""An installation into the home: the running session learns of it, and needs nothing for that."""

import os
import shutil
import signal
import subprocess
from pathlib import Path

from package_case import (BUILD, FILES, ID, LONG, SOURCES, PackageCase, files_below, main,
                          without_modules)

from processes import wait_until


class Session(PackageCase):
    def setUp(self):
        super().setUp()
        self.prefix = self.home / ".local"
        self.theme = self.prefix / "share/icons/hicolor"

    def start_bus(self):
        # Without the variable it looks below the account's home, whatever $HOME is.
        env = self.env | {"XDG_DATA_HOME": str(self.prefix / "share")}
        bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address",
                                f"--address=unix:path={self.home}/bus"],
                               env=env, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(bus.stdout.close)
        self.addCleanup(bus.wait)
        self.addCleanup(bus.kill)
        return {"DBUS_SESSION_BUS_ADDRESS": bus.stdout.readline().strip()}

    def call_bus(self, bus, method, *arguments):
        return self.run_command("dbus-send", "--session", "--dest=org.freedesktop.DBus", "--print-reply",
                                "/", f"org.freedesktop.DBus.{method}", *arguments, env=bus)

    def test_handlers_are_known_at_once(self):
        self.install(self.prefix)
        cache = (self.prefix / "share/applications/mimeinfo.cache").read_text()
        for kind in ("x-scheme-handler/http", "x-scheme-handler/https", "x-scheme-handler/ferrivane",
                     "text/html"):
            self.assertIn(f"\n{kind}={ID}.desktop;\n", cache)
        files = files_below(self.prefix) - {"share/applications/mimeinfo.cache"}
        self.assertEqual(without_modules(files)[0], FILES)

    def uninstall(self, prefix, **options):
        return self.run_command("cmake", "-D", f"CMAKE_INSTALL_PREFIX={prefix}", "-P",
                                SOURCES / "cmake/Uninstall.cmake", **options)

    def test_taken_away_again(self):
        kept = {".config/ferrivane/rules.json", ".local/state/ferrivane/ferrivane.log",
                ".local/share/applications/other.desktop", ".local/lib/other/ferrivane.so"}
        for name in kept:
            (self.home / name).parent.mkdir(parents=True, exist_ok=True)
            (self.home / name).write_text("[Desktop Entry]\n")
        self.install(self.prefix)
        self.uninstall(self.prefix)
        cache = ".local/share/applications/mimeinfo.cache"
        self.assertEqual(files_below(self.home), kept | {cache})
        self.assertNotIn(ID, (self.home / cache).read_text())
        self.assertFalse((self.prefix / "lib/ferrivane").exists())

    def test_nothing_is_taken_away_where_nothing_is_installed(self):
        (self.home / "lib/ferrivane").mkdir(parents=True)
        for prefix in (self.home, ""):
            out = self.uninstall(prefix, status=1, stderr=subprocess.STDOUT)
            self.assertIn("Ferrivane is not installed in", out)
        self.assertTrue((self.home / "lib/ferrivane").exists())

    def test_data_folder_named_by_the_environment(self):
        self.install(self.root / "own", env={"XDG_DATA_HOME": f"{self.root}/own/share"})
        self.assertTrue((self.root / "own/share/applications/mimeinfo.cache").exists())

    def test_folder_that_the_session_does_not_read_is_left_alone(self):
        calls = [self.stand_in(name) for name in ("update-desktop-database", "dbus-send")]
        self.install(self.root / "elsewhere", env={"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"})
        self.assertEqual([call.exists() for call in calls], [False, False])

    def test_running_bus_learns_of_the_agent(self):
        bus = self.start_bus()

        self.assertNotIn(ID, self.call_bus(bus, "ListActivatableNames"))
        self.install(self.prefix, env=bus)
        self.assertIn(f'"{ID}"', self.call_bus(bus, "ListActivatableNames"))

    def test_bus_starts_the_agent(self):
        bus = self.start_bus()
        self.install(self.prefix, env=bus)
        self.call_bus(bus, "StartServiceByName", f"string:{ID}", "uint32:0")
        answer = self.call_bus(bus, "GetConnectionUnixProcessID", f"string:{ID}")
        agent = Path("/proc", answer.split()[-1])
        self.addCleanup(wait_until, lambda: not (agent / "exe").exists(), LONG, "end of the agent")
        self.addCleanup(os.kill, int(agent.name), signal.SIGTERM)
        self.assertEqual((agent / "cmdline").read_bytes(),
                         f"{self.prefix}/bin/Ferrivane\0--agent\0".encode())

    def test_no_bus_is_started(self):
        sent = self.stand_in("dbus-send")
        self.install(self.prefix)
        self.install(self.prefix, env={"DBUS_SESSION_BUS_ADDRESS": "autolaunch:"})
        self.assertFalse(sent.exists())
        self.install(self.prefix, env={"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"})
        self.assertIn("ReloadConfig", sent.read_text())

    def test_icons_are_cached_again_where_they_are_cached(self):
        cached = self.stand_in("gtk-update-icon-cache")
        self.install(self.prefix)
        self.assertFalse(cached.exists())
        (self.theme / "index.theme").touch()
        self.install(self.prefix)
        self.assertIn(str(self.theme), cached.read_text())

    def test_failing_and_missing_tools_do_no_harm(self):
        self.theme.mkdir(parents=True)
        (self.theme / "index.theme").touch()
        env = {"DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.root}/no-bus"}
        for name in ("update-desktop-database", "gtk-update-icon-cache", "dbus-send"):
            self.stand_in(name, status=1)
        self.install(self.prefix, env=env)
        self.run_command(shutil.which("cmake"), "--install", BUILD, "--prefix", self.prefix,
                         env=env | {"PATH": "/nowhere"})

    def test_xdg_open_without_a_desktop_starts_the_program(self):
        """Its own way to read an entry, which splits the command at blanks."""
        self.install(self.prefix)
        record = self.root / "started"
        program = self.prefix / "bin/Ferrivane"
        program.write_text(f'#!/bin/sh\nprintf "%s\\n" "$#" "$@" >{record}\n')
        (self.home / ".config").mkdir()
        (self.home / ".config/mimeapps.list").write_text(
            f"[Default Applications]\nx-scheme-handler/https={ID}.desktop\n")
        link = "https://work.example/a%20b?c=d&e=%25f#g"
        self.run_command("xdg-open", link, env={"DISPLAY": ":nowhere"})
        self.assertEqual(record.read_text().splitlines(), ["1", link])


if __name__ == "__main__":
    main()
