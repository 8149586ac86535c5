"""A system to install packages into that nobody else sees, gone when its last process ends.

In a mount namespace of its own /usr, /etc and /var are as they are, but what is written to them goes to
memory. Processes have a namespace too: whatever was started ends with the command.

    status = scratch_root.run(["dpkg", "-i", package])

or, for a whole test program, first of all:

    scratch_root.enter()

It takes root, or a sudo that asks for no password; the command runs as root. A user namespace would not
do: the files of root are nobody's there, and dpkg can write to none.
"""

import contextlib
import ctypes
import os
import shutil
import signal
import stat
import subprocess
import sys
from pathlib import Path

FOLDERS = ("usr", "etc", "var")
MEMORY = Path("/var/ferrivane-scratch")  # seen inside only


def run(command, **options):
    """Runs a command in there; its exit status. Options are those of subprocess.Popen."""
    env = options.pop("env", os.environ)
    inside = ["unshare", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc",
              sys.executable, __file__, *map(str, command)]
    child = subprocess.Popen([*as_root(env), *inside], env=env, preexec_fn=_end_with_parent, **options)
    try:
        return child.wait()
    finally:
        with contextlib.suppress(OSError):  # not ours to end when sudo runs it
            child.kill()
        child.wait()


def enter():
    """Starts this program again in there; returns in the second one."""
    if not is_inside():
        sys.exit(run([sys.executable, *sys.argv]))


def is_inside():
    return MEMORY.is_mount()


def written():
    """The files, no folders, that are there and were written since the beginning."""
    upper = MEMORY / "upper"
    return {Path("/", path.relative_to(upper)) for path in upper.rglob("*")
            if not path.is_dir() and not _is_whiteout(path)}


def _is_whiteout(path):
    """Whether it stands for a file that was removed."""
    found = path.lstat()
    return stat.S_ISCHR(found.st_mode) and found.st_rdev == 0


def as_root(env):
    """What to put before a command so that root runs it, with these variables."""
    if os.geteuid() == 0:
        return []
    if shutil.which("sudo") and subprocess.run(["sudo", "-n", "true"], capture_output=True).returncode == 0:
        # sudo itself passes few variables on.
        return ["sudo", "-n", "env", *(f"{name}={value}" for name, value in env.items())]
    raise RuntimeError("a private view of /usr, /etc and /var takes root: run this as root, or with "
                       "a sudo that asks for no password")


def _end_with_parent():
    ctypes.CDLL(None).prctl(1, signal.SIGKILL, 0, 0, 0)  # PR_SET_PDEATHSIG


def _mount(*arguments):
    command = ["mount", *map(str, arguments)]
    result = subprocess.run(command, capture_output=True, text=True)
    if result.returncode != 0:
        sys.exit(f"scratch_root: {' '.join(command)}: {result.stderr.strip()}\n"
                 "scratch_root: this system lets root mount nothing, not even for itself")


def _keep_mounted_files(folder, upper):
    """A view of a folder does not show what is mounted in it, as containers do with /etc/hosts."""
    mounts = [Path(line.split()[4]) for line in Path("/proc/self/mountinfo").read_text().splitlines()]
    for path in mounts:
        if path.is_relative_to(folder) and path.is_file():
            copy = upper / path.relative_to(folder)
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(path, copy)


def _main(*command):
    # Under a folder that every system has, to begin with: so none is made that could stay.
    start = Path("/mnt")
    _mount("-t", "tmpfs", "-o", "mode=755", "ferrivane", start)
    for name in FOLDERS:
        upper, work = start / "upper" / name, start / "work" / name
        upper.mkdir(parents=True)
        work.mkdir(parents=True)
        _keep_mounted_files(Path("/", name), upper)
        _mount("-t", "overlay", "-o", f"lowerdir=/{name},upperdir={upper},workdir={work}", "ferrivane",
               f"/{name}")
    MEMORY.mkdir()
    _mount("--move", start, MEMORY)
    os.environ["PATH"] += ":/usr/sbin:/sbin"  # dpkg insists; not everybody has them
    os.execvp(command[0], command)


if __name__ == "__main__":
    _main(*sys.argv[1:])
