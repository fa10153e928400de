"""Messages for the captures: those of tests/data, and some that are encoded here."""
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
