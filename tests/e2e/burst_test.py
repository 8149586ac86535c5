#!/usr/bin/env python3
"""Many links at once."""

from browser_case import PLAY, WORK, BrowserCase, main


class Burst(BrowserCase):
    def test_fifty_links_at_once_arrive_once_each_in_its_profile(self):
        self.desktop.write_rules(("url", "-work", "Work"), ("url", "-play", "Play"))
        links = [(self.link(f"/{number}-{profile.name.lower()}"), profile)
                 for number in range(25) for profile in (WORK, PLAY)]
        before = len(self.desktop.log())
        children = [self.desktop.start(link) for link, _ in links]
        for child in children:
            _, err = child.communicate(timeout=60)
            self.assertEqual((child.returncode, err), (0, b""), self.desktop.log()[before:])
        self.note("every process has ended")
        for link, profile in links:
            self.assert_fetched(link, profile, seconds=30)
        self.note("every link has arrived")
        for link, profile in links:
            self.assert_fetched(link, profile)
        log = self.desktop.log()[before:]
        self.assertEqual(log.count(" over its singleton socket ("), 50)
        # On a slow machine a link may have waited for the others as long as it waits at all.
        self.assertNotRegex(log, r"\[ERROR\]|socket not used")

    def test_fifty_links_of_one_command_arrive_once_each(self):
        self.desktop.write_rules(default="Play")
        links = [self.link(f"/{number}") for number in range(50)]
        self.send(*links)
        for link in links:
            self.assert_fetched(link, PLAY, seconds=30)


if __name__ == "__main__":
    main()
