#!/usr/bin/python3
"""Makes captures of difficult conditions on the wire. The layers are written out. The captures are
committed: run this only to change them. wire.md says what tamsel-capture and tshark find in them.
"""
import gzip
import ipaddress
import random
import subprocess

from messages import *

A, B, C, G = "10.0.0.1", "10.0.0.2", "10.0.0.3", "10.0.0.9"
RAS = data("ras-infoRequest")
TCS, ACK = data("h245-terminalCapabilitySet"), data("h245-terminalCapabilitySetAck")
SETUP = data("made-ui-call-setup-aligned")
MSD = data("h245-masterSlaveDetermination")
PROCEEDING = tpkt(q931(2, data("ui-callProceeding")))
FOREIGN = bytes.fromhex("00 08 91 4a 00 03 00 22 c0 01 02 03")  # its object identifier contains 03 00


def be(*numbers):  # 16 bits each
    return struct.pack(f">{len(numbers)}H", *numbers)


# Layers, the innermost first.
def udp(sport, dport, payload):
    return be(sport, dport, len(payload) + 8, 0) + payload


def tcp(sport, dport, seq, ack, flags, payload=b""):
    bits = sum({"F": 1, "S": 2, "R": 4, "P": 8, "A": 16}[flag] for flag in flags)
    return be(sport, dport) + struct.pack(">IIBBHHH", seq % 2**32, ack % 2**32, 0x50, bits, 8192, 0,
                                          0) + payload


def ip(source, destination, payload, protocol=17, ident=1, fragment=0, size=None):
    header = struct.pack(">BBHHHBBH", 0x45, 0, size or len(payload) + 20, ident, fragment, 64,
                         protocol, 0) + packed(source) + packed(destination)
    check = sum(struct.unpack(">10H", header))
    check = ~((check & 0xFFFF) + (check >> 16)) & 0xFFFF
    return header[:10] + be(check) + header[12:] + payload


def packed(address):
    return ipaddress.ip_address(address).packed


def ip6(payload, next_header=17):
    return struct.pack(">IHBB", 0x60000000, len(payload), next_header, 64) + \
        packed("2001:db8::1") + packed("2001:db8::2") + payload


def fragment6(payload, offset, more, ident, next_header=17):
    return ip6(struct.pack(">BBHI", next_header, 0, offset | more, ident) + payload, 44)


def ether(payload, kind=0x0800):
    return bytes.fromhex("020000000001 020000000002") + be(kind) + payload


def ras(sport):  # an infoRequest in IPv4; the port identifies it
    return ip(A, B, udp(sport, 1719, RAS))


class Capture:
    def __init__(self):
        self.frames, self.now = [], 0.0

    def frame(self, octets, link=1):
        self.frames.append((START * 10**6 + round(self.now * 10**6), link, octets))
        self.now += 0.01

    def udp(self, source, sport, destination, dport, payload):
        self.frame(ether(ip(source, destination, udp(sport, dport, payload))))

    def segment(self, source, sport, destination, dport, sequence, acknowledged, flags, payload):
        self.frame(ether(ip(source, destination,
                            tcp(sport, dport, sequence, acknowledged, flags, payload), 6)))

    def pcap(self, name):
        with open(HERE / name, "wb") as file:
            file.write(struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, 1))
            for time, _, octets in self.frames:
                file.write(struct.pack("<IIII", time // 10**6, time % 10**6, len(octets),
                                       len(octets)) + octets)


def call_of(message, number):
    return message.replace(CALL, bytes([number]) * 16)


def connected(number, address, port):
    return tpkt(q931(7, call_of(connect(port, address), number)))


# The captures.
def resync():
    c = Capture()
    s = Stream(c, A, 3001, B, 1720, opened=False)  # begins within a message
    s.say(0, FOREIGN, PROCEEDING)
    s.lose(0, 1460)
    s.say(0, FOREIGN[5:] + PROCEEDING, PROCEEDING)
    s.say(1, connected(1, B, 3002))
    h = Stream(c, A, 3003, B, 3002, opened=False)
    h.say(0, FOREIGN, tpkt(TCS), tpkt(ACK))
    h = Stream(c, A, 3004, B, 3002)
    h.say(0, tpkt(MSD))
    h.lose(0, 1460)
    h.say(0, FOREIGN, tpkt(TCS)[:9], tpkt(TCS)[9:], tpkt(ACK))
    return c


def several():
    c = Capture()
    Stream(c, A, 3001, B, 1720).say(1, connected(1, B, 3002))
    h = Stream(c, A, 3003, B, 3002)
    h.say(0, tpkt(TCS + MSD + ACK), tpkt(ACK + b"\xff\xff\xff"), tpkt(MSD))
    return c


def ports():
    """Call signalling and RAS on other ports, H.245 at a translated address."""
    c = Capture()
    c.udp(A, 20001, G, 21719, data("ras-gatekeeperRequest"))
    c.udp(G, 21719, A, 20001, data("alt-ras-gatekeeperConfirm-aligned"))
    request = data("alt-ras-admissionRequest-aligned")
    c.udp(A, 20002, G, 21720, request[:2] + b"\0\2" + request[4:])  # answered, so it is RAS
    c.udp(G, 21720, A, 20002, data("ras-admissionConfirm"))
    c.udp(A, 20003, G, 21721, request)  # without an answer
    s = Stream(c, A, 3001, B, 1730)
    s.say(1, tpkt(b""), PROCEEDING, connected(1, "192.168.1.1", 3002))
    h = Stream(c, A, 3003, B, 13002)
    h.say(0, tpkt(TCS))
    h.say(1, tpkt(ACK))
    m = Stream(c, A, 3004, B, 1731, opened=False)
    m.say(0, FOREIGN, PROCEEDING)
    return c


def foreign():
    """DNS, RTP, SIP, HTTP, TLS, remote desktop: no H.323."""
    c = Capture()
    rng = random.Random(1)
    noise = lambda size: bytes(rng.randrange(256) for _ in range(size))
    for i in range(200):
        c.udp(A, 40000 + i, G, 53, be(i * 321, 0x0100, 1, 0, 0, 0) + b"\3www\7example\3com\0\0\1\0\1")
        c.udp(G, 53, A, 40000 + i, be(i * 321, 0x8180, 1, 1, 0, 0) + b"\3www\7example\3com\0\0\1\0\1"
              b"\xc0\x0c\0\1\0\1\0\0\x0e\x10\0\4" + noise(4))
    for i in range(600):
        kind = (0, 8, 18, 96)[i % 4]
        c.udp(A, 5004, B, 5006, bytes([0x80, kind]) + be(i) + noise(8) + noise((160, 20, 33, 80)[i % 4]))
    for i in range(60):
        c.udp(A, 5005, B, 5007, bytes([0x80, 200 + i % 3]) + be(6) + noise(24))
        c.udp(B, 5060, A, 5060, b"\r\n\r\n" if i % 2 else b"\0\0\0\0")
    invite = b"INVITE sip:b@example.com SIP/2.0\r\nVia: SIP/2.0/UDP 10.0.0.1\r\nCall-ID: 1\r\n\r\n"
    c.udp(A, 5060, B, 5060, invite)
    http = Stream(c, A, 4001, B, 80)
    http.say(0, b"GET / HTTP/1.1\r\nHost: b\r\n\r\n")
    http.say(1, b"HTTP/1.1 200 OK\r\n\r\n" + noise(1400), noise(1400), tpkt(TCS))
    Stream(c, A, 4002, B, 5060).say(0, invite)
    tls = Stream(c, A, 4003, B, 443)
    tls.say(0, b"\x16\3\1\0\xc8\1\0\0\xc4\3\3" + noise(193))
    tls.say(1, b"\x16\3\3\0\x50" + noise(80), b"\x17\3\3\4\0" + noise(1024))
    Stream(c, A, 4004, B, 443, opened=False).say(1, noise(1200), b"\x17\3\3\0\x20" + noise(32))
    rdp = Stream(c, A, 4005, B, 3389)
    rdp.say(0, tpkt(bytes.fromhex("0ee00000000000 0100080003000000")))
    rdp.say(1, tpkt(bytes.fromhex("0ed00000123400 0209080002000000")))
    rdp.say(0, tpkt(bytes.fromhex("02f080") + noise(300)))
    return c


def early():
    c = Capture()
    s = Stream(c, A, 3001, B, 1720)
    h = Stream(c, A, 3003, B, 3002)
    h.say(0, tpkt(TCS), tpkt(MSD))
    s.say(1, connected(1, B, 3002))
    h.say(1, tpkt(ACK))
    late = Stream(c, A, 3004, C, 3005)  # ends before it is announced
    late.say(0, tpkt(TCS))
    s.say(1, connected(2, C, 3005))
    late.close()
    return c


def shared():
    """A gateway announces one address to two callers."""
    c = Capture()
    for host, number in ((A, 1), (B, 2)):
        Stream(c, host, 3000, G, 1720).say(1, connected(number, G, 3002))
    for host in (A, B):
        Stream(c, host, 3003, G, 3002).say(0, tpkt(TCS))
    return c


def reused():
    c = Capture()
    s = Stream(c, A, 3001, B, 1720)
    s.say(0, PROCEEDING)
    s = Stream(c, A, 3001, B, 1720, start=(2 * 10**9, 2 * 10**9 + 1))  # without a FIN before it
    s.say(0, PROCEEDING)
    s = Stream(c, A, 3001, B, 1720, start=(4 * 10**9, 4 * 10**9 + 1), opened=False)  # without a SYN, too
    s.say(0, PROCEEDING)
    return c


def refused():
    c = Capture()
    s = Stream(c, A, 3001, B, 1720)
    s.say(0, tpkt(q931(5, SETUP[:40])), tpkt(q931(1, b"\xff" * 100)))
    s.say(1, connected(1, B, 3002))
    Stream(c, A, 3003, B, 3002).say(0, tpkt(TCS[:9]), tpkt(b"\x70\x81"), tpkt(b"\x80\1\2"))
    c.udp(A, 3004, G, 1719, data("alt-ras-admissionRequest-aligned")[:20])
    return c


def around():
    c = Capture()
    s = Stream(c, A, 3001, B, 1720)
    numbers = bytes.fromhex("280341 6e6e 6c06 0081 34373131 7005 81 34373132")
    s.say(0, tpkt(q931(5, SETUP, numbers)))
    s.say(1, tpkt(q931(0x7D, None, bytes.fromhex("0802 80e1 140101"))))
    s.say(1, tpkt(q931(0x5A, data("ui-releaseComplete"), bytes.fromhex("0802 8091"))))
    s.say(1, tpkt(q931(0x5A, None, bytes.fromhex("0802 8090"))))
    return c


def hostile():
    """Text that attacks terminals, line readers, JSON and pages, and octets that are no text."""
    controls = "\x1b]0;title\x07\x1b[2J\r\n\t\x7f\u009b31m"
    page = "</script><script>alert(1)</script><img src=x onerror=alert(2)>"
    quotes = "'; DROP TABLE calls; -- \\\"\\u0041 ${x} `id`"
    lines = "\nRasMessage.t = 1\u2028\u2029\u0085\u202egnp\ufeff"
    broken = b"\xc3\x28 \xff\xfe \xe2\x82 \xed\xa0\x80 \xf0\x9f\x98\x80 \xf8 \xc0\x80 end\xe2"
    surrogates = b"\0a\xd8\x3d\xde\x00\xd8\x3d\0b\xde\x00"  # a pair, and two lone ones
    c = Capture()
    element = lambda kind, octets: bytes([kind, len(octets)]) + octets
    calling = element(0x6C, b"\x81" + page[:40].encode())
    for number, source in enumerate((quotes, controls + page, quotes + lines, surrogates, "\0" * 3)):
        alias = source if isinstance(source, bytes) else source.encode("utf-16-be")
        setup = SETUP.replace(b"\x02\0A\0n\0n", bytes([len(alias) // 2 - 1]) + alias, 1)
        s = Stream(c, A, 3001 + number, B, 1720)
        s.say(0, tpkt(q931(5, setup.replace(CALL, bytes([number + 1]) * 16),
                           element(0x28, broken) + calling + element(0x70, b"\x81\0\x1b[31m\xff"))))
        calling = b""  # the others show the alias of the caller
        s.close()
    h = Stream(c, A, 3009, B, 1720)
    h.say(0, tpkt(q931(7, connect(3010, B))))
    h = Stream(c, A, 3011, B, 3010)
    for typed in (broken, (controls + page).encode(), bytes(range(1, 100))):  # userInput
        h.say(0, tpkt(b"\x6D\x40" + bytes([len(typed)]) + typed))
    return c


def exported(protocol, octets):
    tags = be(12, len(protocol)) + protocol.encode() + be(20, 4) + packed(A) + be(21, 4) + packed(B) + \
        struct.pack(">HHIHHIHHI", 24, 4, 2, 25, 4, 3001, 26, 4, 1720) + be(0, 0)
    return tags + octets


def tunnels():
    c = Capture()
    inner = lambda port: ether(ras(port))
    big = udp(3022, 1719, data("made-ras-aligned"))
    half = len(big) // 16 * 8
    outer = lambda payload, protocol: ether(ip("192.0.2.1", "192.0.2.2", payload, protocol))
    for octets in (
            outer(be(0, 0x0800) + ras(3001), 47),  # GRE
            outer(be(0xB000, 0x6558, 0, 0, 0, 7, 0, 9) + inner(3002), 47),  # with all optional fields
            outer(be(0x2001, 0x880B, len(ras(3003)) + 4, 7) + b"\xff\x03\0\x21" + ras(3003), 47),
            outer(be(0, 0x88BE) + inner(3004), 47),  # ERSPAN of types I, II and III
            outer(be(0x1000, 0x88BE, 0, 1, 0x1001, 0, 0, 0) + inner(3005), 47),
            outer(be(0x1000, 0x22EB, 0, 1, 0x2001, 0, 0, 0, 0, 1, 0, 0, 0, 0) + inner(3006), 47),
            outer(udp(5000, 4789, be(0x0800, 0, 0, 0x500) + inner(3007)), 17),  # VXLAN
            outer(udp(5000, 6081, be(0, 0x6558, 0, 0x500) + inner(3008)), 17),  # Geneve
            outer(ras(3009), 4),
            ether(be(0x1100, 1, len(ras(3010)) + 2, 0x0021) + ras(3010), 0x8864),  # PPPoE
            ether(be(0, 0x0040, 0, 0x0140) + ras(3011), 0x8847),  # MPLS: an IP packet, a pseudowire
            ether(be(0, 0x0040, 0, 0x0140) + b"\0\0\0\0" + inner(3012), 0x8847),
            ether(be(100, 0x8100, 200, 0x0800) + ras(3013), 0x88A8),
            ether(bytes.fromhex("aaaa03 000000 0800") + ras(3014), 44 + len(RAS)),
            ether(fragment6(big[half:], half, 0, 1), 0x86DD),  # the last fragment first
            ether(fragment6(big[:half], 0, 1, 1), 0x86DD),
            ether(fragment6(udp(3015, 1719, RAS), 0, 0, 2), 0x86DD),  # atomic
            ether(ip6(b"\x3c\0\1\4\0\0\0\0" + b"\x11\0\1\4\0\0\0\0" + udp(3016, 1719, RAS), 0), 0x86DD),
            ether(b"what is this", 0x1234), outer(b"and this", 132),
            ether(ras(3017)[:30])):
        c.frame(octets)
    c.frame(b"\xff\x03\0\x21" + ras(3018), 9)  # PPP
    c.frame(b"\x21" + ras(3019), 9)
    c.frame(ras(3020), 228)
    for protocol, octets in (("ip", ras(3021)), ("q931", PROCEEDING[4:]), ("tpkt", PROCEEDING),
                             ("h245", MSD), ("sip", b"INVITE")):
        c.frame(exported(protocol, octets), 252)
    return c


def block(order, kind, body):
    body += b"\0" * (-len(body) % 4)
    size = struct.pack(order + "I", len(body) + 12)
    return struct.pack(order + "I", kind) + size + body + size


def section(order, interfaces):
    octets = block(order, 0x0A0D0D0A, struct.pack(order + "IHHq", 0x1A2B3C4D, 1, 0, -1))
    for link, snap, resolution, offset in interfaces:
        options = struct.pack(order + "HHB3xHHqHH", 9, 1, resolution, 14, 8, offset, 0, 0)
        octets += block(order, 1, struct.pack(order + "HHI", link, 0, snap) + options)
    return octets


def packet(order, interface, ticks, octets):
    return block(order, 6, struct.pack(order + "IIIII", interface, ticks >> 32, ticks % 2**32,
                                       len(octets), len(octets)) + octets)


def interfaces():
    """Two sections, one of each byte order, with interfaces that differ in all respects."""
    clocks = [(147, 0, 6, 0), (1, 65535, 6, 0), (101, 96, 9, 0), (1, 0, 0x80 | 20, 0), (1, 0, 3, START)]
    octets = section("<", clocks)
    octets += packet("<", 0, START * 10**6, b"unknown")
    octets += packet("<", 1, START * 10**6, ether(ras(3001)))
    octets += block("<", 0xBAD, b"a block that nobody knows")
    octets += packet("<", 2, START * 10**9 + 500, ras(3002))
    octets += packet("<", 3, (START << 20) + (1 << 19), ether(ras(3003)))
    octets += packet("<", 4, 750, ether(ras(3004)))
    octets += section(">", [(101, 0, 6, 0)]) + packet(">", 0, START * 10**6 + 800000, ras(3005))
    octets += block(">", 3, struct.pack(">I", len(ras(3006))) + ras(3006))
    octets += block(">", 2, struct.pack(">HHIIII", 0, 0, (START * 10**6) >> 32,
                                        (START * 10**6 + 900000) % 2**32, len(ras(3007)),
                                        len(ras(3007))) + ras(3007))
    return octets


def pcapng(capture):
    links = sorted({link for _, link, _ in capture.frames})
    octets = section("<", [(link, 0, 6, 0) for link in links])
    return octets + b"".join(packet("<", links.index(link), time, frame)
                             for time, link, frame in capture.frames)


def main():
    for make in (resync, several, ports, foreign, early, shared, reused, refused, around,
                 hostile):
        make().pcap(f"{make.__name__}.pcap")
    (HERE / "tunnels.pcapng").write_bytes(pcapng(tunnels()))
    octets = interfaces()
    (HERE / "interfaces.pcapng").write_bytes(octets)
    half = len(octets) // 2
    with open(HERE / "interfaces.pcapng.gz", "wb") as file:  # with two members
        for part in (octets[:half], octets[half:]):
            file.write(gzip.compress(part, mtime=0))
    subprocess.run(["zstd", "-qf", HERE / "interfaces.pcapng"], check=True)


if __name__ == "__main__":
    main()
