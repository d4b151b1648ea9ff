"""Drawings: pictures that are made of shapes, of which a program of the suite's own makes pixels."""

import struct

RED = (255, 0, 0)
"""The colour of the middle of both; around it they are white."""


def _record(function, *words):
    return struct.pack("<IH", 3 + len(words), function) + b"".join(struct.pack("<H", word) for word in words)


def metafile():
    """A WMF of twice the width of its height, to be placed at 2 by 1 inches: a red rectangle in its middle."""
    records = b"".join((
        _record(0x020B, 0, 0), _record(0x020C, 1000, 2000),
        _record(0x02FC, 0, 0x00FF, 0, 0), _record(0x012D, 0),
        # No line around it.
        _record(0x02FA, 5, 0, 0, 0, 0), _record(0x012D, 1),
        _record(0x041B, 750, 1500, 250, 500),
        # Two corners, since a drawing reaches as far as its shapes.
        _record(0x041B, 10, 10, 0, 0), _record(0x041B, 1000, 2000, 990, 1990),
        _record(0x0000)))
    header = struct.pack("<HHHIHIH", 1, 9, 0x0300, 9 + len(records) // 2, 2, 8, 0)
    place = struct.pack("<IHHHHHHI", 0x9AC6CDD7, 0, 0, 0, 2000, 1000, 1000, 0)
    checksum = 0
    for word, in struct.iter_unpack("<H", place):
        checksum ^= word
    return place + struct.pack("<H", checksum) + header + records


def vector_wpg():
    """A WPG of the first version, 2 by 1 inches: a red rectangle in its middle."""
    def record(kind, contents):
        return bytes((kind, len(contents))) + contents

    one_colour = struct.pack("<HH", 1, 1) + bytes(RED)
    return b"\xFFWPC" + struct.pack("<IBBBBHH", 16, 1, 0x16, 1, 0, 0, 0) + b"".join((
        record(0x0F, struct.pack("<BBHH", 1, 0, 2400, 1200)),
        record(0x0E, one_colour),
        record(0x02, struct.pack("<BBH", 0, 1, 0)),
        record(0x01, bytes((1, 1))),
        record(0x07, struct.pack("<HHHH", 600, 300, 1200, 600)),
        record(0x10, b"")))
