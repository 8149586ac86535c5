#!/usr/bin/env python3
"""What the program reaches and leaves behind on each of its roads."""

import json
import os
import re
import shutil
import stat

import system_calls
from agent_case import LONG, PROGRAM, AgentCase, Ran, main, wait_until
from accessibility_test import CLIENT, PYTHON
from tray_case import Lines

OPENED = Ran(0, "", "")


def mode(path):
    return oct(stat.S_IMODE(path.lstat().st_mode))


class SecurityCase(AgentCase):
    session = {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}

    def setUp(self):
        super().setUp()
        self.children = []
        if self.shows_windows:
            self.bus.install_accessibility()

    def tearDown(self):
        try:
            for child in self.children:
                child.end()
        finally:
            super().tearDown()

    def start_client(self):
        client = Lines(self, PYTHON, CLIENT)

        def ask(*request):
            client.tell(json.dumps(request))
            answer = json.loads(client.next())
            self.assertNotIn("error", answer)
            return answer["value"]
        return ask


class Traced(SecurityCase):
    """On every road: no socket but those of this machine, nobody listens, no file but its own is written."""
    shows_windows = True

    def setUp(self):
        super().setUp()
        self.write_rules(("host", "example.com", "Work"))
        self.traces = []
        # What the toolkit's libraries find out about fonts they would keep for the whole system, as root.
        fonts = self.root / "fonts.conf"
        fonts.write_text(f"<fontconfig><dir>/usr/share/fonts</dir>"
                         f"<cachedir>{self.root}/home/.cache/fontconfig</cachedir></fontconfig>")
        self.env |= {"FONTCONFIG_FILE": str(fonts), "LIBGL_ALWAYS_SOFTWARE": "1"}
        trees = r"(config/ferrivane|config/autostart|state|home/\.cache)(/.*)?"
        others = r"config|config/mimeapps\.list(\.\w+)?|run|run/ferrivane-launch\.lock"
        self.own = re.compile(rf"{re.escape(str(self.root))}/({trees}|{others})|/dev/null|/dev/dri/.*")

    def tracing(self):
        self.traces.append(self.root / f"trace.{len(self.traces)}")
        return system_calls.strace(self.traces[-1])

    def calls(self):
        """Those of the program and of its children before they become another one."""
        strace = os.path.realpath(shutil.which("strace"))
        wait_until(lambda: not self.processes.running(strace), LONG, "the end of the trace")
        calls = [call for file in self.traces for call in system_calls.read(file)]
        return [call for call in calls if call.program == str(PROGRAM)]

    def assert_keeps_to_itself(self, calls, starts=()):
        """`starts` are the programs that it starts, all of them and no others."""
        def of(*names):
            return [call for call in calls if call.name in names]

        self.assertEqual([call for call in of("socket", "socketpair") if not call.text.startswith("AF_UNIX, ")], [])
        self.assertEqual([call for call in of("connect") if "sa_family=AF_UNIX" not in call.text], [])
        self.assertEqual(of("bind", "listen", "accept", "accept4", *system_calls.RINGS.split(",")), [])
        changes = [call for call in calls if call.changes_files]
        self.assertEqual([call for call in changes
                          if not all(self.own.fullmatch(path) for path in call.paths)], [])
        # Temporary files are made by us or not at all, and nobody else can open them meanwhile.
        temporary = [call for call in changes if call.name == "openat" and re.search(r"\.tmp$", call.paths[0])]
        self.assertEqual([call for call in temporary if not re.search(
            r"O_CREAT\|O_EXCL\|O_NOFOLLOW\|O_CLOEXEC, 0600\b", call.text)], [])
        started = {call.paths[0] for call in of("execve") if call.text.endswith(" = 0")}
        self.assertEqual({os.path.basename(path) for path in started}, set(starts))
        return temporary

    def test_links_as_operands(self):
        browser = self.start_browser()
        self.rules_file.unlink()  # the starter rules are written
        self.assertEqual(self.run_program("https://a/", before=self.tracing()), OPENED)
        browser.answer = b"SHUTDOWN"
        self.assertEqual(self.run_program("https://b/", before=self.tracing()), OPENED)
        for link in self.user_data.glob("Singleton*"):
            link.unlink()
        self.install_browser(stays=True)
        child = self.start("https://c/", before=self.tracing())
        self.wait_for_log("launched Chrome")
        self.processes.end(self.running_browsers())  # for it is traced too
        self.assertEqual(self.finish(child), OPENED)
        self.entry.unlink()
        child = self.start("https://d/", before=self.tracing())
        wait_until(self.display.active, LONG, "the alert")
        self.display.press("Escape")
        self.assertEqual(self.finish(child).status, 1)
        calls = self.calls()
        self.assertTrue(self.assert_keeps_to_itself(calls, {"chromium"}), "rules.json was written")
        self.assertGreaterEqual(len([call for call in calls if call.name == "socket"]), 4)

    def test_commands(self):
        self.start_browser()
        self.write_entry("com.hollowmere.ferrivane", f"{self.program} %U")
        for arguments in (["--help"], ["--status"], ["--test", "https://example.com/", "--from", "Mail"],
                          ["--set-default"], ["--restore-default"]):
            self.assertEqual(self.run_program(*arguments, before=self.tracing()).status, 0)
        calls = self.calls()
        self.assert_keeps_to_itself(calls)
        self.assertTrue(any("mimeapps.list" in call.text for call in calls if call.changes_files))

    def test_agent_with_its_windows_and_icon(self):
        self.start_browser()
        self.install_editor()
        self.assertEqual(Lines(self, os.environ["WATCHER_STAND_IN"]).next(), "owned")
        (self.rules_file.parent / "preferences.ini").write_text("[Preferences]\nshowMenuBarIcon=true\n")
        agent, caller = self.start_agent(before=self.tracing()), self.caller()
        self.assertEqual(caller.open("https://example.com/").error, "")
        self.assertEqual(caller.activate().error, "")
        self.wait_for_settings()
        ask = self.start_client()
        self.assertTrue(ask("act", "push button", "Add rule", "Press"))
        wait_until(lambda: len(json.loads(self.rules_file.read_text())["rules"]) == 2, LONG, "the new rule")
        self.close_settings()
        self.assertEqual(caller.action("edit-rules").error, "")
        wait_until(self.opened, LONG, "the rules in their editor")
        self.wait_for_log("handed to running Chrome")
        self.entry.unlink()
        self.assertEqual(caller.open("https://b/").error, "")
        self.wait_for_settings()
        self.display.press("Return")  # Copy Link
        wait_until(lambda: not self.settings(), LONG, "end of the alert")
        self.assertEqual(self.end(agent).status, 0)
        calls = self.calls()
        self.assertTrue(self.assert_keeps_to_itself(calls, {"gio-launch-desktop"}), "rules.json was written")
        peers = {re.search(r'sun_path=(@?"[^"]*")', call.text)[1] for call in calls if call.name == "connect"}
        for peer in ("/bus/socket", "/at-spi", ".X11-unix/X", "/s/SingletonSocket"):
            self.assertTrue(any(peer in found for found in peers), (peer, peers))


class Modes(SecurityCase):
    shows_windows = True

    def test_everything_made_is_for_its_owner_alone(self):
        self.assert_modes("000")

    def test_a_strict_umask_changes_nothing_of_that(self):
        self.assert_modes("077")

    def assert_modes(self, umask):
        agent = self.start_agent(before=["sh", "-c", f'umask {umask}; exec "$0" "$@"'])
        caller = self.caller()
        self.wait_for_log("started (agent)")
        self.rules_file.write_text("no JSON, of which a copy is kept")
        self.assertEqual(caller.activate().error, "")
        self.wait_for_settings()
        ask = self.start_client()
        self.assertTrue(ask("act", "check box", "Show icon in the menu bar", "Toggle"))
        self.assertTrue(ask("act", "push button", "Add rule", "Press"))
        for name in ("preferences.ini", "rules.json.bak"):  # a press takes its time
            wait_until((self.rules_file.parent / name).exists, LONG, name)
        with self.log_file.open("ab") as log:
            log.truncate(3 << 20)
        browser = self.start_browser()
        self.assertEqual(caller.open("https://a/").error, "")
        browser.message()
        self.close_settings()
        self.assertEqual(self.end(agent).status, 0)
        folders = ("config", "config/autostart", "config/ferrivane", "state", "state/ferrivane")
        files = ("config/autostart/com.hollowmere.ferrivane.desktop", "config/ferrivane/preferences.ini",
                 "config/ferrivane/rules.json", "config/ferrivane/rules.json.bak", "run/ferrivane-launch.lock",
                 "state/ferrivane/ferrivane.log", "state/ferrivane/ferrivane.log.1")
        self.assertEqual({name: mode(self.root / name) for name in (*folders, *files)},
                         {name: "0o700" for name in folders} | {name: "0o600" for name in files})
        made = {str(path.relative_to(self.root)) for folder in folders
                for path in (self.root / folder).iterdir() if path.name != "chromium"}
        self.assertLessEqual(made, {*folders, *files})


class Bus(SecurityCase):
    def test_only_the_interface_of_applications_is_there(self):
        self.write_rules()
        self.start_agent()
        caller = self.caller()

        def found(path, kind):
            reply = caller.call("Introspect", path=path, interface="org.freedesktop.DBus.Introspectable")
            self.assertEqual(reply.error, "")
            return set(re.findall(rf'<{kind} name="([^"]*)"', reply.body[4:].decode()))

        path = "/"
        for name in ("com", "hollowmere", "ferrivane"):
            self.assertEqual(found(path, "node"), {name})
            path = path.rstrip("/") + "/" + name
        self.assertEqual(found(path, "node"), set())
        self.assertEqual({name for name in found(path, "interface") if not name.startswith("org.freedesktop.DBus.")},
                         {"org.freedesktop.Application"})
        self.assertLessEqual({"Activate", "ActivateAction", "Open"}, found(path, "method"))


if __name__ == "__main__":
    main()
