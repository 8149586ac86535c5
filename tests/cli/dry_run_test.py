#!/usr/bin/env python3
"""--test: where would this link go?"""

import os

from program_case import ProgramCase, Ran, main


class DryRun(ProgramCase):
    def setUp(self):
        super().setUp()
        self.chromium = self.install_browser()
        self.write_profiles(Default={"name": "Home"},
                            Profile_2={"name": "Work", "user_name": "me@work.example"})

    def report(self, url, *, opener="none", rule='none matched → default "Default"',
               profile="Home [Default]", command="--profile-directory=Default https://a/"):
        return Ran(0, f"URL:      {url}\nOpener:   {opener}\nRule:     {rule}\nProfile:  {profile}\n"
                      f"Command:  {self.chromium} {command}\n", "")

    def test_no_rule(self):
        self.write_rules()
        self.assertEqual(self.run_program("--test", "https://a/"), self.report("https://a/"))

    def test_a_rule_of_each_kind(self):
        self.write_rules(("app", "org.example.Mail", "Work"), ("host", "a", "me@work.example", "the office"),
                         ("url", "/path", "Profile 2"))
        work = {"profile": "Work [Profile 2] me@work.example"}
        rows = {
            "app": (["https://x/", "--from", "org.example.Mail"],
                    self.report("https://x/", opener="org.example.Mail", **work,
                                rule='#1 app "org.example.Mail" → Work',
                                command='"--profile-directory=Profile 2" https://x/')),
            "host": (["https://sub.a/"],
                     self.report("https://sub.a/", **work,
                                 rule='#2 host "a" → me@work.example   // the office',
                                 command='"--profile-directory=Profile 2" https://sub.a/')),
            "url": (["HTTPS://X/PATH"],
                    self.report("HTTPS://X/PATH", **work, rule='#3 url "/path" → Profile 2',
                                command='"--profile-directory=Profile 2" HTTPS://X/PATH')),
        }
        for name, (arguments, expected) in rows.items():
            with self.subTest(name):
                self.assertEqual(self.run_program("--test", *arguments), expected)

    def test_arguments_in_every_order(self):
        self.write_rules()
        rows = (["--from", "Mail", "--test", "https://a/"], ["--test", "https://a/", "--from", "Mail"],
                ["--help", "--test", "https://a/", "--from", "Mail"],
                ["--from", "x", "--test", "y", "--from", "Mail", "--test", "https://a/", "--status"],
                ["https://b/", "-x", "--test", "https://a/", "z", "--from", "Mail"])
        for arguments in rows:
            with self.subTest(arguments):
                self.assertEqual(self.run_program(*arguments), self.report("https://a/", opener="Mail"))

    def test_sender_without_a_name_is_none(self):
        self.write_rules()
        self.assertEqual(self.run_program("--test", "https://a/", "--from"), self.report("https://a/"))

    def test_any_text_can_be_tested(self):
        self.write_rules()
        for text in (b"--status", b"-x", b"word", b"https://a/\xff\xc3(", "https://a/\u202e".encode(),
                     b"https://a/\r\nb", b"ferrivane:x", b"x" * 131071):
            with self.subTest(text[:30]):
                shown = os.fsdecode(text)
                self.assertEqual(self.run_program("--test", text),
                                 self.report(shown, command="--profile-directory=Default " + shown))

    def test_unknown_profile(self):
        self.write_rules(defaultProfile="Gone")
        self.assertEqual(
            self.run_program("--test", "https://a/"),
            self.report("https://a/", rule='none matched → default "Gone"', command="https://a/",
                        profile='"Gone" NOT FOUND in Chrome; would open without --profile-directory'))

    def test_no_browser_and_no_catalogue(self):
        self.write_rules()
        self.entry.unlink()
        (self.user_data / "Local State").unlink()
        self.assertEqual(
            self.run_program("--test", "https://a/").out.splitlines()[3:],
            ['Profile:  "Default" NOT FOUND in Chrome; would open without --profile-directory',
             "Command:  <Chrome not found> https://a/"])

    def test_browser_in_a_folder_with_a_blank(self):
        self.write_rules()
        path = self.root / "a folder/chromium"
        path.parent.mkdir()
        path.symlink_to(self.chromium)
        self.write_entry("chromium", f'"{path}" %U')
        self.assertEqual(self.run_program("--test", "https://a/ b").out.splitlines()[4],
                         f'Command:  "{path}" --profile-directory=Default "https://a/ b"')

    def test_broken_rules_are_located(self):
        rows = {
            "missing": (None, "open failed: No such file or directory"),
            "forgotten comma": ('{\n  "defaultProfile": "A"\n  "rules": []\n}',
                                "line 3, column 9: syntax error while parsing object - unexpected string "
                                "literal; expected '}'"),
            "comma too many": ('{"rules": [],\n}',
                               "line 2, column 1: syntax error while parsing object key - unexpected '}'; "
                               "expected string literal"),
            "rule without a kind": ('{"rules": [\n{}]}', "line 2: rules[0].kind: missing"),
            "unknown kind": ('{"rules": [\n{"kind": "url", "match": "", "profile": ""},\n'
                             '{"kind": "app", "match": "", "profile": ""},\n'
                             '{"kind": "Host", "match": "", "profile": ""}]}',
                             'line 4: rules[2].kind: "Host" is not one of url, host, app'),
            "wrong type": ('{\n"logFullURLs": "yes"}',
                           "line 2: logFullURLs: expected true or false, found a string"),
            "empty": ("", "line 1, column 1: syntax error while parsing value - unexpected end of input; "
                          "expected '[', '{', or a literal"),
        }
        for name, (text, reason) in rows.items():
            with self.subTest(name):
                self.rules_file.unlink(missing_ok=True)
                if text is not None:
                    self.write_rules(text=text)
                self.assertEqual(self.run_program("--test", "https://a/"),
                                 Ran(1, f"cannot read {self.rules_file}: {reason}\n", ""))

    def test_rules_that_are_a_folder(self):
        self.rules_file.mkdir(parents=True)
        self.assertEqual(self.run_program("--test", "https://a/"),
                         Ran(1, f"cannot read {self.rules_file}: read failed: Is a directory\n", ""))

    def test_opens_nothing_and_logs_nothing(self):
        self.write_rules()
        self.run_program("--test", "https://a/")
        self.assertEqual(self.starts_of_browser(), [])
        self.assertFalse(self.log_file.parent.exists())


if __name__ == "__main__":
    main()
