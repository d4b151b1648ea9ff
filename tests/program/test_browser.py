"""The web browser on pages of this machine: a small web server of the test's own."""

import http.server
import threading
import unittest

from scenario import Scenario

PAGES = {
    "/first": b"<!DOCTYPE html><title>First page</title><h1>The first page</h1><p><a href=/second>On to the second</a>",
    "/second": b"<!DOCTYPE html><title>Second page</title><h1>The second page</h1>",
}


class _Pages(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        page = PAGES.get(self.path, b"<title>Missing</title>")
        self.send_response(200 if self.path in PAGES else 404)
        self.send_header("Content-Length", str(len(page)))
        self.send_header("Content-Type", "text/html; charset=utf-8")
        self.send_header("Cache-Control", "max-age=600")
        self.end_headers()
        self.wfile.write(page)

    def log_message(self, *_):
        pass


class Browser(Scenario):
    def setUp(self):
        super().setUp()
        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), _Pages)
        self.addCleanup(self.server.server_close)
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        self.addCleanup(self.server.shutdown)
        self.panel = self.launcher()
        self.open_tool(self.panel, "Internet", "Browse the Internet")
        self.window = self.suite.window("Internet - ")

    def address(self, path):
        return f"http://127.0.0.1:{self.server.server_port}{path}"

    def go(self, address, title):
        """Types an address and waits for the page of that title; the window is then the one of that title."""
        self.suite.activate(self.window)
        self.suite.keys("ctrl+l")
        self.suite.type(address)
        self.suite.keys("Return")
        self.window = self.suite.window(title)

    def press(self, button):
        self.suite.click(self.window.find(role="push button", name=button))

    def test_pages_come_and_the_buttons_lead_through_them(self):
        self.go(self.address("/first"), "Internet - First page")
        self.go(self.address("/second"), "Internet - Second page")
        self.press("Back")
        self.window = self.suite.window("Internet - First page")
        self.suite.await_text(self.window, "Address", self.address("/first"))
        self.press("Forward")
        self.window = self.suite.window("Internet - Second page")
        self.press("Home")
        self.window = self.suite.window("Internet - Start page")
        self.press("Search")
        self.window = self.suite.window("Internet - Search")

    def test_without_history_back_does_nothing(self):
        self.press("Back")
        self.go(self.address("/first"), "Internet - First page")

    def test_the_last_page_stays_offline(self):
        self.go(self.address("/first"), "Internet - First page")
        self.go(self.address("/second"), "Internet - Second page")
        self.press("Offline")
        self.server.shutdown()
        self.server.server_close()
        self.press("Back")
        self.window = self.suite.window("Internet - First page")

    def test_a_window_opened_again_is_blank(self):
        self.go(self.address("/first"), "Internet - First page")
        self.suite.close(self.window)
        self.suite.await_no_window("Internet - First page")
        self.open_tool(self.panel, "Internet", "Browse the Internet")
        self.window = self.suite.window("Internet - ")
        self.assertEqual(self.window.find(role="text", name="Address").text, "")


if __name__ == "__main__":
    unittest.main()
