#!/usr/bin/env python3
"""The Debian package: what is in it, and what Debian's own checker thinks of it."""

import gzip
import tarfile

from package_case import FILES, ID, MODULES, VERSION, PackageCase, entry, main, without_modules

DEBIAN = {
    "usr/share/doc/ferrivane/changelog.gz",
    "usr/share/doc/ferrivane/copyright",
    "usr/share/lintian/overrides/ferrivane",
}
# Otherwise than elsewhere.
PLACES = {
    "share/man/man1/Ferrivane.1": "share/man/man1/Ferrivane.1.gz",
    "share/zsh/site-functions/_Ferrivane": "share/zsh/vendor-completions/_Ferrivane",
}


class Deb(PackageCase):
    def setUp(self):
        super().setUp()
        self.package = self.made_package()

    def field(self, name):
        return self.run_command("dpkg-deb", "--field", self.package, name).strip()

    def unpack(self):
        self.run_command("dpkg-deb", "--extract", self.package, self.root / "unpacked")
        return self.root / "unpacked"

    def members(self):
        self.run_command("sh", "-c", 'dpkg-deb --fsys-tarfile "$1" >data.tar', "sh", self.package)
        with tarfile.open(self.root / "data.tar") as archive:
            return {member.name.removeprefix("./"): member for member in archive if member.name != "."}

    def test_name_and_fields(self):
        architecture = self.run_command("dpkg", "--print-architecture").strip()
        self.assertEqual(self.package.name, f"ferrivane_{VERSION}_{architecture}.deb")
        fields = {"Package": "ferrivane", "Version": VERSION, "Section": "web",
                  "Architecture": architecture,
                  "Recommends": "google-chrome-stable | chromium, xdg-utils", "Provides": ""}
        self.assertEqual({name: self.field(name) for name in fields}, fields)
        self.assertRegex(self.field("Maintainer"), r"^the Ferrivane authors <.+@.+>$")

    def test_depends_on_what_the_program_and_its_modules_are_linked_with(self):
        depends = self.field("Depends")
        for library in ("libc6 (", "libstdc++6 (", "libsimdjson", "libglib2.0-0", "libxcb1",
                        "libqt6widgets6"):
            self.assertIn(library, depends)

    def test_files(self):
        files = {name for name, member in self.members().items() if not member.isdir()}
        expected = {f"usr/{PLACES.get(file, file)}" for file in FILES} | DEBIAN
        self.assertEqual(without_modules(files), (expected, MODULES))

    def test_files_belong_to_root_and_can_be_read_by_everybody(self):
        for name, member in self.members().items():
            self.assertEqual((member.uid, member.gid, member.uname), (0, 0, "root"), name)
            executable = member.isdir() or name in ("usr/bin/Ferrivane",
                                                    "usr/share/ferrivane/ferrivane-helper.sh")
            self.assertEqual(oct(member.mode), oct(0o755 if executable else 0o644), name)

    def test_entries_name_the_program_where_it_will_be(self):
        share = self.unpack() / "usr/share"
        desktop = entry(share / f"applications/{ID}.desktop")["Desktop Entry"]
        self.assertEqual((desktop["TryExec"], desktop["Exec"]),
                         ("/usr/bin/Ferrivane", "/usr/bin/Ferrivane %U"))
        service = entry(share / f"dbus-1/services/{ID}.service")["D-BUS Service"]
        self.assertEqual(service["Exec"], "/usr/bin/Ferrivane --agent")

    def test_changelog_is_of_this_version(self):
        text = gzip.decompress((self.unpack() / "usr/share/doc/ferrivane/changelog.gz").read_bytes())
        self.assertTrue(text.decode().startswith(f"ferrivane ({VERSION}) unstable; urgency="))
        (self.root / "changelog").write_bytes(text)
        parsed = self.run_command("dpkg-parsechangelog", "-l", self.root / "changelog")
        self.assertIn(f"\nVersion: {VERSION}\n", parsed)

    def test_no_scripts_run_when_it_is_installed_or_removed(self):
        self.run_command("dpkg-deb", "--control", self.package, self.root / "control")
        self.assertEqual({path.name for path in (self.root / "control").iterdir()},
                         {"control", "md5sums"})

    def test_lintian_finds_nothing(self):
        out = self.run_command("lintian", "--allow-root", "--no-cfg", "--display-info", "--pedantic",
                               "--fail-on", "error,warning,info,pedantic", self.package)
        self.assertEqual(out, "")

    def test_same_build_makes_the_same_package(self):
        again = self.make_package(env={"TZ": "Asia/Tokyo", "LC_ALL": "C"})
        self.assertEqual(again.read_bytes(), self.package.read_bytes())

    def test_time_can_be_given(self):
        self.package = self.make_package(env={"SOURCE_DATE_EPOCH": "1700000000"})
        self.assertEqual({member.mtime for member in self.members().values()}, {1700000000})


if __name__ == "__main__":
    main()
