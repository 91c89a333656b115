#!/usr/bin/env python3
"""Writes COUNT raw 48-byte records end to end: the records of a capture
(its prof-event lines) repeated, with sequence numbers and timestamps
carried on so the file reads as one long log.

    make_raw_records.py PROF_EVENT_LINES COUNT OUT
"""
import struct
import sys


def main():
    source, count, out = sys.argv[1], int(sys.argv[2]), sys.argv[3]
    records = [bytes.fromhex(line[len("prof-event "):].strip())
               for line in open(source) if line.startswith("prof-event ")]
    if not records:
        sys.exit("make_raw_records.py: no prof-event lines in " + source)
    first_time = struct.unpack_from("<Q", records[0], 8)[0]
    span = struct.unpack_from("<Q", records[-1], 8)[0] - first_time + 50
    block = bytearray(b"".join(records))
    with open(out, "wb") as file:
        written, rounds = 0, 0
        while written < count:
            take = min(len(records), count - written)
            chunk = bytearray(block[: take * 48])
            for i in range(take):
                at = i * 48
                sequence, time = struct.unpack_from("<IQ", chunk, at + 4)
                struct.pack_into("<IQ", chunk, at + 4,
                                 (written + i) & 0xFFFFFFFF, time + rounds * span)
            file.write(chunk)
            written += take
            rounds += 1


if __name__ == "__main__":
    main()
