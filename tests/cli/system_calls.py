"""The system calls of a process and of all that it starts, each with the program that made it."""

import os
import re
from typing import NamedTuple

# The "?" stands before names that not every kind of processor has.
NETWORK = "socket,socketpair,connect,bind,listen,accept,accept4"
RINGS = "io_uring_setup,io_uring_enter,io_uring_register"
CHANGES = ("?mkdir,mkdirat,?mknod,mknodat,?rename,?renameat,renameat2,?link,linkat,?symlink,symlinkat,?unlink,"
           "unlinkat,?rmdir,truncate,?chmod,fchmodat,?chown,?lchown,fchownat")
PROCESSES = "execve,execveat,clone,clone3,?fork,?vfork"
_LINE = re.compile(r"(\d+) +(?:<\.\.\. )?(\w+)(?: resumed>|\()(.*)")
_UNFINISHED = "<unfinished ...>"


class Call(NamedTuple):
    program: str  # the executable of the process that made it
    name: str
    text: str  # arguments and result, as strace shows them

    @property
    def paths(self):
        return re.findall(r'"((?:[^"\\]|\\.)*)"', self.text)

    @property
    def changes_files(self):
        """Whether it could, had it succeeded."""
        if self.name in ("open", "openat", "openat2"):
            return bool(re.search(r"O_(WRONLY|RDWR|CREAT|TRUNC)", self.text))
        return self.name == "creat" or self.name in CHANGES.replace("?", "").split(",")


def strace(file):
    """To be put before a command, which keeps its pid. The file is whole when strace has ended."""
    calls = f"{NETWORK},{RINGS},?open,openat,?openat2,?creat,{CHANGES},{PROCESSES}"
    return ["strace", "-D", "-f", "-qq", "-s", "4096", "-e", "signal=none", "-e", f"trace={calls}", "-o", file]


def read(file):
    """The calls in their order. A process is its parent's program until it starts one of its own."""
    text = file.read_text(errors="surrogateescape")
    lines = [match.groups() for match in map(_LINE.match, text.splitlines()) if match]
    parents = {}
    for process, name, text in lines:
        child = re.search(r" = (\d+)$", text)
        if child and name in ("clone", "clone3", "fork", "vfork"):
            parents[child[1]] = process
    programs, begun, calls = {}, {}, []
    for process, name, text in lines:
        programs.setdefault(process, programs.get(parents.get(process), ""))
        if text.endswith(_UNFINISHED):
            begun[process] = text.removesuffix(_UNFINISHED)
            continue
        call = Call(programs[process], name, begun.pop(process, "") + text)
        calls.append(call)
        if name == "execve" and text.endswith(" = 0"):
            programs[process] = os.path.realpath(call.paths[0])
    return calls
