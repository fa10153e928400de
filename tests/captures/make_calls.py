#!/usr/bin/python3
"""Makes calls.pcap, with calls that fail in different ways, and ten.pcap, with a call through ten hosts.
Debian's erlang-asn1 encodes the messages from values that are written here with the names of the
modules of 2009. The captures are committed: run this only to change them.
"""
import shutil
import tempfile

from make_wire import *

ROOT = HERE.parent.parent
MODULES = {"H235": "H235-SECURITY-MESSAGES", "H245": "MULTIMEDIA-SYSTEM-CONTROL",
           "H323": "H323-MESSAGES"}
ALICE, BOB, GATEKEEPER = "10.0.0.1", "10.0.0.2", "10.0.0.9"
VERSION = (0, 0, 8, 2250, 0, 7)


def term(value):
    """A value in the notation of Erlang. A pair is an alternative of a CHOICE."""
    if value is None:
        return "'NULL'"
    if isinstance(value, bool):
        return str(value).lower()
    if isinstance(value, (int, float)):
        return str(value)
    if isinstance(value, bytes):
        return "<<" + ",".join(map(str, value)) + ">>"
    if isinstance(value, str):
        return "[" + ",".join(str(ord(c)) for c in value) + "]"
    if isinstance(value, dict):
        return "#{" + ",".join(f"'{name}'=>{term(one)}" for name, one in value.items()) + "}"
    if isinstance(value, tuple) and isinstance(value[0], str):
        return "{'" + value[0] + "'," + term(value[1]) + "}"
    brackets = "{}" if isinstance(value, tuple) else "[]"
    return brackets[0] + ",".join(map(term, value)) + brackets[1]


class Codec:
    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        for file, module in MODULES.items():
            shutil.copy(ROOT / f"asn1/2009/{file}.asn", self.folder / f"{module}.asn1")
        for module in MODULES.values():
            self.run("erlc", "-bper", "+maps", "+noobj", f"{module}.asn1")
            self.run("erlc", "+nowarn", f"{module}.erl")

    def run(self, *command):
        subprocess.run(command, cwd=self.folder, check=True, capture_output=True)

    def encode(self, module, kind, value):
        text = "{'%s','%s',%s}.\n" % (MODULES[module], kind, term(value))
        (self.folder / "values").write_text(text)
        self.run("escript", str(ROOT / "tests/crosscheck/codec.escript"), "values", "results", "9")
        result = (self.folder / "results").read_text()
        if result.startswith("-"):
            raise SystemExit(f"{text}{result}")
        return bytes.fromhex(result.split()[0])


codec = Codec()


def ras_message(name, **body):
    return codec.encode("H323", "RasMessage", (name, body))


def ui_message(name, **body):
    uu = {"h323-message-body": (name, {"protocolIdentifier": VERSION, **body}),
          "h245Tunnelling": False}
    return codec.encode("H323", "H323-UserInformation", {"h323-uu-pdu": uu})


def h245_message(kind, name, body):
    return tpkt(codec.encode("H245", "MultimediaSystemControlMessage", (kind, (name, body))))


def transport(address, port):
    return ("ipAddress", {"ip": packed(address), "port": port})


def media(address, port):
    return ("unicastAddress", ("iPAddress", {"network": packed(address), "tsapIdentifier": port}))


def offer(codec_name, address, port):  # an OpenLogicalChannel for audio
    return {"forwardLogicalChannelNumber": 1,
            "forwardLogicalChannelParameters": {
                "dataType": ("audioData", (codec_name, 20)),
                "multiplexParameters": ("h2250LogicalChannelParameters", {
                    "sessionID": 1, "mediaChannel": media(address, port),
                    "mediaControlChannel": media(address, port + 1)})}}


def fast_start(*codecs, address, port):
    return [codec.encode("H245", "OpenLogicalChannel", offer(name, address, port))
            for name in codecs]


def element(kind, octets):
    return bytes([kind, len(octets)]) + octets


def cause(value):
    return element(8, bytes([0x80, 0x80 | value]))


class Call:
    """A call between two endpoints of a gatekeeper. Each call has its own number and stream."""
    terminal = {"mc": False, "undefinedNode": False, "terminal": {}}

    def __init__(self, capture, number, called, digits="4712"):
        self.capture, self.number, self.called, self.digits = capture, number, called, digits
        self.call = {"callIdentifier": {"guid": bytes([number]) * 16}}
        self.conference = {"conferenceID": bytes([0x40 + number]) * 16}
        self.stream = None

    def ras(self, sender, receiver, name, **body):
        port = {GATEKEEPER: 1719}
        self.capture.udp(sender, port.get(sender, 2000), receiver, port.get(receiver, 2000),
                         ras_message(name, requestSeqNum=self.number, **body))

    def admission(self):
        self.ras(ALICE, GATEKEEPER, "admissionRequest", callType=("pointToPoint", None),
                 endpointIdentifier="alice", destinationInfo=[("dialledDigits", self.digits)],
                 srcInfo=[("dialledDigits", "4711"), ("h323-ID", "Alice")], bandWidth=1280,
                 callReferenceValue=self.number, activeMC=False, answerCall=False,
                 canMapAlias=True, willSupplyUUIEs=False, **self.call, **self.conference)

    def admitted(self):
        self.admission()
        self.ras(GATEKEEPER, ALICE, "admissionConfirm", bandWidth=1280,
                 callModel=("direct", None), destCallSignalAddress=transport(self.called, 1720))

    def say(self, side, kind, name, elements=b"", **body):
        self.stream.say(side, tpkt(self.q931(side, kind, ui_message(name, **body, **self.call),
                                             elements)))

    def q931(self, side, kind, user_user, elements):
        octets = q931(kind, user_user, elements)
        return octets[:2] + bytes([0x80 * side, self.number]) + octets[4:]

    def setup(self, caller=ALICE, port=None, elements=None, **body):
        self.stream = Stream(self.capture, caller, port or 3000 + self.number, self.called, 1720)
        parties = element(0x28, b"Alice") + element(0x6C, b"\x00\x81" + b"4711") + \
            element(0x70, b"\x81" + self.digits.encode())
        self.say(0, 5, "setup", parties if elements is None else elements,
                 sourceInfo=self.terminal, sourceAddress=[("h323-ID", "Alice")], activeMC=False,
                 conferenceGoal=("create", None), callType=("pointToPoint", None),
                 mediaWaitForConnect=False, canOverlapSend=False, multipleCalls=False,
                 maintainConnection=False, **self.conference, **body)

    def answer(self, kind, name, **body):
        self.say(1, kind, name, destinationInfo=self.terminal, multipleCalls=False,
                 maintainConnection=False, **body)

    def connect(self, **body):
        self.answer(7, "connect", **self.conference, **body)

    def release(self, side, value, reason):
        self.say(side, 0x5A, "releaseComplete", cause(value), reason=(reason, None))
        self.stream.close()


def registration(capture):
    def ask(sender, number, alias, name, **body):
        request = ras_message(
            "registrationRequest", requestSeqNum=number, protocolIdentifier=VERSION,
            discoveryComplete=False, callSignalAddress=[transport(sender, 1720)],
            rasAddress=[transport(sender, 2000)], terminalType=Call.terminal,
            terminalAlias=[("dialledDigits", alias)], keepAlive=False, willSupplyUUIEs=False,
            maintainConnection=False, endpointVendor={
                "vendor": {"t35CountryCode": 0, "t35Extension": 0, "manufacturerCode": 0}})
        capture.udp(sender, 2000, GATEKEEPER, 1719, request)
        capture.udp(GATEKEEPER, 1719, sender, 2000, ras_message(
            name, requestSeqNum=number, protocolIdentifier=VERSION, **body))

    ask(ALICE, 101, "4711", "registrationConfirm", callSignalAddress=[transport(ALICE, 1720)],
        terminalAlias=[("dialledDigits", "4711")], endpointIdentifier="alice", timeToLive=300,
        willRespondToIRR=False, maintainConnection=False)
    ask("10.0.0.7", 102, "4711", "registrationReject", rejectReason=("duplicateAlias", [
        ("dialledDigits", "4711")]))


def calls():
    capture = Capture()
    registration(capture)

    normal = Call(capture, 1, BOB)
    normal.admitted()
    normal.setup(fastStart=fast_start("g711Alaw64k", "g729", address=ALICE, port=5004))
    normal.answer(2, "callProceeding")
    normal.answer(1, "alerting")
    capture.now += 4
    normal.connect(fastStart=fast_start("g711Alaw64k", address=BOB, port=6004))
    capture.now += 60
    normal.release(0, 16, "undefinedReason")

    busy = Call(capture, 2, BOB)
    busy.admitted()
    busy.setup()
    busy.answer(2, "callProceeding")
    busy.release(1, 17, "inConf")

    unanswered = Call(capture, 3, BOB)
    unanswered.admitted()
    unanswered.setup()
    unanswered.answer(1, "alerting")
    capture.now += 30
    unanswered.release(0, 16, "undefinedReason")

    rejected = Call(capture, 4, BOB, digits="4799")
    rejected.admission()
    rejected.ras(GATEKEEPER, ALICE, "admissionReject",
                 rejectReason=("calledPartyNotRegistered", None))

    mismatch = Call(capture, 5, "10.0.0.3", digits="4713")
    mismatch.admitted()
    mismatch.setup()
    mismatch.answer(1, "alerting")
    mismatch.connect(h245Address=transport("10.0.0.3", 4000))
    control = Stream(capture, ALICE, 3500, "10.0.0.3", 4000)
    for side, names in enumerate((["g711Alaw64k", "g711Ulaw64k"], ["g729", "g728"])):
        control.say(side, h245_message("request", "terminalCapabilitySet", {
            "sequenceNumber": 1, "protocolIdentifier": (0, 0, 8, 245, 0, 15),
            "capabilityTable": [{"capabilityTableEntryNumber": i + 1, "capability": (
                "receiveAudioCapability", (name, 20))} for i, name in enumerate(names)]}))
    control.say(0, h245_message("request", "openLogicalChannel",
                                offer("g711Alaw64k", ALICE, 5008)))
    control.say(1, h245_message("response", "openLogicalChannelReject", {
        "forwardLogicalChannelNumber": 1, "cause": ("dataTypeNotSupported", None)}))
    control.say(0, h245_message("command", "endSessionCommand", ("disconnect", None)))
    mismatch.release(0, 16, "undefinedReason")
    capture.pcap("calls.pcap")


def ten():
    """A call that eight gatekeepers pass on, host by host."""
    capture = Capture()
    hosts = [f"10.1.{i}.{10 * i}" for i in range(10)]
    legs = [Call(capture, 6, host) for host in hosts[1:]]
    for i, leg in enumerate(legs):
        leg.setup(hosts[i], 3006)
    for leg in reversed(legs):
        leg.answer(1, "alerting")
    for leg in reversed(legs):
        leg.connect()
    for leg in legs:
        leg.release(0, 16, "undefinedReason")
    capture.pcap("ten.pcap")


if __name__ == "__main__":
    calls()
    ten()
