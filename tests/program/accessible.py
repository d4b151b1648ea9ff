"""The accessibility tree of the program under test, as a screen reader sees it.

Widgets are found by role and name. What a person would do with the mouse or the keys is done with the mouse
and the keys: the tree only says where things are and what state they are in.
"""

import os

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402  (the version is chosen first)

from session import await_condition  # noqa: E402

STATES = {
    "active": Atspi.StateType.ACTIVE,
    "checked": Atspi.StateType.CHECKED,
    "enabled": Atspi.StateType.ENABLED,
    "focused": Atspi.StateType.FOCUSED,
    "showing": Atspi.StateType.SHOWING,
}

ROLE_OF_MENUS = "popup menu"

SCALE = float(os.environ.get("QT_SCALE_FACTOR", "1"))
"""Pixels of the screen to one of the toolkit's, in which the tree states where things are."""

Atspi.init()
# A program that hangs fails its test within seconds.
Atspi.set_timeout(3000, 10000)


class Node:
    """One accessible object. A vanished object has no role, no name and no children."""

    def __init__(self, accessible):
        self._accessible = accessible

    def _ask(self, question, default):
        try:
            return question(self._accessible)
        except GLib.Error:
            return default

    @property
    def role(self):
        return self._ask(lambda it: it.get_role_name(), "")

    @property
    def name(self):
        return self._ask(lambda it: it.get_name() or "", "")

    @property
    def children(self):
        def ask(it):
            return [it.get_child_at_index(index) for index in range(it.get_child_count())]

        return [Node(child) for child in self._ask(ask, []) if child is not None]

    def ancestors(self):
        """What the object is in, the nearest first and the window last."""
        above = []
        parent = self._ask(lambda it: it.get_parent(), None)
        while parent is not None and Node(parent).role != "application":
            above.append(Node(parent))
            parent = above[-1]._ask(lambda it: it.get_parent(), None)
        return above

    def has(self, state):
        """Whether the object is in a state of STATES."""
        return self._ask(lambda it: it.get_state_set().contains(STATES[state]), False)

    @property
    def rectangle(self):
        """Position and size in pixels of the screen: x, y, width, height."""
        def ask(it):
            extents = Atspi.Component.get_extents(it, Atspi.CoordType.SCREEN)
            return tuple(round(SCALE * measure) for measure in (extents.x, extents.y, extents.width, extents.height))

        return self._ask(ask, (0, 0, 0, 0))

    @property
    def text(self):
        """The text of an object that holds text."""
        def ask(it):
            return Atspi.Text.get_text(it, 0, Atspi.Text.get_character_count(it)) \
                if "Text" in it.get_interfaces() else ""

        return self._ask(ask, "")

    def attributes_at(self, position):
        """The formatting of the character at a position, by the names of the accessibility protocol."""
        return self._ask(
            lambda it: dict(Atspi.Text.get_attribute_run(it, position, False)[0]), {})

    def forget(self):
        """Drops what the accessibility library remembers, so that the next question reaches the program."""
        self._ask(lambda it: it.clear_cache(), None)

    def walk(self):
        """This object and everything below it, the nearest first."""
        generation = [self]
        while generation:
            yield from generation
            generation = [child for node in generation for child in node.children]

    def all(self, role=None, name=None, showing=True):
        """Everything below of that role and name that shows on the screen."""
        self.forget()
        return [node for node in self.walk()
                if node is not self
                and (role is None or node.role == role)
                and (name is None or node.name == name)
                and (not showing or node.has("showing"))]

    def find(self, role=None, name=None, showing=True):
        """Waits for the first object below of that role and name."""
        def look():
            found = self.all(role, name, showing)
            return found[0] if found else None

        try:
            return await_condition(look, f'a {role or "thing"} named "{name}" in "{self.name}"')
        except AssertionError as failure:
            raise AssertionError(f"{failure}; there is:\n{self.described()}") from None

    def await_gone(self, role=None, name=None):
        """Waits until nothing below of that role and name shows."""
        await_condition(lambda: not self.all(role, name), f'the {role or "thing"} named "{name}" to go')

    def described(self, depth=0, limit=12):
        """The tree as text, for a failure's report."""
        if depth > limit:
            return ""
        states = " ".join(state for state in STATES if self.has(state))
        lines = [f'{"  " * depth}{self.role} "{self.name}" [{states}]']
        lines += [child.described(depth + 1, limit) for child in self.children]
        return "\n".join(line for line in lines if line)


class Menus:
    """The open pop-up menus, the last opened first. A menu is no child of the application: like a screen
    reader, one hears of it when it shows itself."""

    def __init__(self):
        self._shown = []
        self._listener = Atspi.EventListener.new(self._hear)
        self._listener.register("object:state-changed:showing")

    def _hear(self, event, *_):
        if event.detail1:
            self._shown.append(Node(event.source))

    def open(self):
        context = GLib.MainContext.default()
        while context.pending():
            context.iteration(False)
        for node in self._shown:
            node.forget()
        self._shown = [node for node in self._shown if node.role == ROLE_OF_MENUS and node.has("showing")]
        return list(reversed(self._shown))

    def find_item(self, name):
        """The item of that name in the open menus; None when there is none."""
        for menu in self.open():
            for item in menu.children:
                if item.name == name and item.has("showing"):
                    return item
        return None


menus = Menus()


def application(process_id):
    """The accessible application of a process; None as long as it has not shown itself."""
    desktop = Node(Atspi.get_desktop(0))
    desktop.forget()
    for child in desktop.children:
        if child._ask(lambda it: it.get_process_id(), -1) == process_id:
            return child
    return None
