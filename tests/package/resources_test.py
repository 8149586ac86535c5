#!/usr/bin/env python3
"""What the desktop and the person read is well-formed, by the judgement of those who define it."""

import re
import subprocess

from package_case import ID, SOURCES, VERSION, PackageCase, main


class Resources(PackageCase):
    def setUp(self):
        super().setUp()
        self.prefix = self.root / "prefix"
        self.install(self.prefix)

    def test_desktop_entry(self):
        path = self.prefix / f"share/applications/{ID}.desktop"
        self.assertEqual(self.run_command("desktop-file-validate", path), "")

    def test_metainfo(self):
        path = self.prefix / f"share/metainfo/{ID}.metainfo.xml"
        self.run_command("appstreamcli", "validate", "--no-net", "--pedantic", path)
        self.assertIn(f'<release version="{VERSION}" date="20', path.read_text())

    def test_manual(self):
        page = self.prefix / "share/man/man1/Ferrivane.1"
        # Without a device to write for there is nothing but messages.
        self.assertEqual(self.run_command("groff", "-man", "-ww", "-b", "-z", "-Tutf8", "-K", "utf8",
                                          page, stderr=subprocess.STDOUT), "")
        self.assertIn(f'"Ferrivane {VERSION}"', page.read_text())

    def test_manual_names_every_option_and_file(self):
        text = (self.prefix / "share/man/man1/Ferrivane.1").read_text().replace("\\-", "-")
        usage = self.run_command(self.prefix / "bin/Ferrivane", "--help")
        options = set(re.findall(r"--[a-z-]+", usage))
        self.assertGreaterEqual(len(options), 6)
        for word in (*options, "-h", "rules.json", "ferrivane.log", f"{ID}.desktop", f"{ID}.service"):
            self.assertIn(word, text)

    def test_icons_are_pictures(self):
        for name in (f"scalable/apps/{ID}.svg", f"symbolic/apps/{ID}-symbolic.svg"):
            path = self.prefix / "share/icons/hicolor" / name
            for size in (16, 32, 48, 128):
                picture = self.root / "icon.png"
                self.run_command("rsvg-convert", "-w", size, "-h", size, "-o", picture, path)
                header = picture.read_bytes()[:24]
                self.assertEqual(header[16:], size.to_bytes(4, "big") * 2)

    def test_symbolic_icon_has_one_colour(self):
        """A desktop replaces it by its own; it knows fills, not strokes."""
        text = (SOURCES / f"resources/icons/{ID}-symbolic.svg").read_text()
        self.assertEqual(set(re.findall(r"#[0-9a-f]{3,6}", text)), {"#2e3436"})
        self.assertNotIn("stroke", text)
        self.assertIn('width="16" height="16"', text)


if __name__ == "__main__":
    main()
