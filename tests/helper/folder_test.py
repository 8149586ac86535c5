#!/usr/bin/env python3
"""The script finds the browser and the folder that the program itself finds."""

import os
import shutil
import subprocess
from pathlib import Path

from helper_case import HelperCase, main

FLATPAK = "X-Flatpak=x\n"
VARIANTS = [("google-chrome", ""), ("com.google.Chrome", ""), ("chromium", ""), ("chromium-browser", ""),
            ("google-chrome-beta", ""), ("google-chrome-unstable", ""), ("com.google.Chrome", FLATPAK),
            ("org.chromium.Chromium", FLATPAK), ("chromium_chromium", "")]


class Folder(HelperCase):
    def setUp(self):
        super().setUp()
        self.chrome = self.program("chrome")

    def probe(self, env, program=os.environ["LOCATE_PROBE"]):
        out = subprocess.run([program], env=self.env | env, cwd="/", check=True,
                             stdout=subprocess.PIPE).stdout
        self.bundled, folder, executable, *command = [os.fsdecode(text) for text in out.split(b"\0")[:-1]]
        return Path(folder), executable, command

    def check(self, name, shells=(("sh",),), **env):
        """Both find the same; the folder, below the test's own."""
        with self.subTest(name):
            folder, executable, command = self.probe(env)
            self.assertTrue(folder.is_relative_to(self.root), folder)
            folder.mkdir(parents=True, exist_ok=True)
            (folder / "Local State").write_text(name)
            out = self.root / "out"
            for shell in shells:
                self.assertEqual(self.run_script("profiles", out, shell=shell, env=env), (0, ""))
                self.assertEqual(out.read_text(), name, folder)
                out.unlink()
                if not executable or Path(executable).parent != self.chrome.parent:
                    continue
                self.assertEqual(self.run_script("launch", executable, "https://a/", shell=shell, env=env),
                                 (0, ""))
                # "env" and what it sets stand before the program.
                started = command[command.index(executable):] if executable in command else command[1:]
                self.assertEqual(self.arguments_of(executable), [*started[1:], "https://a/"])
            (folder / "Local State").unlink()
            return folder.relative_to(self.root)

    def clear(self):
        for folder in ("data", "shared", "more"):
            shutil.rmtree(self.root / folder, ignore_errors=True)

    def test_script_lies_in_the_data_folder_of_the_programs_prefix_or_beside_it(self):
        program = self.root / "prefix/bin/Ferrivane"
        program.parent.mkdir(parents=True)
        shutil.copy(os.environ["LOCATE_PROBE"], program)
        self.probe({}, program)
        self.assertEqual(self.bundled, "")
        installed = self.root / "prefix/share/ferrivane/ferrivane-helper.sh"
        installed.parent.mkdir(parents=True)
        installed.touch()
        self.probe({}, program)
        self.assertEqual(self.bundled, str(installed))
        beside = program.with_name("ferrivane-helper.sh")
        beside.touch()
        self.probe({}, program)
        self.assertEqual(self.bundled, str(beside))

    def test_nothing_installed(self):
        self.assertEqual(str(self.check("by default")), "home/.config/google-chrome")
        self.check("another folder", XDG_CONFIG_HOME=f"{self.root}/c")
        self.check("no absolute folder", XDG_CONFIG_HOME="c")

    def test_each_variant_alone(self):
        for identifier, more in VARIANTS:
            self.clear()
            self.install(identifier, f"{self.chrome} %U", more)
            self.check(f"{identifier} {more}", self.each_shell())

    def test_the_more_important_variant_counts(self):
        # One id is both a package and a Flatpak.
        for identifier, more in reversed(VARIANTS):
            if identifier == "com.google.Chrome" and more:
                continue
            self.install(identifier, f"{self.chrome} %U", more)
        for identifier, more in VARIANTS:
            self.check(f"down to {identifier}{more}")
            (self.root / f"data/applications/{identifier}.desktop").unlink(missing_ok=True)

    def test_variants_under_each_others_id(self):
        rows = {"a package under a Flatpak's id": ("org.chromium.Chromium", ""),
                "a Flatpak under a package's id": ("chromium", FLATPAK),
                "another browser": ("vivid-browser", "")}
        for name, (identifier, more) in rows.items():
            self.clear()
            self.install(identifier, f"{self.chrome} %U", more)
            self.check(name)

    def test_environment_and_command(self):
        root = self.root
        rows = {
            "the configuration folder": ("", {"XDG_CONFIG_HOME": f"{root}/c"}),
            "its own configuration folder": ("", {"XDG_CONFIG_HOME": f"{root}/c",
                                                  "CHROME_CONFIG_HOME": f"{root}/cc"}),
            "its own folder": ("", {"CHROME_CONFIG_HOME": f"{root}/cc",
                                    "CHROME_USER_DATA_DIR": f"{root}/u $(x)"}),
            "empty variables": ("", {"XDG_CONFIG_HOME": "", "CHROME_CONFIG_HOME": "",
                                     "CHROME_USER_DATA_DIR": ""}),
            "a switch before everything": (f"--user-data-dir={root}/s %U",
                                           {"CHROME_USER_DATA_DIR": f"{root}/u"}),
            "a switch with a blank": (f'"--user-data-dir={root}/my data" %U', {}),
            "a switch in single quotes": (f"--user-data-dir='{root}/my data' %U", {}),
            "the last of two switches": (f"--user-data-dir=/s --user-data-dir={root}/t", {}),
            "a switch without a value": ("--user-data-dir= %U", {"CHROME_USER_DATA_DIR": f"{root}/u"}),
            "an escaped percent sign": (f"--user-data-dir={root}/a%%b%F %U", {}),
            "a backslash": (f"--user-data-dir={root}/a\\\\\\\\b\\\\ c", {}),
            "quotes inside a word": (f"--user-data-dir={root}/a'b'\"c\" --x='' \"\" %f", {}),
            "a dollar sign": (f'"--user-data-dir={root}/\\\\$HOME`\\\\`" %U', {}),
            "a comment": (f"--user-data-dir={root}/s # --user-data-dir={root}/t", {}),
            "no comment": (f"--user-data-dir={root}/s#t --x #", {}),
            "an escaped blank of the file": (f"--user-data-dir={root}/a\\sb", {}),
            "marks of a Flatpak": (f"@@u %U @@ --user-data-dir={root}/s", {}),
        }
        for name, (arguments, env) in rows.items():
            self.clear()
            self.install("google-chrome", f"{self.chrome} {arguments}")
            self.check(name, self.each_shell(), **env)

    def test_variables_in_the_command(self):
        root = self.root
        rows = {
            "its own folder": f"env CHROME_USER_DATA_DIR={root}/e",
            "its own configuration folder": f"/usr/bin/env -u X CHROME_CONFIG_HOME='{root}/e e'",
            "the configuration folder": f"env -C / XDG_CONFIG_HOME={root}/x",
            "the first of two": f"env XDG_CONFIG_HOME={root}/x XDG_CONFIG_HOME={root}/y",
            "taken away": "env CHROME_USER_DATA_DIR=",
        }
        for name, prefix in rows.items():
            self.clear()
            self.install("google-chrome", f"{prefix} {self.chrome} %U")
            self.check(name, CHROME_USER_DATA_DIR=f"{root}/u", CHROME_CONFIG_HOME=f"{root}/cc")
            self.check(f"{name}, nothing set")

    def test_odd_entries(self):
        entry = f"Exec={self.chrome} --flag %U"
        rows = {
            "blanks and line ends": f" [Desktop Entry] \r\n Type = Application \r\n Exec = {self.chrome} x \r\n",
            "no type": f"[Desktop Entry]\n{entry}\n",
            "another type": f"[Desktop Entry]\nType=Link\n{entry}\n",
            "deleted by the user": f"[Desktop Entry]\nType=Application\nHidden=true\n{entry}\n",
            "deleted, in a number": f"[Desktop Entry]\nHidden=1\n{entry}\n",
            "not deleted": f"[Desktop Entry]\nType=Application\nHidden=True\n{entry}\n",
            "not in menus": f"[Desktop Entry]\nType=Application\nNoDisplay=true\n{entry}\n",
            "no group": f"Type=Application\n{entry}\n",
            "another group before": f"[X]\nExec=x\n[Desktop Entry]\nType=Application\n{entry}\n",
            "an action behind": f"[Desktop Entry]\nType=Application\n{entry}\n[Desktop Action a]\nExec=x\n",
            "a comment": f"[Desktop Entry]\nType=Application\n#Exec=x\n{entry}\n",
            "two commands": f"[Desktop Entry]\nType=Application\nExec=x y z\n{entry}\n",
            "no command": "[Desktop Entry]\nType=Application\nExec=\n",
            "a command of codes": "[Desktop Entry]\nType=Application\nExec=%U\n",
            "no line break at the end": f"[Desktop Entry]\nType=Application\n{entry}",
            "a relative program": "[Desktop Entry]\nType=Application\nExec=apps/chrome %U\n",
            "a program that is gone": "[Desktop Entry]\nType=Application\nExec=/nowhere/chrome %U\n",
            "empty": "",
            "bytes that are no text": b"[Desktop Entry]\nName=\xff\xfe\nType=Application\n" + entry.encode(),
        }
        for name, text in rows.items():
            self.clear()
            self.install("chromium", f"{self.chrome} --other")
            path = self.install("google-chrome", "")
            path.write_bytes(text if isinstance(text, bytes) else text.encode())
            self.check(name)

    def test_program_is_looked_for_on_the_path(self):
        self.install("google-chrome", "chrome %U")
        path = self.env["PATH"]
        self.check("nowhere")
        self.check("in a folder", PATH=f"{self.root}/none:{self.chrome.parent}:{path}")
        self.check("relative folders do not count", PATH=f".:apps::{path}")
        self.chrome.chmod(0o644)
        self.check("not executable", PATH=f"{self.chrome.parent}:{path}")

    def test_folders_of_entries(self):
        both = {"XDG_DATA_DIRS": f"relative:{self.root}/more:{self.root}/shared"}
        self.install("chromium", f"{self.chrome} --shared", folder="shared")
        self.check("shared")
        self.install("chromium", f"{self.chrome} --more", folder="more")
        self.check("the first of the shared ones", **both)
        self.install("chromium", "/nowhere/chromium", folder="more")
        self.check("one without its program is passed over", **both)
        self.install("chromium", f"{self.chrome} --own")
        self.check("the person's own", **both)
        self.install("chromium", f"{self.chrome} --own", "Hidden=true\n")
        self.check("deleted by the person", **both)
        self.install("chromium", f"{self.chrome} --home", folder="home/.local/share")
        self.check("below home", XDG_DATA_HOME="relative")
        self.check("below home, without a variable", XDG_DATA_HOME="")

    def test_dash_in_an_id_may_be_a_folder(self):
        for identifier in ("google/chrome", "google/chrome/beta", "google-chrome/unstable", "chromium/browser"):
            self.clear()
            self.install(identifier, f"{self.chrome} --{identifier}")
            self.check(identifier)

    def test_entry_that_starts_ferrivane_is_passed_over(self):
        probe = Path(os.environ["LOCATE_PROBE"])
        own = self.chrome.with_name("own")
        own.symlink_to(self.chrome.with_name("Ferrivane"))
        self.program("Ferrivane")
        self.install("google-chrome", f"{own} %U")
        self.install("chromium", f"{self.chrome} %U")
        (self.home / ".config/chromium").mkdir(parents=True)
        (self.home / ".config/chromium/Local State").write_text("chromium")
        for shell in self.each_shell():
            self.assertEqual(self.run_script("profiles", self.root / "out", shell=shell), (0, ""))
            self.assertEqual((self.root / "out").read_text(), "chromium")
        # The program knows itself by its file, whatever its name is.
        own.unlink()
        own.symlink_to(probe)
        self.assertEqual(self.probe({})[1], str(self.chrome))


if __name__ == "__main__":
    main()
