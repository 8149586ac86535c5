#!/usr/bin/env python3
"""How the script starts Chrome, and what its exit status says."""

import os
import pty
import time
from pathlib import Path

from helper_case import LONG, SCRIPT, HelperCase, main, wait_until

LINK = "https://a/"


class Start(HelperCase):
    def note_of(self, program, name):
        path = Path(f"{program}.{name}")
        wait_until(path.exists, 20, path)
        text = path.read_text().strip()
        path.unlink()
        return text

    def test_status_is_that_of_chrome(self):
        for shell in self.each_shell():
            for command in ("open", "launch"):
                for status in (1, 21, 99, 126):
                    chrome = self.program("chrome", f"exit {status}")
                    self.assertIn(f"Chrome ended with status {status}\n",
                                  self.refused(command, chrome, LINK, status=1, shell=shell))
                chrome = self.program("chrome", "kill -9 $$")
                ran = self.run_script(command, chrome, LINK, shell=shell)
                self.assertEqual(ran.status, 1)
                self.assertIn("Chrome ended with status 137\n", ran.err)

    def test_open_waits_for_the_end_of_what_passes_the_link_on(self):
        for shell in self.each_shell():
            chrome = self.program("chrome", 'sleep 0.4; : >"$0.end"')
            self.assertEqual(self.run_script("open", chrome, LINK, shell=shell), (0, ""))
            self.note_of(chrome, "end")

    def browser(self, end):
        """The located browser, which takes its lock and opens its socket as Chrome does."""
        chrome = self.program("chromium", f'''
echo $$ >"$0.pid"
mkdir -p "$XDG_CONFIG_HOME/chromium"
cd "$XDG_CONFIG_HOME/chromium" || exit
sleep 0.2
ln -sfn "host-$$" SingletonLock
python3 -c 'import socket; socket.socket(socket.AF_UNIX).bind("s")'
ln -sfn s SingletonSocket
{end}''')
        self.install("chromium", f"{chrome} %U")
        self.env["XDG_CONFIG_HOME"] = str(self.root / "c")
        return chrome

    def slow_down(self):
        """From now on the script looks twice a second, and so gives up after half a minute."""
        path = self.root / "slow/sleep"
        path.parent.mkdir()
        path.write_text("#!/bin/sh\nexec /bin/sleep 0.5\n")
        path.chmod(0o755)
        self.env["PATH"] = f"{path.parent}:{self.env['PATH']}"

    def test_launch_ends_once_chrome_has_its_lock_and_socket(self):
        self.slow_down()
        for shell in self.each_shell():
            chrome = self.browser("exec /bin/sleep 60")
            (self.root / "c/chromium").mkdir(parents=True, exist_ok=True)
            lock = self.root / "c/chromium/SingletonLock"
            lock.unlink(missing_ok=True)
            lock.symlink_to("left-over-1")
            (self.root / "c/chromium/s").unlink(missing_ok=True)
            started = time.monotonic()
            self.assertEqual(self.run_script("launch", chrome, LINK, shell=shell), (0, ""))
            self.assertLess(time.monotonic() - started, 25)
            pid = self.note_of(chrome, "pid")
            self.assertEqual(os.readlink(lock), f"host-{pid}")
            os.kill(int(pid), 9)

    def test_open_ends_when_what_it_started_becomes_the_browser(self):
        chrome = self.browser("exec sleep 60")
        self.assertEqual(self.run_script("open", chrome, LINK), (0, ""))
        os.kill(int(self.note_of(chrome, "pid")), 9)

    def test_launch_does_not_wait_for_the_end_of_chrome_which_stands_on_its_own(self):
        for shell in self.each_shell():
            chrome = self.program("chrome", 'echo $$ >"$0.pid"; exec sleep 60')
            started = time.monotonic()
            self.assertEqual(self.run_script("launch", chrome, LINK, shell=shell), (0, ""))
            self.assertLess(time.monotonic() - started, 30)
            pid = int(self.note_of(chrome, "pid"))
            self.assertEqual(os.getsid(pid), pid)
            self.assertEqual([os.readlink(f"/proc/{pid}/fd/{number}") for number in (0, 1, 2)],
                             ["/dev/null"] * 3)
            os.kill(pid, 9)

    def test_end_of_the_terminal_is_not_the_end_of_chrome(self):
        chrome = self.program("chrome", 'echo $$ >"$0.pid"; exec sleep 60')
        terminal, shell_side = pty.openpty()
        child = self.processes.start(["setsid", "--ctty", "--wait", "sh", SCRIPT, "launch", chrome, LINK],
                                     env=self.env, stdin=shell_side, stdout=shell_side, stderr=shell_side)
        os.close(shell_side)
        self.assertEqual(child.wait(LONG), 0)
        os.close(terminal)
        pid = int(self.note_of(chrome, "pid"))
        time.sleep(0.3)
        os.kill(pid, 9)

    def test_nothing_but_its_streams_is_needed(self):
        chrome = self.program("chrome")
        self.assertEqual(self.run_script("open", chrome, LINK, before=["setsid", "--wait"]), (0, ""))
        self.assertEqual(self.arguments_of(chrome), [LINK])

    def test_token_of_the_desktop_goes_on(self):
        chrome = self.program("chrome", 'printf %s "$XDG_ACTIVATION_TOKEN" >"$0.token"')
        self.run_script("open", chrome, LINK, env={"XDG_ACTIVATION_TOKEN": "tok"})
        self.assertEqual(self.note_of(chrome, "token"), "tok")


class Command(HelperCase):
    """The located browser keeps what its desktop entry adds."""

    def test_launch_starts_the_whole_command(self):
        chrome = self.program("chrome")
        self.install("google-chrome", f'env A=b {chrome} --flag "a b" @@u %U @@')
        for shell in self.each_shell():
            self.assertEqual(self.run_script("launch", chrome, LINK, shell=shell), (0, ""))
            self.assertEqual(self.arguments_of(chrome), ["--flag", "a b", LINK])

    def test_open_starts_the_executable_with_the_switches_alone(self):
        chrome = self.program("chrome")
        self.install("google-chrome", f'{chrome} --flag %U')
        self.assertEqual(self.run_script("open", chrome, "--profile-directory=P 2", LINK), (0, ""))
        self.assertEqual(self.arguments_of(chrome), ["--profile-directory=P 2", LINK])

    def test_open_keeps_the_folder_that_the_entry_names(self):
        chrome = self.program("chrome")
        folder = self.root / "my data"
        self.install("google-chrome", f'{chrome} "--user-data-dir={folder}" %U')
        self.assertEqual(self.run_script("open", chrome, LINK), (0, ""))
        self.assertEqual(self.arguments_of(chrome), [f"--user-data-dir={folder}", LINK])

    def test_contained_browser_is_started_by_its_whole_command(self):
        flatpak = self.program("flatpak")
        self.install("com.google.Chrome",
                     f"{flatpak} run --branch=stable --file-forwarding com.google.Chrome @@u %U @@",
                     "X-Flatpak=com.google.Chrome\n")
        for command in ("open", "launch"):
            self.assertEqual(self.run_script(command, flatpak, LINK), (0, ""))
            self.assertEqual(self.arguments_of(flatpak), ["run", "--branch=stable", "--file-forwarding",
                                                          "com.google.Chrome", LINK])

    def test_another_program_gets_nothing_of_the_entry(self):
        self.install("google-chrome", f"{self.program('chrome')} --flag %U")
        other = self.program("other")
        self.assertEqual(self.run_script("launch", other, LINK), (0, ""))
        self.assertEqual(self.arguments_of(other), [LINK])


class OnMacOS(HelperCase):
    """With stand-ins for two of that system's programs; the system itself was not at hand."""

    def setUp(self):
        super().setUp()
        self.program("uname", "echo Darwin")
        self.opener = self.program("open", 'exit "${OPEN_STATUS-0}"')
        self.bundle = self.root / "Google Chrome.app"
        self.bundle.mkdir()
        self.env["PATH"] = f"{self.root}/apps:{self.env['PATH']}"

    def test_launch_opens_the_bundle_anew(self):
        for shell in self.each_shell():
            self.assertEqual(
                self.run_script("launch", self.bundle, "--profile-directory=P 2", LINK, shell=shell),
                (0, ""))
            self.assertEqual(self.arguments_of(self.opener), [
                "-n", "-a", str(self.bundle), "--args", "--profile-directory=P 2", LINK])

    def test_failure_to_open_the_bundle_is_told(self):
        self.refused("launch", self.bundle, LINK, status=1, env={"OPEN_STATUS": "1"})

    def test_open_starts_the_executable(self):
        chrome = self.program("Google Chrome")
        self.assertEqual(self.run_script("open", chrome, LINK), (0, ""))
        self.assertEqual(self.arguments_of(chrome), [LINK])

    def test_profiles_are_those_of_the_users_library(self):
        folder = self.home / "Library/Application Support/Google/Chrome"
        folder.mkdir(parents=True)
        (folder / "Local State").write_text("copied")
        for shell in self.each_shell():
            self.assertEqual(self.run_script("profiles", self.root / "out", shell=shell), (0, ""))
            self.assertEqual((self.root / "out").read_text(), "copied")
            (self.root / "out").unlink()


if __name__ == "__main__":
    main()
