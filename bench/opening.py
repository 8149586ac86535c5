#!/usr/bin/env python3
"""From the wish for the settings to the painted window, against a minimal program with a window.

    opening.py BUILD_FOLDER

On a display with a window manager, with 200 rules. First by an agent that has shown nothing yet,
then, after the window was closed, by one that has.
"""

import os
import subprocess
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tests" / "support"))
from desktop import Desktop, program, wait_until  # noqa: E402
from table import row, runs  # noqa: E402

RUNS = runs(12)


class Opening:
    def __init__(self, desktop, build):
        self.desktop, self.build = desktop, build

    def ask(self, *command):
        return subprocess.run(command, env=self.desktop.env, capture_output=True, timeout=20, text=True).stdout

    def seconds(self, wish):
        watcher = subprocess.Popen([self.build / "bench/painted"], env=self.desktop.env,
                                   stdout=subprocess.PIPE, text=True)
        watcher.stdout.readline()
        time.sleep(0.2)
        start = time.monotonic_ns()
        wish()
        end = int(watcher.stdout.readline())
        watcher.wait()
        return (end - start) / 1e9

    def no_window(self):
        wait_until(lambda: not self.ask(program("xdotool", "xdotool"), "search", "--onlyvisible", "--name",
                                        "errivane|minimal_window").strip(), 10, "end of the window")
        time.sleep(0.2)

    def minimal(self):
        child = None

        def start():
            nonlocal child
            child = self.desktop.processes.start([self.build / "bench/minimal_window"])
        taken = self.seconds(start)
        self.desktop.processes.end([child.pid])
        self.no_window()
        return taken

    def by_agent(self):
        """The first time and the second."""
        agent = self.desktop.processes.start([self.program, "--agent"])
        with self.desktop.bus.connect() as caller:
            wait_until(lambda: caller.owner() == agent.pid, 10, "an agent")
            time.sleep(0.5)
            taken = []
            for _ in range(2):
                taken.append(self.seconds(caller.activate))
                time.sleep(0.5)
                self.ask(program("xdotool", "xdotool"), "key", "ctrl+w")
                self.no_window()
            self.desktop.processes.end([agent.pid])
            wait_until(lambda: not caller.owner(), 10, "its end")
        return taken

    def run(self):
        self.desktop.start_bus()
        self.program = self.desktop.install()
        self.desktop.write_profiles()
        self.desktop.write_rules(*[("host", f"host{i}.example", "Work") for i in range(200)])
        times = {"a minimal program with a window": [],
                 "by an agent that has shown nothing yet": [],
                 "by the same agent, once more": []}
        for _ in range(RUNS):
            rounds = [self.minimal(), *self.by_agent()]
            for values, taken in zip(times.values(), rounds):
                values.append(taken * 1000)
        (reference, base), *others = times.items()
        for what, values in others:
            row("The settings, from the wish to the painted window", f"200 rules, {what}", "ms", values,
                reference, base)


def main():
    build = Path(sys.argv[1]).resolve()
    os.environ.pop("DISPLAY", None)
    with Desktop(build / "Ferrivane", build / "tests/support/sender", size="1200x900") as desktop:
        Opening(desktop, build).run()


if __name__ == "__main__":
    main()
