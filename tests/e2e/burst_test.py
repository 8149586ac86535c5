#!/usr/bin/env python3
"""Many links at once."""

from browser_case import LONG, PLAY, WORK, BrowserCase, main


class Burst(BrowserCase):
    def test_fifty_links_at_once_arrive_once_each_in_its_profile(self):
        self.desktop.write_rules(("url", "-work", "Work"), ("url", "-play", "Play"))
        links = [(self.link(f"/{number}-{profile.name.lower()}"), profile)
                 for number in range(25) for profile in (WORK, PLAY)]
        before = len(self.desktop.log())
        children = [self.desktop.start(link) for link, _ in links]
        for child in children:
            _, err = child.communicate(timeout=LONG)
            self.assertEqual((child.returncode, err), (0, b""), self.desktop.log()[before:])
        self.note("every process has ended")
        self.assert_all_arrive(links, before)

    def test_fifty_links_of_one_command_arrive_once_each(self):
        self.desktop.write_rules(default="Play")
        links = [self.link(f"/{number}") for number in range(50)]
        before = len(self.desktop.log())
        self.send(*links)
        self.assert_all_arrive([(link, PLAY) for link in links], before)


if __name__ == "__main__":
    main()
