"""What the tests under fire have in common: a program whose system calls fail, one at a time.

The program is fault_probe. What it does between its two marks is traced once; then it does it again and
again, and each time one of those calls fails, or is the last one before the process is killed.

Every call meets EINTR, a kill and one of the other errors, another one from call to call; with FAULTS=all
in the environment it meets them all.
"""

import os
import re
import signal
import subprocess
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ERRORS = ("ENOSPC", "EIO", "EACCES", "EROFS", "EDQUOT", "EMFILE", "ENOMEM")
INTERRUPTED, KILL = "error=EINTR", "signal=SIGKILL"
EVERYTHING = os.environ.get("FAULTS") == "all"
# What the allocator and the libraries do on their own account.
NOT_OF_THE_WORK = {"brk", "mmap", "munmap", "mprotect", "madvise", "mremap", "futex", "getrandom",
                   "rt_sigprocmask", "sched_yield", "prctl", "sigaltstack"}
LONG = 60  # seconds, for what never takes long unless something hangs


class Probe:
    """fault_probe, given its path."""

    def __init__(self, program):
        self.program = str(Path(program).resolve())
        # The leak checker cannot work in a traced process.
        self.environment = {**os.environ, "ASAN_OPTIONS": "detect_leaks=0"}

    def run(self, *arguments, before=()):
        command = [*before, self.program, *map(str, arguments)]
        with subprocess.Popen(command, env=self.environment, text=True, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, start_new_session=True) as child:
            try:
                out, err = child.communicate(timeout=LONG)
            except subprocess.TimeoutExpired:
                os.killpg(child.pid, signal.SIGKILL)  # strace, and what it traces
                raise AssertionError(f"still running after {LONG} s: {command}") from None
        return subprocess.CompletedProcess(command, child.returncode, out, err)

    def run_with_fault(self, call, number, fault, *arguments):
        # The quicker way knows errors only.
        options = [] if fault == KILL else ["--seccomp-bpf"]
        with tempfile.NamedTemporaryFile() as trace:
            result = self.run(*arguments, before=[
                "strace", "-f", *options, "-o", trace.name, "-e", f"trace={call}",
                "-e", f"inject={call}:{fault}:when={number}"])
            happened = was_killed(result) if fault == KILL else "(INJECTED)" in Path(trace.name).read_text()
        assert happened, f"no {fault} at {call} number {number}: {result}"
        return result

    def calls(self, *arguments):
        """Each call between the two marks, as its name and its number among its thread's calls of it."""
        with tempfile.NamedTemporaryFile() as trace:
            result = self.run(*arguments, before=["strace", "-f", "-o", trace.name])
            assert result.returncode == 0, result.stderr
            lines = Path(trace.name).read_text().splitlines()
        counts, calls, inside = {}, [], False
        probes = set()  # the sanitizers find out what memory may be read by writing it into a pipe
        for line in lines:
            match = re.match(r"(\d+) +(\w+)\((.*)", line)
            if not match:
                continue
            thread, name, arguments = match.groups()
            counts[thread, name] = counts.get((thread, name), 0) + 1
            descriptor = re.match(r"\d+", arguments)
            is_probe = name.startswith("pipe") or (descriptor and descriptor.group() in probes)
            if name.startswith("pipe"):
                probes.update(re.findall(r"\d+", arguments.split("]")[0]))
            elif name == "close" and is_probe:
                probes.discard(descriptor.group())
            if arguments.startswith('"begin of the work"'):
                inside = True
            elif arguments.startswith('"end of the work"'):
                return calls
            elif inside and name not in NOT_OF_THE_WORK and not is_probe:
                calls.append((name, counts[thread, name]))
        raise AssertionError("the marks are missing in the trace")


def was_killed(result):
    return result.returncode in (-9, 137)


def expect_calls(calls, *names):
    """Fails when a test would leave out what it is there for."""
    for name in names:
        assert name in [call for call, _ in calls], f"no {name} in {calls}"


def faults_of(calls, closing_fails):
    """Every (call, number, fault) to be tried."""
    for index, (call, number) in enumerate(calls):
        if closing_fails or call != "close":
            errors = ERRORS if EVERYTHING else [ERRORS[index % len(ERRORS)]]
            for fault in [*(f"error={error}" for error in errors), INTERRUPTED]:
                yield call, number, fault
        yield call, number, KILL


def under_fire(name, calls, attempt, closing_fails=True):
    """What went wrong, one text each. `attempt` returns what did after one fault, or nothing.

    A close that is made to fail is not made at all, while the system closes in any case: what the
    descriptor holds stays held. Who cannot live with that says that closing does not fail.
    """
    def tried(job):
        call, number, fault = job
        wrong = attempt(call, number, fault)
        return wrong and f"{name}: {call} number {number}, {fault}: {wrong}"

    with ThreadPoolExecutor(os.cpu_count()) as pool:
        outcomes = list(pool.map(tried, faults_of(calls, closing_fails)))
    print(f"{name}: {len(calls)} calls, {len(outcomes)} faults", flush=True)
    return [outcome for outcome in outcomes if outcome]


def finish(failures):
    """The exit status."""
    print("\n".join(failures))
    return 1 if failures else 0
