"""Child processes, theirs, and waiting for things to happen."""

import contextlib
import ctypes
import os
import signal
import subprocess
import time
from pathlib import Path


LONG = 120  # seconds, for what never takes long unless something is broken


def wait_until(condition, seconds, what):
    """The first true value of `condition`; an error that names `what` when none came in time."""
    end = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"not within {seconds} s: {what}")
        time.sleep(0.01)


def shorten(text, length=300):
    """For messages: what is left out of a long text is counted."""
    text = str(text)
    return text if len(text) <= length else f"{text[:length]}… ({len(text)} characters)"


def _process_table():
    """Parent and state of every process, by pid."""
    while True:
        table = {}
        for entry in filter(str.isdigit, os.listdir("/proc")):
            with contextlib.suppress(OSError):
                state, parent = Path("/proc", entry, "stat").read_text().rpartition(")")[2].split()[:2]
                table[int(entry)] = int(parent), state
        # A parent that ended while this was read would hide its children.
        if all(parent in table or parent == 0 for parent, _ in table.values()):
            return table


class Processes:
    """Everything started here, and what that started: orphans come to us, so none gets lost."""

    def __init__(self, env):
        self.env = env
        self._own = {}
        ctypes.CDLL(None).prctl(36, 1, 0, 0, 0)  # PR_SET_CHILD_SUBREAPER

    def start(self, command, **options):
        # In a session of its own: Ctrl-C reaches us alone, and we end it in good order.
        options.setdefault("stdin", subprocess.DEVNULL)
        child = subprocess.Popen(command, **{"env": self.env, "start_new_session": True, **options})
        self._own[child.pid] = child
        return child

    def all(self):
        """The pids of our living descendants. Collects orphans that have ended on the way."""
        table = _process_table()
        ours, found = {os.getpid()}, [0]
        while found:
            found = [pid for pid, (parent, _) in table.items() if parent in ours and pid not in ours]
            ours.update(found)
        for pid in [pid for pid in ours if table.get(pid, (0, ""))[1] == "Z"]:
            ours.remove(pid)
            if pid in self._own:
                self._own[pid].poll()
            elif table[pid][0] == os.getpid():
                with contextlib.suppress(ChildProcessError):
                    os.waitpid(pid, os.WNOHANG)
        return ours - {os.getpid()}

    def running(self, executable):
        """Those of them that run this executable, or the one that was replaced by it."""
        def runs(pid):
            with contextlib.suppress(OSError):
                return os.readlink(f"/proc/{pid}/exe").removesuffix(" (deleted)") == str(executable)
        return sorted(filter(runs, self.all()))

    def end(self, pids, number=signal.SIGTERM, seconds=LONG):
        pids = set(pids)
        for pid in pids:
            with contextlib.suppress(ProcessLookupError):
                os.kill(pid, number)
        wait_until(lambda: not pids & self.all(), seconds, f"end of the processes {pids}")

    def end_all(self):
        for number in (signal.SIGTERM, signal.SIGKILL, signal.SIGKILL):
            with contextlib.suppress(AssertionError):
                self.end(self.all(), number, 3)
