#!/usr/bin/env python3
"""Whole processes against their references, in turns.

    whole_process.py BUILD_FOLDER commands|links

The commands against a program that prints one line. A link handed to a running Chromium against
Chromium's own second instance with the same link, from three senders: this script, a program with a
desktop entry of another name, and a program that no entry knows. A sender takes time of its own to
start Ferrivane; that is measured too and taken off.
"""

import os
import shlex
import shutil
import statistics
import subprocess
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tests" / "support"))
from desktop import Desktop, HOME, WORK  # noqa: E402
from table import row, runs  # noqa: E402


def milliseconds(command, env):
    start = time.perf_counter()
    null = [(os.POSIX_SPAWN_OPEN, stream, "/dev/null", os.O_RDWR, 0) for stream in (0, 1, 2)]
    pid = os.posix_spawn(command[0], [str(word) for word in command], env, file_actions=null)
    status = os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1])
    elapsed = (time.perf_counter() - start) * 1000
    if status != 0:
        sys.exit(f"{command} ended with status {status}")
    return elapsed


def alternate(commands, env, rounds, pause):
    """Command by command, round by round; the first round only warms up."""
    times = {name: [] for name in commands}
    for number in range(rounds + 1):
        for name, command in commands.items():
            elapsed = milliseconds(command, env)
            if number:
                times[name].append(elapsed)
            time.sleep(pause)
    return times


def commands(desktop, build):
    desktop.start_bus()
    program = desktop.install()
    reference = "program that prints one line"
    times = alternate({
        reference: [build / "bench/minimal"],
        "--help": [program, "--help"],
        "--test https://work.example/": [program, "--test", "https://work.example/"],
        "--status": [program, "--status"],
        "--set-default": [program, "--set-default"],
    }, desktop.env, runs(50), 0.01)
    base = times.pop(reference)
    for name, values in times.items():
        row("The commands", f"Ferrivane {name}", "ms", values, reference, base)


def links(desktop):
    desktop.start_browser((HOME, WORK))
    link = "about:blank"  # a page would keep Chromium busy long after, and it answers nobody meanwhile
    known = desktop.add_application("Chat")
    unknown = shutil.copy(desktop.sender, desktop.root / "apps/stranger")
    switches = shlex.split(desktop.browser_command.read_text().splitlines()[1])[1:-1]
    relay, alone = "Chromium's own second instance", "a sender that opens no link"
    times = alternate({
        relay: [*switches, f"--profile-directory={HOME.directory}", link],
        alone: [known, "/bin/true"],
        "by this script": [desktop.ferrivane, link],
        "by a program with an entry of another name": [known, desktop.ferrivane, link],
        "by a program that no entry knows": [unknown, desktop.ferrivane, link],
    }, desktop.env, runs(20), 0.5)  # until Chromium has finished with the tab
    base, senders = times.pop(relay), times.pop(alone)
    true = [milliseconds(["/bin/true"], desktop.env) for _ in range(20)]
    sender = statistics.median(senders) - statistics.median(true)
    for name, values in times.items():
        if "program" in name:
            values = [value - sender for value in values]
        row("A link to a running Chromium", f"sent {name}, until the command has ended", "ms", values, relay, base)


def main():
    build, part = Path(sys.argv[1]).resolve(), sys.argv[2]
    with Desktop(build / "Ferrivane", build / "tests/support/sender") as desktop:
        subprocess.run([build / "bench/entries", desktop.root / "system/applications"], check=True)
        rules = [("host", f"client-{number}.example", WORK.name) for number in range(199)]
        desktop.write_rules(*rules, ("host", "work.example", WORK.name))
        desktop.write_profiles()
        commands(desktop, build) if part == "commands" else links(desktop)


if __name__ == "__main__":
    main()
