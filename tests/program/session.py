"""A desktop of its own for one test program: an X server in memory, a message bus, a window manager, a home.

Everything is started on free addresses in a temporary folder and taken away at the end, whoever runs it.
"""

import contextlib
import os
import secrets
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time

from screen import Screen

PATIENCE = 60.0
"""Seconds after which a condition that did not come true is a failure. Bounds a wait, never paces one."""

DARK_COLOURS = """
[Colors:Window]
BackgroundNormal=42,46,50
ForegroundNormal=252,252,252
[Colors:View]
BackgroundNormal=27,30,32
BackgroundAlternate=35,38,41
ForegroundNormal=252,252,252
ForegroundLink=29,153,243
ForegroundVisited=155,89,182
[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=252,252,252
[Colors:Tooltip]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
"""


class Impatient(AssertionError):
    """A condition did not come true in time."""


def await_condition(condition, what, seconds=PATIENCE):
    """Returns the condition's first true value; fails, naming what was awaited, when it stays false."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise Impatient(f"waited {seconds:.0f} s for {what}")
        time.sleep(0.02)


def _read_line(descriptor, process, what):
    """Reads one line that a starting server writes once it is ready."""
    os.set_blocking(descriptor, False)
    collected = b""

    def complete():
        nonlocal collected
        with contextlib.suppress(BlockingIOError):
            collected += os.read(descriptor, 4096)
        if process.poll() is not None and not collected.endswith(b"\n"):
            raise RuntimeError(f"{what} ended with status {process.returncode} before it was ready")
        return collected.endswith(b"\n")

    await_condition(complete, f"{what} to be ready")
    return collected.decode().strip()


class Session:
    """The desktop; a context manager. The accessibility library stays with the first desktop that it met, so
    a process has one session, and each suite started on it gets a fresh home.

    A `scale` enlarges everything, the screen as well; `dark` gives a desktop with light text on dark windows."""

    def __init__(self, scale=1, dark=False):
        self._size = f"{round(1280 * scale)}x{round(1024 * scale)}"
        self._scale = scale
        self._dark = dark
        self._servers = []
        self._suites = []
        self._homes = 0
        self.screen = None
        self._x_server = None

    def __enter__(self):
        self.folder = tempfile.mkdtemp(prefix="vandrel-session-")
        try:
            self._start()
        except BaseException:
            self._stop()
            raise
        return self

    def __exit__(self, *failure):
        self._stop()

    def _start(self):
        os.mkdir(os.path.join(self.folder, "runtime"), 0o700)
        self.environment = self._clean_environment()
        self._start_screen()
        self._start_bus()
        self._start_server("openbox", ["openbox", "--sm-disable"])
        self._await_window_manager()
        # The accessibility library finds its bus through this process's own environment, and so is the screen's
        # authority found.
        os.environ.update(self.environment)
        self.screen = Screen(self.environment["DISPLAY"])

    def _clean_environment(self):
        foreign = ("DISPLAY", "WAYLAND_DISPLAY", "DBUS_", "AT_SPI_", "XDG_", "QT_", "SESSION_MANAGER", "GTK_")
        environment = {name: value for name, value in os.environ.items() if not name.startswith(foreign)}
        environment.update(
            HOME=self.new_home(),
            XDG_RUNTIME_DIR=os.path.join(self.folder, "runtime"),
            XAUTHORITY=os.path.join(self.folder, "authority"),
            LC_ALL="C.UTF-8",
            QT_QPA_PLATFORM="xcb",
            QT_ACCESSIBILITY="1",
            QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
        )
        if self._scale != 1:
            environment["QT_SCALE_FACTOR"] = str(self._scale)
        if self._dark:
            # The toolkit knows this desktop's colours by itself, without any part of that desktop.
            environment.update(QT_QPA_PLATFORMTHEME="kde", KDE_SESSION_VERSION="5")
        return environment

    def _start_server(self, name, command, **options):
        with open(os.path.join(self.folder, name + ".log"), "wb") as log:
            process = subprocess.Popen(
                command, env=self.environment, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                start_new_session=True, **options)
        self._servers.append(process)
        return process

    def _start_screen(self):
        cookie = secrets.token_bytes(16)
        any_display = 0xFFFF
        self._authorise(cookie, any_display, b"", b"")
        reading, writing = os.pipe()
        server = self._start_server(
            "screen",
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", self._size + "x24",
             "-auth", self.environment["XAUTHORITY"], "-nolisten", "tcp", "-noreset",
             # A key whose release comes late on a busy machine must not repeat itself.
             "-r"],
            pass_fds=[writing])
        os.close(writing)
        self._x_server = server
        number = _read_line(reading, server, "the X server")
        os.close(reading)
        self.environment["DISPLAY"] = ":" + number
        this_machine = 256
        self._authorise(cookie, this_machine, os.uname().nodename.encode(), number.encode())

    def _authorise(self, cookie, family, address, number):
        """Adds an entry to the X server's authority file, in the format that its library reads."""
        fields = b"".join(struct.pack(">H", len(field)) + field
                          for field in (address, number, b"MIT-MAGIC-COOKIE-1", cookie))
        with open(self.environment["XAUTHORITY"], "ab") as authority:
            os.fchmod(authority.fileno(), 0o600)
            authority.write(struct.pack(">H", family) + fields)

    def _start_bus(self):
        reading, writing = os.pipe()
        bus = self._start_server(
            "bus", ["dbus-daemon", "--session", "--nofork", "--nopidfile", f"--print-address={writing}"],
            pass_fds=[writing])
        os.close(writing)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = _read_line(reading, bus, "the message bus")
        os.close(reading)

    def _await_window_manager(self):
        def manages():
            answer = subprocess.run(
                ["xdotool", "get_desktop"], env=self.environment, capture_output=True, check=False)
            return answer.returncode == 0

        await_condition(manages, "the window manager")

    def new_home(self):
        """A home folder with nothing in it but the desktop's colours, where they are not the usual ones."""
        self._homes += 1
        home = os.path.join(self.folder, f"home-{self._homes}")
        os.mkdir(home)
        if self._dark:
            os.mkdir(os.path.join(home, ".config"))
            with open(os.path.join(home, ".config", "kdeglobals"), "w", encoding="utf-8") as colours:
                colours.write(DARK_COLOURS)
        return home

    def start(self, program, *arguments):
        """Starts the suite and returns it as a Suite."""
        from suite import Suite  # The accessibility library wants the session's environment first.

        suite = Suite(self, [program, *arguments])
        self._suites.append(suite)
        return suite

    def picture(self, path, part=None):
        """Leaves a picture of the screen, or of a part of it (x, y, width, height), as PNG. Raises OSError
        where there is no program to take it with."""
        cut = []
        if part:
            x, y, width, height = part
            cut = ["-crop", f"{width}x{height}+{x}+{y}", "+repage"]
        subprocess.run(["import", "-window", "root", *cut, path], env=self.environment, check=True, timeout=60)

    def lose_screen(self):
        """Takes the screen away from everything that shows something on it; nothing can be started after that."""
        self.screen.close()
        self.screen = None
        self._x_server.kill()
        self._x_server.wait()

    def _stop(self):
        for suite in self._suites:
            suite.kill()
        if self.screen:
            self.screen.close()
        for server in reversed(self._servers):
            with contextlib.suppress(ProcessLookupError):
                os.killpg(server.pid, signal.SIGTERM)
            try:
                server.wait(5)
            except subprocess.TimeoutExpired:
                os.killpg(server.pid, signal.SIGKILL)
                server.wait()
        self._end_strays()
        shutil.rmtree(self.folder, ignore_errors=True)

    def _end_strays(self):
        """The bus starts helpers in sessions of their own; they are told by this session's folder."""
        mark = ("XDG_RUNTIME_DIR=" + os.path.join(self.folder, "runtime")).encode()
        for entry in os.listdir("/proc"):
            if not entry.isdigit() or int(entry) == os.getpid():
                continue
            with contextlib.suppress(OSError):
                with open(f"/proc/{entry}/environ", "rb") as environment:
                    if mark in environment.read().split(b"\0"):
                        os.kill(int(entry), signal.SIGKILL)


def main_program(arguments):
    """The program under test: the first argument, taken off the list that the test runner reads."""
    if len(arguments) < 2 or not os.access(arguments[1], os.X_OK):
        sys.exit(f"usage: {arguments[0]} PROGRAM [TEST...]")
    return os.path.abspath(arguments.pop(1))
