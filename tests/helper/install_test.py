#!/usr/bin/env python3
"""The person installs the script through a save panel, or by hand."""

import os
import subprocess

from helper_case import LONG, SCRIPT, HelperCase, main, wait_until

PROBE = os.environ["INSTALL_PROBE"]
TITLE = "Install Ferrivane Helper"
MISSING, READY = "1", "3"


class Install(HelperCase):
    def setUp(self):
        super().setUp()
        for variable, folder in (("XDG_STATE_HOME", "state"), ("XDG_CONFIG_HOME", "config"),
                                 ("XDG_CACHE_HOME", "cache"), ("XDG_RUNTIME_DIR", "run")):
            self.env[variable] = str(self.root / folder)
        (self.root / "run").mkdir(mode=0o700)
        self.env["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={self.root}/no-bus"
        self.scripts = self.root / "data/ferrivane/scripts"
        self.installed = self.scripts / "ferrivane-helper.sh"

    def log(self):
        text = (self.root / "state/ferrivane/ferrivane.log").read_text()
        return [line[24:] for line in text.splitlines()]

    def start_display(self):
        reading, writing = os.pipe()
        self.processes.start(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1024x768x24",
                              "-nolisten", "tcp", "-noreset"], pass_fds=[writing], stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as pipe:
            self.env["DISPLAY"] = f":{pipe.readline().strip()}"
        # Its themes are the system's.
        self.processes.start(["openbox"], env=self.env | {"XDG_DATA_DIRS": "/usr/share"},
                             stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_until(lambda: self.ask("get_desktop"), LONG, "the window manager")

    def ask(self, *command):
        return subprocess.run(["xdotool", *command], env=self.env, timeout=LONG, check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout

    def panel_is_active(self):
        if self.ask("getactivewindow", "getwindowname").strip() == TITLE:
            return True
        # Under load the window manager may miss to give it the keyboard.
        self.ask("search", "--name", TITLE, "windowactivate")
        return False

    def install(self, *keys):
        """What became of the installation when these keys are pressed in the panel."""
        child = self.processes.start([PROBE, "install"], env=self.env, stdout=subprocess.PIPE,
                                     stderr=subprocess.PIPE, text=True)
        wait_until(self.panel_is_active, LONG, "the panel")
        for key in keys:
            self.ask("key", key) if len(key) < 12 else self.ask("type", key)
        out, err = child.communicate(timeout=LONG)
        self.assertEqual(child.returncode, 0, err)
        return out.splitlines()

    def test_confirmed_panel_installs_the_script(self):
        self.start_display()
        self.assertEqual(self.install("Return"), ["installed", READY])
        self.assertEqual(self.installed.read_bytes(), SCRIPT.read_bytes())
        self.assertEqual(self.installed.stat().st_mode & 0o7777, 0o755)
        self.assertEqual(self.scripts.stat().st_mode & 0o7777, 0o700)
        self.assertEqual(self.log(), [f"[INFO] installing helper: panel opening at {self.scripts}",
                                      "[INFO] installing helper: panel returned 1",
                                      f"[INFO] helper script installed at {self.installed}"])

    def test_cancelled_panel_changes_nothing(self):
        self.start_display()
        self.assertEqual(self.install("Escape"), ["installation cancelled", MISSING])
        self.assertEqual(list(self.scripts.iterdir()), [])
        self.assertEqual(self.log()[-1], "[INFO] installing helper: panel returned 0")

    def test_another_place_is_taken(self):
        self.start_display()
        elsewhere = self.root / "elsewhere"
        self.assertEqual(self.install("ctrl+a", str(elsewhere), "Return"), ["installed", MISSING])
        self.assertEqual(elsewhere.read_bytes(), SCRIPT.read_bytes())

    def test_without_a_display_nothing_is_installed(self):
        child = self.processes.start([PROBE, "install"], env=self.env, stdout=subprocess.PIPE,
                                     stderr=subprocess.PIPE, text=True)
        out, err = child.communicate(timeout=LONG)
        self.assertEqual((out.splitlines(), err), (["installation cancelled", MISSING],
                                                   "Ferrivane: cannot show a save panel: no display\n"))

    def test_reveal_asks_the_file_manager_of_the_session(self):
        bus = self.root / "bus"
        daemon = self.processes.start(["dbus-daemon", "--session", "--nofork", "--print-address",
                                       f"--address=unix:path={bus}"], stdout=subprocess.PIPE,
                                      stderr=subprocess.DEVNULL, text=True)
        self.env["DBUS_SESSION_BUS_ADDRESS"] = daemon.stdout.readline().strip()
        manager = self.processes.start(["dbus-monitor", "--session", "--monitor",
                                        "interface='org.freedesktop.FileManager1'"], env=self.env,
                                       stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        manager.stdout.readline()
        opened = self.opener_of_folders()
        self.scripts.mkdir(parents=True)
        self.assertEqual(self.processes.start([PROBE, "reveal"], env=self.env).wait(LONG), 0)
        bundled = os.path.join(os.path.dirname(PROBE), "ferrivane-helper.sh")
        self.assertEqual(self.log(), [f"[INFO] helper install: revealing {bundled} and {self.scripts} "
                                      "in the file manager"])
        # Nobody owns the file manager's name here, so its folder is opened.
        wait_until(lambda: opened.exists() and len(opened.read_text().splitlines()) == 2, LONG, "two folders")
        self.assertEqual(sorted(opened.read_text().splitlines()),
                         sorted([os.path.dirname(PROBE), str(self.scripts)]))
        daemon.terminate()
        daemon.communicate(timeout=LONG)
        asked = manager.communicate(timeout=LONG)[0]
        self.assertIn("member=ShowItems", asked)
        self.assertIn(f'string "file://{bundled}"', asked)

    def opener_of_folders(self):
        """The person's application for folders, which records them; the record."""
        path = self.root / "apps/folders"
        path.parent.mkdir(exist_ok=True)
        path.write_text('#!/bin/sh\necho "$1" >>"$0.opened"\n')
        path.chmod(0o755)
        self.install_entry(path)
        return path.with_name("folders.opened")

    def install_entry(self, path):
        HelperCase.install(self, "folders", f"{path} %f", "MimeType=inode/directory;\n")
        (self.root / "config").mkdir(exist_ok=True)
        (self.root / "config/mimeapps.list").write_text(
            "[Default Applications]\ninode/directory=folders.desktop\n")


if __name__ == "__main__":
    main()
