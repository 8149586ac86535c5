#!/usr/bin/env python3
"""Interrupts a hand-over to the browser at every system call it makes, by errors and by a kill.

    exchange_faults.py FAULT_PROBE

The browser gets the message once and whole or not at all; it counts as opened only when the browser has
it and its answer came; no descriptor stays open.
"""

import contextlib
import socket
import sys
import tempfile
import threading
from pathlib import Path

from faults import INTERRUPTED, KILL, Probe, expect_calls, finish, under_fire

LONGEST_MESSAGE = 32768
END = b"end of the test"
LINK = "https://a.example/" + "x" * 32000
ENDING = f"\0/opt/browser\0{LINK}".encode()
COOKIE = "1"

probe = Probe(sys.argv[1])


class Browser:
    """Listens, and takes what its first read brings for the whole message, as some browsers do."""

    def __init__(self, root):
        self.folder = Path(tempfile.mkdtemp(dir=root))
        self.messages, self.answered = [], 0
        (self.folder / "s").mkdir(mode=0o700)
        self._path = str(self.folder / "s/socket")
        self._listener = socket.socket(socket.AF_UNIX)
        self._listener.bind(self._path)
        self._listener.listen(5)
        (self.folder / "s/SingletonCookie").symlink_to(COOKIE)
        (self.folder / "SingletonCookie").symlink_to(COOKIE)
        (self.folder / "SingletonSocket").symlink_to(self._path)
        self._thread = threading.Thread(target=self._serve)
        self._thread.start()

    def _serve(self):
        while True:
            with self._listener.accept()[0] as connection, contextlib.suppress(ConnectionError):
                connection.settimeout(20)
                message = connection.recv(LONGEST_MESSAGE)
                if message == END:
                    return
                if message:
                    self.messages.append(message)
                    connection.sendall(b"ACK")
                    self.answered += 1
                    self.messages[-1] += connection.recv(LONGEST_MESSAGE)  # more than a message?

    def close(self):
        """Once everything that was sent has been read."""
        with socket.socket(socket.AF_UNIX) as connection:
            connection.connect(self._path)
            connection.sendall(END)
        self._thread.join()
        self._listener.close()


def attempt(root, call, number, fault):
    browser = Browser(root)
    try:
        result = probe.run_with_fault(call, number, fault, "hand-over", browser.folder, LINK)
    finally:
        browser.close()
    if len(browser.messages) > 1:
        return f"{len(browser.messages)} messages"
    for message in browser.messages:
        if not message.startswith(b"START\0") or not message.endswith(ENDING):
            return f"a message of {len(message)} bytes, not the one that was sent"
        if message.count(b"\0") != 3:
            return "a message with more in it"
    if fault == KILL:
        return None
    if result.returncode not in (0, 1):
        return f"status {result.returncode}: {result.stderr[:500]}"
    if result.returncode == 0 and browser.answered != 1:
        return "handed over, though no answer came"
    if result.returncode == 1 and not result.stderr.strip():
        return "an error without a description"
    if call in ("connect", "sendto", "read") and (result.returncode == 0) != (fault == INTERRUPTED):
        return f"status {result.returncode}: {result.stderr}"
    if call != "close" and result.stdout != "0 descriptors left open\n":
        return result.stdout
    return None


def main():
    with tempfile.TemporaryDirectory(prefix="fv-", dir="/tmp") as root:
        browser = Browser(root)
        try:
            calls = probe.calls("hand-over", browser.folder, LINK)
        finally:
            browser.close()
        expect_calls(calls, "readlink", "socket", "connect", "sendto", "shutdown", "read", "close")
        failures = under_fire("hand-over", calls, lambda *fault: attempt(root, *fault))
    return finish(failures)


sys.exit(main())
