#!/usr/bin/env python3
"""Small wrong trees, each of which check_layers.py must report, and a right one that must pass."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECKER = Path(__file__).with_name("check_layers.py")

CLEAN = {
    "core/Matcher.h": '#include <string>\n#include <unistd.h>\n#include "core/support/Text.h"\n',
    "core/Config.cc": "#include <nlohmann/json.hpp>\n#include <simdjson.h>\n",
    "core/support/Text.cc": "#include <utf8proc.h>\n",
    "core/ChromeSingleton.cc": "#include <sys/socket.h>\n#ifdef SO_NOSIGPIPE\n#endif\n",
    "core/port/Paths_macos.mm": "#import <Foundation/Foundation.h>\n",
    "core/port/Paths_linux.cc": "#ifdef __linux__\n#endif\n",
    "Ferrivane/Router.cc": '#include "core/Log.h"\n#include "Ferrivane/platform/Platform.h"\n',
    "Ferrivane/platform/Platform.h": '#include "core/Opener.h"\n#include <functional>\n',
    "Ferrivane/linux/main.cc": '#include <sys/prctl.h>\n#include "Ferrivane/Run.h"\n',
    "Ferrivane/linux/desktop/Apps.cc": "#include <gio/gdesktopappinfo.h>\n#include <xcb/xcb.h>\n",
    "Ferrivane/linux/ui/Window.cc": "#include <QWidget>\n#include <QtWidgets/QLabel>\n",
    "Ferrivane/macos/main.mm": "@import AppKit;\n#if TARGET_OS_OSX\n#endif\n",
    "tests/core/MatcherTest.cc": '#include <gtest/gtest.h>\n#include "core/Matcher.h"\n',
    "tests/linux/AppsTest.cc": "#include <gio/gio.h>\n#ifdef __linux__\n#endif\n",
    "bench/Matcher.cc": "#include <benchmark/benchmark.h>\n",
}

# What is wrong, the file, its text.
WRONG = (
    ("core includes the application", "core/A.cc", '#include "Ferrivane/Router.h"'),
    ("core includes a desktop library", "core/A.h", "#include <gio/gio.h>"),
    ("core includes a toolkit", "core/A.cc", "#include <QString>"),
    ("core includes Foundation", "core/A.cc", "#import <Foundation/Foundation.h>"),
    ("core includes a header of one system", "core/A.cc", "#include <sys/epoll.h>"),
    ("the Linux paths include GLib", "core/port/Paths_linux.cc", "#include <glib.h>"),
    ("a port includes an operation of core", "Ferrivane/platform/P.h", '#include "core/Log.h"'),
    ("a port includes the application", "Ferrivane/platform/P.h", '#include "Ferrivane/Run.h"'),
    ("the application includes the Linux shell", "Ferrivane/A.cc",
     '#include "Ferrivane/linux/desktop/Apps.h"'),
    ("the application includes the Mac shell", "Ferrivane/A.cc", '#include "Ferrivane/macos/V.h"'),
    ("the application includes GLib", "Ferrivane/A.h", "#include <glib-object.h>"),
    ("the application includes a library of core", "Ferrivane/A.cc",
     "#include <nlohmann/json.hpp>"),
    ("the Linux shell includes the Mac shell", "Ferrivane/linux/A.cc",
     '#include "Ferrivane/macos/V.h"'),
    ("GLib outside the desktop folder", "Ferrivane/linux/main.cc", "#include <gio/gio.h>"),
    ("xcb outside the desktop folder", "Ferrivane/linux/main.cc", "#  include <xcb/xcb.h>"),
    ("Qt outside the ui folder", "Ferrivane/linux/desktop/A.cc", "#include <QtCore/QString>"),
    ("the Mac shell includes the Linux shell", "Ferrivane/macos/A.mm",
     '#include "Ferrivane/linux/A.h"'),
    ("the Mac shell includes GLib", "Ferrivane/macos/A.mm", "#include <glib.h>"),
    ("a core test needs the application", "tests/core/A.cc", '#include "Ferrivane/Run.h"'),
    ("an application test needs the Linux shell", "tests/app/A.cc",
     '#include "Ferrivane/linux/A.h"'),
    ("an include relative to its file", "core/A.cc", '#include "Text.h"'),
    ("an include that leaves its folder", "core/A.cc", '#include "../Ferrivane/Run.h"'),
    ("an include through a macro", "core/A.cc", "#include HEADER"),
    ("a module import in core", "core/port/A.cc", "@import AppKit;"),
    ("core asks for Linux", "core/A.cc", "#ifdef __linux__\n#endif"),
    ("the application asks for macOS", "Ferrivane/A.cc", "#if defined(__APPLE__)\n#endif"),
    ("a port asks for Windows", "Ferrivane/platform/P.h", "# if !defined(_WIN32)\n#endif"),
    ("the application asks for the kind of Mac", "Ferrivane/A.cc", "#if TARGET_OS_OSX\n#endif"),
    ("the question continues on a second line", "core/A.cc",
     "#if defined(X) || \\\n    defined(__linux__)\n#endif"),
    ("a benchmark asks for the system", "bench/A.cc", "#ifdef __linux__\n#endif"),
    ("Objective-C++ in the application", "Ferrivane/A.mm", ""),
    ("Objective-C++ in core", "core/A.mm", ""),
    ("a folder of no layer", "Ferrivane/windows/A.cc", ""),
)


def run(files):
    with tempfile.TemporaryDirectory() as folder:
        for name, text in files.items():
            path = Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text + "\n", encoding="utf-8")
        return subprocess.run([sys.executable, CHECKER, folder], capture_output=True, text=True)


class CheckLayersTest(unittest.TestCase):
    def test_right_tree_passes(self):
        result = run(CLEAN)
        self.assertEqual((result.returncode, result.stderr), (0, ""), result.stdout)

    def test_each_wrong_tree_is_reported_once_and_with_its_place(self):
        for what, name, text in WRONG:
            with self.subTest(what):
                result = run({**CLEAN, name: text})
                self.assertEqual((result.returncode, result.stderr), (1, ""), result.stdout)
                self.assertEqual(len(result.stdout.splitlines()), 1, result.stdout)
                self.assertTrue(result.stdout.startswith(f"{name}:1: "), result.stdout)

    def test_place_is_the_line_of_the_include(self):
        result = run({**CLEAN, "core/A.cc": "#if A \\\n  || B\n#endif\n\n#include <glib.h>"})
        self.assertIn("core/A.cc:5: ", result.stdout)

    def test_folder_without_sources_is_an_error(self):
        self.assertNotEqual(run({}).returncode, 0)


if __name__ == "__main__":
    unittest.main()
