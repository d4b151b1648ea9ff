"""The suite under test: its process, its windows, and a person's hands on mouse and keyboard."""

import contextlib
import os
import subprocess

import accessible
from session import PATIENCE, await_condition


POP_UP_ROLES = {accessible.ROLE_OF_MENUS, "list"}
"""Objects inside these can lie in a pop-up window: items of menus and of opened combo boxes."""


def _holds(window, name, part):
    """Whether something that shows in the window has that name, or a name with that part."""
    if name is None and part is None:
        return True
    return any(node.name == name if name is not None else part in node.name for node in window.all())


class Suite:
    """One run of the suite. Its home folder, drive c: of the suite, is `home`."""

    def __init__(self, session, command):
        self.session = session
        self.home = session.new_home()
        with open(self._log_path, "wb") as log:
            self.process = subprocess.Popen(
                command, env={**session.environment, "HOME": self.home}, cwd=self.home,
                stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        self.tree = await_condition(self._appear, "the suite in the accessibility tree")

    def _appear(self):
        if self.process.poll() is not None:
            raise AssertionError(f"the suite ended at once with status {self.process.returncode}: {self.log()}")
        return accessible.application(self.process.pid)

    @property
    def _log_path(self):
        return self.home + ".log"

    def log(self):
        """What the suite wrote to its standard output and error."""
        with open(self._log_path, encoding="utf-8", errors="replace") as log:
            return log.read()

    def kill(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()

    def await_end(self):
        """Waits for the process to end by itself and returns its exit status."""
        with contextlib.suppress(subprocess.TimeoutExpired):
            return self.process.wait(PATIENCE)
        raise AssertionError(f"the suite did not end; there is:\n{self.tree.described()}")

    @property
    def runs(self):
        return self.process.poll() is None

    # Windows.

    def windows(self):
        """The top-level windows that show, menus and tool tips left out."""
        self.tree.forget()
        return [node for node in self.tree.children
                if node.has("showing") and node.role in ("frame", "dialog", "window", "alert", "filler")]

    def window(self, title, holding=None, holding_text=None):
        """Waits for the window of that title. Windows of one title are told apart by something in them: its
        whole name (`holding`) or a part of one (`holding_text`)."""
        def look():
            return next((node for node in self.windows()
                         if node.name == title and _holds(node, holding, holding_text)), None)

        try:
            return await_condition(look, f'the window "{title}" with "{holding or holding_text or ""}"')
        except AssertionError as failure:
            raise AssertionError(f"{failure}; there is:\n{self.tree.described()}\n{self.log()}") from None

    def await_no_window(self, title, holding=None):
        """Waits until no such window is left, or the whole suite has ended."""
        def gone():
            return not any(node.name == title and _holds(node, holding, None) for node in self.windows())

        self.await_that(gone, f'the window "{title}" to close')
        self.await_that(lambda: self._has_left_the_screen(title), f'the window "{title}" to leave the screen')

    def _has_left_the_screen(self, title):
        """Whether the screen shows no more windows of that title than the suite means to show."""
        meant = sum(node.name == title for node in self.windows())
        return self.session.screen.titles().count(title) <= meant

    def await_active(self, window):
        def is_active():
            window.forget()
            return window.has("active")

        self.await_that(is_active, f'the window "{window.name}" to become active')

    def await_that(self, condition, what):
        """Waits for a condition; a failure shows the tree."""
        try:
            return await_condition(condition, what)
        except AssertionError as failure:
            raise AssertionError(f"{failure}; there is:\n{self.tree.described()}\n{self.log()}") from None

    def close(self, window):
        """Closes a window as its close box does, through the window manager."""
        self.activate(window)
        self.keys("alt+F4")

    def activate(self, window):
        """Brings a window forward with a click on its upper edge's frame, and waits until it is active."""
        window.forget()
        if window.has("active"):
            return
        x, y, width, _ = window.rectangle
        self._tool("mousemove", str(x + width // 2), str(y - 8), "click", "1")
        self.await_active(window)

    def choose_window(self, window):
        """Brings a window forward that others may cover, as a desktop's list of windows does."""
        identifier = self.await_that(
            lambda: self.session.screen.identifier(window.name), f'the window manager to know "{window.name}"')
        self._tool("windowactivate", str(identifier))
        self.await_active(window)

    # Hands.

    def _tool(self, *arguments, check=True):
        done = subprocess.run(["xdotool", *arguments], env=self.session.environment,
                              capture_output=True, text=True, check=check, timeout=60)
        return done.stdout

    def point(self, node, where=(0.5, 0.5)):
        """Moves the pointer over an object, to its middle or to the stated fraction of its size, and waits
        until the object lies still below it with nothing in between."""
        target = None

        def aimed():
            nonlocal target
            before, target = target, self._spot(node, where)
            if target is None:
                return False
            if target != before:
                self._tool("mousemove", str(target[0]), str(target[1]))
                return False
            return self._lies_under_pointer(node, target)

        self.await_that(aimed, f'"{node.name}" to lie under the pointer')

    def _spot(self, node, where):
        """The point of the screen at the stated fraction of an object's size; None while it has none."""
        node.forget()
        x, y, width, height = node.rectangle
        return (int(x + width * where[0]), int(y + height * where[1])) if width > 0 and height > 0 else None

    def _lies_under_pointer(self, node, target):
        """Whether the pointer is at its target and the window under it is the one that the object is in."""
        place, top = self.session.screen.pointer()
        if place != target or top is None:
            return False
        above = node.ancestors()
        roles = {each.role for each in above}
        if self.session.screen.is_pop_up(top):
            return bool(roles & POP_UP_ROLES)
        return accessible.ROLE_OF_MENUS not in roles \
            and self.session.screen.managed_title(top) == (above or [node])[-1].name

    def click(self, node, where=(0.5, 0.5), times=1):
        self.point(node, where)
        self._tool("click", "--repeat", str(times), "--delay", "60", "1")

    @contextlib.contextmanager
    def dragging(self, node, target):
        """Drags an object over another with the left button, and lets go of it there when the block ends."""
        self.settle([node, target])
        self.point(node)
        self._tool("mousedown", "1")
        try:
            self._pull(self._spot(node, (0.5, 0.5)), self._spot(target, (0.5, 0.5)))
            yield
        finally:
            self._tool("mouseup", "1")

    def drag(self, node, target):
        """Drags an object onto another."""
        with self.dragging(node, target):
            pass

    def stroke(self, node, start, end):
        """Draws in an object with the left button, between two fractions of its size."""
        self.point(node, start)
        self._tool("mousedown", "1")
        try:
            self._pull(self._spot(node, start), self._spot(node, end))
        finally:
            self._tool("mouseup", "1")

    def _pull(self, start, end):
        for step in range(1, 11):
            self._tool("mousemove", *(str(a + (b - a) * step // 10) for a, b in zip(start, end)))

    def double_click_title(self, child):
        """Double-clicks the title bar of a document window inside its frame."""
        self.point(child, (0.5, 0))
        self._tool("mousemove_relative", "0", str(round(10 * accessible.SCALE)), "click", "--repeat", "2", "--delay", "60", "1")

    def settle(self, nodes):
        """Waits until the windows have found their places: two looks at an interval find them the same."""
        places = None

        def still():
            nonlocal places
            before = places
            for node in nodes:
                node.forget()
            places = [node.rectangle for node in nodes]
            return before == places

        await_condition(still, "the windows to come to rest")

    def keys(self, *combinations):
        """Presses key combinations such as "ctrl+s" or "Return"."""
        self._await_keyboard()
        self._tool("key", "--clearmodifiers", *combinations)

    def type(self, text):
        """Types a text with the keyboard."""
        self._await_keyboard()
        self._tool("type", "--delay", "8", "--", text)

    def _await_keyboard(self):
        """Waits until a window takes the keys: between the end of one and the turn of the next they are lost."""
        self.await_that(self.session.screen.keyboard_window, "a window to take the keys")

    def focus(self, node, times=1):
        """Clicks an object that takes keys, and waits until it has them."""
        self.click(node, times=times)

        def has_focus():
            node.forget()
            return node.has("focused")

        self.await_that(has_focus, f'"{node.name}" to take the keys')

    def fill(self, window, fields):
        """Types into text boxes of a window, by their names."""
        for name, text in fields.items():
            self.focus(window.find(role="text", name=name))
            first, *others = text.split("\n")
            self.type(first)
            for line in others:
                self.keys("Return")
                self.type(line)

    # Buttons and boxes.

    def await_enabled(self, window, button):
        """Waits until a button of a window is enabled; returns it."""
        node = window.find(role="push button", name=button)

        def is_enabled():
            node.forget()
            return node.has("enabled")

        self.await_that(is_enabled, f'"{button}" to be enabled')
        return node

    def press(self, window, button):
        """Presses a button once it is enabled."""
        self.click(self.await_enabled(window, button))

    def await_text(self, window, name, *parts):
        """Waits until a text box reads all those parts; returns its text."""
        box = window.find(role="text", name=name)

        def reads():
            box.forget()
            return all(part in box.text for part in parts)

        try:
            self.await_that(reads, f'"{name}" to read {parts}')
        except AssertionError as failure:
            raise AssertionError(f'it reads "{box.text}": {failure}') from None
        return box.text

    # Menus.

    def menu(self):
        """Waits for an open pop-up menu; the last one opened."""
        return self.await_that(lambda: next(iter(accessible.menus.open()), None), "a menu to open")

    def menu_item(self, name):
        """Waits for an item of an open menu."""
        return self.await_that(lambda: accessible.menus.find_item(name), f'the menu item "{name}"')

    def submenu(self, name):
        """Waits for the open submenu of the item of that name."""
        def look():
            item = accessible.menus.find_item(name)
            return item and next((child for child in item.children if child.has("showing")), None)

        return self.await_that(look, f'the submenu "{name}"')

    def open_menu(self, window, name):
        """Opens a menu of a window's menu bar."""
        self.click(window.find(role="menu bar").find(role="menu item", name=name))
        return self.menu()

    def choose(self, window, name, *names):
        """Walks a menu bar: choose(frame, "File", "Save as...")."""
        self.open_menu(window, name)
        self.choose_in_menu(*names)

    def choose_in_menu(self, *names):
        """Walks the open menus by item names."""
        for name in names:
            self.click(self.menu_item(name))

    def close_menus(self):
        """Dismisses the open menus, however deep."""
        opened = len(accessible.menus.open())
        while opened:
            self.keys("Escape")
            self.await_that(lambda: len(accessible.menus.open()) < opened, "a menu to close")
            opened = len(accessible.menus.open())

    def await_no_menu(self):
        self.await_that(lambda: not accessible.menus.open(), "the menus to close")
