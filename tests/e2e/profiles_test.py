#!/usr/bin/env python3
"""A rule's profile, however it is written, is the profile that fetches the link."""

from browser_case import HOME, PLAY, SHOP, WORK, BrowserCase, main


class RunningBrowser(BrowserCase):
    def test_loaded_profile(self):
        for profile in (WORK, PLAY, HOME):
            self.desktop.write_rules(("url", "/", profile.directory))
            link = self.link(f"/{profile.name}")
            sent = self.send(link)
            self.assert_fetched(link, profile)
            self.assertRegex(sent.log, rf" → {profile.name} \[{profile.directory}\] via rule #1 ")
            pid = self.desktop.browser()
            _, outcome = self.lines_of_links(sent)
            self.assertRegex(outcome, rf"^\S+ \S+ \[INFO\]   handed to running Chrome \(pid {pid}\) "
                                      r"over its singleton socket \(\d+ ms\)$")

    def test_profile_by_its_name(self):
        self.desktop.write_rules(("url", "/", "work"))
        link = self.link()
        self.assertIn("→ Work [Profile 1] via", self.send(link).log)
        self.assert_fetched(link, WORK)

    def test_default_profile_by_its_directory(self):
        self.desktop.write_rules(default="Profile 2")
        link = self.link()
        self.assertIn("→ Play [Profile 2] via default\n", self.send(link).log)
        self.assert_fetched(link, PLAY)

    def test_unknown_profile_opens_the_link_and_makes_no_profile(self):
        for text in ("Nobody", "default", "profile 1"):
            self.desktop.write_rules(("url", "/", text))
            link = self.link(f"/{text.replace(' ', '-')}")
            log = self.send(link).log
            self.assertIn(f'→ profile "{text}" NOT FOUND via rule #1 (url "/")\n', log)
            self.assertIn("[WARN] opening without --profile-directory so Chrome does not create a new "
                          "profile; known profiles: Home [Default], Work [Profile 1], "
                          "Play [Profile 2], Shop [Profile 3]\n", log)
            self.assert_fetched(link, settle=0.5)
            self.assert_profiles_unchanged()

    def test_profile_not_yet_loaded(self):
        self.desktop.write_rules(("url", "/", "Shop"))
        link = self.link()
        self.assertIn("→ Shop [Profile 3] via", self.send(link).log)
        self.assert_fetched(link, SHOP, settle=0.5)


class ProfileByAddress(BrowserCase):
    """The browser forgets a written address once its profile is loaded."""
    loaded = (HOME,)

    def setUp(self):
        self.desktop.stop_browsers()
        super().setUp()

    def test_profile_not_yet_loaded_by_its_email_address(self):
        self.desktop.write_rules(("url", "/", "Buyer@Shop.Example"))
        link = self.link()
        self.assertIn("→ Shop [Profile 3] via", self.send(link).log)
        self.assert_fetched(link, SHOP)


if __name__ == "__main__":
    main()
