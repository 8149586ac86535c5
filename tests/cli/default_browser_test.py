#!/usr/bin/env python3
"""--set-default and --restore-default, by an installed program, with the desktop's own tools as witnesses."""

import os
import shutil
import stat
import subprocess
from pathlib import Path

from program_case import LONG, PROGRAM, ProgramCase, Ran, main

OWN_ID = "com.hollowmere.ferrivane"
OWN = f"{OWN_ID}.desktop"
BROWSER = "chromium.desktop"
WEB = "MimeType=x-scheme-handler/http;x-scheme-handler/https;text/html;\n"
NOT_INSTALLED = Ran(1, "run this from the installed program: /usr/bin/Ferrivane --set-default\n", "")
# What says which desktop runs, and with which display.
SESSION = ("XDG_CURRENT_DESKTOP", "DESKTOP_SESSION", "KDE_FULL_SESSION", "DISPLAY", "WAYLAND_DISPLAY")


def said(entry, http="ok", https="ok", refusal=None):
    lines = [f"asking the desktop to make {entry} the default browser…"]
    lines += [f"  {scheme}: {refusal}" for scheme in ("http", "https") if refusal]
    return "\n".join([*lines, f"  http: {http}", f"  https: {https}", ""])


def done(entry, err=""):
    return Ran(0, said(entry), err)


class DefaultBrowser(ProgramCase):
    def setUp(self):
        super().setUp()
        self.prefix = self.root / "prefix"
        self.program = self.install(self.prefix)
        self.install_browser()
        self.write_entry("chromium", f"{self.root}/apps/chromium %U", WEB)
        self.write_entry("org.example.Editor", "/bin/true %U", "MimeType=text/html;text/plain;\n")
        self.own_entry = self.write_entry(OWN_ID, f"{self.program} %U", WEB)
        self.lists = self.root / "config"
        self.lists.mkdir(exist_ok=True)

    def install(self, prefix):
        for folder in ("bin", "lib/ferrivane"):
            (prefix / folder).mkdir(parents=True)
        shutil.copy(*PROGRAM.parent.glob("ferrivane-desktop-*.so"), prefix / "lib/ferrivane")
        return Path(shutil.copy(PROGRAM, prefix / "bin"))

    def ask(self, option, env=None, before=()):
        variables = {name: value for name, value in (self.env | (env or {})).items() if value is not None}
        child = self.processes.start([*before, self.program, option], cwd="/", env=variables,
                                     stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        return self.finish(child)

    def set_default(self, **options):
        return self.ask("--set-default", **options)

    def restore_default(self, **options):
        return self.ask("--restore-default", **options)

    def tool(self, *command, env=None):
        return subprocess.run(command, env=self.env | (env or {}), capture_output=True, text=True,
                              timeout=LONG).stdout.strip()

    def default_of(self, kind, env=None):
        """As the desktop's tools see it, which read the files by themselves."""
        return self.tool("xdg-mime", "query", "default", kind, env=env)

    def handlers(self, env=None):
        return [self.default_of(f"x-scheme-handler/{scheme}", env) for scheme in ("http", "https")]

    def write_list(self, text, name="mimeapps.list"):
        (self.lists / name).write_text(text)

    def keys(self):
        """The assignments of mimeapps.list by group."""
        groups = {}
        for line in (self.lists / "mimeapps.list").read_text().splitlines():
            if line.startswith("["):
                group = groups.setdefault(line.strip("[]"), {})
            elif "=" in line and not line.startswith("#"):
                key, _, value = line.partition("=")
                group[key] = value
        return groups

    def test_without_a_desktop_environment(self):
        for variable in SESSION:
            self.assertNotIn(variable, self.env)
        self.assertEqual(self.set_default(), done(OWN))
        self.assertEqual(self.handlers(), [OWN, OWN])
        self.assertEqual(self.tool("xdg-settings", "get", "default-web-browser"), OWN)
        self.assertEqual(self.restore_default(), done(BROWSER))
        self.assertEqual(self.handlers(), [BROWSER, BROWSER])
        self.assertEqual(self.tool("xdg-settings", "get", "default-web-browser"), BROWSER)

    def test_status_names_the_new_default(self):
        self.set_default()
        self.assertIn(f"\nDefault browser: {self.own_entry}\n", self.ask("--status").out)
        self.restore_default()
        self.assertIn(f"\nDefault browser: {self.entry}\n", self.ask("--status").out)

    def test_only_the_two_schemes_are_set(self):
        self.set_default()
        self.assertEqual(set(self.keys()["Default Applications"]),
                         {"x-scheme-handler/http", "x-scheme-handler/https"})

    def test_whatever_else_was_chosen_survives_both_ways(self):
        before = {
            "Default Applications": {"text/html": "org.example.Editor.desktop",
                                     "text/plain": "org.example.Editor.desktop;chromium.desktop;",
                                     "x-scheme-handler/http": BROWSER, "x-scheme-handler/https": BROWSER,
                                     "x-scheme-handler/mailto": "not.installed.desktop",
                                     "x-scheme-handler/ftp": BROWSER},
            "Added Associations": {"text/html": "org.example.Editor.desktop;"},
            "Removed Associations": {"text/plain": "chromium.desktop;"},
            "X-Of Another": {"a": "b;c"},
        }
        self.write_list("".join(f"[{group}]\n" + "".join(f"{k}={v}\n" for k, v in keys.items())
                                for group, keys in before.items()))
        kinds = ["text/html", "text/plain", "x-scheme-handler/ftp", "x-scheme-handler/http",
                 "x-scheme-handler/https"]
        defaults = [self.default_of(kind) for kind in kinds]
        self.assertEqual(self.set_default(), done(OWN))
        self.assertEqual([self.default_of(kind) for kind in kinds], [*defaults[:3], OWN, OWN])
        self.assertEqual(self.restore_default(), done(BROWSER))
        self.assertEqual([self.default_of(kind) for kind in kinds], defaults)
        after = self.keys()
        # What remains of us is that we may be offered.
        for scheme in ("http", "https"):
            self.assertEqual(after["Added Associations"].pop(f"x-scheme-handler/{scheme}"),
                             f"{OWN};{BROWSER};")
        self.assertEqual(after, before)

    def test_nothing_is_written_where_nothing_changes(self):
        self.set_default()
        file = self.lists / "mimeapps.list"
        before = (file.read_bytes(), file.stat().st_ino, file.stat().st_mtime_ns)
        self.assertEqual(self.set_default(), done(OWN))
        self.assertEqual((file.read_bytes(), file.stat().st_ino, file.stat().st_mtime_ns), before)

    def test_half_a_default_is_made_whole(self):
        self.write_list(f"[Default Applications]\nx-scheme-handler/http={OWN}\n"
                        f"x-scheme-handler/https={BROWSER}\n")
        self.assertEqual(self.set_default(), done(OWN))
        self.assertEqual(self.handlers(), [OWN, OWN])

    def test_no_log_and_no_rules_are_written(self):
        self.set_default()
        self.restore_default()
        for folder in ("state/ferrivane", "config/ferrivane"):
            self.assertFalse((self.root / folder).exists(), folder)

    def test_a_desktops_own_list_wins_and_is_named(self):
        gnome = {"XDG_CURRENT_DESKTOP": "GNOME"}
        for desktop, name in (("GNOME", "gnome"), ("KDE", "kde"), ("ubuntu:GNOME", "gnome"),
                              ("Ubuntu:Other", "ubuntu")):
            with self.subTest(desktop):
                env = {"XDG_CURRENT_DESKTOP": desktop}
                file = f"{name}-mimeapps.list"
                self.write_list(f"[Default Applications]\nx-scheme-handler/http={BROWSER}\n"
                                f"x-scheme-handler/https={BROWSER};\n", file)
                self.assertEqual(self.set_default(env=env), Ran(
                    1, said(OWN, f"still {BROWSER}", f"still {BROWSER}"),
                    f"Ferrivane: {self.lists / file} counts before mimeapps.list; change or remove "
                    "x-scheme-handler/http and x-scheme-handler/https in its group "
                    "[Default Applications]\n"))
                self.assertEqual(self.handlers(env), [BROWSER, BROWSER])
                self.assertEqual(self.handlers(), [OWN, OWN], "other desktops use it")
                (self.lists / file).unlink()
                (self.lists / "mimeapps.list").unlink()
        self.assertEqual(self.set_default(env=gnome), done(OWN))

    def test_a_desktops_own_list_for_one_scheme(self):
        self.write_list(f"[Default Applications]\nx-scheme-handler/https={BROWSER}\n", "gnome-mimeapps.list")
        self.assertEqual(self.set_default(env={"XDG_CURRENT_DESKTOP": "GNOME"}), Ran(
            1, said(OWN, "ok", f"still {BROWSER}"),
            f"Ferrivane: {self.lists}/gnome-mimeapps.list counts before mimeapps.list; change or remove "
            "x-scheme-handler/https in its group [Default Applications]\n"))

    def test_lists_that_do_not_win_are_not_named(self):
        lines = f"[Default Applications]\nx-scheme-handler/http={BROWSER}\nx-scheme-handler/https={BROWSER}\n"
        own = lines.replace(BROWSER, OWN)
        gone = lines.replace(BROWSER, "not.installed.desktop")
        rows = {
            "of another desktop": ("config/kde-mimeapps.list", lines),
            "of the system": ("no-config/gnome-mimeapps.list", lines),
            "among the person's applications": ("data/applications/gnome-mimeapps.list", lines),
            "among the system's applications": ("no-data/applications/gnome-mimeapps.list", lines),
            "that names us": ("config/gnome-mimeapps.list", own),
            "that names what is not there": ("config/gnome-mimeapps.list", gone),
        }
        for name, (path, text) in rows.items():
            with self.subTest(name):
                (self.root / path).parent.mkdir(parents=True, exist_ok=True)
                (self.root / path).write_text(text)
                env = {"XDG_CURRENT_DESKTOP": "GNOME"}
                self.assertEqual(self.set_default(env=env), done(OWN))
                self.assertEqual(self.handlers(env), [OWN, OWN])
                (self.root / path).unlink()
                (self.lists / "mimeapps.list").unlink(missing_ok=True)

    def of_variable(self, value):
        return (f'Ferrivane: $BROWSER is set to "{value}"; xdg-settings follows it, and xdg-open where '
                "there is no display; unset or change it\n")

    def test_the_browser_variable_wins_where_no_desktop_is_known(self):
        browser = str(self.root / "apps/chromium")
        for value in (browser, f"{browser} --new-window %s", f"/no/such/program:{browser}", f"xdg-open:{browser}"):
            with self.subTest(value):
                self.assertEqual(self.set_default(env={"BROWSER": value}), done(OWN, self.of_variable(value)))
        env = {"BROWSER": browser}
        self.assertEqual(self.tool("xdg-settings", "get", "default-web-browser", env=env), BROWSER)
        self.tool("xdg-open", "https://a/", env=env)
        self.assertEqual([start.arguments for start in self.starts_of_browser()], [[b"https://a/"]])

    def test_the_browser_variable_is_not_named_where_it_does_not_win(self):
        browser = str(self.root / "apps/chromium")
        rows = {
            "GNOME": {"BROWSER": browser, "XDG_CURRENT_DESKTOP": "GNOME"},
            "a flavour of GNOME": {"BROWSER": browser, "XDG_CURRENT_DESKTOP": "GNOME-Classic:GNOME"},
            "KDE": {"BROWSER": browser, "KDE_FULL_SESSION": "true"},
            "Xfce": {"BROWSER": browser, "DESKTOP_SESSION": "xfce"},
            "empty": {"BROWSER": ""},
            "not installed": {"BROWSER": "no-such-browser"},
            "only xdg-open": {"BROWSER": "xdg-open"},
            "this program": {"BROWSER": str(self.program)},
        }
        for name, env in rows.items():
            with self.subTest(name):
                self.assertEqual(self.set_default(env=env), done(OWN))
        self.assertEqual(self.restore_default(env={"BROWSER": browser}), done(BROWSER))
        self.assertEqual(self.restore_default(env={"BROWSER": str(self.program)}),
                         done(BROWSER, self.of_variable(self.program)))

    def test_where_both_win_the_list_is_named(self):
        self.write_list(f"[Default Applications]\nx-scheme-handler/http={BROWSER}\n", "lxqt-mimeapps.list")
        env = {"XDG_CURRENT_DESKTOP": "LXQt", "BROWSER": str(self.root / "apps/chromium")}
        self.assertRegex(self.set_default(env=env).err, r"^Ferrivane: \S+/lxqt-mimeapps\.list counts [^\n]+\n$")

    def test_folder_that_cannot_be_written(self):
        # Root may write everywhere but in the kernel's own folder.
        ran = self.set_default(env={"XDG_CONFIG_HOME": "/proc"})
        lines = ran.out.splitlines()
        self.assertEqual((ran.status, ran.err, len(lines)), (1, "", 5))
        for scheme, line in zip(("http", "https"), lines[1:3]):
            self.assertRegex(line, rf"^  {scheme}: .*/proc/mimeapps\.list")
        self.assertEqual(lines[3:], ["  http: still none", "  https: still none"])

    def test_list_that_cannot_be_replaced_stays_as_it_was(self):
        if os.geteuid() == 0:
            before = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]
            self.root.chmod(0o755)
        else:
            before = []
        text = f"[Default Applications]\nx-scheme-handler/http={BROWSER}\nx-scheme-handler/https={BROWSER}\n"
        self.write_list(text)
        files = sorted(self.lists.iterdir())
        self.lists.chmod(0o555)
        self.addCleanup(self.lists.chmod, 0o755)
        ran = self.set_default(before=before)
        self.assertEqual((ran.status, ran.err), (1, ""))
        self.assertRegex(ran.out, r"\n  http: .*Permission denied\n  https: .*Permission denied\n")
        self.assertTrue(ran.out.endswith(f"  http: still {BROWSER}\n  https: still {BROWSER}\n"), ran.out)
        self.assertEqual((self.lists / "mimeapps.list").read_text(), text)
        self.assertEqual(sorted(self.lists.iterdir()), files)

    def test_folder_that_is_not_there_is_made(self):
        shutil.rmtree(self.lists)
        self.assertEqual(self.set_default(), done(OWN))
        self.assertEqual(stat.S_IMODE(self.lists.stat().st_mode), 0o700)

    def test_list_behind_a_link_is_replaced_and_its_target_left_alone(self):
        elsewhere = self.root / "dotfiles"
        elsewhere.write_text(f"[Default Applications]\nx-scheme-handler/http={BROWSER}\ntext/html={BROWSER}\n")
        before = elsewhere.read_text()
        (self.lists / "mimeapps.list").symlink_to(elsewhere)
        self.assertEqual(self.set_default(), done(OWN))
        self.assertFalse((self.lists / "mimeapps.list").is_symlink())
        self.assertEqual(elsewhere.read_text(), before)
        self.assertEqual(self.keys()["Default Applications"]["text/html"], BROWSER)

    def test_program_that_no_entry_starts(self):
        rows = {
            "no entry": None,
            "an entry of another program": ("/bin/true %U", WEB),
            "an entry whose program is missing": ("/no/such/Ferrivane %U", WEB),
            "an entry that is not shown": (f"{self.program} %U", WEB + "NoDisplay=true\n"),
        }
        for name, entry in rows.items():
            with self.subTest(name):
                self.own_entry.unlink(missing_ok=True)
                if entry:
                    self.write_entry(OWN_ID, *entry)
                self.assertEqual(self.set_default(), NOT_INSTALLED)
        self.assertFalse((self.lists / "mimeapps.list").exists())

    def test_program_of_the_build_is_not_the_installed_one(self):
        self.assertEqual(self.run_program("--set-default"), NOT_INSTALLED)
        self.assertEqual(self.run_program("--set-default", "https://a/"), NOT_INSTALLED)
        self.assertEqual(self.run_program("--restore-default"), done(BROWSER))

    def test_installed_for_everybody_counts_too(self):
        shared = self.root / "no-data/applications" / OWN
        shared.parent.mkdir(parents=True)
        self.own_entry.rename(shared)
        self.assertEqual(self.set_default(), done(OWN))
        self.assertEqual(self.handlers(), [OWN, OWN])

    def test_without_a_browser_there_is_nothing_to_give_back_to(self):
        self.set_default()
        self.entry.unlink()
        self.assertEqual(self.restore_default(), Ran(1, "app com.google.Chrome not found\n", ""))
        self.assertEqual(self.handlers(), [OWN, OWN])

    def test_the_last_of_two_options_counts(self):
        ran = self.run_program("--set-default", "--restore-default")
        self.assertEqual(ran, done(BROWSER))


if __name__ == "__main__":
    main()
