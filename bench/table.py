"""Rows of the table that bench/run makes; bench/Table.h for Python.

BENCH_QUICK in the environment makes fewer runs, BENCH_RAW prints every single value.
"""

import os
import statistics
import sys


def runs(count):
    return max(5, count // 5) if "BENCH_QUICK" in os.environ else count


def _figure(values):
    """Median, tail and its percentile: the 99th of a hundred values or more, the 90th of ten or more."""
    values = sorted(values)
    percentile = 99 if len(values) >= 100 else 90 if len(values) >= 10 else 0
    if not values:
        return ["", "", ""]
    tail = [str(values[len(values) * percentile // 100]), str(percentile)] if percentile else ["", ""]
    return [str(statistics.median(values)), *tail]


def row(section, what, unit, values, reference="", of_reference=(), remark=""):
    """`unit` is "ms", "kB" or empty for a count. A row may do without a reference."""
    print(section, what, unit, *_figure(values), reference, *_figure(of_reference), remark, sep="\t", flush=True)
    if "BENCH_RAW" in os.environ:
        for name, all_values in ((what, values), (f"{what}, reference {reference}", of_reference)):
            print(f"{section}, {name}:", *(f"{value:.3g}" for value in all_values), file=sys.stderr)
