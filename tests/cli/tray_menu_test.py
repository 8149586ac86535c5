#!/usr/bin/env python3
"""The menu of the icon, as a panel draws it, and what its items do."""

import os
import time

from agent_case import LONG, MIB, Ran, main, takes_at_rest, wait_until
from tray_case import ITEM, MENU, Lines, TrayCase

INVALID = "org.freedesktop.DBus.Error.InvalidArgs"
UNKNOWN = "org.freedesktop.DBus.Error.UnknownMethod"
SHOWN = {"enabled": True, "visible": True}
SETTINGS, EDIT, LOG, QUIT = 1, 3, 4, 6
ITEMS = {
    0: {"children-display": "submenu"},
    SETTINGS: {"label": "Settings…", "shortcut": [["Control", ","]]},
    2: {"type": "separator"},
    EDIT: {"label": "Edit rules.json"},
    LOG: {"label": "Show Log"},
    5: {"type": "separator"},
    QUIT: {"label": "Quit Ferrivane", "shortcut": [["Control", "q"]]},
}
NAMES = "@as []"


def whole(number, properties):
    return number, properties, []


class TrayMenu(TrayCase):
    shows_windows = True

    def setUp(self):
        super().setUp()
        self.install_editor()
        self.choose_icon()
        self.watcher = self.start_watcher()
        self.agent = self.start_agent()
        self.icon = self.registered(self.watcher)

    def assert_opened(self, *files, settle=0.2):
        wait_until(lambda: len(self.opened()) >= len(files), LONG, f"{len(files)} documents")
        time.sleep(settle)
        self.assertEqual(self.opened(), [str(file) for file in files])
        self.assertEqual(self.settings(), [])

    # What it looks like.

    def test_whole_menu(self):
        items = [whole(number, properties | SHOWN) for number, properties in ITEMS.items()]
        (_, root, _), *children = items
        for depth in ("-1", "1", "5", "-2147483648", "2147483647"):
            self.assertEqual(self.menu(self.icon, "GetLayout", "0", depth, NAMES),
                             ("", (1, (0, root, children))))

    def test_part_of_the_menu(self):
        root = ITEMS[0] | SHOWN
        self.assertEqual(self.menu(self.icon, "GetLayout", "0", "0", NAMES).value, (1, whole(0, root)))
        for depth in ("-1", "0", "1"):
            self.assertEqual(self.menu(self.icon, "GetLayout", "3", depth, NAMES).value,
                             (1, whole(EDIT, ITEMS[EDIT] | SHOWN)))

    def test_chosen_properties(self):
        layout = self.menu(self.icon, "GetLayout", "0", "-1", "['label', 'type', 'nonsense']").value[1]
        plain = {number: {name: value for name, value in item.items() if name in ("label", "type")}
                 for number, item in ITEMS.items()}
        self.assertEqual(layout, (0, {}, [whole(n, plain[n]) for n in ITEMS if n]))
        group = self.menu(self.icon, "GetGroupProperties", "[1, 2]", "['label']").value
        self.assertEqual(group, [(1, {"label": "Settings…"}), (2, {})])

    def test_properties_of_some_items(self):
        everything = [(number, properties | SHOWN) for number, properties in ITEMS.items()]
        ask = lambda ids: self.menu(self.icon, "GetGroupProperties", ids, NAMES)  # noqa: E731
        self.assertEqual(ask("@ai []"), ("", everything))
        self.assertEqual(ask("[6, 0, 6, 99, -1, 6]"), ("", [everything[0], everything[6]]))
        self.assertEqual(ask("[99]"), ("", []))

    def test_one_property(self):
        ask = lambda number, name: self.menu(self.icon, "GetProperty", number, f"'{name}'")  # noqa: E731
        self.assertEqual(ask("1", "label"), ("", "Settings…"))
        self.assertEqual(ask("6", "shortcut"), ("", [["Control", "q"]]))
        self.assertEqual(ask("3", "enabled"), ("", True))
        self.assertEqual(ask("0", "children-display"), ("", "submenu"))
        for number, name in (("1", "nonsense"), ("1", ""), ("2", "label"), ("7", "label"), ("-1", "label")):
            self.assertEqual(ask(number, name).error, INVALID)

    def test_menu_as_a_whole(self):
        self.assertEqual(self.properties(self.icon, MENU), {
            "Version": 3, "TextDirection": "ltr", "Status": "normal", "IconThemePath": []})
        self.assertEqual(self.menu(self.icon, "AboutToShow", "0"), ("", False))
        self.assertEqual(self.menu(self.icon, "AboutToShowGroup", "[0, 1, 99, -5]"), ("", ([], [-5, 99])))

    def test_underscores_and_upper_case_keys(self):
        probe = Lines(self, os.environ["ICON_PROBE"])
        probe.tell("show")
        icon = self.registered(self.watcher)
        _, (_, _, items) = self.menu(icon, "GetLayout", "0", "-1", "['label', 'shortcut']").value
        self.assertEqual(items, [
            whole(1, {"label": "__Re__do", "shortcut": [["Control", "Shift", "z"]]}), whole(2, {}),
            whole(3, {"label": "Copy"})])

    # What it does.

    def test_settings(self):
        for _ in range(2):
            self.assertEqual(self.click(self.icon, SETTINGS).error, "")
            self.close_settings()
        self.assertIsNone(self.agent.poll())

    def test_edit_rules(self):
        self.assertEqual(self.click(self.icon, EDIT).error, "")
        self.assert_opened(self.rules_file)

    def test_show_log(self):
        self.assertEqual(self.click(self.icon, LOG).error, "")
        self.assert_opened(self.log_file)

    def test_quit(self):
        self.assertEqual(self.click(self.icon, QUIT).error, "")
        self.assertEqual(self.finish(self.agent), Ran(0, "", ""))
        self.assertEqual(self.watcher.next(), f"gone {self.icon}")

    def test_quit_waits_for_the_links(self):
        browser = self.start_browser(delay=0.3)
        caller = self.caller()
        for number in range(5):
            self.assertEqual(caller.open(f"https://a/{number}").error, "")
        self.assertEqual(self.click(self.icon, QUIT).error, "")
        self.assertEqual(self.finish(self.agent), Ran(0, "", ""))
        self.assertEqual(self.links(browser), [f"https://a/{number}" for number in range(5)])

    def test_click_on_the_icon_opens_the_settings(self):
        self.assertEqual(self.call(self.icon, ITEM, "Activate", "10", "10").error, "")
        self.close_settings()

    def provide(self, icon, token):
        self.assertEqual(self.call(icon, ITEM, "ProvideXdgActivationToken", token).error, "")

    def test_token_of_a_click_comes_with_what_is_chosen_and_once(self):
        probe = Lines(self, os.environ["ICON_PROBE"])
        probe.tell("show")
        self.assertEqual(probe.next(), "done")
        icon = self.registered(self.watcher)
        longest = "t" * 4096
        for tokens, said in ((["one"], " one"), (["one", "two"], " two"), (["one", ""], ""),
                             ([longest], f" {longest}"), (["one", longest + "t"], "")):
            for token in tokens:
                self.provide(icon, f"'{token}'")
            self.assertEqual(self.click(icon, 1).error, "")
            self.assertEqual(probe.next(), f"chosen 8{said}")
            self.assertEqual(self.call(icon, ITEM, "Activate", "1", "1").error, "")
            self.assertEqual(probe.next(), "chosen 8")

    def test_settings_are_shown_with_a_token_and_it_is_not_logged(self):
        for _ in range(2):
            self.provide(self.icon, "'to ken'")
            self.assertEqual(self.call(self.icon, ITEM, "Activate", "10", "10").error, "")
            self.close_settings()
        self.assertNotIn("to ken", self.log())

    def test_other_buttons_and_the_wheel_do_nothing(self):
        for method, *arguments in (("ContextMenu", "1", "1"), ("SecondaryActivate", "1", "1"),
                                   ("Scroll", "1", "'vertical'")):
            self.assertEqual(self.call(self.icon, ITEM, method, *arguments).error, "")
        self.assert_opened()

    def test_group_of_events_is_one_click_at_most(self):
        events = "[(1, 'opened', <''>, uint32 0), (3, 'clicked', <''>, 0), (4, 'clicked', <1>, 0), " \
                 "(77, 'clicked', <''>, 0), (-3, 'hovered', <''>, 0)]"
        self.assertEqual(self.menu(self.icon, "EventGroup", events), ("", [-3, 77]))
        self.assert_opened(self.rules_file)

    def test_item_that_takes_the_icon_away(self):
        probe = Lines(self, os.environ["ICON_PROBE"])
        for _ in range(2):
            probe.tell("show")
            self.assertEqual(probe.next(), "done")
            icon = self.registered(self.watcher)
            self.assertEqual(self.click(icon, 1).error, "")
            self.assertEqual(probe.next(), "chosen 8")
            self.assertEqual(self.click(icon, 3).error, "")
            self.assertEqual(probe.next(), "chosen 10")
            self.assertEqual(self.watcher.next(), f"gone {icon}")

    # What is not meant well.

    def test_events_that_are_no_clicks_do_nothing(self):
        for event in ("opened", "closed", "hovered", "", "Clicked", "x-nonsense"):
            for number in (0, SETTINGS, QUIT):
                self.assertEqual(self.click(self.icon, number, event).error, "")
        for number in (0, 2, 5):
            self.assertEqual(self.click(self.icon, number).error, "")
        self.assert_opened()
        self.assertIsNone(self.agent.poll())

    def test_items_that_do_not_exist_are_refused(self):
        for number in ("7", "-1", "2147483647", "-2147483648"):
            self.assertEqual(self.click(self.icon, number).error, INVALID)
            self.assertEqual(self.menu(self.icon, "GetLayout", number, "-1", NAMES).error, INVALID)
            self.assertEqual(self.menu(self.icon, "AboutToShow", number).error, INVALID)
        self.assert_opened()

    def test_calls_of_another_form_are_refused(self):
        call = self.caller().call
        menu = {"to": self.icon, "path": MENU[0], "interface": MENU[1]}
        self.assertEqual(call("Event", "s", "x", **menu).error, INVALID)
        self.assertEqual(call("Event", **menu).error, INVALID)
        self.assertEqual(call("GetLayout", "u", 1, **menu).error, INVALID)
        self.assertEqual(call("Nonsense", **menu).error, UNKNOWN)
        item = {"to": self.icon, "path": ITEM[0], "interface": ITEM[1]}
        self.assertEqual(call("Activate", "s", "x", **item).error, INVALID)
        self.assertEqual(call("ProvideXdgActivationToken", "i", 1, **item).error, INVALID)
        self.assertEqual(call("Nonsense", **item).error, UNKNOWN)
        self.assertEqual(call("Set", "ssv", ITEM[1], "Title", ("s", "x"), **item | {
            "interface": "org.freedesktop.DBus.Properties"}).error, INVALID)
        self.assertEqual(self.property(self.icon, ITEM, "Title"), "Ferrivane")

    def test_many_and_monstrous_calls_leave_nothing_behind(self):
        caller = self.caller()
        menu = {"to": self.icon, "path": MENU[0], "interface": MENU[1]}
        properties = {"to": self.icon, "path": ITEM[0], "interface": "org.freedesktop.DBus.Properties"}

        def rounds(number):
            for _ in range(number):
                reply = caller.call("GetGroupProperties", "aias", [QUIT] * 10 ** 5, ["label"] * 10 ** 5, **menu)
                self.assertEqual((reply.error, len(reply.body) < 200), ("", True))
                for _ in range(100):
                    self.assertEqual(caller.call("GetAll", "s", ITEM[1], **properties).error, "")

        rounds(2)  # the library keeps its buffers
        before = takes_at_rest(self.agent.pid)
        rounds(6)
        self.assert_takes_no_more(self.agent.pid, before, 4 * MIB)
        self.assert_opened()


if __name__ == "__main__":
    main()
