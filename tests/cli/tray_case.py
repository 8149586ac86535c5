"""What the tests of the icon in the panel have in common: a panel's side of it."""

import ast
import os
import queue
import re
import signal
import subprocess
import threading
from typing import NamedTuple

from agent_case import LONG, AgentCase, wait_until

ITEM = ("/StatusNotifierItem", "org.kde.StatusNotifierItem")
MENU = ("/Menu", "com.canonical.dbusmenu")
PROPERTIES = "org.freedesktop.DBus.Properties"


class Answer(NamedTuple):
    error: str  # its name; empty when the call succeeded
    value: object  # of one result the value, of several a tuple


class Lines:
    """A child that is told lines and prints lines."""

    def __init__(self, case, *command):
        self.process = case.processes.start(command, env=case.env, stdin=subprocess.PIPE,
                                            stdout=subprocess.PIPE, text=True)
        self._lines = queue.Queue()
        self._reader = threading.Thread(target=self._read)
        self._reader.start()
        case.children.append(self)

    def _read(self):
        for line in self.process.stdout:
            self._lines.put(line.strip())

    def next(self, seconds=LONG):
        return self._lines.get(timeout=seconds)

    def nothing_for(self, seconds):
        try:
            return not self._lines.get(timeout=seconds)
        except queue.Empty:
            return True

    def tell(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()

    def end(self, number=None):
        if number:
            self.process.send_signal(number)
        if self.process.stdin and not self.process.stdin.closed:
            self.process.stdin.close()
        self.process.wait(LONG)
        self._reader.join()
        self.process.stdout.close()


class TrayCase(AgentCase):
    session = {"DISPLAY": ":97"}  # none is there; nothing is drawn

    def setUp(self):
        super().setUp()
        self.children = []
        self.write_rules()

    def tearDown(self):
        try:
            for child in self.children:
                child.end()
        finally:
            super().tearDown()

    def choose_icon(self, chosen="true"):
        path = self.root / "config/ferrivane/preferences.ini"
        path.write_text(f"[Preferences]\nshowMenuBarIcon={chosen}\n")
        return path

    # The panel.

    def start_watcher(self, *arguments):
        watcher = Lines(self, os.environ["WATCHER_STAND_IN"], *arguments)
        self.assertEqual(watcher.next(), "owned")
        return watcher

    def registered(self, watcher):
        """The icon's name on the bus, as the watcher was told."""
        return self.assert_said(watcher.next(), "registered")

    def assert_said(self, line, word):
        said, name = line.split()
        self.assertEqual(said, word)
        return name

    def call(self, icon, target, method, *arguments, interface=None):
        """Calls by the desktop's own tool; arguments in its notation."""
        ran = subprocess.run(
            ["gdbus", "call", "--address", self.bus.address, "--dest", icon, "--object-path", target[0],
             "--method", f"{interface or target[1]}.{method}", "--", *arguments],
            env=self.env, capture_output=True, text=True, timeout=LONG)
        if ran.returncode:
            found = re.search(r"GDBus\.Error:([\w.]+): ", ran.stderr)
            self.assertTrue(found, ran.stderr)
            return Answer(found[1], None)
        values = value_of(ran.stdout)
        return Answer("", values[0] if len(values) == 1 else values)

    def menu(self, icon, method, *arguments):
        return self.call(icon, MENU, method, *arguments)

    def click(self, icon, number, event="clicked"):
        return self.menu(icon, "Event", str(number), f"'{event}'", "<''>", "uint32 0")

    def property(self, icon, target, name):
        return self.call(icon, target, "Get", f"'{target[1]}'", f"'{name}'", interface=PROPERTIES).value

    def properties(self, icon, target):
        return self.call(icon, target, "GetAll", f"'{target[1]}'", interface=PROPERTIES).value

    def end_watcher(self, watcher, number=signal.SIGKILL):
        watcher.end(number)
        caller = self.caller()
        wait_until(lambda: not caller.owner("org.kde.StatusNotifierWatcher"), LONG, "end of the watcher")


def value_of(text):
    """What a text in the notation of GVariant stands for."""
    parts = re.split(r"""('(?:[^'\\]|\\.)*'|"(?:[^"\\]|\\.)*")""", text.strip())
    for index in range(0, len(parts), 2):
        part = re.sub(r"@[a-z(){}]+ |\b(byte|u?int\d+|objectpath) |[<>]", "", parts[index])
        parts[index] = re.sub(r"\b(true|false)\b", lambda word: word[0].title(), part)
    return ast.literal_eval("".join(parts))
