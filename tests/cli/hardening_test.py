#!/usr/bin/env python3
"""What the compiler and the linker have put into the release build against those who find a mistake in it."""

import os
import platform
import re
import subprocess
import unittest

PARTS = {name: os.environ[name] for name in ("FERRIVANE", "DESKTOP_MODULE", "UI_MODULE")}


PAGE = 4096


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True,
                          env={"LC_ALL": "C", "PATH": os.environ["PATH"]}, timeout=60).stdout


def readelf(*arguments):
    return output("readelf", "--wide", *arguments)


class Hardening(unittest.TestCase):
    def assert_each(self, option, check):
        """`check` gets what readelf says of each part."""
        for name, file in PARTS.items():
            with self.subTest(name):
                check(readelf(option, file))

    def test_its_place_in_memory_is_not_known(self):
        self.assert_each("--file-header", lambda header: self.assertRegex(header, r"Type: +DYN "))
        self.assertRegex(readelf("--dynamic", PARTS["FERRIVANE"]), r"\(FLAGS_1\).*\bPIE\b")

    def test_addresses_of_functions_cannot_be_overwritten(self):
        self.assert_each("--segments", lambda segments: self.assertRegex(segments, r"(?m)^ *GNU_RELRO "))
        now = r"\(BIND_NOW\)|\(FLAGS\).*\bBIND_NOW\b|\(FLAGS_1\).*\bNOW\b"
        self.assert_each("--dynamic", lambda dynamic: self.assertRegex(dynamic, now))

    def test_nothing_that_is_written_can_be_run(self):
        def check(segments):
            flags = re.findall(r"(?m)^ *(\w+)(?: +0x[0-9a-f]+){5} ([R ][W ][E ]) ", segments)
            self.assertIn(("GNU_STACK", "RW "), flags)
            self.assertIn(("LOAD", "R E"), flags)
            self.assertEqual([name for name, flag in flags if "W" in flag and "E" in flag], [])
        self.assert_each("--segments", check)

    def test_no_code_is_changed_when_it_is_loaded(self):
        def check(dynamic):
            self.assertIn("(NEEDED)", dynamic)
            self.assertNotIn("TEXTREL", dynamic)
        self.assert_each("--dynamic", check)

    def test_libraries_are_looked_for_in_the_systems_folders_alone(self):
        def check(dynamic):
            self.assertNotRegex(dynamic, r"\((RPATH|RUNPATH)\)")
            names = re.findall(r"\(NEEDED\).*\[(.*)\]", dynamic)
            self.assertIn("libc.so.6", names)
            self.assertEqual([name for name in names if "/" in name], [])
        self.assert_each("--dynamic", check)

    def test_stack_is_guarded_and_lengths_are_checked(self):
        self.assert_each("--dyn-syms", lambda symbols: self.assertRegex(symbols, r"\b__stack_chk_fail(@|$)"))
        # The modules call nothing that takes a length and could be checked. Which level of
        # _FORTIFY_SOURCE it is cannot be seen.
        self.assertRegex(readelf("--dyn-syms", PARTS["FERRIVANE"]), r"\b__\w+printf_chk(@|$)")

    if platform.machine() == "x86_64":  # others have other instructions
        def test_no_frame_jumps_over_the_page_that_ends_the_stack(self):
            pages = 0
            for name, file in PARTS.items():
                with self.subTest(name):
                    code = output("objdump", "--disassemble", "--no-show-raw-insn", file)
                    taken = re.findall(r"\tsub +\$0x(\w{1,8}),%rsp\n.*\t(.*)\n", code)
                    self.assertTrue(taken)
                    large = [(int(size, 16), then.split()) for size, then in taken if int(size, 16) >= PAGE]
                    pages += len(large)
                    # Page by page, and each is touched: GCC's instruction, and Clang's.
                    touched = [(PAGE, [how, "$0x0,(%rsp)"]) for how in ("orq", "movq")]
                    self.assertEqual([frame for frame in large if frame not in touched], [])
            self.assertGreater(pages, 0, "no large frame to look at")

    def test_a_module_offers_its_entry_alone(self):
        for module, entry in (("DESKTOP_MODULE", "ferrivane_desktop_services"), ("UI_MODULE", "ferrivane_toolkit")):
            symbols = readelf("--dyn-syms", PARTS[module])
            offered = re.findall(r"(?m) FUNC +GLOBAL +DEFAULT +\d+ (\w+)$", symbols)
            self.assertEqual([name for name in offered if not name.startswith("_Z")], [entry])


if __name__ == "__main__":
    unittest.main(verbosity=2)
