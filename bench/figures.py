"""What the benchmarks have in common: which peers are here, and their figures, which bench/all gathers.

A figure is one line of JSON in the file that VANDREL_FIGURES names; without that variable nothing is written.
"""

import json
import os
import shutil
import subprocess


_named = set()


def present(commands):
    """Those of the programs (name: command) that are installed; each that is missing is named once."""
    here = {}
    for name, command in commands.items():
        if shutil.which(str(command[0])):
            here[name] = command
        elif name not in _named:
            _named.add(name)
            print(f"{name}: left out, since {command[0]} is not installed", flush=True)
    return here


def fastest(best):
    """The peer that took the least time, of the best times by name, and its time; (None, None) where there is none."""
    peers = {name: time for name, time in best.items() if name != "ours"}
    if not peers:
        return None, None
    return min(peers.items(), key=lambda peer: peer[1])


def record(what, ours, unit, peer=None, theirs=None, goal=None):
    """One figure. `goal` is the largest ratio of ours to theirs that was aimed at, or without a peer the largest figure
    of ours."""
    path = os.environ.get("VANDREL_FIGURES")
    if path:
        with open(path, "a", encoding="utf-8") as file:
            file.write(json.dumps({"what": what, "ours": ours, "unit": unit, "peer": peer, "theirs": theirs,
                                   "goal": goal}) + "\n")


def compare(what, best, unit, goal=None):
    """The figure of ours beside that of the fastest peer; returns the ratio, or 0 without a peer."""
    peer, theirs = fastest(best)
    record(what, best["ours"], unit, peer, theirs, goal if peer else None)
    return best["ours"] / theirs if peer else 0


class IdleLoop:
    """The program idle_loop beside what is measured, which has nothing to do: how long its event loop is away is what the
    machine keeps from any program. `away` is the longest time of all runs, in milliseconds."""

    def __init__(self, program):
        self._program, self._process, self.away = program, None, 0

    def __enter__(self):
        self._process = subprocess.Popen([self._program], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        return self

    def __exit__(self, *failure):
        self.away = max(self.away, float(self._process.communicate()[0]))
