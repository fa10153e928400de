#!/usr/bin/python3
"""terminal.py COLUMNS PROGRAM: prints what tamsel-capture shows on a terminal of that width."""
import fcntl
import os
import pty
import struct
import sys
import termios

VIEWS = [["calls.pcap"], ["calls.pcap", "5"], ["resync.pcap", "c0fe"], ["ten.pcap", "1"],
         ["--list", "calls.pcap", "1"]]


def show(columns, program, arguments, **variables):
    """Runs the program. Returns its output, with escape sequences, and its exit status."""
    child, terminal = pty.fork()
    if child == 0:
        fcntl.ioctl(1, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        with open(os.devnull, "wb") as null:
            os.dup2(null.fileno(), 2)
        environment = {**os.environ, "TERM": "xterm", "NO_COLOR": "", **variables}
        os.execve(program, [program, *arguments], environment)
    output = b""
    try:
        while octets := os.read(terminal, 65536):
            output += octets
    except OSError:  # this is how a terminal reports its end
        pass
    return output.decode().replace("\r\n", "\n"), os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])


def main():
    columns, program = int(sys.argv[1]), sys.argv[2]
    for arguments in VIEWS:
        output, status = show(columns, program, arguments)
        print(f"$ tamsel-capture {' '.join(arguments)}\n{output.replace(chr(27), '^[')}({status})\n")
    output, _ = show(columns, program, VIEWS[0], NO_COLOR="1")
    print(f"with NO_COLOR\n{output.replace(chr(27), '^[')}")


if __name__ == "__main__":
    main()
