"""Programs started on a virtual X server whose picture is read from memory, so that nothing has to be built into them."""

import mmap
import os
import pathlib
import statistics
import subprocess
import time

LONGEST_START = 20.0
SETTLING = 0.5


class Screen:
    """A virtual X server whose frame buffer is a file mapped into this process."""

    def __init__(self, folder, size="640x480"):
        reader, writer = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", size + "x24", "-fbdir", folder, "-nolisten", "tcp",
             "-noreset", "-nocursor"],
            pass_fds=[writer], stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as answer:
            self.display = ":" + answer.readline().strip()
        with open(os.path.join(folder, "Xvfb_screen0"), "rb") as file:
            self.memory = mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ)
        self.background = self.memory[:]

    def shows_something(self):
        return self.memory[:] != self.background

    def pixels(self, colour):
        """How many pixels have that colour, given as its red, green and blue."""
        red, green, blue = colour
        return self.memory[:].count(bytes((blue, green, red)))

    def close(self):
        self.server.terminate()
        self.server.wait()


def resident_kilobytes(pid):
    for line in pathlib.Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith("VmRSS:"):
            return int(line.split()[1])
    raise RuntimeError("the program ended early")


def await_screen(screen, something, until):
    while screen.shows_something() != something:
        if time.monotonic() > until:
            raise RuntimeError("no window was painted" if something else "a window was left behind")
        # Leaves the processor to the program, which may have but one.
        time.sleep(0.001)


def start(program, screen, environment):
    """Starts the program once; returns the milliseconds to its first paint and its resident kilobytes."""
    started = time.monotonic()
    process = subprocess.Popen([program], env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        await_screen(screen, True, started + LONGEST_START)
        milliseconds = (time.monotonic() - started) * 1000
        time.sleep(SETTLING)
        return milliseconds, resident_kilobytes(process.pid)
    finally:
        process.kill()
        process.wait()
        await_screen(screen, False, time.monotonic() + LONGEST_START)


def environment_on(screen, home):
    """The environment of a program that shows itself there, with a home of its own."""
    return {"DISPLAY": screen.display, "QT_QPA_PLATFORM": "xcb", "HOME": home, "XDG_RUNTIME_DIR": home,
            "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8"}


def measure_starts(programs, runs, screen, environment):
    """Runs the programs in turn, so that whatever else the machine does meets all alike; the medians of what start()
    returns, by name."""
    figures = {name: [] for name in programs}
    for program in programs.values():
        start(program, screen, environment)
    for _ in range(runs):
        for name, program in programs.items():
            figures[name].append(start(program, screen, environment))
    return {name: [statistics.median(column) for column in zip(*rows)] for name, rows in figures.items()}
