"""Decodes one H.245 message. Needs a 32-bit Python for Windows: python dump.py

Python 3.8 and later do not search the current directory and PATH for a DLL. The full path is
therefore given: Tamsel.dll is in the folder above this file.
"""

import ctypes
import os
import sys

folder = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
library = ctypes.WinDLL(os.path.join(folder, "Tamsel.dll"))
decode = library["_H323H245ASNDecode@16"]
decode.argtypes = ctypes.c_char_p, ctypes.c_ushort, ctypes.c_int, ctypes.c_char_p
decode.restype = ctypes.c_int

message = bytes.fromhex("01 00 00 80 92 4F D5")
# The path is in the code page of the process ("mbcs"), not in UTF-8.
if not decode(message, len(message), 1, "message.txt".encode("mbcs")):
    sys.exit("not an H.245 message, or message.txt cannot be written")
print("message.txt is written", file=sys.stderr)
