#!/usr/bin/env python3
"""Takes pictures of every window, as a person sees them.

    screenshots.py BUILD_FOLDER PICTURES_FOLDER [NAME…]

Everything happens in a throw-away home on a display of its own; no browser is started.
"""

import json
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "tests" / "support"))
from desktop import Desktop, program, wait_until  # noqa: E402

RULES = (("host", "work.example", "Work"),
         ("url", "git.example/client-a/", "Profile 2"),
         ("app", "org.example.Chat", "Default"),
         ("url", "meet.example", "Work"))
LONG = "A profile whose name is very much longer than the place that it has in the window"
# A desktop's colours as KDE's programs find them; the toolkit reads the file where it sees that
# desktop.
DARK = """[Colors:Window]
BackgroundNormal=42,46,50
ForegroundNormal=252,252,252
ForegroundInactive=161,169,177
[Colors:View]
ForegroundInactive=161,169,177
BackgroundNormal=27,30,32
BackgroundAlternate=35,38,41
ForegroundNormal=252,252,252
[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=252,252,252
[Colors:Tooltip]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
[General]
ColorScheme=BreezeDark
"""


def pictures():
    """By name: rules, profiles' names, more variables, whether dark, keys that are typed."""
    return {
        "settings": {"typed": "https://git.example/client-a/issues"},
        "settings-dark": {"dark": True, "typed": "https://work.example/"},
        "settings-empty": {"rules": ()},
        "settings-200-percent": {"env": {"QT_SCALE_FACTOR": "2"}, "size": "1800x1400"},
        "settings-200-rules": {"rules": [("host", f"host{i}.example", "Work") for i in range(200)]},
        "settings-long": {"rules": [("url", "https://example.com/" + "long/" * 40, LONG),
                                    ("app", "org.example.Chat", "nobody@work.example")],
                          "names": [LONG, "Work", "Play"], "typed": "https://example.com/" + "long/" * 60},
        "settings-unreadable": {"text": '{"rules": [}'},
        "settings-sandboxed": {"env": {"APP_SANDBOX_CONTAINER_ID": "com.hollowmere.ferrivane"}},
        "about": {"keys": ["alt+f", "Return"]},
        "context-menu": {"keys": ["Tab", "Menu"]},
    }


def take(build, picture, rules=RULES, names=("Home", "Work", "Play"), env=None, dark=False, typed="",
         keys=(), text=None, size="1000x760"):
    with Desktop(build / "Ferrivane", build / "tests/support/sender", size=size) as desktop:
        desktop.start_bus()
        desktop.env |= env or {}
        desktop.write_profiles()
        state = desktop.user_data / "Local State"
        catalogue = json.loads(state.read_text())
        for entry, name in zip(catalogue["profile"]["info_cache"].values(), names):
            entry["name"] = name
        state.write_text(json.dumps(catalogue))
        desktop.write_rules(*rules)
        if text:
            desktop.rules_file.write_text(text)
        if dark:
            desktop.env |= {"XDG_CURRENT_DESKTOP": "KDE", "KDE_FULL_SESSION": "true", "KDE_SESSION_VERSION": "5"}
            (desktop.root / "config/kdeglobals").write_text(DARK)
        desktop.add_application("Chat")

        def ask(*command):
            return subprocess.run(command, env=desktop.env, capture_output=True, timeout=20, text=True).stdout

        desktop.start("ferrivane:")
        xdotool = program("xdotool", "xdotool")
        window = wait_until(lambda: ask(xdotool, "search", "--onlyvisible", "--name", "^Ferrivane$").strip(),
                            20, "the settings window").split()[-1]
        wait_until(lambda: ask(xdotool, "getactivewindow").strip() == window, 20, "its activation")
        if typed:
            # The tester's field, from the end of the window backwards.
            for _ in range(6):
                ask(xdotool, "key", "shift+Tab")
            ask(xdotool, "type", "--delay", "1", typed)
        for key in keys:
            ask(xdotool, "key", key)
            time.sleep(0.2)
        time.sleep(0.7)
        desktop.screenshot(picture, "root" if keys else window)


def main():
    build, folder, *chosen = sys.argv[1:]
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    for name, options in pictures().items():
        if not chosen or name in chosen:
            take(Path(build).resolve(), folder / f"{name}.png", **options)
            print(folder / f"{name}.png", flush=True)


if __name__ == "__main__":
    main()
