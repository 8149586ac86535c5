#!/usr/bin/env python3
"""What the operands of a command become: links, files, nothing."""

from browser_case import LONG, WORK, BrowserCase, main, wait_until


class Operands(BrowserCase):
    def setUp(self):
        super().setUp()
        self.desktop.write_rules(default="Work")
        self.folder = self.desktop.root / "files"
        self.folder.mkdir(exist_ok=True)

    def page(self, name):
        """A local file that fetches from the server when a browser shows it."""
        link = self.link(f"/{len(self.server.hits)}/shown")
        (self.folder / name).write_text(f'<!doctype html><img src="{link}">')
        return link

    def test_file_given_relative_is_opened(self):
        shown = self.page("a page.html")
        log = self.send("a page.html", cwd=self.folder).log
        self.assertIn("→ Work [Profile 1] via default\n", log)
        self.assert_fetched(shown, WORK)

    def test_links_and_files_are_opened_in_the_given_order(self):
        shown, first, last = self.page("middle.html"), self.link("/first"), self.link("/last")
        lines = self.lines_of_links(self.send(first, "middle.html", "no-such-file", last, cwd=self.folder))
        self.assertEqual(len(lines), 6, lines)
        for link in (first, shown, last):
            self.assert_fetched(link, WORK)
        self.assertIn("http://127.0.0.1", lines[0])
        self.assertIn("file:", lines[2])
        self.assertIn("http://127.0.0.1", lines[4])

    def test_name_of_a_file_in_the_working_folder_never_replaces_a_link(self):
        link = self.link()
        (self.folder / "http:").mkdir(exist_ok=True)
        self.send(link, cwd=self.folder)
        self.assert_fetched(link, WORK)

    def test_switches_never_reach_the_browser(self):
        written = self.folder / "histograms"
        for number, blank in enumerate(("", " ", "\t", "\n ", "\t-", "\v", "\f\r")):
            link = self.link(f"/{number}")
            switch = f"{blank}--dump-browser-histograms={written}"
            self.send(switch, link, switch, cwd=self.folder)
            self.assert_fetched(link, WORK)
            # Without a link it is a start of the application itself.
            application = self.desktop.start(switch, cwd=self.folder)
            wait_until(lambda: self.desktop.log().count(" started\n") == number + 1, LONG, "its start")
            application.terminate()
            application.communicate(timeout=LONG)
            self.assertFalse(written.exists(), switch)
        for switch in (" --incognito", "\t--x", " --profile-directory=Profile 2", "-"):
            link = self.link(f"/{switch.strip(' -').replace(' ', '')}")
            self.send(link, switch, cwd=self.folder)
            self.assert_fetched(link, WORK)
        self.assert_profiles_unchanged()
        self.assertFalse(written.exists())

    def test_switch_inside_a_link_stays_part_of_it(self):
        written = self.folder / "histograms"
        link = self.link(f"/?x=%20--dump-browser-histograms={written}")
        self.send(link.replace("%20", " "))
        self.assert_fetched(link, WORK)
        self.assertFalse(written.exists())


class OddLinks(BrowserCase):
    def arrives(self, text, path):
        """The link, text or bytes behind the server's address, is fetched as this path."""
        address = self.link("/")
        text = text if isinstance(text, bytes) else text.encode()
        sent = self.desktop.send(address.encode() + text)
        self.assertEqual(sent[:3], (0, "", ""), sent.log)
        self.assertEqual(len(self.lines_of_links(sent)), 2, sent.log)
        self.assert_fetched(address + path)

    def test_line_break(self):
        self.arrives("one\ntwo\r\nthree\tfour", "onetwothreefour")

    def test_forged_log_line(self):
        self.arrives("x\n2026-01-31 14:05:09.042 [ERROR] forged",
                     "x2026-01-31%2014:05:09.042%20[ERROR]%20forged")

    def test_invalid_utf8(self):
        self.arrives(b"a\xff\xfe\xc0\xafb\xed\xa0\x80c", "a" + "%EF%BF%BD" * 4 + "b"
                     + "%EF%BF%BD" * 3 + "c")

    def test_directional_controls_and_other_scripts(self):
        self.arrives("\u202egpj.exe\u2066\u200b\u0301é",
                     "%E2%80%AEgpj.exe%E2%81%A6%E2%80%8B%CC%81%C3%A9")

    def test_shell_and_format_characters(self):
        self.arrives("$(id)`id`%s%n';x=\"1\"&|*", "$(id)%60id%60%s%n';x=%221%22&%7C*")

    def test_blank_around_a_link(self):
        link = self.link("/")
        sent = self.send(link + "end \n")
        self.assert_fetched(link + "end")
        self.assertEqual(len(self.lines_of_links(sent)), 2, sent.log)

    def test_full_links_in_the_log_keep_every_byte(self):
        text = self.desktop.rules_file.read_text().replace("{", '{"logFullURLs": true,', 1)
        self.desktop.rules_file.write_text(text)
        link = self.link("/a\u202eb?secret=1#x")
        self.assertIn(f"{link} from ", self.send(link).log)
        wait_until(lambda: any("secret=1" in hit.path for hit in self.server.hits), LONG, link)


if __name__ == "__main__":
    main()
