#!/usr/bin/env python3
"""Shows links going to the profiles of a really running Chromium, and proves it.

    demo.py BUILD_FOLDER

Everything happens in a throw-away home. The browser is started once with three profiles; from then
on it gets links from Ferrivane only, and is looked at only through the pages that it fetches. Ends
with status 1 when a link went to a wrong profile, or nowhere.
"""

import os
import pty
import shlex
import subprocess
import sys
import time
from pathlib import Path
from typing import NamedTuple

ROOT = Path(__file__).resolve().parents[1]
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "tests" / "support"))
from desktop import HOME, PLAY, WORK, Desktop, Profile, program, wait_until  # noqa: E402

SCREENSHOT = ROOT / "build" / "demo" / "chromium.png"
JOIN = "/usr/bin/convert" if os.path.exists("/usr/bin/convert") else "convert"
WINDOW = 512, 620  # width, height: the three windows side by side
RULES = (("url", "/tickets/", "Work"),
         ("host", "music.example", "Profile 2"),
         ("app", "org.example.Chat", "work"))


class Step(NamedTuple):
    opener: str
    host: str
    path: str
    profile: Profile


STEPS = (
    Step("shell", "wiki.example", "/tickets/42", WORK),
    Step("shell", "play.music.example", "/album?id=7", PLAY),
    Step("Chat", "news.example", "/from-a-colleague", WORK),
    Step("Mail", "news.example", "/from-a-friend", HOME),
    Step("Chat", "music.example", "/song", PLAY),
    Step("terminal script", "weather.example", "/today", HOME),
)


def say(text=""):
    print(text, flush=True)


def title(text):
    say(f"\n\033[1m{text}\033[0m" if sys.stdout.isatty() else f"\n{text}")


class Openers:
    """The ways a link is sent here; each returns the exit status and how a person would write it."""

    def __init__(self, desktop):
        self.desktop = desktop
        self.applications = {name: desktop.add_application(name) for name in ("Chat", "Mail")}
        self.script = desktop.root / "apps/report.sh"
        self.script.write_text('#!/bin/sh\nFerrivane "$1"\n')
        self.script.chmod(0o755)
        os.symlink(desktop.ferrivane, desktop.root / "apps/Ferrivane")
        self.env = desktop.env | {"PATH": f"{desktop.root}/apps:{desktop.env['PATH']}"}

    def send(self, opener, link):
        if opener in self.applications:
            return (self._run([self.applications[opener], self.desktop.ferrivane, link]),
                    f"{opener}: Ferrivane {shlex.quote(link)}")
        if opener == "shell":
            line = f"Ferrivane {shlex.quote(link)}"
            return self._run(["sh", "-c", line + "; exit $?"]), f"$ {line}"
        return self._run_in_terminal([self.script, link]), f"$ ./report.sh {shlex.quote(link)}"

    def _run(self, command):
        return self.desktop.processes.start(command, env=self.env).wait(30)

    def _run_in_terminal(self, command):
        ours, terminal = pty.openpty()
        try:
            child = self.desktop.processes.start(command, env=self.env, stdin=terminal,
                                                 stdout=terminal, stderr=terminal)
            return child.wait(30)
        finally:
            os.close(terminal)
            os.close(ours)


def xdotool(env, *words):
    return subprocess.run([program("xdotool", "xdotool"), *map(str, words)], env=env, timeout=20,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)


def persons_display():
    """The display that this was started from, where there is one."""
    usable = os.environ.get("DISPLAY") and xdotool(None, "getdisplaygeometry").returncode == 0
    return os.environ["DISPLAY"] if usable else None


def arrange_windows(desktop):
    """Places the browser's windows side by side, as a person would with the mouse."""
    windows = []
    for column, profile in enumerate((HOME, WORK, PLAY)):
        search = ("search", "--onlyvisible", "--name", f"^{profile.name}: ")
        found = wait_until(lambda: xdotool(desktop.env, *search).stdout.split(), 10,
                           f"the window of {profile}")
        windows.append(found[0])
        xdotool(desktop.env, "windowsize", found[0], *WINDOW)
        xdotool(desktop.env, "windowmove", found[0], column * WINDOW[0], 0)
    time.sleep(0.3)
    return windows


def take_screenshot(desktop, windows, private):
    """Of the browser alone, also where a person's other windows are."""
    SCREENSHOT.parent.mkdir(parents=True, exist_ok=True)
    if private:
        desktop.screenshot(SCREENSHOT)
        return
    parts = [desktop.root / f"window-{window}.png" for window in windows]
    for window, part in zip(windows, parts):
        xdotool(desktop.env, "windowactivate", "--sync", window)
        desktop.screenshot(part, window)
    subprocess.run([JOIN, *parts, "+append", SCREENSHOT], check=True, timeout=20)


def profile_that_fetched(desktop, link):
    """By the browser's own request, not by anything that Ferrivane says."""
    wait_until(lambda: desktop.server.fetched(link), 15, f"{link} is fetched")
    names = {profile.language: profile.name for profile in (HOME, WORK, PLAY)}
    return " and ".join(names.get(hit.language, hit.language)
                        for hit in desktop.server.fetched(link))


def send_all(desktop, openers):
    rows = []
    for step in STEPS:
        link = desktop.server.link(step.path, step.host)
        before = len(desktop.log())
        status, written = openers.send(step.opener, link)
        say(f"\n{written}")
        for line in desktop.log()[before:].splitlines():
            say(f"    {line}")
        try:
            fetched = profile_that_fetched(desktop, link)
        except AssertionError:
            fetched = "nobody"
        rows.append((link, step.opener, step.profile.name, fetched,
                     "ok" if (status, fetched) == (0, step.profile.name) else "WRONG"))
    time.sleep(1)  # a link that is opened twice shows by now
    return [row if len(desktop.server.fetched(row[0])) < 2 else (*row[:4], "TWICE") for row in rows]


def print_table(rows):
    rows = [("link", "opener", "expected profile", "fetched by", ""), *rows]
    widths = [max(map(len, column)) for column in zip(*rows)]
    for row in rows:
        say("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())


def demonstrate(build):
    display = persons_display()
    with Desktop(build / "Ferrivane", build / "tests/support/sender", display,
                 size=f"{3 * WINDOW[0]}x{WINDOW[1]}") as desktop:
        title("The rules, checked top to bottom; the first match wins:")
        say(desktop.write_rules(*RULES, default="Home"))
        pid = desktop.start_browser((HOME, WORK, PLAY))
        say(f"\nChromium runs as process {pid} with the profiles {HOME}, {WORK} and {PLAY}.")
        windows = arrange_windows(desktop)

        title("The links, each with the lines it left in the log:")
        rows = send_all(desktop, Openers(desktop))

        title("Who fetched them, as the web server saw it (each profile asks in its own language):")
        print_table(rows)
        take_screenshot(desktop, windows, private=not display)
        say(f"\nScreenshot: {SCREENSHOT}")
        same = desktop.browsers() == [pid]
        say("The browser is the same process as before." if same else "The browser was replaced!")
        return 0 if same and all(row[4] == "ok" for row in rows) else 1


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    started = time.monotonic()
    try:
        status = demonstrate(Path(sys.argv[1]).resolve())
    except (RuntimeError, AssertionError) as error:
        sys.exit(f"demo: {error}")
    except KeyboardInterrupt:
        sys.exit(130)
    title(f"{'Every link went to its profile' if status == 0 else 'Something went wrong'}; "
          f"{time.monotonic() - started:.0f} s.")
    sys.exit(status)


if __name__ == "__main__":
    main()
