#!/usr/bin/env python3
"""Whose link it is, on each road that a desktop has to its default browser."""

import os
import shutil
import signal
import sys
from pathlib import Path

from agent_browser_case import AgentBrowserCase, bus_call
from browser_case import HOME, WORK, main

SUPPORT = Path(__file__).resolve().parents[1] / "support"
GNOME = {"XDG_CURRENT_DESKTOP": "GNOME"}
ROADS = {
    "xdg-open": (lambda link: ["xdg-open", link], {}),
    "xdg-open on GNOME": (lambda link: ["xdg-open", link], GNOME),
    "gio": (lambda link: ["gio", "open", link], {}),
    "a call": (bus_call, {}),
}


# Sends a link from a process that has ended before the call is looked at.
SEND_AND_END = """\
import sys
from session_bus import Caller
Caller(sys.argv[1]).send_open(sys.argv[2], **dict(pair.split("=") for pair in sys.argv[3:]))
"""


class AgentOpeners(AgentBrowserCase):
    loaded = (HOME, WORK)

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.mail = cls.desktop.add_application("Mail")

    def setUp(self):
        super().setUp()
        self.desktop.write_rules(("app", "org.example.Mail", "Work"))

    def sender(self, command, link=None, profile=None, **options):
        """Runs the command that the function `command` makes for a link; whom the log names."""
        link, before = link or self.link(), len(self.desktop.log())
        self.run_command(*command(link), **options)
        sender = self.summary(link, before)
        self.assert_fetched(link, profile)
        return sender

    def test_sender_on_every_road_while_the_agent_runs(self):
        agent = self.start_agent()
        for number, (name, (command, env)) in enumerate(ROADS.items()):
            with self.subTest(name):
                self.assertEqual(self.sender(lambda link: [self.mail, *command(link)], self.link(f"/{number}"),
                                             WORK, env=env), "Mail (org.example.Mail)")
        self.assertEqual(self.agent(), agent)

    def test_sender_on_every_road_while_no_agent_runs(self):
        for number, (name, (command, env)) in enumerate(ROADS.items()):
            with self.subTest(name):
                self.assertEqual(self.sender(lambda link: [self.mail, *command(link)], self.link(f"/{number}"),
                                             WORK, env=env), "Mail (org.example.Mail)")
                self.assertEqual(self.agent() is not None, name != "xdg-open")
                self.end_agents()

    def test_application_that_calls_by_itself(self):
        caller = self.desktop.add_application("Caller", shutil.which("gdbus"))
        self.desktop.write_rules(("app", "caller", "Work"))
        self.assertEqual(self.sender(lambda link: [caller, *bus_call(link)[1:]], profile=WORK),
                         "Caller (org.example.Caller)")

    def test_script_in_a_terminal_is_the_terminal(self):
        terminal = self.desktop.add_application("Terminal")
        script = self.desktop.root / "script"
        script.write_text('#!/bin/sh\ngio open "$1"\ntrue\n')
        script.chmod(0o755)
        self.assertEqual(self.sender(lambda link: [terminal, "bash", "-c", '"$0" "$1"; true', script, link]),
                         "Terminal (org.example.Terminal)")

    def test_helper_process_is_its_application(self):
        editor = self.desktop.add_application("Editor", "/bin/dash")
        helper = '"$0" -c \'gio open "$0"; true\' "$1" --type=utility; true'
        self.assertEqual(self.sender(lambda link: [editor, "-c", helper, editor, link]),
                         "Editor (org.example.Editor)")

    def test_two_copies_of_an_application_are_told_apart(self):
        for name in ("One", "Two"):
            (self.desktop.root / "apps" / name).mkdir()
            copy = self.desktop.add_application(name, file=f"{name}/chat")
            self.desktop.write_rules(("app", f"org.example.{name}", "Work"))
            self.assertEqual(self.sender(lambda link: [copy, "gio", "open", link], self.link(f"/{name}"), WORK),
                             f"{name} (org.example.{name})")

    def test_entry_of_the_persons_own_shadows_that_of_the_system(self):
        path = self.desktop.add_application("News")
        self.desktop._write_entry("org.example.News", "Old News", "/bin/true", folder="system")
        self.assertEqual(self.sender(lambda link: [path, "gio", "open", link]), "News (org.example.News)")

    def test_program_without_an_entry_is_known_by_its_path(self):
        tool = self.desktop.root / "apps/tool"
        shutil.copy(self.desktop.sender, tool)
        self.desktop.write_rules(("app", "apps/tool", "Work"))
        self.assertEqual(self.sender(lambda link: [tool, "gio", "open", link], profile=WORK), str(tool))

    def test_sender_that_is_gone_is_unknown_and_its_link_is_opened(self):
        agent, link, before = self.start_agent(), self.link(), len(self.desktop.log())
        os.kill(agent, signal.SIGSTOP)
        self.run_command(self.mail, sys.executable, "-c", SEND_AND_END, self.desktop.bus.path, link,
                         env={"PYTHONPATH": str(SUPPORT)})
        os.kill(agent, signal.SIGCONT)
        self.assertEqual(self.summary(link, before), "unknown app")
        self.assert_fetched(link, HOME)

    def test_startup_id_of_a_living_application_is_believed(self):
        own = os.readlink("/proc/self/exe")
        mail = self.desktop.processes.start([self.mail, "sleep", "60"])
        with self.desktop.bus.connect() as caller:
            for number, (process, expected) in enumerate(((mail, "Mail (org.example.Mail)"), (None, own))):
                link, before = self.link(f"/{number}"), len(self.desktop.log())
                startup_id = f"mail-{mail.pid}-host-mail-0_TIME{number}"
                self.assertEqual(caller.open(link, desktop_startup_id=startup_id).error, "")
                self.assertEqual(self.summary(link, before), expected)
                self.assert_fetched(link, WORK if process else HOME)
                self.desktop.processes.end([mail.pid, *self.children(mail.pid)])

    def children(self, process):
        text = Path(f"/proc/{process}/task/{process}/children")
        return map(int, text.read_text().split()) if text.exists() else []

    def test_link_of_the_browser_itself_opens_once(self):
        (self.desktop.root / "apps/copy").mkdir()
        browser = self.desktop.root / "apps/copy/chromium"
        shutil.copy(self.desktop.sender, browser)
        link = self.link()
        self.assertEqual(self.sender(lambda link: [browser, "gio", "open", link], link), "Chromium (chromium)")
        self.assert_fetched(link, HOME, settle=0.5)

    def test_browser_whose_entry_starts_ferrivane_is_none(self):
        self.desktop._write_entry("google-chrome", "Chrome", self.program)
        entry = self.desktop.root / "data/applications/google-chrome.desktop"
        self.addCleanup(entry.unlink)
        for number, command in enumerate((["gio", "open"], ["xdg-open"])):
            link, before = self.link(f"/{number}"), len(self.desktop.log())
            self.run_command(*command, link)
            self.summary(link, before)
            self.assert_fetched(link, HOME, settle=0.5)
            self.assertEqual(self.desktop.log()[before:].count("/… from "), 1)


if __name__ == "__main__":
    main()
