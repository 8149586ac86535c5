"""A private X server with a window manager, and the windows on it as others see them."""

import os
import shutil
import signal
import subprocess
from pathlib import Path

from processes import LONG, wait_until


def program(name, package):
    path = shutil.which(name)
    if not path:
        raise RuntimeError(f"{name} is missing; Debian has it in the package {package}")
    return path


class Display:
    """Running once it is made, as the processes' other children are, and with them it ends."""

    def __init__(self, processes, size="1024x768"):
        self._processes = processes
        server, manager = program("Xvfb", "xvfb"), program("openbox", "openbox")
        reading, writing = os.pipe()
        silent = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        # With its parent gone the server ends, and with the server all who draw on it.
        self._server = processes.start(
            [program("setpriv", "util-linux"), "--pdeathsig", "TERM", server, "-displayfd", str(writing),
             "-screen", "0", size + "x24", "-nolisten", "tcp", "-noreset"], pass_fds=[writing], **silent)
        os.close(writing)
        with os.fdopen(reading) as pipe:
            number = pipe.readline().strip()
        if not number:
            raise RuntimeError("Xvfb did not start")
        self.name, self.socket = f":{number}", f"/tmp/.X11-unix/X{number}"
        themes = {"XDG_DATA_DIRS": "/usr/local/share:/usr/share"}  # it does not work without
        self._manager = processes.start([manager], env=self._env() | themes, **silent)
        # A window that comes before the manager is ready may never be shown.
        wait_until(lambda: self._xdotool("get_desktop").returncode == 0, LONG, "a window manager")

    def _env(self):
        return self._processes.env | {"DISPLAY": self.name}

    def _xdotool(self, *arguments):
        return subprocess.run([program("xdotool", "xdotool"), *arguments], env=self._env(), text=True,
                              capture_output=True, timeout=LONG)

    def end(self):
        """Whoever still draws on it loses it."""
        self._processes.end([self._server.pid])
        self._manager.wait(LONG)

    def stop_answering(self):
        """It goes on taking connections."""
        self._server.send_signal(signal.SIGSTOP)

    def kill(self):
        self._processes.end([self._server.pid], signal.SIGKILL)
        self._manager.wait(LONG)
        Path(self.socket).unlink()

    def windows(self, process):
        """The visible windows of a process that have a name, as xdotool numbers them."""
        return self._xdotool("search", "--all", "--onlyvisible", "--pid", str(process), "--name", ".").stdout.split()

    def name_of(self, window):
        return self._xdotool("getwindowname", window).stdout.strip()

    def active(self):
        """The window that keys go to; empty when there is none."""
        return self._xdotool("getactivewindow").stdout.strip()

    def minimise(self, window):
        self._xdotool("windowminimize", window)

    def press(self, *keys):
        """In the active window; keys by their names, as in "ctrl+w"."""
        self._xdotool("key", *keys)
