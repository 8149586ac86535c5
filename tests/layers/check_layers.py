#!/usr/bin/env python3
"""Fails when a source includes what its layer must not, or asks which system it is compiled for.

    check_layers.py [ROOT]

The table below is the rule; each line of output names the file, the line and what is wrong.
"""

import re
import sys
from pathlib import Path

SOURCE_FOLDERS = ("core", "Ferrivane", "tests", "bench")
SOURCE_SUFFIXES = (".h", ".cc", ".mm")

# Families of system headers, by the name between the angle brackets.
HEADERS = {
    "std": r"[a-z_0-9]+|(assert|ctype|errno|float|inttypes|limits|locale|math|setjmp|signal|stdarg"
           r"|stddef|stdint|stdio|stdlib|string|time|wchar|wctype)\.h",
    "posix": r"(dirent|dlfcn|fcntl|fnmatch|ftw|glob|grp|iconv|langinfo|libgen|netdb|poll|pthread"
             r"|pwd|regex|sched|semaphore|spawn|strings|sysexits|syslog|termios|unistd|utime)\.h"
             r"|sys/(file|ioctl|ipc|mman|param|resource|select|socket|stat|statvfs|time|times"
             r"|types|uio|un|utsname|wait)\.h|(arpa|net|netinet)/\w+\.h",
    "core's libraries": r"nlohmann/.+|simdjson\.h|utf8proc\.h",
    "Linux": r"(linux|sys|asm)/.+|(endian|link|malloc|mntent)\.h",
    "GLib": r"(glib|gio|gobject|gmodule)(/.+|[-\w]*\.h)",
    "xcb": r"xcb/.+",
    "Qt": r"Q\w+|Qt\w+/.+",
    "Apple": r"(AppKit|ApplicationServices|Carbon|Cocoa|Core\w+|Foundation|Security"
             r"|ServiceManagement|UniformTypeIdentifiers|UserNotifications)(/.+)?"
             r"|(dispatch|mach|mach-o|objc|os)/.+|(Availability|TargetConditionals|libproc)\.h"
             r"|sys/.+",
    "tests": r"(gtest|gmock|benchmark)/.+",
    "any": r".+",
}

CORE_VALUES = r"core/(ChromeProfile|Config|Decision|Opener|Rule)\.h"
PORTABLE = r"core/.+|Ferrivane/[^/]+|Ferrivane/platform/.+"
LINUX = PORTABLE + r"|Ferrivane/linux/.+"
MACOS = PORTABLE + r"|Ferrivane/macos/.+"

# The layers: which files belong to one, which of our headers they may include (by path from the
# root), which families of system headers. The first line that fits a file is its layer.
LAYERS = (
    (r"core/port/\w+_macos\.mm", r"core/.+", ("std", "posix", "Apple")),
    (r"core/port/\w+_linux\.cc", r"core/.+", ("std", "posix", "Linux")),
    (r"core/.+", r"core/.+", ("std", "posix", "core's libraries")),
    (r"Ferrivane/platform/.+", CORE_VALUES + r"|Ferrivane/platform/.+", ("std", "posix")),
    (r"Ferrivane/linux/desktop/.+", LINUX, ("std", "posix", "Linux", "GLib", "xcb")),
    (r"Ferrivane/linux/ui/.+", LINUX, ("std", "posix", "Linux", "Qt")),
    (r"Ferrivane/linux/.+", LINUX, ("std", "posix", "Linux")),
    (r"Ferrivane/macos/.+", MACOS, ("std", "posix", "Apple")),
    (r"Ferrivane/[^/]+", PORTABLE, ("std", "posix")),
    (r"tests/core/.+", r"core/.+|tests/(core|support)/.+",
     ("std", "posix", "core's libraries", "tests")),
    (r"tests/app/.+", PORTABLE + r"|tests/(app|support)/.+", ("std", "posix", "tests")),
    (r"(tests|bench)/.+", r"(core|Ferrivane|tests|bench)/.+", ("any",)),
)

SYSTEM_CONDITIONALS = re.compile(
    r"\b(__linux__|__linux|linux|__gnu_linux__|__APPLE__|__MACH__|_WIN32|_WIN64|TARGET_OS_\w+"
    r"|__FreeBSD__|__unix__)\b")
MAY_ASK_FOR_SYSTEM = r"core/port/.+|Ferrivane/(linux|macos)/.+|tests/.+"
MAY_BE_OBJECTIVE_CXX = r"(.+/)?macos/.+|.+_macos\.mm"

INCLUDE = re.compile(r"\s*#\s*(?:include|import|include_next)\b\s*(.*)")
MODULE_IMPORT = re.compile(r"\s*@import\s+(\w+)")
CONDITIONAL = re.compile(r"\s*#\s*(?:if|ifdef|ifndef|elif|elifdef|elifndef)\b(.*)")


def logical_lines(text):
    """Yields each line with its number and whatever a backslash at its end continues it with."""
    lines = text.splitlines()
    for index, line in enumerate(lines):
        following = index + 1
        while line.endswith("\\") and following < len(lines):
            line = line[:-1] + " " + lines[following]
            following += 1
        yield index + 1, line


def include_error(operand, project_headers, families):
    quoted = re.match(r'"([^"]+)"', operand)
    if quoted:
        if re.fullmatch(project_headers, quoted[1]):
            return None
        if not re.match(r"(%s)/" % "|".join(SOURCE_FOLDERS), quoted[1]):
            return f'"{quoted[1]}" is not written from the root of the sources'
        return f'this layer may not include "{quoted[1]}"'
    angled = re.match(r"<([^>]+)>", operand)
    if not angled:
        return f"cannot tell what is included by {operand}"
    if any(re.fullmatch(HEADERS[family], angled[1]) for family in families):
        return None
    return f"this layer may not include <{angled[1]}>"


def file_errors(name, text):
    """Yields (line number, message) for the source called `name`, a path from the root."""
    if name.endswith(".mm") and not re.fullmatch(MAY_BE_OBJECTIVE_CXX, name):
        yield 1, "Objective-C++ belongs in a macos folder or a file named *_macos.mm"
    layer = next((layer for layer in LAYERS if re.fullmatch(layer[0], name)), None)
    if not layer:
        yield 1, "belongs to no layer"
        return
    may_ask = re.fullmatch(MAY_ASK_FOR_SYSTEM, name)
    for number, line in logical_lines(text):
        module = MODULE_IMPORT.match(line)
        include = INCLUDE.match(line)
        operand = f"<{module[1]}/{module[1]}.h>" if module else include and include[1]
        if operand:
            message = include_error(operand, *layer[1:])
            if message:
                yield number, message
        conditional = CONDITIONAL.match(line)
        asked = conditional and SYSTEM_CONDITIONALS.search(conditional[1])
        if asked and not may_ask:
            yield number, f"asks for the system ({asked[0]}), which only core/port and shells may"


def tree_errors(root):
    for folder in SOURCE_FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in SOURCE_SUFFIXES and path.is_file():
                name = path.relative_to(root).as_posix()
                for number, message in file_errors(name, path.read_text(encoding="utf-8")):
                    yield f"{name}:{number}: {message}"


def main():
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parents[2]
    if not (root / "core").is_dir():
        sys.exit(f"check_layers: no sources in {root}")
    errors = list(tree_errors(root))
    print("\n".join(errors) if errors else "Every source keeps to its layer.")
    sys.exit(1 if errors else 0)


if __name__ == "__main__":
    main()
