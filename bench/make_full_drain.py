#!/usr/bin/env python3
"""Writes devices/full-drain.json beside this script: the default phone with
both profiler sources full on every pass.

    python3 bench/make_full_drain.py tmxsim/devices/default.json

Everything but the two logs is the default phone's own (statistics, state
dumps, assets, timesync, HID reports), so the whole harvest succeeds. The
logs repeat the default phone's records, the same mix of categories and
record kinds, session after session: each repetition is shifted later by one
session length and numbered on, so timestamps and sequence numbers keep
rising and the calendar time crosses many seconds.

  "profile", command 209:          10 passes of 1,365 records (65,520 bytes)
  "ZOL_profiler", method 9:        10 passes of 1,000 records (48,000 bytes)

A log of exactly 10 passes is read to its end by each reader. Commit the
output; the build reads only the JSON.
"""

import json
import pathlib
import struct
import sys

HERE = pathlib.Path(__file__).resolve().parent

RECORD_SIZE = 48
PASSES = 10
EVENT_RECORDS_PER_PASS = 65_536 // RECORD_SIZE  # 1,365
PROFILER_RECORDS_PER_PASS = 48_000 // RECORD_SIZE  # 1,000

# One session of the default log (1.289 s of coprocessor time around the
# press) and a pause of 10 ms before the next one, in microseconds.
SESSION = 1_289_110 + 10_000


def records_of(answers):
    """The records of a log's passes, in the order the phone gives them."""
    answers = answers if isinstance(answers, list) else [answers]
    data = b"".join(bytes.fromhex(a.get("reply", "").replace(" ", "")) for a in answers)
    assert len(data) % RECORD_SIZE == 0
    return [data[i:i + RECORD_SIZE] for i in range(0, len(data), RECORD_SIZE)]


def repeated(records, count):
    """`count` records: the session's records in time order, over and over."""
    records = sorted(records, key=lambda r: struct.unpack_from("<Q", r, 8)[0])
    (first_seq,) = struct.unpack_from("<I", records[0], 4)
    out = []
    for n in range(count):
        session, index = divmod(n, len(records))
        raw = bytearray(records[index])
        (ts,) = struct.unpack_from("<Q", raw, 8)
        struct.pack_into("<IQ", raw, 4, (first_seq + n) & 0xFFFFFFFF, ts + session * SESSION)
        out.append(bytes(raw))
    return out


def passes(records, per_pass):
    chunks = [b"".join(records[i:i + per_pass]) for i in range(0, len(records), per_pass)]
    assert len(chunks) == PASSES and all(len(c) == per_pass * RECORD_SIZE for c in chunks)
    return [{"reply": chunk.hex()} for chunk in chunks]


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: make_full_drain.py BUILT-DEFAULT-PHONE.json")
    description = json.loads(pathlib.Path(sys.argv[1]).read_text())
    (profile,) = [s for s in description["services"] if s["name"] == "ZOL_profile"]
    (profiler_child,) = profile["children"]
    events = repeated(records_of(profile["commands"]["209"]), PASSES * EVENT_RECORDS_PER_PASS)
    profiler = repeated(records_of(profiler_child["methods"]["9"]), PASSES * PROFILER_RECORDS_PER_PASS)
    profile["commands"]["209"] = passes(events, EVENT_RECORDS_PER_PASS)
    profiler_child["methods"]["9"] = passes(profiler, PROFILER_RECORDS_PER_PASS)

    out = HERE / "devices" / "full-drain.json"
    out.parent.mkdir(exist_ok=True)
    out.write_text(json.dumps(description, indent=1) + "\n")
    print("full-drain: %d event records, %d profiler records, %d bytes" % (
        len(events), len(profiler), out.stat().st_size))


if __name__ == "__main__":
    main()
