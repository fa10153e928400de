#!/usr/bin/python3
"""bench/fleet.py FOLDER CAPTURES CALLS: captures of many sites, for docs/scale.md.

Each site has a gatekeeper, twenty endpoints and calls that end in different ways: answered, busy, not answered, rejected
by the gatekeeper, or routed nowhere. The gatekeepers of some sites are slow. The same arguments give the same files.
"""
import pathlib
import random
import struct
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "tests/captures"))
from make_wire import Capture, Stream  # noqa: E402
from messages import CALL, CALLED, connect, data, of_this_call, q931, tpkt  # noqa: E402

ENDINGS = {"answered": 80, "busy": 7, "no answer": 6, "rejected": 4, "no route": 3}
CAUSES = {"answered": 16, "busy": 17, "no answer": 19, "no route": 3}
REASONS = {"not registered": 0, "no resources": 7}  # of an admissionReject
CODECS = {"g711Alaw64k": 1, "g711Ulaw64k": 3, "g729": 10, "g729AnnexA": 11}
DIGITS = "#*,0123456789"
CAPABILITIES, ACK = data("h245-terminalCapabilitySet"), data("h245-terminalCapabilitySetAck")
OPEN, OPEN_ACK = data("h245-openLogicalChannel"), data("h245-openLogicalChannelAck")


class Encoder:
    """PER, ALIGNED."""

    def __init__(self):
        self.bits = ""

    def put(self, value, count):
        self.bits += f"{value:0{count}b}"
        return self

    def aligned(self, octets):
        self.bits += "0" * (-len(self.bits) % 8) + "".join(f"{octet:08b}" for octet in octets)
        return self

    def octets(self):
        self.aligned(b"")
        return bytes(int(self.bits[i:i + 8], 2) for i in range(0, len(self.bits), 8))


def request(number, caller, called, conference):
    """An admissionRequest: destinationInfo is its only optional component."""
    e = Encoder().put(9, 6).put(0, 1).put(0b0100000, 7).aligned(struct.pack(">H", number - 1))
    e.put(0, 3).put(len(caller) - 1, 7).aligned(caller.encode("utf-16-be"))  # endpointIdentifier
    for alias in (called, caller):
        e.aligned(b"\x01").put(0, 2).put(len(alias) - 1, 7).aligned(b"")
        for digit in alias:
            e.put(DIGITS.index(digit), 4)
    return e.put(1, 2).aligned(struct.pack(">HH", 1280, 42)).aligned(conference).put(0, 2).octets()


def confirm(number, address):
    message = data("ras-admissionConfirm").replace(bytes(map(int, CALLED.split("."))), address)
    return message[:2] + struct.pack(">H", number - 1) + message[4:]


def reject(number, reason):
    return Encoder().put(11, 6).put(0, 2).aligned(struct.pack(">H", number - 1)).put(
        REASONS[reason], 4).octets()


def element(kind, octets):
    return bytes([kind, len(octets)]) + octets


class Site:
    def __init__(self, number, calls):
        self.random, self.capture = random.Random(number), Capture()
        self.net = f"10.{number // 256}.{number % 256}"
        self.delay = 0.150 if number % 10 == 7 else 0.004  # of its gatekeeper
        for call in range(calls):
            self.capture.now = max(self.capture.now, call * 0.5)
            self.call(call, number)

    def wait(self, seconds):
        self.capture.now += self.random.expovariate(1 / seconds) - 0.009  # it counts 0.01 a frame

    def call(self, call, number):
        c, rnd = self.capture, self.random
        ending = rnd.choices(list(ENDINGS), ENDINGS.values())[0]
        here, there = rnd.sample(range(20), 2)
        caller, called = f"{number:04}{here:02}", f"{number:04}{there:02}"
        source, destination = f"{self.net}.{here + 10}", f"{self.net}.{there + 10}"
        packed = bytes(map(int, destination.split(".")))
        name = struct.pack(">HI", number, call) + CALL[6:]
        sequence, port = call % 65535 + 1, 20000 + call % 20000
        c.udp(source, 1719, f"{self.net}.1", 1719, request(sequence, caller, called, name))
        self.wait(self.delay)
        if ending == "rejected":
            reason = rnd.choice(list(REASONS))
            c.udp(f"{self.net}.1", 1719, source, 1719, reject(sequence, reason))
            return
        c.udp(f"{self.net}.1", 1719, source, 1719, confirm(sequence, packed))

        s = Stream(c, source, port, destination, 1720)
        say = lambda side, kind, body, elements=b"": s.say(
            side, tpkt(q931(kind, of_this_call(body, CALL.hex()).replace(CALL, name), elements)))
        say(0, 5, data("made-ui-call-setup-aligned"),
            element(0x6C, b"\x00\x81" + caller.encode()) + element(0x70, b"\x81" + called.encode()))
        say(1, 2, data("ui-callProceeding"))
        if ending in ("answered", "no answer"):
            self.wait(2)
            say(1, 1, data("made-ui-call-alerting-aligned"))
        if ending == "answered":
            self.wait(5)
            say(1, 7, connect(port + 20000, destination))
            h = Stream(c, source, port, destination, port + 20000)
            codec = list(CODECS.values())[there % len(CODECS)]
            opened = bytearray(OPEN.replace(b"\0\x64", b"\0\x3c"))
            opened[4] |= codec >> 3
            opened[5] = codec << 5 & 0xFF
            for side, message in ((0, CAPABILITIES), (1, CAPABILITIES), (0, ACK), (1, ACK), (0, bytes(opened)),
                                  (1, OPEN_ACK), (1, bytes(opened)), (0, OPEN_ACK)):
                h.say(side, tpkt(message))
            h.close()
        release = of_this_call(data("ui-releaseComplete"), "24ab157276fa18109a58001321f06990")
        say(rnd.randrange(2), 0x5A, release, element(0x08, bytes([0x80, 0x80 | CAUSES[ending]])))
        s.close()


def main():
    folder, captures, calls = pathlib.Path(sys.argv[1]), int(sys.argv[2]), int(sys.argv[3])
    folder.mkdir(parents=True, exist_ok=True)
    for number in range(captures):
        Site(number, calls).capture.pcap(folder.resolve() / f"site{number:04}.pcap")


if __name__ == "__main__":
    main()
