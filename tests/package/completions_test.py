#!/usr/bin/env python3
"""Every option of the usage is offered by each shell."""

import re

from package_case import PackageCase, main

OPTIONS = ["--from", "--help", "--restore-default", "--set-default", "--status", "--test"]


class Completions(PackageCase):
    def setUp(self):
        super().setUp()
        self.prefix = self.root / "prefix"
        self.install(self.prefix)
        self.folder = self.root / "folder"
        self.folder.mkdir()
        (self.folder / "page one.html").touch()

    def bash(self, *words):
        script = ('source "$1"; shift; complete -p Ferrivane >/dev/null || exit\n'
                  'compopt() { :; }\n'  # knows only a completion that a person asked for
                  'COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _Ferrivane\n'
                  'printf "%s\\n" "${COMPREPLY[@]}"')
        path = self.prefix / "share/bash-completion/completions/Ferrivane"
        out = self.run_command("bash", "--norc", "-c", script, "bash", path, "Ferrivane", *words,
                               cwd=self.folder)
        return sorted(filter(None, out.splitlines()))

    def test_bash(self):
        self.assertEqual(self.bash("--"), OPTIONS)
        self.assertEqual(self.bash("-"), sorted([*OPTIONS, "-h"]))
        self.assertEqual(self.bash("--s"), ["--set-default", "--status"])
        self.assertEqual(self.bash("--test", "p"), [])
        self.assertEqual(self.bash("--test", "https://a/", "--f"), ["--from"])
        self.assertEqual(self.bash("p"), ["page one.html"])

    def fish(self, line):
        path = self.prefix / "share/fish/vendor_completions.d/Ferrivane.fish"
        out = self.run_command("fish", "--no-config", "-c",
                               'source $argv[1]; complete -C "Ferrivane $argv[2]"', path, line,
                               cwd=self.folder)
        return sorted(row.partition("\t")[0] for row in out.splitlines())

    def test_fish(self):
        self.assertEqual(self.fish("--"), OPTIONS)
        self.assertEqual(self.fish("--s"), ["--set-default", "--status"])
        self.assertEqual(self.fish("--test p"), [])
        self.assertIn("page one.html", " ".join(self.fish("p")).replace("\\", ""))

    def test_zsh(self):
        """Asked as by a person, in a terminal, for it completes nowhere else."""
        script = ("zmodload zsh/zpty; zpty shell zsh -fi; local seen\n"
                  "zpty -w shell \"fpath=($1 \\$fpath); autoload -Uz compinit; compinit -D -u\"\n"
                  "zpty -w shell \"bindkey '^I' list-choices; print REA''DY\"\n"
                  "zpty -r shell seen '*READY*'\n"
                  "zpty -wn shell $'Ferrivane --\\t'\n"
                  "zpty -r shell seen '*--test *'\n"
                  "print -r -- $seen; zpty -d shell")
        out = self.run_command("zsh", "-f", "-c", script, "zsh", self.prefix / "share/zsh/site-functions",
                               env={"TERM": "dumb"})
        self.assertEqual(sorted(set(re.findall(r"--[a-z-]+", out))), OPTIONS)

    def test_every_option_of_the_usage_is_known(self):
        usage = self.run_command(self.prefix / "bin/Ferrivane", "--help")
        self.assertEqual(sorted(set(re.findall(r"--[a-z-]+", usage))), OPTIONS)


if __name__ == "__main__":
    main()
