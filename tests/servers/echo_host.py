"""Hosts behind a link that answer echo requests in ways of their own.

    echo_host.py INTERFACE

Prints "ready". The last number of the address that is asked says how it answers: 1 slowly, 2 with other data, 3 with
replies to other requests and late with the right one, 4 from another address, 5 with cut packets, 6 with data longer
than what was sent. All others are silent.
"""

import socket
import struct
import sys
import time

ECHO_REPLY, ECHO_REQUEST = 0, 8
DELAY = 0.25


def checksum(octets):
    if len(octets) % 2:
        octets += b"\0"
    total = sum(struct.unpack(f">{len(octets) // 2}H", octets))
    while total >> 16:
        total = (total & 0xFFFF) + (total >> 16)
    return ~total & 0xFFFF


class Link:
    def __init__(self, interface):
        self.socket = socket.socket(socket.AF_PACKET, socket.SOCK_RAW, socket.ntohs(0x0800))
        self.socket.bind((interface, 0))

    def answer(self, frame, message, source=None):
        """Sends an ICMP message back to whoever sent the frame."""
        header = bytearray(frame[14:34])
        header[0] = 0x45
        header[2:4] = struct.pack(">H", 20 + len(message))
        header[6:8] = header[10:12] = b"\0\0"
        header[12:16], header[16:20] = source or frame[30:34], frame[26:30]
        header[10:12] = struct.pack(">H", checksum(bytes(header)))
        self.socket.send(frame[6:12] + frame[0:6] + b"\x08\x00" + bytes(header) + message)


def reply(identifier, sequence, data):
    message = struct.pack(">BBHHH", ECHO_REPLY, 0, 0, identifier, sequence) + data
    return message[:2] + struct.pack(">H", checksum(message)) + message[4:]


def respond(link, frame):
    packet = frame[14:]
    message = packet[(packet[0] & 15) * 4:struct.unpack(">H", packet[2:4])[0]]
    if packet[9] != socket.IPPROTO_ICMP or len(message) < 8 or message[0] != ECHO_REQUEST:
        return
    identifier, sequence = struct.unpack(">HH", message[4:8])
    data = message[8:]
    right = reply(identifier, sequence, data)
    kind = frame[33]
    if kind == 1:
        time.sleep(DELAY)
        link.answer(frame, right)
    elif kind == 2:
        link.answer(frame, reply(identifier, sequence, data[::-1] + b"!"))
    elif kind == 3:
        link.answer(frame, reply(identifier ^ 1, sequence, data))
        link.answer(frame, reply(identifier, sequence ^ 1, data))
        time.sleep(DELAY)
        link.answer(frame, right)
    elif kind == 4:
        link.answer(frame, right, source=frame[30:33] + b"\x63")
    elif kind == 5:
        for length in (4, 7):
            link.answer(frame, right[:length])
    elif kind == 6:
        link.answer(frame, reply(identifier, sequence, data + b"more"))


def main():
    link = Link(sys.argv[1])
    print("ready", flush=True)
    while True:
        respond(link, link.socket.recv(65536))


if __name__ == "__main__":
    main()
