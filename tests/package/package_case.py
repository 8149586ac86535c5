"""What the tests of the installation have in common.

Each has a temporary folder with a home in it, and no session: no display, no bus.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

SOURCES = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ["FERRIVANE_BUILD"])
VERSION = os.environ["FERRIVANE_VERSION"]
ID = "com.hollowmere.ferrivane"
LONG = 100  # seconds, for what never takes long unless something is broken

# Below every prefix, beside the modules.
FILES = {
    "bin/Ferrivane",
    f"share/applications/{ID}.desktop",
    "share/bash-completion/completions/Ferrivane",
    f"share/dbus-1/services/{ID}.service",
    "share/ferrivane/ferrivane-helper.sh",
    "share/fish/vendor_completions.d/Ferrivane.fish",
    f"share/icons/hicolor/scalable/apps/{ID}.svg",
    f"share/icons/hicolor/symbolic/apps/{ID}-symbolic.svg",
    "share/man/man1/Ferrivane.1",
    f"share/metainfo/{ID}.metainfo.xml",
    "share/zsh/site-functions/_Ferrivane",
}
MODULES = {f"ferrivane-desktop-{VERSION}.so", f"ferrivane-ui-{VERSION}.so"}


def files_below(folder):
    folder = Path(folder)
    return {str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir()}


def without_modules(files):
    """The files beside the modules, and the modules' names."""
    found = {file for file in files if re.fullmatch(r".*/ferrivane/[^/]+\.so", file)}
    return files - found, {Path(file).name for file in found}


def entry(path):
    """A desktop or service file as {group: {key: value as it stands there}}."""
    groups = {}
    for line in Path(path).read_text().splitlines():
        if line.startswith("["):
            group = groups.setdefault(line.strip("[]"), {})
        elif line:
            key, _, value = line.partition("=")
            group[key] = value
    return groups


def command(value):
    """The words of an Exec value: escaped once as a key file's string, then within their quotes."""
    text = re.sub(r"\\(.)", r"\1", value)
    words = re.findall(r'"((?:[^"\\]|\\.)*)"|(\S+)', text)
    return [re.sub(r'\\(["`$\\])', r"\1", quoted) or plain for quoted, plain in words]


class PackageCase(unittest.TestCase):
    maxDiff = None
    _made = None

    def setUp(self):
        self.root = Path(tempfile.mkdtemp(prefix="fv", dir="/tmp"))
        self.addCleanup(shutil.rmtree, self.root)
        self.home = self.root / "home"
        self.home.mkdir()
        self.env = {"HOME": str(self.home), "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8",
                    "TMPDIR": str(self.root)}

    def run_command(self, *words, env=None, status=0, **options):
        """Its standard output once it has ended with that status; `env` changes variables."""
        options = {"cwd": self.root, "stderr": subprocess.PIPE} | options
        result = subprocess.run(list(map(str, words)), env=self.env | (env or {}), text=True,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, timeout=LONG, **options)
        self.assertEqual(result.returncode, status, f"{words}\n{result.stdout}\n{result.stderr}")
        return result.stdout

    def install(self, prefix, **options):
        return self.run_command("cmake", "--install", BUILD, "--prefix", prefix, **options)

    def make_package(self, **options):
        folder = Path(tempfile.mkdtemp(dir=self.root))
        self.run_command("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", folder, **options)
        packages = list(folder.glob("*.deb"))
        self.assertEqual(len(packages), 1)
        return packages[0]

    def made_package(self):
        """The package of this build, made once for all tests."""
        if PackageCase._made is None:
            path = self.make_package()
            PackageCase._made = path.name, path.read_bytes()
        name, content = PackageCase._made
        (self.root / name).write_bytes(content)
        return self.root / name

    def stand_in(self, name, status=0):
        """A program first on the PATH that writes its arguments down; where."""
        folder, record = self.root / "stand-ins", self.root / f"{name}.calls"
        folder.mkdir(exist_ok=True)
        (folder / name).write_text(f'#!/bin/sh\necho "$*" >>{record}\nexit {status}\n')
        (folder / name).chmod(0o755)
        if not self.env["PATH"].startswith(f"{folder}:"):
            self.env["PATH"] = f"{folder}:{self.env['PATH']}"
        return record


def main():
    unittest.main(module="__main__", verbosity=2)
