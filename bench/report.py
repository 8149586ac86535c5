"""From the rows of all programs to the table and to docs/PERFORMANCE.md."""

import itertools
import os
import platform
import re
import shutil
import subprocess
import tempfile
import time
from collections import Counter
from pathlib import Path
from typing import NamedTuple

TEMPLATE = Path(__file__).with_name("PERFORMANCE.in.md")
PERF = os.environ.get("PERF", "perf")
LOAD = os.getloadavg()[0]  # before anything is measured


def digits(value):
    """Three that count."""
    if value == 0 or abs(value) >= 100:
        return f"{value:,.0f}"
    return f"{value:.2f}" if abs(value) < 0.1 else f"{value:#.3g}".rstrip(".")


class Figure(NamedTuple):
    median: float
    tail: float | None
    percentile: str
    unit: str

    @staticmethod
    def read(median, tail, percentile, unit):
        return Figure(float(median), float(tail) if tail else None, percentile, unit) if median else None

    def __str__(self):
        scale, unit = 1, self.unit
        if unit == "ms" and self.median < 1:
            scale, unit = 1000, "µs"
        elif unit == "kB" and self.median >= 10_000:
            scale, unit = 0.001, "MB"
        text = f"{digits(self.median * scale)} {unit}".strip()
        return text if self.tail is None else f"{text} (p{self.percentile} {digits(self.tail * scale)})"


class Row(NamedTuple):
    section: str
    what: str
    figure: Figure
    reference: str
    of_reference: Figure | None
    remark: str

    @staticmethod
    def read(line):
        section, what, unit, *values, remark = line.split("\t")
        return Row(section, what, Figure.read(*values[:3], unit), values[3], Figure.read(*values[4:], unit), remark)

    def cells(self):
        ratio = ""
        if self.of_reference and self.of_reference.median:
            ratio = digits(self.figure.median / self.of_reference.median)
        remark = f"; {self.remark}" if self.remark else ""
        return [self.what + remark, str(self.figure), self.reference, str(self.of_reference or ""), ratio]


HEAD = ["what", "figure", "reference", "its figure", "ratio"]


def sections(rows):
    """By section, in the order in which they begin."""
    order = list(dict.fromkeys(row.section for row in rows))
    by_order = sorted(rows, key=lambda row: order.index(row.section))
    return itertools.groupby(by_order, key=lambda row: row.section)


def text_table(rows):
    cells = [HEAD] + [row.cells() for row in rows]
    widths = [max(len(row[column]) for row in cells) for column in range(len(HEAD))]

    def line(row):
        return "  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip()
    parts = [line(HEAD)]
    for section, members in sections(rows):
        parts += ["", section, *(line(row.cells()) for row in members)]
    return "\n".join(parts)


def markdown(head, rows):
    right = [name in ("figure", "its figure", "ratio", "share") for name in head]
    lines = [head, ["--:" if flag else "---" for flag in right], *rows]
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)


def markdown_tables(rows):
    return "\n\n".join(f"### {section}\n\n{markdown(HEAD, [row.cells() for row in members])}"
                       for section, members in sections(rows))


# Where the time of a link goes.

def steps(rows):
    section = "The steps of a link inside a process"
    medians = {row.what: row.figure.median for row in rows if row.section == section}
    whole = medians["in turns with these: a whole link"]
    taken = {"start and end of the executable (`--help`)": medians["in turns with these: Ferrivane --help"]}
    for what, value in medians.items():
        if what.endswith(", the first time"):
            taken[what.removesuffix(", the first time")] = value
    taken["the rest: fork, loop, log, waiting for the child"] = whole - sum(taken.values())
    table = [[name, f"{value:.2f} ms", f"{100 * value / whole:.0f} %"] for name, value in taken.items()]
    return markdown(["step", "figure", "share"], [*table, ["a whole link", f"{whole:.2f} ms", "100 %"]])


def profile(build, links):
    if not shutil.which(PERF):
        return "No profile was taken: there is no `perf` here (Debian has it in linux-perf)."
    with tempfile.TemporaryDirectory() as folder:
        data = Path(folder) / "perf.data"
        command = [build / "bench/link_bench", "--links", str(links), build / "Ferrivane"]
        recorded = subprocess.run([PERF, "record", "-q", "-F", "5000", "-e", "cpu-clock", "-o", data, "--", *command],
                                  stdin=subprocess.DEVNULL, capture_output=True, text=True)
        if recorded.returncode != 0 or not data.exists():
            return f"No profile was taken: `perf record` ended with status {recorded.returncode}."
        script = subprocess.run([PERF, "script", "-i", data, "--comm", "Ferrivane", "-F", "ip,sym,dso"],
                                capture_output=True, text=True).stdout
    objects, symbols = Counter(), Counter()
    for symbol, file in re.findall(r"^\s*[0-9a-f]+ (.*) \(([^()]*)\)$", script, re.MULTILINE):
        file = "kernel" if file.startswith("[") else Path(file).name
        objects[file] += 1
        symbols[file, re.sub(r"\(.*", "", symbol)[:60]] += 1
    total = sum(objects.values())
    if not total:
        return "No profile was taken: `perf` saw nothing."

    def shares(counter, most, cells):
        return [[*cells(key), f"{100 * count / total:.1f} %"] for key, count in counter.most_common(most)]
    return (f"Samples of the processor's time in {links} links (`perf`, {total:,} samples).\n\n"
            + markdown(["where", "share"], shares(objects, 8, lambda file: [f"`{file}`"])) + "\n\n"
            + markdown(["where", "function", "share"],
                       shares(symbols, 15, lambda key: [f"`{key[0]}`", f"`{key[1]}`"])))


# The machine.

def first_line(*command):
    return subprocess.run(command, capture_output=True, text=True).stdout.partition("\n")[0].strip()


def machine(build):
    model = re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text())
    memory = os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGE_SIZE") / 2**30
    compiler = re.search(r"CMAKE_CXX_COMPILER:\w+=(.*)", (build / "CMakeCache.txt").read_text())[1]
    from desktop import browser_binary
    chromium = first_line(browser_binary(), "--version")
    return (f"{time.strftime('%Y-%m-%d')}: {len(os.sched_getaffinity(0))} processors"
            f" ({model[1] if model else platform.machine()}), {memory:.0f} GB, "
            f"{platform.system()} {'.'.join(platform.release().split('-')[0].split('.')[:3])}, {first_line(compiler, '--version')}, {chromium}. "
            f"Other work when it began: a load of {LOAD:.1f}")


def document(rows, build):
    text = TEMPLATE.read_text()
    links = 60 if "BENCH_QUICK" in os.environ else 300
    values = {"MACHINE": machine(build), "TABLES": markdown_tables(rows), "STEPS": steps(rows),
              "PROFILE": profile(build, links)}
    return re.sub(r"@([A-Z]+)@", lambda match: values[match[1]], text)
