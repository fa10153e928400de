"""What the scripts that make captures have in common: messages, most of them from tests/data, and TCP
streams.
"""
import pathlib
import struct

HERE = pathlib.Path(__file__).parent
TERMINAL, CALLED, GATEKEEPER = "17.2.0.124", "17.2.0.122", "17.2.0.1"
CALL = bytes.fromhex("c0fef93ecd9ed6119ab2000476222017")
START = 1022846400  # 31 May 2002, 12:00 UTC


def data(name):
    return bytes.fromhex((HERE.parent / "data" / f"{name}.hex").read_text())


def connect(port, address=CALLED):
    """The connect of the sample, whose H.245 address is 17.2.0.122:2040, with another address."""
    old, new = (bytes(map(int, ip.split("."))) for ip in (CALLED, address))
    return data("made-ui-call-connect-aligned").replace(
        old + struct.pack(">H", 2040), new + struct.pack(">H", port))


def of_this_call(message, other):
    return message.replace(bytes.fromhex(other), CALL)


def q931(kind, user_user, elements=b""):
    if user_user is not None:
        elements += b"\x7E" + struct.pack(">H", len(user_user) + 1) + b"\x05" + user_user
    return b"\x08\x02\x00\x2A" + bytes([kind]) + elements


def tpkt(message):
    return b"\x03\x00" + struct.pack(">H", len(message) + 4) + message


class Stream:
    """A TCP connection, which side 0 opened. The capture's `segment` makes a frame of each segment."""

    def __init__(self, capture, client, cport, server, sport, start=(1000, 1001), opened=True):
        self.capture, self.host, self.port = capture, (client, server), (cport, sport)
        self.next = list(start)  # the sequence numbers of both sides
        if opened:
            self.packet(0, "S")
            self.packet(1, "SA")
            self.packet(0, "A")

    def packet(self, side, flags, payload=b"", at=None):
        """Sends a segment; with `at`, at that sequence number instead of the next."""
        self.capture.segment(self.host[side], self.port[side], self.host[1 - side],
                             self.port[1 - side], self.next[side] if at is None else at,
                             self.next[1 - side] if "A" in flags else 0, flags, payload)
        if at is None:
            length = len(payload) + ("S" in flags) + ("F" in flags)
            self.next[side] = (self.next[side] + length) % 2**32

    def say(self, side, *segments):
        """Sends segments, each of which the other side acknowledges."""
        for octets in segments:
            self.packet(side, "PA", octets)
            self.packet(1 - side, "A")

    def lose(self, side, octets):
        """Sends that many octets, which are not captured."""
        self.next[side] += octets

    def close(self):
        self.packet(0, "FA")
        self.packet(1, "FA")
        self.packet(0, "A")
