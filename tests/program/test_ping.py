"""The ping tool and "My IP" on a network of this machine alone: the loopback."""

import unittest

from scenario import Scenario


class Ping(Scenario):
    def setUp(self):
        super().setUp()
        self.panel = self.launcher()

    def ping(self):
        self.open_tool(self.panel, "Internet", "Utilities", "Ping")
        return self.suite.window("Ping")

    def press(self, window, button):
        self.suite.click(window.find(role="push button", name=button))

    def await_text(self, window, name, text):
        """Waits until a text box reads exactly that."""
        box = window.find(role="text", name=name)

        def reads():
            box.forget()
            return box.text == text

        self.suite.await_that(reads, f'"{name}" to read "{text}"')

    def text(self, window, name):
        return window.find(role="text", name=name).text

    def test_a_ping_of_this_machine_shows_what_came_back(self):
        window = self.ping()
        self.suite.fill(window, {" Host IP Address :": "localhost", " Pinging  Data   ": "Hello"})
        self.press(window, "Pinging Host")
        self.await_text(window, " Echo Data", "Hello")
        self.assertEqual(self.text(window, " Data Size"), " 5")
        self.assertRegex(self.text(window, " Round Trip Time"), r"^ \d+$")
        self.assertRegex(self.text(window, "  Pinging Status "), r"^Reply from localhost \(.*\): 5 bytes in ")

    def test_after_a_failure_only_stop_brings_the_button_back(self):
        window = self.ping()
        self.suite.fill(window, {" Host IP Address :": "127.0.0.300"})
        self.press(window, "Pinging Host")
        button = window.find(role="push button", name="Pinging Host")

        def is_enabled():
            button.forget()
            return button.has("enabled")

        self.suite.await_that(lambda: not is_enabled(), "the button to stay disabled")
        self.assertEqual(self.text(window, "  Pinging Status "), "")
        self.press(window, "Stop")
        self.suite.await_that(is_enabled, "the button to come back")

    def test_a_scan_lists_who_answers(self):
        window = self.ping()
        self.suite.focus(window.find(role="text", name="Address prefix"), times=3)
        self.suite.type("127.0.0.")
        self.suite.fill(window, {"From  Address:": "7"})
        self.suite.focus(window.find(role="text", name="To  Address:"), times=3)
        self.suite.type("9")
        self.press(window, "Scan")
        self.await_text(window, "Last address tried", " 9")
        addresses = window.find(role="list", name="Active IPs")

        def listed():
            addresses.forget()
            return [each.name for each in addresses.children]

        expected = [f"127.0.0. {last}" for last in (7, 8, 9)]
        self.suite.await_that(lambda: listed() == expected, "the three addresses to be listed")
        log = self.text(window, "  Pinging Status ").splitlines()
        self.assertEqual(log[0], "Pinging to : 127.0.0. 7")
        self.assertEqual(len(log), 9)

    def test_my_ip_answers_at_once(self):
        self.open_tool(self.panel, "Internet", "Utilities", "Get local IP")
        window = self.suite.window("My IP")
        self.press(window, "Get My IP and my domain name")
        # What this machine's network lacks is said in boxes, one after the other.
        notices = ("Windows Socket error !!", "Domain name not available .....", "IP address not available....")

        def boxes():
            return [node for node in self.suite.windows() if node.name == "Vandrel"]

        def answered():
            for box in boxes():
                self.assertTrue(any(node.name in notices for node in box.all()))
                self.suite.click(box.find(role="push button", name="OK"))
            return not boxes() and window.find(role="label", name="My IP:").has("showing")

        self.suite.await_that(answered, "every notice to be answered")
        self.press(window, "Get My IP and my domain name")
        self.suite.await_that(answered, "every notice to be answered again")


if __name__ == "__main__":
    unittest.main()
