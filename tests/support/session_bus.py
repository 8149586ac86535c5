"""A session's message bus of its own, which starts nothing but what a test installs, and its callers."""

import os
import signal
import socket
import struct
import subprocess
from pathlib import Path
from typing import NamedTuple

from processes import LONG, wait_until

APPLICATION = "com.hollowmere.ferrivane"
_DESCRIPTIONS = Path(__file__).resolve().parents[2] / "resources"
# As large as those of a real session.
_LIMITS = {"max_incoming_bytes": 10**9, "max_outgoing_bytes": 10**9, "max_message_size": 10**9,
           "max_completed_connections": 10**5, "max_connections_per_user": 10**5,
           "max_replies_per_connection": 5 * 10**4, "max_pending_service_starts": 10**4,
           "service_start_timeout": 30_000}


class SessionBus:
    """Not running until it is started. All its files lie below `folder`."""

    def __init__(self, processes, folder):
        self.processes, self.path = processes, folder / "socket"
        self.address = f"unix:path={self.path}"
        self.daemon = None
        self._services, self._config = folder / "services", folder / "bus.conf"
        self._services.mkdir(parents=True)
        limits = "".join(f'<limit name="{name}">{value}</limit>' for name, value in _LIMITS.items())
        self._config.write_text(
            f"<busconfig><type>session</type><listen>{self.address}</listen>"
            f"<servicedir>{self._services}</servicedir>{limits}<policy context='default'>"
            "<allow send_destination='*'/><allow receive_sender='*'/><allow own='*'/></policy></busconfig>\n")

    def start(self):
        self.path.unlink(missing_ok=True)
        # It ends with its parent, also one that is killed.
        self.daemon = self.processes.start(
            ["setpriv", "--pdeathsig", "TERM", "dbus-daemon", f"--config-file={self._config}", "--nofork"],
            env=self.processes.env | {"DBUS_SESSION_BUS_ADDRESS": self.address},
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_until(self._listens, LONG, "a bus")

    def _listens(self):
        with socket.socket(socket.AF_UNIX) as probe:
            return probe.connect_ex(str(self.path)) == 0

    def stop(self, number=signal.SIGTERM):
        self.daemon.send_signal(number)
        self.daemon.wait(LONG)

    def install(self, ferrivane):
        """The bus starts this program when somebody calls the application."""
        write_description(f"{APPLICATION}.service", self._services, ferrivane)

    def install_accessibility(self):
        """It also starts the bus of assistive programs, as a desktop's does."""
        name = "org.a11y.Bus.service"
        text = Path("/usr/share/dbus-1/services", name).read_text()
        # The person's settings are not asked, but their schemas must be there.
        settings = "/usr/bin/env GSETTINGS_BACKEND=memory XDG_DATA_DIRS=/usr/local/share:/usr/share"
        (self._services / name).write_text(text.replace("Exec=", f"Exec={settings} "))

    def connect(self):
        return Caller(self.path)


def write_description(name, folder, ferrivane):
    """One of the files by which the desktop knows Ferrivane, made for the program of this path."""
    text = (_DESCRIPTIONS / f"{name}.in").read_text().replace("@FERRIVANE_PROGRAM@", str(ferrivane))
    (folder / name).write_text(text)


class Reply(NamedTuple):
    error: str  # its name; empty when the call succeeded
    body: bytes


class Caller:
    """A connection to a bus; it writes its messages itself, so they can be many, large or wrong."""

    def __init__(self, path):
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.settimeout(60)
        self._socket.connect(str(path))
        self._socket.sendall(b"\0AUTH EXTERNAL " + str(os.getuid()).encode().hex().encode() + b"\r\n")
        assert self._socket.recv(200).startswith(b"OK ")
        self._socket.sendall(b"BEGIN\r\n")
        self._serial, self._buffer, self._replies = 0, bytearray(), {}
        self.bus_call("Hello")

    def close(self):
        self._socket.close()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def send(self, member, signature="", *values, to=APPLICATION, path=None, interface=None, flags=0):
        """Sends a call; its number, by which the reply is asked for."""
        self._serial += 1
        path = path or "/" + to.replace(".", "/")
        body = _marshal_all(signature, values)
        fields = [(1, "o", path), (2, "s", interface or "org.freedesktop.Application"), (3, "s", member),
                  (6, "s", to)] + ([(8, "g", signature)] if signature else [])
        head = bytearray(struct.pack("<BBBBII", ord("l"), 1, flags, 1, len(body), self._serial))
        array = bytearray()
        for code, kind, value in fields:
            _pad(array, 8)
            array.append(code)
            _marshal("g", kind, array)
            _marshal(kind, value, array)
        head += struct.pack("<I", len(array)) + array
        _pad(head, 8)
        self._socket.sendall(head + body)
        return self._serial

    def reply(self, number):
        while number not in self._replies:
            self._receive()
        return self._replies.pop(number)

    def call(self, *arguments, **options):
        return self.reply(self.send(*arguments, **options))

    def bus_call(self, member, signature="", *values):
        name = "org.freedesktop.DBus"
        return self.call(member, signature, *values, to=name, path="/org/freedesktop/DBus", interface=name)

    def owner(self, name=APPLICATION):
        """The pid of the process that owns the name; none when nobody does."""
        reply = self.bus_call("GetConnectionUnixProcessID", "s", name)
        return None if reply.error else struct.unpack("<I", reply.body)[0]

    # Calls on the application.

    def send_open(self, *links, **data):
        """Platform data as keywords, with "_" for "-"."""
        return self.send("Open", "asa{sv}", links, _platform_data(data))

    def open(self, *links, **data):
        return self.reply(self.send_open(*links, **data))

    def activate(self):
        return self.call("Activate", "a{sv}", {})

    def action(self, name):
        return self.call("ActivateAction", "sava{sv}", name, [], {})

    def _receive(self):
        head = self._read(16)
        size, serial, fields_size = struct.unpack("<4xIII", head)
        rest = self._read(fields_size + -fields_size % 8 + size)
        fields, body = rest[:fields_size], rest[len(rest) - size:]
        kind, number, error = head[1], None, ""
        at = 0
        while at < len(fields):
            at += -at % 8
            code, signature = fields[at], fields[at + 2:at + 3]
            at += 4
            if signature == b"u":
                at += -at % 4
                if code == 5:
                    number = struct.unpack_from("<I", fields, at)[0]
                at += 4
            elif signature == b"g":
                at += fields[at] + 2
            else:
                at += -at % 4
                length = struct.unpack_from("<I", fields, at)[0]
                if code == 4:
                    error = fields[at + 4:at + 4 + length].decode()
                at += length + 5
        if kind in (2, 3):
            self._replies[number] = Reply(error, bytes(body))

    def _read(self, size):
        while len(self._buffer) < size:
            part = self._socket.recv(1 << 16)
            if not part:
                raise ConnectionError("the bus has hung up")
            self._buffer += part
        data = bytes(self._buffer[:size])
        del self._buffer[:size]
        return data


def _platform_data(data):
    return {key.replace("_", "-"): ("s", value) for key, value in data.items()}


def _pad(out, alignment):
    out += b"\0" * (-len(out) % alignment)


def _first_type(signature):
    """How many characters of the signature the first complete type takes."""
    if signature[0] == "a":
        return 1 + _first_type(signature[1:])
    if signature[0] == "{":
        return signature.index("}") + 1
    return 1


def _marshal_all(signature, values):
    out = bytearray()
    for value in values:
        length = _first_type(signature)
        _marshal(signature[:length], value, out)
        signature = signature[length:]
    return out


def _marshal(kind, value, out):
    if kind in ("s", "o"):
        text = value if isinstance(value, bytes) else value.encode()
        _pad(out, 4)
        out += struct.pack("<I", len(text)) + text + b"\0"
    elif kind == "g":
        out += bytes([len(value)]) + value.encode() + b"\0"
    elif kind in ("i", "u"):
        _pad(out, 4)
        out += struct.pack("<i" if kind == "i" else "<I", value)
    elif kind == "v":
        _marshal("g", value[0], out)
        _marshal(value[0], value[1], out)
    elif kind[0] == "a":
        _pad(out, 4)
        place = len(out)
        out += b"\0\0\0\0"
        if kind[1] == "{":
            _pad(out, 8)
        start = len(out)
        for item in value:
            if kind[1] == "{":
                _pad(out, 8)
                _marshal(kind[2], item, out)
                _marshal(kind[3:-1], value[item], out)
            else:
                _marshal(kind[1:], item, out)
        struct.pack_into("<I", out, place, len(out) - start)
    else:
        raise ValueError(kind)
