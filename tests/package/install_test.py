#!/usr/bin/env python3
"""cmake --install, into any prefix: which files, and which paths are in them."""

import os
import subprocess

from package_case import (FILES, ID, MODULES, VERSION, PackageCase, command, entry, files_below,
                          main, without_modules)


class Install(PackageCase):
    def check(self, prefix, seen_as=None):
        """Everything is below `prefix`, and names itself below `seen_as`."""
        self.assertEqual(without_modules(files_below(prefix)), (FILES, MODULES))
        program = f"{seen_as or prefix}/bin/Ferrivane"
        desktop = entry(prefix / f"share/applications/{ID}.desktop")
        self.assertEqual(desktop["Desktop Entry"]["Exec"], f"{program} %U")
        self.assertEqual(desktop["Desktop Entry"]["TryExec"], program)
        self.assertEqual(desktop["Desktop Action settings"]["Exec"], f"{program} ferrivane:settings")
        service = entry(prefix / f"share/dbus-1/services/{ID}.service")
        self.assertEqual(service, {"D-BUS Service": {"Name": ID, "Exec": f"{program} --agent"}})
        for name in FILES - {"bin/Ferrivane"}:
            self.assertNotRegex((prefix / name).read_text(), "@[A-Z_]+@")

    def test_prefix(self):
        self.install(self.root / "opt/fv-1.0+é")
        self.check(self.root / "opt/fv-1.0+é")

    def test_relative_prefix(self):
        self.install("opt/./fv/", cwd=self.root)
        self.check(self.root / "opt/fv")

    def test_folder_of_a_package_maker(self):
        """Written below DESTDIR, named as without it; nothing of the session is touched."""
        calls = [self.stand_in(name) for name in ("update-desktop-database", "dbus-send")]
        self.install("/usr", env={"DESTDIR": str(self.root / "a b"), "XDG_DATA_DIRS": "/usr/share",
                                  "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"})
        self.check(self.root / "a b/usr", "/usr")
        self.assertEqual([call.exists() for call in calls], [False, False])

    def test_a_path_that_an_entry_cannot_name_is_refused_before_anything_is_written(self):
        for name in ("a b", "a\"b", "a$b", "a%b", "a'b", "a=b", "a;b", "a\\b"):
            with self.subTest(name):
                message = self.install(self.root / name, status=1, stderr=subprocess.STDOUT)
                self.assertIn(f'must not contain "{name[1]}"', " ".join(message.split()))
                self.assertFalse((self.root / name).exists())

    def test_installed_program_finds_its_parts_and_itself(self):
        prefix = self.home / ".local"
        self.install(prefix)
        bus = {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"}
        out = self.run_command(prefix / "bin/Ferrivane", "--status", env=bus)
        self.assertEqual(out.splitlines()[0], f"Ferrivane {VERSION}")
        # GIO, of the module, knows the entry as a handler of its schemes.
        applications = self.home / ".config/mimeapps.list"
        applications.parent.mkdir(exist_ok=True)
        applications.write_text(f"[Default Applications]\nx-scheme-handler/https={ID}.desktop\n")
        out = self.run_command(prefix / "bin/Ferrivane", "--status", env=bus)
        self.assertIn(f"Default browser: {prefix}/share/applications/{ID}.desktop\n", out)

    def test_files_can_be_read_by_everybody(self):
        self.install(self.root / "prefix")
        for folder, _, files in os.walk(self.root / "prefix"):
            for name in files:
                mode = os.stat(os.path.join(folder, name)).st_mode & 0o777
                self.assertIn(mode, (0o644, 0o755), name)

    def test_actions_open_the_rules_and_the_log(self):
        self.install(self.root / "prefix")
        desktop = entry(self.root / f"prefix/share/applications/{ID}.desktop")
        self.assertEqual(desktop["Desktop Entry"]["Actions"], "settings;edit-rules;show-log;")
        opened = self.stand_in("xdg-open")
        moved = {"XDG_CONFIG_HOME": f"{self.root}/my config", "XDG_STATE_HOME": f"{self.root}/$state"}
        for action in ("edit-rules", "show-log"):
            words = command(desktop[f"Desktop Action {action}"]["Exec"])
            self.run_command(*words)
            self.run_command(*words, env=moved)
        self.assertEqual(opened.read_text().splitlines(), [
            f"{self.home}/.config/ferrivane/rules.json",
            f"{self.root}/my config/ferrivane/rules.json",
            f"{self.home}/.local/state/ferrivane/ferrivane.log",
            f"{self.root}/$state/ferrivane/ferrivane.log"])


if __name__ == "__main__":
    main()
