#!/usr/bin/env python3
"""The windows as an assistive program finds them, and what it can do there."""

import json
import re
from pathlib import Path

from agent_case import LONG, AgentCase, main, wait_until
from tray_case import Lines

CLIENT = Path(__file__).resolve().parents[1] / "support/accessibility_client.py"
PYTHON = "/usr/bin/python3"  # the system's: others lack the client's modules
LINK = "https://work.example/päth?q=1&b=<b>&c=%20'\"#fragment"
NO_LINK = "Type a link to see where it would open."
RULES = (("url", "example.com/team", "Work"), ("host", "shop.example", "Home"), ("app", "Mail", "Work"))


class Accessibility(AgentCase):
    session = {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}
    shows_windows = True

    def setUp(self):
        super().setUp()
        self.children = []
        self.bus.install_accessibility()
        self.write_rules(*RULES, defaultProfile="Home")

    def tearDown(self):
        try:
            for child in self.children:
                child.end()
        finally:
            super().tearDown()

    # The assistive program.

    def start_client(self):
        self.client = Lines(self, PYTHON, CLIENT)

    def ask(self, *request):
        self.client.tell(json.dumps(request))
        answer = json.loads(self.client.next())
        self.assertNotIn("error", answer)
        return answer["value"]

    def items(self, role=None):
        return [item for item in self.ask("everything") if role in (None, item["role"])]

    def focused(self):
        return [(item["role"], heard(item)) for item in self.items() if "focused" in item["states"]]

    def press(self, name, role="push button", action="Press"):
        self.assertTrue(self.ask("act", role, name, action))

    def type(self, name, text):
        self.assertTrue(self.ask("type", "text", name, text))

    def is_open(self, name):
        return any("expanded" in item["states"] for item in self.items("combo box") if heard(item) == name)

    def text(self, name):
        found, = (item["text"] for item in self.items("text") if item["name"] == name)
        return found

    # The settings.

    def show_settings(self):
        self.install_browser()
        self.agent = self.start_agent()
        self.assertEqual(self.caller().activate().error, "")
        self.wait_for_settings()
        self.start_client()

    def rules(self):
        rules = json.loads(self.rules_file.read_text())["rules"]
        return [tuple(rule[key] for key in ("kind", "match", "profile")) for rule in rules]

    def wait_for_rules(self, *rules):
        try:
            wait_until(lambda: self.rules() == [*rules], LONG, "the rules")
        except AssertionError:
            self.assertEqual(self.rules(), [*rules])

    def wait_for_rows(self, number):
        wait_until(lambda: len(self.items("list item")) == number, LONG, f"{number} rows")

    def test_whatever_takes_the_focus_says_what_it_is(self):
        self.show_settings()
        expected = [("push button", "Make Ferrivane the default"), ("list", "Rules")]
        for number, (kind, *_) in enumerate(RULES, 1):
            row = [("push button", "Drag to reorder"), ("combo box", "Kind"), ("text", "Text to match"),
                   ("push button", "Fill in from a running app"), ("combo box", "Profile"),
                   ("push button", "Remove rule")]
            if kind != "app":
                row.remove(("push button", "Fill in from a running app"))
            expected += [(role, f"{name}, rule {number}") for role, name in row]
        expected += [("push button", "Add rule"), ("combo box", "Default profile"), ("text", "Link to try"),
                     ("combo box", "Sent by"), ("label", NO_LINK), ("check box", "Show icon in the menu bar"),
                     ("push button", "Edit rules.json…"), ("push button", "Show Log")]
        found = [(item["role"], heard(item)) for item in self.items() if "focusable" in item["states"]]
        self.assertEqual(found, expected)

    def test_rows_are_items_of_the_list_and_hold_what_is_theirs(self):
        self.show_settings()
        rows = self.items("list item")
        self.assertEqual([row["name"] for row in rows], [f"Rule {n}" for n in range(1, len(RULES) + 1)])
        self.assertEqual({"Rules" in row["within"] for row in rows}, {True})
        for number, (kind, match, profile) in enumerate(RULES, 1):
            inside = [item for item in self.items() if f"Rule {number}" in item["within"]]
            shown = [item["name"] for item in inside if item["role"] == "combo box"]
            self.assertEqual(shown, [{"url": "URL contains", "host": "Domain", "app": "Sent by"}[kind], profile])
            self.assertEqual([item["text"] for item in inside if item["role"] == "text"], [match])

    def test_what_is_only_read_is_there(self):
        self.show_settings()
        labels = [item["name"] for item in self.items("label")]
        for text in ("Ferrivane is not the default browser: links open straight in another app.",
                     "Drag the ≡ handle to reorder. Comments live in rules.json.", "Default profile",
                     "Used when none of the rules above matches.", NO_LINK):
            self.assertIn(text, labels)
        self.assertIn("Rules — checked top to bottom, the first match wins",
                      [item["name"] for item in self.items("panel")])
        self.assertEqual([item["name"] for item in self.items("menu item")], ["Ferrivane", "Edit", "Window"])

    def test_added_rule_waits_for_its_text(self):
        self.show_settings()
        self.press("Add rule")
        wait_until(lambda: self.focused() == [("text", "Text to match, rule 4")], LONG, "focus in the new field")
        self.wait_for_rules(*RULES, ("url", "", "Home"))
        self.type("Text to match, rule 4", "new.example/ä")
        self.wait_for_rules(*RULES, ("url", "new.example/ä", "Home"))

    def test_text_of_a_rule_is_saved(self):
        self.show_settings()
        self.type("Text to match, rule 2", "other.example")
        changed = [RULES[0], ("host", "other.example", "Home"), RULES[2]]
        self.wait_for_rules(*changed)
        self.assertTrue(self.ask("insert", "text", "Text to match, rule 3", 0, "My "))
        changed[2] = ("app", "My Mail", "Work")
        self.wait_for_rules(*changed)
        self.assertEqual(self.text("Text to match, rule 2"), "other.example")
        self.type("Text to match, rule 2", "")
        changed[1] = ("host", "", "Home")
        self.wait_for_rules(*changed)

    def test_rules_are_removed(self):
        self.show_settings()
        self.press("Remove rule, rule 2")
        self.wait_for_rules(RULES[0], RULES[2])
        self.wait_for_rows(2)
        self.assertEqual(self.text("Text to match, rule 2"), "Mail")
        self.press("Remove rule, rule 1")
        self.wait_for_rules(RULES[2])
        self.wait_for_rows(1)
        self.press("Remove rule, rule 1")
        self.wait_for_rules()
        wait_until(lambda: "No rules yet: every link opens in the default profile." in
                   [item["name"] for item in self.items("label")], LONG, "the line in place of the rules")

    def test_kind_and_profile_are_chosen_from_an_opened_menu(self):
        self.show_settings()
        for name, keys, changed in (("Kind, rule 1", ("Down", "Return"), ("host", "example.com/team", "Work")),
                                    ("Profile, rule 1", ("Home", "Return"), ("host", "example.com/team", "Default"))):
            self.press(name, "combo box", "ShowMenu")
            wait_until(lambda: self.is_open(name), LONG, f"the choices of {name}")
            self.display.press(*keys)
            self.wait_for_rules(changed, *RULES[1:])

    def test_result_of_the_link_that_is_tried(self):
        self.show_settings()
        for link, result in (("https://example.com/team/1", "→ Work [Profile 2]   (rule #1)"),
                             ("https://www.shop.example/", "→ Home [Default]   (rule #2)"),
                             ("https://a.example/", "→ Home [Default]   (no rule matched, default)"),
                             (" ", NO_LINK)):
            self.type("Link to try", link)
            wait_until(lambda: result in [item["name"] for item in self.items("label")], LONG, result)

    def test_icon_is_chosen(self):
        self.show_settings()
        preferences = self.root / "config/ferrivane/preferences.ini"
        for chosen in ("true", "false"):
            self.press("Show icon in the menu bar", "check box", "Toggle")
            wait_until(lambda: f"\nshowMenuBarIcon={chosen}\n" in preferences.read_text(), LONG, chosen)
            box, = self.items("check box")
            self.assertEqual("checked" in box["states"], chosen == "true")
            entry = self.root / "config/autostart/com.hollowmere.ferrivane.desktop"
            self.assertEqual(entry.exists(), chosen == "true")

    # The alert.

    def test_alert_of_a_link_that_cannot_be_opened(self):
        agent = self.start_agent()
        caller = self.caller()
        for number, button in enumerate(("OK", "Copy Link"), 1):
            self.assertEqual(caller.open(LINK).error, "")
            self.wait_for_settings()
            self.start_client()
            self.wait_for_log("Chrome launch failed: ", number)
            reason = re.search(r"\[ERROR\] +Chrome launch failed: (.*)", self.log())[1]
            self.assertIn("Google Chrome is not installed", reason)
            window, *inside = self.items()
            self.assertEqual((window["role"], window["name"]), ("dialog", "Ferrivane"))
            texts = [item["text"] or item["name"] for item in inside if item["role"] in ("label", "text")]
            self.assertEqual([text for text in texts if text],
                             ["Couldn't open the link in Google Chrome", f"{reason}\n\n{LINK}"])
            self.assertEqual([item["name"] for item in inside if item["role"] == "push button"],
                             ["Copy Link", "OK"])
            self.assertEqual(self.focused(), [("push button", "Copy Link")])
            self.press(button)
            wait_until(lambda: not self.settings(), LONG, "end of the alert")
        self.assertEqual(self.agents(), [agent.pid])


def heard(item):
    """What tells it apart by ear: of a combo box its description, the name being what is chosen."""
    return item["description"] if item["role"] == "combo box" else item["name"]


if __name__ == "__main__":
    main()
