"""What the X server shows: which window lies under the pointer, which has the keyboard, which are on the screen.

The accessibility tree tells what the suite means to show. A window that the suite has let go can lie on the
screen for a while yet, until the window manager has heard of it, and take the clicks meant for what it covers.
"""

import Xlib.display
import Xlib.error
import Xlib.X

VANISHED = (Xlib.error.BadWindow, Xlib.error.BadDrawable)


class Screen:
    def __init__(self, address):
        self._display = Xlib.display.Display(address)
        self._root = self._display.screen().root

    def close(self):
        self._display.close()

    def _property(self, window, name):
        """A property's value, or None."""
        try:
            answer = window.get_full_property(self._display.intern_atom(name), Xlib.X.AnyPropertyType)
        except VANISHED:
            return None
        return answer and answer.value

    def _title(self, client):
        title = self._property(client, "_NET_WM_NAME") or self._property(client, "WM_NAME") or b""
        return title.decode("utf-8", "replace") if isinstance(title, bytes) else title

    def _clients_below(self, window):
        """The windows of programs among a window and its children, and theirs: the window manager keeps the
        one that it manages inside a frame of its own."""
        generation = [window]
        for _ in range(3):
            clients = [each for each in generation if self._property(each, "WM_STATE") is not None]
            if clients:
                return clients
            below = []
            for each in generation:
                try:
                    below += each.query_tree().children
                except VANISHED:
                    continue
            generation = below
        return []

    def pointer(self):
        """Where the pointer is, and the top-level window under it; None for the bare background."""
        answer = self._root.query_pointer()
        return (answer.root_x, answer.root_y), answer.child or None

    def pixels(self, x, y, width, height):
        """What a part of the screen shows, as the server's own bytes."""
        return self._root.get_image(x, y, width, height, Xlib.X.ZPixmap, 0xFFFFFFFF).data

    def managed_title(self, top):
        """The title of the managed window that a top-level window is the frame of; None where it is none: a
        pop-up, or a frame that has lost its window."""
        clients = self._clients_below(top)
        return self._title(clients[0]) if clients else None

    def is_pop_up(self, top):
        """Whether a top-level window is a program's own, one that the window manager leaves alone."""
        return self._property(top, "WM_CLASS") is not None and self._property(top, "WM_STATE") is None

    def titles(self):
        """The titles of all managed windows that are on the screen."""
        titles = []
        for top in self._root.query_tree().children:
            try:
                if top.get_attributes().map_state != Xlib.X.IsViewable or self.is_pop_up(top):
                    continue
            except VANISHED:
                continue
            titles += [self._title(client) for client in self._clients_below(top)]
        return titles

    def identifier(self, title):
        """The identifier of the managed window of that title; None where there is none."""
        clients = self._property(self._root, "_NET_CLIENT_LIST") or []
        return next((each for each in clients
                     if self._title(self._display.create_resource_object("window", each)) == title), None)

    def icon_sizes(self, title):
        """The widths of the icons of the managed window of that title, in the order that it states them."""
        window = self._display.create_resource_object("window", self.identifier(title))
        numbers, widths = list(self._property(window, "_NET_WM_ICON") or []), []
        while numbers:
            width, height = numbers[:2]
            widths.append(width)
            del numbers[:2 + width * height]
        return widths

    def keyboard_window(self):
        """The managed window that the keys go to, by its identifier; None as long as there is none, or the
        window manager knows of another."""
        active = self._property(self._root, "_NET_ACTIVE_WINDOW")
        focus = self._display.get_input_focus().focus
        if not active or not active[0] or isinstance(focus, int):
            return None
        return focus.id if self._is_within(focus, active[0]) else None

    def _is_within(self, window, identifier):
        while window.id != self._root.id:
            if window.id == identifier:
                return True
            try:
                window = window.query_tree().parent
            except VANISHED:
                return False
        return False
