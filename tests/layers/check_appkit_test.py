#!/usr/bin/env python3
"""What scripts/check-appkit checks, with a stand-in for the program that knows AppKit."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "scripts/check-appkit"
LISTS = {
    "core/CMakeLists.txt": "add_library(Core One.cc port/Paths_linux.cc port/Paths_macos.mm)",
    "Ferrivane/CMakeLists.txt": "add_library(App Two.cc)  # not Three.cc",
    "Ferrivane/macos/CMakeLists.txt": "add_library(Mac Shell.mm)\nadd_executable(Ferrivane main.mm)",
    "tests/macos/CMakeLists.txt": "test(SOURCES ShellTest.mm ${PROJECT_SOURCE_DIR}/tests/app/A.cc)",
}
SOURCES = ("core/One.cc", "core/port/Paths_linux.cc", "core/port/Paths_macos.mm", "Ferrivane/Two.cc",
           "Ferrivane/Three.cc", "Ferrivane/macos/Shell.mm", "Ferrivane/macos/main.mm",
           "tests/macos/ShellTest.mm", "tests/app/A.cc")
# Refuses what holds the word "wrong", and writes down what it was given.
CHECK = """#!/bin/sh
for word; do
    case $word in *.cc | *.mm) file=$word ;; esac
done
echo "$file" >>"$(dirname "$0")/checked"
! grep wrong "$file"
"""


class CheckAppKit(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name).resolve()
        for name, text in LISTS.items():
            self.write(name, text)
        for name in SOURCES:
            self.write(name, "right")
        self.write("check", CHECK).chmod(0o755)
        (self.root / "scripts").mkdir()
        shutil.copy(SCRIPT, self.root / "scripts")

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return path

    def run_script(self, check="check"):
        variables = {name: value for name, value in os.environ.items() if name != "APPKIT_CHECK"}
        if check:
            variables["APPKIT_CHECK"] = str(self.root / check)
        return subprocess.run([self.root / "scripts/check-appkit"], env=variables, text=True,
                              capture_output=True, timeout=60)

    def test_what_is_compiled_for_macos_is_checked(self):
        ended = self.run_script()
        self.assertEqual((ended.returncode, ended.stderr), (0, ""), ended.stdout)
        checked = (self.root / "checked").read_text().splitlines()
        others = {"core/port/Paths_linux.cc", "Ferrivane/Three.cc"}
        self.assertEqual(sorted(checked),
                         sorted(str(self.root / name) for name in set(SOURCES) - others))

    def test_without_the_variable_it_says_so(self):
        ended = self.run_script(check=None)
        self.assertEqual(ended.returncode, 0)
        self.assertEqual(len(ended.stdout.splitlines()), 1)
        self.assertIn("not type-checked", ended.stdout)

    def test_a_mistake(self):
        self.write("Ferrivane/Two.cc", "wrong")
        ended = self.run_script()
        self.assertEqual(ended.returncode, 1)
        self.assertIn("Ferrivane/Two.cc: does not pass", ended.stdout)

    def test_a_source_in_no_list(self):
        self.write("Ferrivane/macos/Forgotten.mm", "right")
        ended = self.run_script()
        self.assertEqual(ended.returncode, 1)
        self.assertIn("Ferrivane/macos/Forgotten.mm: is in no list", ended.stdout)

    def test_a_listed_source_that_is_not_there(self):
        (self.root / "Ferrivane/macos/Shell.mm").unlink()
        ended = self.run_script()
        self.assertEqual(ended.returncode, 1)
        self.assertIn("Ferrivane/macos/Shell.mm: is listed and not there", ended.stdout)

    def test_a_program_that_is_not_there(self):
        self.assertNotEqual(self.run_script(check="nowhere").returncode, 0)


if __name__ == "__main__":
    unittest.main()
