#!/usr/bin/python3
"""json_lines.py PROGRAM SCHEMA FOLDER SCRATCH: what tamsel-capture writes as JSON of the captures in FOLDER
follows the schema, and says the same as the dumps.
"""
import json
import pathlib
import re
import shutil
import subprocess
import sys

import jsonschema

program, schema, folder, scratch = sys.argv[1], *map(pathlib.Path, sys.argv[2:])
schema = json.loads(schema.read_text())
shutil.rmtree(scratch, ignore_errors=True)
scratch.mkdir(parents=True)
jsonschema.Draft202012Validator.check_schema(schema)
faults = 0


def fault(*what):
    global faults
    faults += 1
    print(*what)


def output_of(*arguments):
    return subprocess.run([program, *arguments], capture_output=True).stdout


def lines_of(kind, capture, *arguments):
    """Each line as it is read by a strict reader, validated."""
    validator = jsonschema.Draft202012Validator({"$defs": schema["$defs"], "$ref": f"#/$defs/{kind}"})
    octets = output_of(*arguments, capture)
    if re.search(rb"[^\n -~]", octets):
        fault(capture.name, arguments, "not all of it is printable ASCII")
    lines = [json.loads(line) for line in octets.decode("ascii").splitlines()]
    for number, line in enumerate(lines):
        for error in validator.iter_errors(line):
            fault(capture.name, arguments, number, error.json_path, error.message[:200])
    return lines


def dump_text(values):
    """A dump as the library writes it, but object identifiers and BMPStrings in quotes."""
    text, is_wide = [], False
    for value in values:
        path, value = value["path"], value["value"]
        if path.endswith(".data") and not is_wide:
            octets, value = bytes.fromhex(value), ""
            for at in range(0, max(len(octets), 1), 16):
                part = octets[at:at + 16]
                shown = "".join(chr(c) if 32 <= c <= 126 else "." for c in part)
                value += f"\n{part.hex(' '):49}" + (shown if len(part) == 16 else shown.rstrip(" "))
        elif isinstance(value, bool):
            value = str(value).upper()
        elif isinstance(value, str):
            value = f"'{value}'"
        text.append(f"{path} = {value}\n")
        is_wide = path.endswith(".nchars")
    return "".join(text)


def quoted_identifier(match):  # a dump shows its numbers as 32 bits with a sign
    return " = '{}'\n".format(".".join(str(int(number) % 2**32) for number in match[1].split()))


def quoted_characters(match):
    octets = bytes.fromhex("".join(line[:48] for line in match[2].splitlines()))
    return f"{match[1]} = '{octets.decode('utf-16-le', 'replace')}'\n"


def compare_dumps(capture, modules, messages):
    files = scratch / f"{capture.name}-{modules}"
    output_of("--modules", modules, "-o", files, capture)
    rows = [row.split("\t") for row in (files / "index.tsv").read_text().splitlines()[1:]]
    if len(rows) != len(messages):
        fault(capture.name, len(messages), "messages, and in the index", len(rows))
    for row, message in zip(rows, messages):
        text = (files / row[9]).read_bytes().decode(errors="replace")
        text = re.sub(r" = { \n(.*?)}\n", quoted_identifier, text)
        text = re.sub(r"([.]nchars = \d+\n.*[.]data) = \n((?:[0-9a-f ]{48} .*\n)+)",
                      quoted_characters, text)
        made = dump_text(message["dump"]) if message["decoded"] else message["octets"] + "\n"
        if text != made:
            fault(capture.name, row[9], "the dump differs:", made[:300])


def compare_typed(messages):
    """Text that is no UTF-8, as another decoder reads it."""
    typed = [message for message in messages if message["name"] == "userInput"]
    for message in typed:
        wanted = bytes.fromhex(message["octets"])[3:].decode(errors="replace")
        if message["dump"][-1]["value"] != wanted:
            fault("userInput:", message["dump"][-1], "wanted", wanted)
    return len(typed)


captures = sorted(path for path in folder.iterdir() if path.suffix in (".pcap", ".pcapng", ".gz"))
counts = [0, 0, 0]
for capture in captures:
    for modules in ("1998", "2009"):
        messages = lines_of("message", capture, "--json", "--modules", modules)
        full = lines_of("message", capture, "--json", "--full", "--modules", modules)
        counts[0] += len(messages)
        counts[1] += len(lines_of("call", capture, "--calls", "--json", "--modules", modules))
        counts[2] += compare_typed(full) if capture.name == "hostile.pcap" else 0
        compare_dumps(capture, modules, full)
        for message in full:
            del message["dump"]
        if full != messages:
            fault(capture.name, "--full changes more than the dump")
if not all(counts):
    fault("messages, calls, typed text:", counts)
sys.exit(faults > 0)
