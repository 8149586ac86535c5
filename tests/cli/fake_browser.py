"""A running browser as far as its singleton socket goes, in the layout that Chromium gives it."""

import os
import select
import socket
import threading
import time

LONGEST_MESSAGE = 32768
COOKIE = "14627834110984352106"


class FakeBrowser:
    """Listens until it is closed. `user_data` gets the three links of a running browser.

    It answers each message after `delay` seconds, and not while `may_answer` is cleared. It counts those
    that another connection followed before they were answered.
    """

    def __init__(self, user_data, socket_folder, answer=b"ACK", delay=0.0):
        self.answer, self.delay = answer, delay
        self.may_answer = threading.Event()
        self.may_answer.set()
        self.overlaps = 0
        self.messages = []
        self.connections = 0
        self._arrived = threading.Condition()
        socket_folder.mkdir(mode=0o700)
        user_data.mkdir(parents=True, exist_ok=True)
        path = socket_folder / "SingletonSocket"
        self._listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self._listener.bind(os.fsencode(path))
        self._listener.listen(128)
        (socket_folder / "SingletonCookie").symlink_to(COOKIE)
        (user_data / "SingletonCookie").symlink_to(COOKIE)
        (user_data / "SingletonSocket").symlink_to(path)
        (user_data / "SingletonLock").symlink_to(f"{socket.gethostname()}-{os.getpid()}")
        self._thread = threading.Thread(target=self._serve)
        self._thread.start()

    def close(self):
        """Nobody listens any more; the links stay."""
        self.may_answer.set()
        self._listener.shutdown(socket.SHUT_RDWR)
        self._thread.join()
        self._listener.close()

    def _serve(self):
        while True:
            try:
                connection = self._listener.accept()[0]
            except OSError:
                return
            with connection:
                self.connections += 1
                message = b""
                while len(message) < LONGEST_MESSAGE:
                    part = connection.recv(LONGEST_MESSAGE - len(message))
                    if not part:
                        break
                    message += part
                if not message:  # somebody has looked whether we are here
                    continue
                with self._arrived:
                    self.messages.append(message)
                    self._arrived.notify_all()
                time.sleep(self.delay)
                self.may_answer.wait()
                self.overlaps += bool(select.select([self._listener], [], [], 0)[0])
                connection.sendall(self.answer)

    def message(self, number=0):
        """The parts of the message with this number, "START" and the working directory first."""
        with self._arrived:
            if not self._arrived.wait_for(lambda: len(self.messages) > number, 120):
                raise AssertionError(f"no message number {number} has arrived")
            return self.messages[number].split(b"\0")

    def arguments(self, number=0):
        """Without the program's path."""
        return self.message(number)[3:]
