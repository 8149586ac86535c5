"""A local web server that knows which of the browser's profiles asks for a page."""

import threading
import time
from html import escape
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from typing import NamedTuple
from urllib.parse import urlsplit

from processes import shorten


class Profile(NamedTuple):
    directory: str
    name: str
    language: str  # its Accept-Language, by which the server knows it
    colour: str
    email: str = ""

    def __str__(self):
        return f"{self.name} [{self.directory}]"


HOME = Profile("Default", "Home", "de", "#2e7d32")
WORK = Profile("Profile 1", "Work", "fr", "#1565c0")
PLAY = Profile("Profile 2", "Play", "it", "#c2410c")
SHOP = Profile("Profile 3", "Shop", "es", "#7b1fa2", "buyer@shop.example")
PROFILES = (HOME, WORK, PLAY, SHOP)


class Hit(NamedTuple):
    """One page that the browser fetched."""
    host: str
    path: str  # with the query
    language: str
    browser: str = ""  # what it calls itself
    time: float = 0  # by the wall clock


class WebServer(ThreadingHTTPServer):
    """Answers every path with the name of the profile that asked, and remembers who asked."""
    request_queue_size = 128
    daemon_threads = True

    def __init__(self):
        super().__init__(("127.0.0.1", 0), _Page)
        self.hits = []
        self.stays = lambda hit: True  # or the page closes its tab once it is loaded
        threading.Thread(target=self.serve_forever, kwargs={"poll_interval": 0.05}, daemon=True).start()

    def link(self, path, host="127.0.0.1"):
        return f"http://{host}:{self.server_port}{path}"

    def fetched(self, link):
        """Who fetched this link, one entry per time: path and query count."""
        parts = urlsplit(link)
        path = parts.path + ("?" + parts.query if parts.query else "")
        return [hit for hit in list(self.hits) if hit.path == path and hit.host == parts.netloc]


class _Page(BaseHTTPRequestHandler):
    def do_GET(self):
        language = self.headers.get("Accept-Language", "").partition(",")[0]
        host = self.headers.get("Host", "")
        hit = Hit(host, self.path, language, self.headers.get("User-Agent", ""), time.time())
        self.server.hits.append(hit)
        end = "" if self.server.stays(hit) else "<script>onload = () => close()</script>"
        profile = next((p for p in PROFILES if p.language == language), None)
        name, colour = (profile.name, profile.colour) if profile else ("?", "#555")
        own = [hit for hit in self.server.hits if hit.language == language][-6:]
        items = "".join(f"<li>{escape(hit.host.partition(':')[0] + shorten(hit.path, 60))}</li>"
                        for hit in own)
        page = f"""<!doctype html><html lang="{escape(language)}"><head><meta charset="utf-8">
<title>{name}: {escape(shorten(self.path, 60))}</title><link rel="icon" href="data:,"><style>
body {{ background: {colour}; color: white; font: 20px sans-serif; margin: 1.2em }}
h1 {{ font-size: 96px; margin: 0 0 24px }} li {{ overflow-wrap: anywhere; line-height: 1.6 }}
li:last-child {{ font-weight: bold }}</style></head>
<body>profile<h1>{name}</h1>Accept-Language: {escape(language)}
<p>fetched:</p><ul>{items}</ul>{end}</body></html>""".encode()
        self.send_response(200)
        self.send_header("Content-Type", "text/html; charset=utf-8")
        self.send_header("Content-Length", str(len(page)))
        self.end_headers()
        self.wfile.write(page)

    def log_message(self, *_):
        pass
