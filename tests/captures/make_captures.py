#!/usr/bin/python3
"""Makes captures in this folder from tests/data, by Debian's python3-scapy. They are committed: run this
only to change them. With a number of MiB, the script instead writes a capture of this size to
standard output, in which the sample call is repeated once a second.
"""
import struct
import sys

from scapy.all import (IP, TCP, UDP, Dot1Q, Ether, IPv6, PcapWriter, Raw, fragment, raw, wrpcap,
                       wrpcapng)

from messages import *


class Capture:
    def __init__(self, ip=IP, link=lambda: Ether(src="02:00:00:00:00:01", dst="02:00:00:00:00:02")):
        self.ip, self.link, self.frames, self.now, self.ident = ip, link, [], 0.0, 0

    def send(self, source, destination, payload):
        self.ident += 1
        ip = self.ip(src=source, dst=destination)
        if self.ip is IP:
            ip.id = self.ident
        self.frame(self.link() / ip / payload)

    def frame(self, packet):
        packet.time = START + self.now
        self.now = round(self.now + 0.0125, 6)
        self.frames.append(packet)

    def udp(self, source, sport, destination, dport, message):
        self.send(source, destination, UDP(sport=sport, dport=dport) / Raw(message))

    def segment(self, source, sport, destination, dport, sequence, acknowledged, flags, payload):
        tcp = TCP(sport=sport, dport=dport, flags=flags, window=8192, seq=sequence,
                  ack=acknowledged)
        self.send(source, destination, tcp / Raw(payload) if payload else tcp)


def stream(capture, *ends, **options):
    """A stream in which the server's sequence numbers wrap around."""
    return Stream(capture, *ends, start=(1000, 0xFFFFFF00), **options)


def call(port=2034):
    """The sample call: RAS, call signalling with fastStart and a tunnelled message, separate H.245."""
    c = Capture()
    c.udp(TERMINAL, port, GATEKEEPER, 1718, data("ras-gatekeeperRequest"))
    request = of_this_call(data("alt-ras-admissionRequest-aligned"), "20" * 16)
    request = request[:2] + b"\0\2" + request[4:]  # requestSeqNum as in the confirm
    c.udp(TERMINAL, port, GATEKEEPER, 1719, request)
    c.udp(GATEKEEPER, 1719, TERMINAL, port, data("ras-admissionConfirm"))
    s = stream(c, TERMINAL, port + 1, CALLED, 1720)
    s.say(0, tpkt(q931(5, data("made-ui-call-setup-aligned"), bytes.fromhex("04038893a5"))))
    s.say(1, tpkt(q931(2, data("ui-callProceeding"))))
    s.say(1, tpkt(q931(1, data("made-ui-call-alerting-aligned"))))
    answer = tpkt(q931(7, connect(port + 6)))
    s.say(1, answer[:30])
    s.say(1, answer[30:])  # one TPKT over two segments
    h = stream(c, TERMINAL, port + 2, CALLED, port + 6)
    start = h.next[0]
    h.say(0, tpkt(data("h245-terminalCapabilitySet")))
    h.packet(0, "PA", tpkt(data("h245-terminalCapabilitySet")), at=start)  # a retransmission
    h.say(1, tpkt(data("h245-terminalCapabilitySet")))
    h.say(0, tpkt(data("h245-masterSlaveDetermination")))
    h.say(1, tpkt(data("h245-terminalCapabilitySetAck")) +
          tpkt(data("h245-masterSlaveDeterminationAck")))  # two TPKTs in one segment
    h.say(0, tpkt(data("h245-terminalCapabilitySetAck")))
    h.say(0, tpkt(data("h245-openLogicalChannel")))
    h.say(1, tpkt(data("h245-openLogicalChannelAck")))
    c.udp(GATEKEEPER, 1719, TERMINAL, port, of_this_call(data("ras-infoRequest"),
                                                         "004091fb7289f911802a050403020100"))
    h.close()
    s.say(0, tpkt(q931(0x5A, of_this_call(data("ui-releaseComplete"),
                                          "24ab157276fa18109a58001321f06990"))))
    s.close()
    return c


def odd():
    """Conditions that are common in real captures. Each stream has its own port."""
    tcs, ack = tpkt(data("h245-terminalCapabilitySet")), tpkt(data("h245-terminalCapabilitySetAck"))
    proceeding = tpkt(q931(2, data("ui-callProceeding")))
    c = Capture(link=lambda: Ether() / Dot1Q(vlan=7))
    s = stream(c, TERMINAL, 3001, CALLED, 1720)
    s.say(0, tpkt(b""))  # keeps the connection alive
    s.say(0, tpkt(q931(0x75, None)))  # a status enquiry carries no H.225.0 message
    s.say(0, tpkt(q931(2, data("ui-callProceeding"))[:-9]))  # ends within an element
    s.say(0, tpkt(tcs[4:]))  # H.245 on a stream of call signalling
    s.say(1, tpkt(q931(1, data("alt-ui-alerting-aligned"))))  # its tunnelled content is no H.245
    s.say(1, tpkt(q931(7, connect(3002))))

    h = stream(c, TERMINAL, 3003, CALLED, 3002)  # segments out of order, the first one last
    at = h.next[0]
    octets = tcs + ack
    for first, last in ((20, 35), (10, 20), (0, 10)):
        h.packet(0, "PA", octets[first:last], at=at + first)
    h.next[0] += len(octets)
    h.packet(1, "A")
    at = h.next[1]  # the sequence numbers wrap around, and the segments overlap
    h.packet(1, "PA", tcs[:20], at=at)
    h.packet(1, "PA", tcs[12:], at=at + 12)
    h.next[1] = (at + len(tcs)) % 2**32
    h.packet(0, "A")
    h.lose(0, len(tcs))  # a whole message is missing
    h.say(0, ack)
    h.say(1, tcs[:9])
    h.lose(1, 5)  # a part of a message is missing
    h.say(1, tcs[14:] + ack)
    h.say(0, tcs[:8])
    h.close()  # within a message

    m = stream(c, TERMINAL, 3004, CALLED, 1720, opened=False)  # starts in the middle of a message
    m.say(0, proceeding[20:] + proceeding)
    m.packet(1, "RA")

    # IPv4 fragments, the last one first; a packet with a missing fragment
    c.ident += 1
    whole = Ether() / IP(src=TERMINAL, dst=GATEKEEPER, id=c.ident) / UDP(sport=3005, dport=1719) / \
        Raw(data("made-ras-aligned"))
    for part in reversed(fragment(whole, fragsize=64)):
        c.frame(part)
    whole[IP].id += 1
    c.frame(fragment(whole, fragsize=64)[0])
    c.udp(TERMINAL, 3005, GATEKEEPER, 1719, b"\xFF\xFF")
    c.frame(Ether(type=0x0800) / Raw(b"\x45\0\0"))  # a malformed IP packet
    return c


def six():
    c = Capture(ip=IPv6)
    s = stream(c, "2001:db8::1", 3010, "2001:db8::2", 1720)
    s.say(0, tpkt(q931(2, data("ui-callProceeding"))))
    s.close()
    c.udp("2001:db8::1", 3011, "2001:db8::2", 1719, data("ras-infoRequest"))
    return c


def linked(header, link_type, name):
    """Writes a capture with a RAS message after the header of another link type."""
    packet = IP(src=TERMINAL, dst=GATEKEEPER) / UDP(sport=2034, dport=1719) / \
        Raw(data("ras-infoRequest"))
    writer = PcapWriter(str(HERE / name), linktype=link_type)
    writer.write_header(None)
    writer._write_packet(header + raw(packet), sec=START, usec=0)
    writer.close()


def many(size):
    """Writes the sample call to standard output, once a second, until `size` octets are written."""
    records = [(raw(frame), frame.time) for frame in call().frames]
    sys.stdout.buffer.write((HERE / "call.pcap").read_bytes()[:24])
    written, now = 24, 0
    while written < size:
        block = b"".join(
            struct.pack("<IIII", int(time) + now, round(time % 1 * 1000000), len(octets),
                        len(octets)) + octets for octets, time in records)
        written += sys.stdout.buffer.write(block)
        now += 1


def main():
    if len(sys.argv) > 1:
        many(int(sys.argv[1]) << 20)
        return
    wrpcap(str(HERE / "call.pcap"), call().frames)
    frames = call().frames
    wrpcap(str(HERE / "first.pcap"), frames[:13])  # up to the first half of a TPKT
    wrpcap(str(HERE / "second.pcap"), frames[13:])
    wrpcap(str(HERE / "odd.pcap"), odd().frames)
    wrpcapng(str(HERE / "six.pcapng"), six().frames)
    linked(bytes.fromhex("0000 0001 0006 020000000001 0000 0800"), 113, "sll.pcap")
    linked(bytes.fromhex("0800 0000 00000002 0001 00 06 0200000000010000"), 276, "sll2.pcap")
    linked(b"", 101, "raw.pcap")
    linked(b"", 147, "unknown.pcap")
    octets = (HERE / "call.pcap").read_bytes()
    (HERE / "cut.pcap").write_bytes(octets[:700])


if __name__ == "__main__":
    main()
