#!/usr/bin/python3
"""Compares tamsel-capture with tshark in processor time (user + sys), on one file of many calls.

    bench/captures.py [--messages N] [--runs N] [--without-tshark] PROGRAM...

Each PROGRAM is a tamsel-capture, in turns; the first is the one that is judged. Output goes to the null
device, the files of -o to a memory file system. Printed are the best of all runs, and the most memory.
"""
import argparse
import os
import pathlib
import struct
import subprocess
import tempfile

SAMPLE = pathlib.Path(__file__).parent.parent / "tests/captures/call.pcap"
CALL = bytes.fromhex("c0fef93ecd9ed6119ab2000476222017")
CLIENT = bytes([17, 2, 0, 124])
MESSAGES = 19  # in the sample call


def write_calls(path, calls):
    """The sample call again and again, each from a host and with an identifier of its own."""
    octets = SAMPLE.read_bytes()
    records, at = [], 24
    while at < len(octets):
        seconds, fraction, size, _ = struct.unpack_from("<IIII", octets, at)
        records.append((seconds * 10**6 + fraction, octets[at + 16:at + 16 + size]))
        at += 16 + size
    with open(path, "wb") as file:
        file.write(octets[:24])
        for call in range(calls):
            host = bytes([10]) + struct.pack(">I", call)[1:]
            name = CALL[:12] + struct.pack(">I", call)
            for time, frame in records:
                time += call * 500_000  # the sample takes less
                frame = frame.replace(CLIENT, host).replace(CALL, name)
                file.write(struct.pack("<IIII", time // 10**6, time % 10**6, len(frame),
                                       len(frame)) + frame)


def measure(command):
    """Processor time in seconds, and memory in MB."""
    with open(os.devnull, "wb") as null:
        child = subprocess.Popen(command, stdout=null, stderr=null)
        _, status, usage = os.wait4(child.pid, 0)
        child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        raise SystemExit(f"{command}: exit {child.returncode}")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def best(runs, commands):
    """The best time and the most memory of each command; they run in turns."""
    results = [[run(command) for command in commands] for _ in range(runs)]
    return [(min(time for time, _ in one), max(memory for _, memory in one))
            for one in zip(*results)]


def run(command):
    if "-o" in command:
        subprocess.run(["rm", "-rf", command[command.index("-o") + 1]], check=True)
    return measure(command)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--messages", type=int, default=300_000)
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--without-tshark", action="store_true")
    parser.add_argument("programs", nargs="+")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(dir="/dev/shm") as folder:
        path = f"{folder}/calls.pcap"
        write_calls(path, options.messages // MESSAGES)
        size = os.path.getsize(path)
        print(f"{options.messages // MESSAGES * MESSAGES} messages, {size / 1e6:.0f} MB; seconds of "
              "processor time, MB of memory")
        rows = [("list", ["--list"], ["tshark", "-r", path]),
                ("dumps", ["--dump"], ["tshark", "-r", path, "-V", "-O", "q931,h225,h245"]),
                ("calls", [], None),
                ("files", ["-o", f"{folder}/files"], None)]
        for name, ours, theirs in rows:
            commands = [[program, *ours, path] for program in options.programs]
            if theirs and not options.without_tshark:
                commands.append(theirs)
            for command, (time, memory) in zip(commands, best(options.runs, commands)):
                print(f"{name:6} {time:8.2f} s {memory:8.1f} MB  {command[0]}", flush=True)


if __name__ == "__main__":
    main()
