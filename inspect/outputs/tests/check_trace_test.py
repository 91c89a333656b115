#!/usr/bin/env python3
"""check_trace.py itself: a good trace passes, and each broken one is
caught for the rule it breaks."""
import json
import os
import sys
import tempfile

sys.dont_write_bytecode = True  # nothing written into the source tree
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import check_trace  # noqa: E402

NAMES = [
    {"name": "process_name", "ph": "M", "ts": 0, "pid": 1, "tid": 0, "args": {"name": "press"}},
    {"name": "thread_name", "ph": "M", "ts": 0, "pid": 1, "tid": 1, "args": {"name": "finger"}},
]


def slice_(ts, dur, **extra):
    return {"name": "s", "ph": "X", "ts": ts, "dur": dur, "pid": 1, "tid": 1, **extra}


GOOD = {"traceEvents": NAMES + [
    slice_(0, 10), slice_(2, 3, bind_id="0x1", flow_out=True),
    slice_(10, 5), slice_(20, 0, bind_id="0x1", flow_in=True),
    {"name": "c", "ph": "C", "ts": 4, "pid": 1, "tid": 0, "args": {"value": 3}},
    {"name": "i", "ph": "i", "ts": 6, "pid": 1, "tid": 1, "s": "t"},
    {"name": "b", "ph": "B", "ts": 30, "pid": 1, "tid": 1},
    {"name": "b", "ph": "E", "ts": 31, "pid": 1, "tid": 1},
    {"name": "f", "ph": "s", "id": 7, "ts": 1, "pid": 1, "tid": 1},
    {"name": "f", "ph": "f", "id": 7, "ts": 12, "pid": 1, "tid": 1, "bp": "e"},
], "displayTimeUnit": "ms", "otherData": {}}


def broken(change):
    trace = json.loads(json.dumps(GOOD))
    change(trace)
    return trace


CASES = [
    ("traceEvents not first", lambda t: t.update({"traceEvents": t.pop("traceEvents")})),
    ("an unknown top-level key", lambda t: t.update({"extra": 1})),
    ("displayTimeUnit us", lambda t: t.update({"displayTimeUnit": "us"})),
    ("an event without ts", lambda t: t["traceEvents"][2].pop("ts")),
    ("an X without dur", lambda t: t["traceEvents"][2].pop("dur")),
    ("slices that overlap", lambda t: t["traceEvents"].append(slice_(8, 5))),
    ("an E without a B", lambda t: t["traceEvents"].append(
        {"name": "b", "ph": "E", "ts": 40, "pid": 1, "tid": 1})),
    ("a B that never ends", lambda t: t["traceEvents"].append(
        {"name": "b", "ph": "B", "ts": 40, "pid": 1, "tid": 1})),
    ("an instant of scope x", lambda t: t["traceEvents"][7].update({"s": "x"})),
    ("a counter of two values", lambda t: t["traceEvents"][6]["args"].update({"other": 1})),
    ("a counter of text", lambda t: t["traceEvents"][6].update({"args": {"value": "3"}})),
    ("a flow without an end", lambda t: t["traceEvents"].pop(11)),
    ("a bound flow without an end", lambda t: t["traceEvents"][5].pop("flow_in")),
    ("a track without a name", lambda t: t["traceEvents"].append(slice_(0, 1, tid=9))),
    ("a process without a name", lambda t: t["traceEvents"].pop(0)),
    ("a negative time", lambda t: t["traceEvents"][3].update({"ts": -4})),
    ("a time at 2^53", lambda t: t["traceEvents"][3].update({"ts": 2 ** 53})),
    ("a slice ending beyond 2^53", lambda t: t["traceEvents"][3].update({"dur": 2 ** 53})),
    ("an argument beyond 2^53", lambda t: t["traceEvents"][2].update({"args": {"v": 2 ** 64 - 1}})),
    ("records off the axis not counted", lambda t: t.update({"otherData": {
        "generator": "kelvra-inspect trace", "records_off_axis": 1, "records": 0}})),
    ("not starting at 0", lambda t: [e.update({"ts": e["ts"] + 5}) for e in t["traceEvents"]
                                     if e["ph"] != "M"]),
]


def faults_of(trace):
    with tempfile.NamedTemporaryFile("w", suffix=".json", delete=False) as file:
        json.dump(trace, file)
    try:
        return check_trace.check_file(file.name)
    finally:
        os.unlink(file.name)


def main():
    failed = 0
    good = faults_of(GOOD)
    if good:
        print("FAIL: the good trace:", good)
        failed = 1
    for name, change in CASES:
        if not faults_of(broken(change)):
            print(f"FAIL: not caught: {name}")
            failed = 1
    print(f"{len(CASES)} broken traces, {'all' if not failed else 'not all'} caught")
    return failed


if __name__ == "__main__":
    sys.exit(main())
