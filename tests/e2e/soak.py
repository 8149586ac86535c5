"""What the long runs have in common: what is said of each link, what the agent takes, a browser of their own."""

import contextlib
import os
import re
import shutil
import sys
import time
from datetime import datetime
from pathlib import Path

from processes import LONG

FULL = os.environ.get("SOAK") == "full"

_LINE = re.compile(r"(\S+ \S+) \[(\w+)\] (.*)")
_OPENED = re.compile(r"  (handed to running|launched) Chrome \(pid (\d+)\)(.*) \((\d+) ms\)")
# Seconds. The agent gives memory back after two without work; what it has open is closed after less.
_REST = 3 if FULL else 0.8


class Link:
    """One that was sent, and what became of it."""

    def __init__(self, text, profile):
        self.text, self.profile = text, profile
        self.sent = time.time()
        self.answer = None  # of the call: an error's name, empty when the link was taken
        self.outcome = None  # "socket", "relay", "launched" or "error", once the log has told
        self.told = 0.0  # when it did
        self.process = 0  # the browser that has it, as far as the agent knows
        self.milliseconds = 0
        self.remarks = []  # lines between the link's first and its last

    def __str__(self):
        return (f"{self.text}: answer {self.answer!r}, {self.outcome} by {self.process} "
                f"{self.told - self.sent:.3f} s after it was sent, {self.remarks}")


class Account:
    """Of every link, out of the log, which the agent writes in the order of its work."""

    def __init__(self, log_file):
        self._path, self._file = log_file, None
        self._part = b""
        self._current = None
        self.links = {}
        self.lines = 0
        self.others = []  # lines that belong to no link

    def add(self, text, profile):
        self.links[text] = link = Link(text, profile)
        return link

    def unfinished(self):
        return [link for link in self.links.values() if not link.outcome]

    def read(self):
        """What the log says since the last time, across its rotation."""
        while True:
            if self._file:
                self._take(self._file.read())
            try:
                info = os.stat(self._path)
            except FileNotFoundError:
                return
            if self._file:
                if os.path.samestat(info, os.fstat(self._file.fileno())):
                    return
                self._take(self._file.read())
                self._file.close()
            self._file = open(self._path, "rb")

    def close(self):
        if self._file:
            self._file.close()

    def _take(self, data):
        *lines, self._part = (self._part + data).split(b"\n")
        for line in lines:
            self._line(line.decode(errors="replace"))

    def _line(self, line):
        self.lines += 1
        stamp, level, text = _LINE.fullmatch(line).groups()
        link = self.links.get(text.partition(" from ")[0])
        opened = _OPENED.fullmatch(text)
        if link:
            assert not link.outcome and not self._current, f"{text} after {self._current}"
            self._current = link
        elif not self._current:
            self.others.append(text)
        elif opened or text.startswith("  Chrome launch failed: "):
            link, self._current = self._current, None
            link.told = datetime.strptime(stamp, "%Y-%m-%d %H:%M:%S.%f").timestamp()
            if opened:
                verb, process, how, milliseconds = opened.groups()
                link.process, link.milliseconds = int(process), int(milliseconds)
                link.outcome = ("launched" if verb == "launched" else
                                "socket" if how == " over its singleton socket" else "relay")
                if link.outcome == "relay":
                    link.remarks.append(how)
            else:
                link.outcome = "error"
                link.remarks.append(text)
        else:
            self._current.remarks.append(f"[{level}] {text}")


def is_of_living_process(descriptor):
    """Whether it, as a file below fdinfo, stands for a process: one is held for each browser that was started."""
    with contextlib.suppress(FileNotFoundError):
        return bool(re.search(r"^Pid:\s+[1-9]", descriptor.read_text(), re.MULTILINE))
    return False


class Vitals:
    """What a process takes, in kilobytes and numbers, once it has come to rest.

    It is given two minutes to have no more descriptors and threads than `before`, and hardly more memory.
    """

    def __init__(self, process, before=None):
        time.sleep(_REST)
        end = time.monotonic() + LONG
        while True:
            self._read(process)
            if not before or not self.has_more_than(before) or time.monotonic() > end:
                break
            time.sleep(0.1)

    def _read(self, process):
        self.descriptors = sum(not is_of_living_process(descriptor)
                               for descriptor in Path(f"/proc/{process}/fdinfo").iterdir())
        self.threads = len(os.listdir(f"/proc/{process}/task"))
        memory = Path(f"/proc/{process}/smaps_rollup").read_text()
        values = {name: int(value) for name, value in re.findall(r"(\w+): +(\d+) kB", memory)}
        self.resident, self.proportional = values["Rss"], values["Pss"]
        self.private = values["Private_Clean"] + values["Private_Dirty"]
        self.written = values["Private_Dirty"]

    def has_more_than(self, before):
        return (self.descriptors > before.descriptors or self.threads > before.threads
                or self.resident > before.resident + 1024)

    def __str__(self):
        return (f"RSS {self.resident}, PSS {self.proportional}, private {self.private}, written {self.written} KB, "
                f"{self.descriptors} descriptors, {self.threads} threads")


class OwnBrowser:
    """The desktop's browser with an executable of its own, which can be replaced.

    It calls itself by its pid to web servers.
    """

    def __init__(self, desktop):
        self._desktop, self._system = desktop, desktop.binary
        folder = desktop.root / "chromium"
        folder.mkdir()
        for path in self._system.parent.iterdir():
            if path != self._system:
                (folder / path.name).symlink_to(path)
        desktop.binary = folder / self._system.name
        self.update()
        desktop._register_browser()
        command = desktop.browser_command.read_text()
        desktop.browser_command.write_text(command.replace(
            ' "$@"', ' --user-agent="$$" --renderer-process-limit=4 --window-size=500,400 "$@"'))

    def update(self):
        """As an installation does it, whether the browser runs or not."""
        binary = self._desktop.binary
        new = binary.with_name("new")
        try:
            os.link(self._system, new)
        except OSError:
            shutil.copy(self._system, new)
        binary.unlink(missing_ok=True)  # one link to a file does not replace another
        new.rename(binary)


def quantiles(values, unit="ms"):
    values = sorted(values)
    if not values:
        return "none"
    def at(part):
        return values[min(len(values) - 1, int(part * len(values)))]
    return f"p50 {at(0.5):.1f}, p99 {at(0.99):.1f}, max {values[-1]:.1f} {unit}"


class Report:
    """Says every few seconds how far a run has come, and at its end what it has found."""

    def __init__(self):
        self.started = self._last = time.monotonic()

    def progress(self, text):
        now = time.monotonic()
        if now - self._last >= 5:
            self._last = now
            print(f"\n    {now - self.started:6.1f} s  {text()}", end="", file=sys.stderr, flush=True)

    def table(self, title, rows):
        print(f"\n    {title}, {time.monotonic() - self.started:.1f} s", file=sys.stderr)
        for name, value in rows:
            print(f"      {name:34} {value}", file=sys.stderr)
        sys.stderr.flush()
