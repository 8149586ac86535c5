"""A throw-away desktop with a real browser in it.

A Desktop has a home and XDG folders of its own below one temporary folder, a private X server with
a window manager, no message bus unless it is asked for, a local web server, and Debian's Chromium
with profiles written by hand. Each profile asks for pages in a language of its own, so the server's
records say which profile fetched a link. Nothing of the person's is read or written; nothing stays
behind, whatever the end.
"""

import atexit
import contextlib
import json
import os
import shlex
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path
from typing import NamedTuple

from display import Display, program
from processes import LONG, Processes, shorten, wait_until
from session_bus import APPLICATION, SessionBus, write_description
from webserver import HOME, PLAY, PROFILES, SHOP, WORK, Profile, WebServer  # noqa: F401


class Sent(NamedTuple):
    """What became of one command that opened links, from the view of who waited for it."""
    status: int
    stdout: str
    stderr: str
    seconds: float  # until it had ended and nothing held its output any more
    log: str  # what it appended to the log


def browser_binary():
    """Chromium itself; what lies on the PATH is usually a script that starts it."""
    candidates = ["/usr/lib/chromium/chromium", "/usr/lib64/chromium-browser/chromium-browser",
                  shutil.which("chromium"), shutil.which("chromium-browser")]
    for candidate in filter(None, candidates):
        path = Path(candidate).resolve()
        with contextlib.suppress(OSError), path.open("rb") as file:
            if file.read(4) == b"\x7fELF":
                return path
    raise RuntimeError("Chromium is missing; Debian has it in the package chromium")


class Desktop:
    """Made running, without a browser. `display` is the person's own, or None for a private one."""

    def __init__(self, ferrivane, sender, display=None, size="1536x640"):
        self.ferrivane, self.sender = Path(ferrivane).resolve(), Path(sender).resolve()
        for path in (self.ferrivane, self.sender):
            if not os.access(path, os.X_OK) or path.is_dir():
                raise RuntimeError(f"{path} is missing; build it first")
        self.binary = browser_binary()
        # Not in $TMPDIR: the browser's socket lies below and its path must stay short.
        self.root = Path(tempfile.mkdtemp(prefix="fv", dir="/tmp"))
        self._undo = contextlib.ExitStack()
        atexit.register(self.close)
        for number in (signal.SIGTERM, signal.SIGHUP):
            signal.signal(number, signal.default_int_handler)
        self._clean_up_even_if_killed()
        self._undo.callback(shutil.rmtree, self.root, ignore_errors=True)
        self.env = self._environment()
        self.processes = Processes(self.env)
        self._undo.callback(self.processes.end_all)
        self._register_browser()
        self.server = WebServer()
        self._undo.callback(self.server.server_close)
        self._undo.callback(self.server.shutdown)
        self.display = None if display else Display(self.processes, size)
        self.env["DISPLAY"] = display or self.display.name

    def close(self):
        """Ends every process and removes every file. Again: nothing."""
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            signal.signal(number, signal.SIG_IGN)
        self._undo.close()
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            signal.signal(number, signal.default_int_handler)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def _clean_up_even_if_killed(self):
        # Waits outside our process tree; a word on the pipe means that nothing is left to do.
        script = 'read -r word || { sleep 3; rm -rf -- "$1"; }'
        reading, writing = os.pipe()
        subprocess.run([program("setsid", "util-linux"), "--fork", "sh", "-c", script, "sh", self.root],
                       stdin=reading, check=True)
        os.close(reading)
        self._undo.callback(os.close, writing)

        def say_done():
            # Where we are the first process of all, it is one of ours and has been ended.
            with contextlib.suppress(BrokenPipeError):
                os.write(writing, b"done\n")
        self._undo.callback(say_done)

    def _environment(self):
        env = {key: os.environ[key] for key in ("PATH", "USER", "LOGNAME") if key in os.environ}
        xauthority = os.environ.get("XAUTHORITY", os.path.expanduser("~/.Xauthority"))
        if os.path.exists(xauthority):
            env["XAUTHORITY"] = xauthority
        folders = {"HOME": "home", "XDG_CONFIG_HOME": "config", "XDG_DATA_HOME": "data", "TMPDIR": "t",
                   "XDG_STATE_HOME": "state", "XDG_RUNTIME_DIR": "run", "XDG_CACHE_HOME": "cache"}
        for variable, folder in folders.items():
            (self.root / folder).mkdir(mode=0o700)
            env[variable] = str(self.root / folder)
        # The system's data without its applications: another browser must not be found.
        system = self.root / "system"
        system.mkdir()
        for folder in ("fonts", "glib-2.0", "icons", "mime", "themes"):
            if os.path.isdir(f"/usr/share/{folder}"):
                (system / folder).symlink_to(f"/usr/share/{folder}")
        bus = f"unix:path={env['XDG_RUNTIME_DIR']}/no-bus"
        return env | {"XDG_DATA_DIRS": str(system), "XDG_CONFIG_DIRS": str(system), "LC_ALL": "C.UTF-8",
                      "DBUS_SESSION_BUS_ADDRESS": bus, "DBUS_SYSTEM_BUS_ADDRESS": bus}

    def start_bus(self):
        """A session bus for whatever is started from now on; it starts nothing but Ferrivane."""
        self.bus = SessionBus(self.processes, self.root / "bus")
        self.env["DBUS_SESSION_BUS_ADDRESS"] = self.bus.address
        self.bus.start()

    # The program and its files.

    def install(self):
        """Makes Ferrivane the default browser, which the bus starts when it is called; its path."""
        path = self.root / "apps/Ferrivane"  # without blanks, wherever it was built
        path.symlink_to(self.ferrivane)
        write_description(f"{APPLICATION}.desktop", self.root / "data/applications", path)
        self.bus.install(path)
        schemes = ("http", "https", "ferrivane")
        (self.root / "config/mimeapps.list").write_text("[Default Applications]\n" + "".join(
            f"x-scheme-handler/{scheme}={APPLICATION}.desktop\n" for scheme in schemes))
        return path

    @property
    def rules_file(self):
        return self.root / "config/ferrivane/rules.json"

    @property
    def log_file(self):
        return self.root / "state/ferrivane/ferrivane.log"

    def write_rules(self, *rules, default=HOME.name):
        """Rules as (kind, match, profile)."""
        keys = ("kind", "match", "profile")
        text = json.dumps({"defaultProfile": default, "rules": [dict(zip(keys, r)) for r in rules]},
                          indent=2)
        self.rules_file.parent.mkdir(mode=0o700, exist_ok=True)
        self.rules_file.write_text(text + "\n")
        return text

    def log(self):
        with contextlib.suppress(FileNotFoundError):
            return self.log_file.read_text(errors="replace")
        return ""

    def add_application(self, name, program=None, file=None):
        """Installs an application, by itself one whose only skill is to run another program; its path."""
        path = self.root / "apps" / (file or name.lower())
        path.parent.mkdir(exist_ok=True)
        shutil.copy(program or self.sender, path)
        self._write_entry(f"org.example.{name}", name, path)
        return path

    def _write_entry(self, identifier, name, path, more="", folder="data"):
        folder = self.root / folder / "applications"
        folder.mkdir(exist_ok=True)
        (folder / f"{identifier}.desktop").write_text(
            f"[Desktop Entry]\nType=Application\nName={name}\nExec={path} %U\n{more}")

    def start(self, *operands, through=(), cwd="/"):
        """Runs Ferrivane as a child of the program `through`, whose own arguments may follow it."""
        return self.processes.start([*through, self.ferrivane, *operands], cwd=cwd,
                                    stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def send(self, *operands, through=(), cwd="/"):
        before, started = self.log(), time.monotonic()
        child = self.start(*operands, through=through, cwd=cwd)
        try:
            out, err = child.communicate(timeout=LONG)
        except subprocess.TimeoutExpired:
            child.kill()
            raise AssertionError(
                f"still running after {LONG} s: {shorten(child.args)}; log:\n"
                f"{shorten(self.log()[len(before):], 2000)}") from None
        return Sent(child.returncode, out.decode(errors="replace"), err.decode(errors="replace"),
                    time.monotonic() - started, self.log()[len(before):])

    # The browser.

    @property
    def browser_command(self):
        return self.root / "apps/chromium"

    @property
    def user_data(self):
        return self.root / "config/chromium"

    def _register_browser(self):
        switches = ["--no-first-run", "--no-default-browser-check", "--password-store=basic",
                    "--disable-background-networking", "--disable-component-update", "--disable-sync",
                    "--disable-gpu", "--hide-crash-restore-bubble", "--no-pings", "--test-type",
                    "--host-resolver-rules=MAP * 127.0.0.1"]
        if os.getuid() == 0:
            switches.append("--no-sandbox")
        self.browser_command.parent.mkdir(exist_ok=True)
        self.browser_command.write_text(
            f'#!/bin/sh\nexec {shlex.join([str(self.binary), *switches])} "$@"\n')
        self.browser_command.chmod(0o755)
        self._write_entry("chromium", "Chromium", self.browser_command,
                          "MimeType=x-scheme-handler/http;x-scheme-handler/https;\n")

    def write_profiles(self, loaded=()):
        """The browser's folder as new; it will load these profiles at its start, one page each."""
        shutil.rmtree(self.user_data, ignore_errors=True)
        self.user_data.mkdir(mode=0o700)
        (self.user_data / "First Run").touch()
        (self.user_data / "Local State").write_text(json.dumps({"profile": {
            "info_cache": {p.directory: {"name": p.name, "user_name": p.email} for p in PROFILES},
            "last_active_profiles": [p.directory for p in loaded],
            "last_used": loaded[0].directory if loaded else HOME.directory,
            "show_picker_on_startup": False}}))
        for profile in PROFILES:
            preferences = {"profile": {"name": profile.name},
                           "intl": {"selected_languages": profile.language,
                                    "accept_languages": profile.language}}
            if profile in loaded:
                preferences["session"] = {"restore_on_startup": 4,
                                          "startup_urls": [self.start_page(profile)]}
            (self.user_data / profile.directory).mkdir()
            (self.user_data / profile.directory / "Preferences").write_text(json.dumps(preferences))

    def start_page(self, profile):
        return self.server.link(f"/start/{profile.name}")

    def start_browser(self, loaded=(HOME, WORK, PLAY)):
        """Starts it with these profiles; its pid once each has fetched its page."""
        self.write_profiles(loaded)
        self.server.hits.clear()
        output = self.root / "chromium.log"
        with output.open("w") as file:
            self.processes.start([self.browser_command], cwd=self.root, stdout=file, stderr=file)
        try:
            wait_until(lambda: all(self.server.fetched(self.start_page(p)) for p in loaded), LONG,
                       "the start pages of the browser's profiles")
            if self.display:  # a page may be there before its window
                wait_until(lambda: len(self.display.windows(self.browser())) >= len(loaded), LONG,
                           "the windows of the browser's profiles")
        except AssertionError as error:
            raise RuntimeError(f"{error}\n{output.read_text(errors='replace')[-2000:]}") from None
        return self.browser()

    def browsers(self):
        """The pids of the browsers that run here, without their helper processes."""
        pids = self.processes.running(self.binary)

        def is_main(pid):
            with contextlib.suppress(OSError):
                parent = Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[1]
                line = Path(f"/proc/{pid}/cmdline").read_bytes()
                return int(parent) not in pids and b"--type=" not in line
        return list(filter(is_main, pids))

    def browser(self):
        pids = self.browsers()
        if len(pids) != 1:
            crashes = [path.name for path in self.user_data.glob("Crash Reports/*/*.dmp")]
            raise AssertionError(f"one browser expected, found {pids} among {self.processes.all()}; "
                                 f"its crashes: {crashes}; log:\n{self.log()[-1000:]}")
        return pids[0]

    def stop_browsers(self, number=signal.SIGTERM):
        """Its singleton links stay behind."""
        self.processes.end(self.browsers(), number)
        wait_until(lambda: not self.processes.running(self.binary), LONG, "end of the browser's helpers")

    def screenshot(self, path, window="root"):
        subprocess.run([program("import", "imagemagick"), "-window", window, path], env=self.env,
                       check=True, timeout=LONG)
