"""A desktop on whose session bus Ferrivane is installed as the default browser, and its agent."""

import subprocess

from browser_case import LONG, BrowserCase, wait_until

BUS_CALL = ["gdbus", "call", "--session", "--dest", "com.hollowmere.ferrivane", "--object-path",
            "/com/hollowmere/ferrivane", "--method", "org.freedesktop.Application.Open"]


def bus_call(link, data="@a{sv} {}"):
    """A command that sends the link by a call on the bus, with this platform data."""
    return [*BUS_CALL, f"['{link}']", data]


class AgentBrowserCase(BrowserCase):
    """Each test finds no agent."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        if not hasattr(cls.desktop, "bus"):
            cls.desktop.start_bus()
            cls.program = cls.desktop.install()
            AgentBrowserCase.program = cls.program

    def tearDown(self):
        self.end_agents()
        super().tearDown()

    def end_agents(self):
        with self.desktop.bus.connect() as caller:
            agent = caller.owner()
            if agent:
                self.desktop.processes.end([agent])
            wait_until(lambda: not caller.owner(), LONG, "end of the agent")

    def agent(self):
        """The agent's pid, or none."""
        with self.desktop.bus.connect() as caller:
            return caller.owner()

    def start_agent(self):
        agent = self.desktop.processes.start([self.program, "--agent"], stdout=subprocess.DEVNULL,
                                             stderr=subprocess.DEVNULL)
        wait_until(lambda: self.agent() == agent.pid, LONG, "an agent")
        return agent.pid

    def run_command(self, *command, env=None, status=0):
        child = self.desktop.processes.start(command, env=self.desktop.env | (env or {}),
                                             stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        out, err = child.communicate(timeout=LONG)
        if status is not None:
            self.assertEqual(child.returncode, status, (command, out, err))
        return child

    def summary(self, link, before):
        """What the log has said since about the link's sender, up to the arrow."""
        # The log names the host alone, so a test that asks sends one link at a time.
        host = link.split("/")[2].partition(":")[0]
        def line():
            lines = [line for line in self.desktop.log()[before:].splitlines() if f"://{host}/… from " in line]
            return lines[-1] if lines else None
        return wait_until(line, LONG, f"{link} in the log").partition(" from ")[2].partition(" → ")[0]
