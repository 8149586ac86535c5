#!/usr/bin/env python3
"""Whole processes against their references, alternating in one run.

The commands against a program that prints one line. A link handed to a running Chromium against
Chromium's own second instance with the same link, from three senders: this script, an application
whose desktop entry is named like its program, and a program that no entry knows, so that every entry
is looked at. A sender takes time of its own to start Ferrivane; that is measured too and taken off.
"""

import os
import shlex
import shutil
import statistics
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tests" / "support"))
from desktop import Desktop, HOME, WORK  # noqa: E402

RUNS = 30


def milliseconds(command, env):
    start = time.perf_counter()
    null = [(os.POSIX_SPAWN_OPEN, stream, "/dev/null", os.O_RDWR, 0) for stream in (0, 1, 2)]
    pid = os.posix_spawn(command[0], [str(word) for word in command], env, file_actions=null)
    status = os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1])
    elapsed = (time.perf_counter() - start) * 1000
    if status != 0:
        sys.exit(f"{command} ended with status {status}")
    return elapsed


def alternate(commands, env, pause):
    """Command by command, round by round; the first round only warms up."""
    times = {name: [] for name in commands}
    for run in range(RUNS + 1):
        for name, command in commands.items():
            elapsed = milliseconds(command, env)
            if run:
                times[name].append(elapsed)
            time.sleep(pause)
    return times


def show(name, values, remark):
    print(f"  {name:36} median {statistics.median(values):7.2f} ms  {remark}")
    print("    " + " ".join(f"{value:.1f}" for value in values))


def commands(desktop, build):
    print(f"Commands against a minimal program, {RUNS} runs each")
    reference = "a program that prints one line"
    times = alternate({
        reference: [build / "bench/minimal"],
        "Ferrivane --help": [desktop.ferrivane, "--help"],
        "Ferrivane --test": [desktop.ferrivane, "--test", "https://work.example/"],
    }, desktop.env, 0.01)
    base = statistics.median(times[reference])
    for name, values in times.items():
        show(name, values, f"{statistics.median(values) / base:.2f} times as long")


def links(desktop):
    desktop.start_browser((HOME, WORK))
    link = "about:blank"  # a page would keep Chromium busy long after, and it answers nobody meanwhile
    known = desktop.add_application("Chat")
    unknown = shutil.copy(desktop.sender, desktop.root / "apps/stranger")
    switches = shlex.split(desktop.browser_command.read_text().splitlines()[1])[1:-1]
    print(f"\nA link to a running Chromium, {RUNS} runs each")
    relay, alone = "Chromium's own second instance", "a sender that opens no link"
    times = alternate({
        relay: [*switches, f"--profile-directory={HOME.directory}", link],
        "Ferrivane, sent by this script": [desktop.ferrivane, link],
        alone: [known, "/bin/true"],
        "Ferrivane, sent by a known program": [known, desktop.ferrivane, link],
        "Ferrivane, by an unknown program": [unknown, desktop.ferrivane, link],
    }, desktop.env, 0.7)  # until Chromium has finished with the tab
    base = statistics.median(times[relay])
    true = statistics.median([milliseconds(["/bin/true"], desktop.env) for _ in range(RUNS)])
    sender = statistics.median(times[alone]) - true
    for name, values in times.items():
        through = "program" in name
        taken = statistics.median(values) - (sender if through else 0)
        remark = f"{base / taken:.1f} times as fast" if name.startswith("Ferrivane") else ""
        show(name, values, remark + (f" (without the sender's {sender:.2f} ms)" if through else ""))


def main():
    build = Path(sys.argv[1]).resolve()
    with Desktop(build / "Ferrivane", build / "tests/support/sender") as desktop:
        desktop.write_rules(("host", "work.example", WORK.name))
        desktop.write_profiles()
        commands(desktop, build)
        links(desktop)


if __name__ == "__main__":
    main()
