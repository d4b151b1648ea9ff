"""A compositor's monitors on a message bus, as org.gnome.Mutter.DisplayConfig offers them.

    display_config.py MONITORS [--refuse | --forget]

MONITORS is a list in JSON of {"connector", "x", "y", "scale", "transform", "primary", "modes": [[width, height,
frequency], ...], "current": index}; a monitor without a "current" is off. Prints "ready", and a line in JSON for every
configuration that was applied. `--refuse` turns every change down; `--forget` says yes and changes nothing.
"""

import json
import sys

from gi.repository import Gio, GLib

NAME = "org.gnome.Mutter.DisplayConfig"
PATH = "/org/gnome/Mutter/DisplayConfig"
INTERFACE = f"""
<node><interface name="{NAME}">
  <method name="GetCurrentState">
    <arg type="u" direction="out"/>
    <arg type="a((ssss)a(siiddada{{sv}})a{{sv}})" direction="out"/>
    <arg type="a(iiduba(ssss)a{{sv}})" direction="out"/>
    <arg type="a{{sv}}" direction="out"/>
  </method>
  <method name="ApplyMonitorsConfig">
    <arg type="u" direction="in"/>
    <arg type="u" direction="in"/>
    <arg type="a(iiduba(ssa{{sv}}))" direction="in"/>
    <arg type="a{{sv}}" direction="in"/>
  </method>
</interface></node>
"""
SCALES = [1.0, 1.25, 1.5, 2.0]
TEMPORARY = 1


class Refused(Exception):
    """What the compositor does not do."""


class Compositor:
    def __init__(self, monitors, options):
        self.monitors = monitors
        self.options = options
        self.serial = 7

    def state(self):
        outputs = [(self.name(each), [self.mode(each, i) for i in range(len(each["modes"]))], {})
                   for each in self.monitors]
        places = [(each["x"], each["y"], each["scale"], each["transform"], each["primary"], [self.name(each)], {})
                  for each in self.monitors if "current" in each]
        return GLib.Variant("(ua((ssss)a(siiddada{sv})a{sv})a(iiduba(ssss)a{sv})a{sv})",
                            (self.serial, outputs, places, {"layout-mode": GLib.Variant("u", 1)}))

    def name(self, monitor):
        return (monitor["connector"], "MAK", "Monitor", "1")

    def mode(self, monitor, index):
        width, height, frequency = monitor["modes"][index]
        current = {"is-current": GLib.Variant("b", True)} if monitor.get("current") == index else {}
        scales = [scale for scale in SCALES if width / scale >= 800] or [1.0]
        return (f"{width}x{height}@{frequency}", width, height, float(frequency), 1.0, scales, current)

    def apply(self, serial, method, places):
        if "--refuse" in self.options or serial != self.serial or method != TEMPORARY:
            raise Refused("not now")
        changed = [self.placed(place) for place in places]
        if sum(each["primary"] for each in changed) != 1:
            raise Refused("not one primary monitor")
        self.check_neighbours(changed)
        print(json.dumps([[each[key] for key in ("connector", "x", "y", "scale", "transform", "primary", "mode")]
                          for each in changed]), flush=True)
        if "--forget" not in self.options:
            self.serial += 1
            self.monitors = [next((new for new in changed if new["connector"] == old["connector"]), old)
                             for old in self.monitors]

    def placed(self, place):
        x, y, scale, transform, primary, ((connector, mode, _),) = place
        monitor = next((each for each in self.monitors if each["connector"] == connector), None)
        names = [self.mode(monitor, i)[0] for i in range(len(monitor["modes"]))] if monitor else []
        if mode not in names:
            raise Refused("no such mode")
        if scale not in self.mode(monitor, names.index(mode))[5]:
            raise Refused("no such scale")
        return dict(monitor, x=x, y=y, scale=scale, transform=transform, primary=primary, mode=mode,
                    current=names.index(mode))

    @staticmethod
    def area(monitor):
        width, height = (round(side / monitor["scale"]) for side in monitor["modes"][monitor["current"]][:2])
        if monitor["transform"] % 2:
            width, height = height, width
        return monitor["x"], monitor["y"], monitor["x"] + width, monitor["y"] + height

    def check_neighbours(self, monitors):
        """Neither overlaps nor gaps: each but the first touches another one with an edge."""
        areas = [self.area(each) for each in monitors]
        for i, (left, top, right, bottom) in enumerate(areas):
            others = areas[:i] + areas[i + 1:]
            if any(left < r and l < right and top < b and t < bottom for l, t, r, b in others):
                raise Refused("monitors overlap")
            if others and not any(
                    ((left == r or right == l) and top < b and t < bottom)
                    or ((top == b or bottom == t) and left < r and l < right) for l, t, r, b in others):
                raise Refused("monitors are not adjacent")

    def call(self, _connection, _sender, _path, _interface, method, arguments, invocation):
        if method == "GetCurrentState":
            invocation.return_value(self.state())
            return
        serial, how, places, _ = arguments.unpack()
        try:
            self.apply(serial, how, places)
        except Refused as reason:
            invocation.return_dbus_error("org.freedesktop.DBus.Error.InvalidArgs", str(reason))
        else:
            invocation.return_value(None)


def main():
    compositor = Compositor(json.loads(sys.argv[1]), sys.argv[2:])
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    bus.register_object(PATH, Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0], compositor.call)
    loop = GLib.MainLoop()
    Gio.bus_own_name_on_connection(bus, NAME, Gio.BusNameOwnerFlags.NONE, lambda *_: print("ready", flush=True),
                                   lambda *_: loop.quit())
    loop.run()


if __name__ == "__main__":
    main()
