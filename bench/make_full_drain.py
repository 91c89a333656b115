#!/usr/bin/env python3
"""Writes devices/full-drain.json beside this script: the default phone with
both profiler sources full on every pass.

Everything but the two logs is the default phone's own (statistics, state
dumps, assets, timesync, HID reports), so the whole harvest succeeds. The
logs repeat the default phone's records, the same mix of categories and
record kinds, session after session: each repetition is shifted later by one
session length and numbered on, so timestamps and sequence numbers keep
rising and the calendar time crosses many seconds.

  "profile", command 209:          10 passes of 1,365 records (65,520 bytes)
  "ZOL_profiler", method 9:        10 passes of 1,000 records (48,000 bytes)

A log of exactly 10 passes is read to its end by each reader. Replies are
written as hex strings: bulk data that nobody reads by eye.

Regenerate with
    python3 bench/make_full_drain.py
and commit the output.
"""

import json
import pathlib
import random
import struct
import sys

HERE = pathlib.Path(__file__).resolve().parent
DEVICES = HERE.parent / "tmxsim" / "devices"
sys.path.insert(0, str(DEVICES))
sys.dont_write_bytecode = True  # leave the phone model's folder as it is

import make_default as phone_model  # noqa: E402

RECORD_SIZE = 48
PASSES = 10
EVENT_RECORDS_PER_PASS = 65_536 // RECORD_SIZE  # 1,365
PROFILER_RECORDS_PER_PASS = 48_000 // RECORD_SIZE  # 1,000

# One session of the default log, plus a pause before the next one (µs).
SESSION = phone_model.LOG_END - phone_model.LOG_START + 10_000


def repeated(records, count, first_seq):
    """`count` records: the session's records in time order, over and over."""
    records = sorted(records, key=lambda r: r.ts)
    out = []
    for n in range(count):
        session, index = divmod(n, len(records))
        record = records[index]
        raw = bytearray(phone_model.encode(record.pieces(first_seq + n)))
        assert len(raw) == RECORD_SIZE
        struct.pack_into("<Q", raw, 8, record.ts + session * SESSION)
        out.append(bytes(raw))
    return out


def passes(records, per_pass):
    chunks = [b"".join(records[i:i + per_pass]) for i in range(0, len(records), per_pass)]
    assert len(chunks) == PASSES and all(len(c) == per_pass * RECORD_SIZE for c in chunks)
    return [{"reply": chunk.hex()} for chunk in chunks]


def check_rising(records):
    last_seq, last_ts = None, None
    for raw in records:
        seq, ts = struct.unpack_from("<IQ", raw, 4)
        assert last_seq is None or seq == last_seq + 1
        assert last_ts is None or ts >= last_ts
        last_seq, last_ts = seq, ts


def main():
    rng = random.Random(20260314)  # the default phone's own seed
    events = repeated(phone_model.event_log_records(rng), PASSES * EVENT_RECORDS_PER_PASS, 40_213)
    profiler = repeated(phone_model.profiler_records(rng), PASSES * PROFILER_RECORDS_PER_PASS, 9_117)
    check_rising(events)
    check_rising(profiler)

    description = json.loads((DEVICES / "default.json").read_text())
    (profile,) = [s for s in description["services"] if s["name"] == "ZOL_profile"]
    (profiler_child,) = profile["children"]
    profile["commands"]["209"] = passes(events, EVENT_RECORDS_PER_PASS)
    profiler_child["methods"]["9"] = passes(profiler, PROFILER_RECORDS_PER_PASS)

    body = phone_model.to_json(description) + "\n"
    assert json.loads(body) == description
    out = HERE / "devices" / "full-drain.json"
    out.parent.mkdir(exist_ok=True)
    out.write_text(body)
    print("full-drain: %d event records, %d profiler records, %d bytes" % (
        len(events), len(profiler), len(body)))


if __name__ == "__main__":
    main()
