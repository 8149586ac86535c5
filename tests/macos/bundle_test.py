#!/usr/bin/env python3
"""The built Ferrivane.app: what it is made of, what it says of itself, and what it needs.

    bundle_test.py FERRIVANE.APP
"""

import os
import plistlib
import subprocess
import sys
import unittest
from pathlib import Path

APP = Path(sys.argv.pop(1))
CONTENTS = APP / "Contents"
PROGRAM = CONTENTS / "MacOS/Ferrivane"
SOURCES = Path(__file__).resolve().parents[2]


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True, timeout=60).stdout


class Bundle(unittest.TestCase):
    def test_libraries_are_the_systems(self):
        lines = output("otool", "-L", PROGRAM).splitlines()[1:]
        libraries = [line.split()[0] for line in lines if line.startswith("\t")]
        self.assertTrue(libraries)
        foreign = [library for library in libraries
                   if not library.startswith(("/usr/lib/", "/System/Library/"))]
        self.assertEqual(foreign, [])

    def test_processor(self):
        self.assertEqual(output("lipo", "-archs", PROGRAM).split(), ["arm64"])

    def test_oldest_system(self):
        words = output("otool", "-l", PROGRAM).split()
        self.assertEqual(words[words.index("minos") + 1], "13.3")

    def test_signature_covers_everything(self):
        output("codesign", "--verify", "--strict", "--deep", APP)

    def test_resources(self):
        helper = CONTENTS / "Resources/ferrivane-helper.sh"
        original = SOURCES / "resources/ferrivane-helper.sh"
        self.assertEqual(helper.read_bytes(), original.read_bytes())
        icon = CONTENTS / "Resources/Ferrivane.icns"
        self.assertEqual(icon.read_bytes()[:4], b"icns")

    def test_what_it_says_of_itself(self):
        info = plistlib.loads((CONTENTS / "Info.plist").read_bytes())
        self.assertEqual(info["CFBundleIdentifier"], "com.hollowmere.ferrivane")
        self.assertEqual(info["CFBundleShortVersionString"], os.environ["FERRIVANE_VERSION"])
        self.assertEqual(info["LSMinimumSystemVersion"], "13.3")
        self.assertIs(info["LSUIElement"], True)

    def test_the_command_line_works(self):
        self.assertIn("Usage:", output(PROGRAM, "--help"))
        version = os.environ["FERRIVANE_VERSION"]
        self.assertEqual(output(PROGRAM, "--status").splitlines()[0], f"Ferrivane {version}")


if __name__ == "__main__":
    unittest.main(verbosity=2)
