#!/usr/bin/env python3
"""Every argument reaches Chrome as it is, or is refused; nothing is evaluated."""

import subprocess

from helper_case import SCRIPT, HelperCase, main

HOSTILE = ["https://a/b c", "https://a/'\"\\", "https://a/$(touch x)`touch x`${HOME}", "https://a/\nb\n",
           "https://a/*?[a-z]~", "https://a/;&|<>(){}!#", "https://a/\x01\x1b[31m", "https://a/ü\u202e",
           "https://a/%n%s\\n", "a -b --c", "https://a/ --gpu-launcher=x", " https://a/ ", "=",
           b"https://a/\xff\xfe", "https://a/" + "x" * 100_000]


class Arguments(HelperCase):
    def test_hostile_links_and_profiles_arrive_byte_for_byte(self):
        chrome = self.program("a chrome's $(x)")
        for shell in self.each_shell():
            for text in HOSTILE:
                text = text.decode(errors="surrogateescape") if isinstance(text, bytes) else text
                self.assertEqual(self.run_script("open", chrome, text, shell=shell), (0, ""))
                self.assertEqual(self.arguments_of(chrome), [text])
                switch = f"--profile-directory={text}"
                self.assertEqual(self.run_script("launch", chrome, switch, text, shell=shell), (0, ""))
                self.assertEqual(self.arguments_of(chrome), [switch, text])
        self.assertEqual(sorted(path.name for path in self.root.glob("**/x")), [])

    def test_what_chrome_would_take_for_a_switch_is_refused(self):
        chrome = self.program("chrome")
        for shell in self.each_shell():
            for link in ("-", "--x", " --x", "\t-x", "\n--x", "\v\f\r --x", "--profile-directory=x", ""):
                for command in ("open", "launch"):
                    self.refused(command, chrome, link, shell=shell)
                    self.refused(command, chrome, "--profile-directory=x", link, shell=shell)
            self.assert_not_started(chrome)

    def test_other_switches_are_refused(self):
        chrome = self.program("chrome")
        for shell in self.each_shell():
            for switches in (["--gpu-launcher=x"], ["--profile-directory="], ["--profile-directory"],
                             ["x"], [" --profile-directory=x"],
                             ["--profile-directory=x", "--profile-directory=y"],
                             ["--profile-directory=x", "https://a/"]):
                self.refused("open", chrome, *switches, "https://b/", shell=shell)
                self.refused("launch", chrome, *switches, "https://b/", shell=shell)
            self.assert_not_started(chrome)

    def test_missing_and_unknown_arguments_are_refused(self):
        chrome = self.program("chrome")
        for shell in self.each_shell():
            for arguments in ([], ["nonsense"], ["--help"], [""], ["open"], ["launch"], ["open", chrome],
                              ["launch", chrome], ["profiles"], ["profiles", ""], ["profiles", "relative"],
                              ["profiles", "/a", "/b"], ["open", "chrome", "https://a/"],
                              ["launch", "", "https://a/"], ["open", "-x", "https://a/"]):
                self.refused(*arguments, shell=shell)
            for name in ("none", "."):
                self.refused("open", self.root / name, "https://a/", status=1, shell=shell)
                self.refused("launch", self.root / name, "https://a/", status=1, shell=shell)
            chrome.chmod(0o644)
            self.refused("open", chrome, "https://a/", status=1, shell=shell)
            chrome.chmod(0o755)
            self.assert_not_started(chrome)

    def test_judge_of_shell_scripts_finds_nothing(self):
        for dialect in ("sh", "dash", "bash"):
            subprocess.run(["shellcheck", "--shell", dialect, SCRIPT], check=True)


if __name__ == "__main__":
    main()
