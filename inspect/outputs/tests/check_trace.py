#!/usr/bin/env python3
"""Checks Trace Event JSON files against the rules the web-based trace viewers
rely on: among them, every time at least 0 and below 2^53 µs (the viewers
refuse negative times, and a browser's numbers lose their value beyond
2^53), and no number in the file beyond 2^53 either. kelvra-inspect's own
traces are held to theirs too: the records off the press's time axis are all
on their track and counted in otherData. Prints one line per fault; exit
status 1 when any file has one.

    check_trace.py press.json...
"""
import json
import math
import sys
from collections import defaultdict

TOP_LEVEL = {"traceEvents", "displayTimeUnit", "otherData", "metadata"}
PHASES = {"X", "B", "E", "i", "I", "C", "M", "s", "t", "f"}
METADATA_NAMES = {"process_name", "thread_name", "process_sort_index", "thread_sort_index",
                  "process_labels"}
FLOW_PHASES = {"s", "t", "f"}
EXACT = 2 ** 53
OFF_AXIS_PID = 3  # kelvra-inspect's track of records far from the press


def is_number(value):
    return isinstance(value, (int, float)) and not isinstance(value, bool) and math.isfinite(value)


def is_integer(value):
    return isinstance(value, int) and not isinstance(value, bool)


class checker:
    def __init__(self, name):
        self.name = name
        self.faults = []

    def fault(self, where, text):
        self.faults.append(f"{self.name}: {where}: {text}")

    def big_numbers(self, value, where):
        if isinstance(value, dict):
            for key, item in value.items():
                self.big_numbers(item, f"{where}.{key}")
        elif isinstance(value, list):
            for i, item in enumerate(value):
                self.big_numbers(item, f"{where}[{i}]")
        elif is_number(value) and abs(value) >= EXACT:
            self.fault(where, f"{value} is beyond 2^53: a browser does not keep it")

    def own_rules(self, top, events):
        other = top.get("otherData")
        if not isinstance(other, dict) or other.get("generator") != "kelvra-inspect trace":
            return
        off = sum(1 for e in events if isinstance(e, dict) and e.get("pid") == OFF_AXIS_PID
                  and e.get("ph") != "M")
        if other.get("records_off_axis") != off:
            self.fault("otherData", f"records_off_axis is {other.get('records_off_axis')}, "
                       f"but {off} records stand on the track off the axis")
        shown = sum(1 for e in events if isinstance(e, dict) and e.get("ph") == "X"
                    and isinstance(e.get("args"), dict) and "sequence_num" in e["args"])
        if isinstance(other.get("records"), int) and shown + off != other["records"]:
            self.fault("otherData", f"{other['records']} records, but {shown + off} in the trace")

    def check(self, pairs):
        if not pairs or pairs[0][0] != "traceEvents":
            self.fault("top level", "the first key is not traceEvents")
        top = dict(pairs)
        for key in top:
            if key not in TOP_LEVEL:
                self.fault("top level", f"unexpected key {key!r}")
        if "displayTimeUnit" in top and top["displayTimeUnit"] not in ("ms", "ns"):
            self.fault("top level", "displayTimeUnit is neither ms nor ns")
        for key in ("otherData", "metadata"):
            if key in top and not isinstance(top[key], dict):
                self.fault("top level", f"{key} is not an object")
        events = top.get("traceEvents")
        if not isinstance(events, list):
            self.fault("top level", "traceEvents is not an array")
            return
        self.big_numbers(top, "document")
        self.events(events)
        self.own_rules(top, events)

    def events(self, events):
        named_processes, named_threads = set(), set()
        used_processes, used_threads = set(), set()
        slices = defaultdict(list)      # (pid, tid) -> [(start, end, index)]
        begin_end = defaultdict(list)   # (pid, tid) -> [(ts, order, ph, name, index)]
        flows = defaultdict(list)       # id -> [(ph, ts, pid, tid, index)]
        bound = defaultdict(lambda: [0, 0])  # bind_id -> [flow_out, flow_in]
        earliest = None
        for index, event in enumerate(events):
            where = f"event {index}"
            if not isinstance(event, dict):
                self.fault(where, "not an object")
                continue
            ph, ts = event.get("ph"), event.get("ts")
            if ph not in PHASES:
                self.fault(where, f"ph {ph!r} is not a phase this file may use")
                continue
            if not is_number(ts):
                self.fault(where, "ts is missing or not a number")
                continue
            if ts < 0 or ts >= EXACT:
                self.fault(where, f"ts {ts} is not from 0 to 2^53")
                continue
            pid, tid = event.get("pid"), event.get("tid")
            global_instant = ph in ("i", "I") and event.get("s") == "g"
            if not global_instant and not is_integer(pid):
                self.fault(where, "pid is missing or not an integer")
                continue
            if ph not in ("C",) and not global_instant and event.get("s") != "p" \
                    and not is_integer(tid):
                self.fault(where, "tid is missing or not an integer")
                continue
            if ph != "M":
                earliest = ts if earliest is None else min(earliest, ts)
            if "name" in event and not isinstance(event["name"], str):
                self.fault(where, "name is not a string")
            if "args" in event and not isinstance(event["args"], dict):
                self.fault(where, "args is not an object")

            if ph == "M":
                self.metadata(where, event, named_processes, named_threads)
                continue
            if not global_instant:
                used_processes.add(pid)
            if ph == "X":
                dur = event.get("dur")
                if not is_number(dur) or dur < 0:
                    self.fault(where, "an X event without a dur of 0 or more")
                    continue
                if ts + dur >= EXACT:
                    self.fault(where, "a slice that ends at 2^53 or later")
                slices[(pid, tid)].append((ts, ts + dur, index))
                used_threads.add((pid, tid))
            elif ph in ("B", "E"):
                begin_end[(pid, tid)].append((ts, index, ph, event.get("name"), index))
                used_threads.add((pid, tid))
            elif ph in ("i", "I"):
                scope = event.get("s", "t")
                if scope not in ("g", "p", "t"):
                    self.fault(where, f"instant scope {scope!r} is not g, p or t")
                if scope == "t":
                    used_threads.add((pid, tid))
            elif ph == "C":
                args = event.get("args")
                if not isinstance(args, dict) or len(args) != 1 or \
                        not all(is_number(v) for v in args.values()):
                    self.fault(where, "a counter without exactly one numeric value")
            elif ph in FLOW_PHASES:
                if "id" not in event:
                    self.fault(where, "a flow event without an id")
                    continue
                flows[event["id"]].append((ph, ts, pid, tid, index, event.get("bp")))
                used_threads.add((pid, tid))
            if "bind_id" in event:
                if ph not in ("X", "B"):
                    self.fault(where, "bind_id on an event that is not a slice")
                counts = bound[str(event["bind_id"])]
                if event.get("flow_out") is True:
                    counts[0] += 1
                if event.get("flow_in") is True:
                    counts[1] += 1
                if event.get("flow_out") is not True and event.get("flow_in") is not True:
                    self.fault(where, "bind_id without flow_in or flow_out")

        for pid in sorted(used_processes - named_processes):
            self.fault(f"pid {pid}", "a track without a process_name")
        for pid, tid in sorted(used_threads - named_threads):
            self.fault(f"pid {pid} tid {tid}", "a track without a thread_name")
        if earliest is not None and earliest != 0:
            self.fault("timestamps", f"the earliest ts is {earliest}, not 0")
        for track, spans in slices.items():
            self.nesting(track, spans)
        for track, marks in begin_end.items():
            self.begin_end(track, marks)
        for flow_id, steps in flows.items():
            self.flow_v1(flow_id, steps, slices)
        for bind_id, (outs, ins) in bound.items():
            if outs == 0 or ins == 0:
                self.fault(f"bind_id {bind_id}", "a flow with no start or no end")

    def metadata(self, where, event, named_processes, named_threads):
        name, args = event.get("name"), event.get("args")
        if name not in METADATA_NAMES:
            self.fault(where, f"metadata {name!r} is not one the viewers know")
            return
        if not isinstance(args, dict):
            self.fault(where, "metadata without args")
            return
        if name.endswith("_name"):
            if not isinstance(args.get("name"), str) or not args["name"]:
                self.fault(where, f"{name} without a name")
                return
            if name == "process_name":
                named_processes.add(event["pid"])
            else:
                named_threads.add((event["pid"], event["tid"]))
        elif name.endswith("_sort_index") and not is_integer(args.get("sort_index")):
            self.fault(where, f"{name} without an integer sort_index")

    def nesting(self, track, spans):
        # Sorted by start, longest first: each slice must lie inside every
        # open slice it starts in.
        spans = sorted(spans, key=lambda s: (s[0], -s[1]))
        stack = []
        for start, end, index in spans:
            while stack and stack[-1][1] < start:
                stack.pop()
            if stack and stack[-1][1] == start and end > start:
                stack.pop()  # starts where the other ends: a sibling
            if stack and end > stack[-1][1]:
                self.fault(f"event {index}", f"slice overlaps event {stack[-1][2]} on "
                           f"pid {track[0]} tid {track[1]} without nesting")
                continue
            stack.append((start, end, index))

    def begin_end(self, track, marks):
        stack = []
        for ts, _, ph, name, index in sorted(marks, key=lambda m: (m[0], m[1])):
            if ph == "B":
                stack.append((name, index))
            elif not stack:
                self.fault(f"event {index}", "E without a B on its thread")
            else:
                begun, _ = stack.pop()
                if name is not None and begun is not None and name != begun:
                    self.fault(f"event {index}", f"E {name!r} closes B {begun!r}")
        for name, index in stack:
            self.fault(f"event {index}", f"B {name!r} never ends")

    def flow_v1(self, flow_id, steps, slices):
        phases = [s[0] for s in steps]
        if phases.count("s") != 1 or phases.count("f") != 1:
            self.fault(f"flow {flow_id}", "not exactly one s and one f")
            return
        start = next(s for s in steps if s[0] == "s")
        finish = next(s for s in steps if s[0] == "f")
        if finish[1] < start[1]:
            self.fault(f"flow {flow_id}", "ends before it starts")
        for ph, ts, pid, tid, index, bp in steps:
            enclosing = any(a <= ts <= b for a, b, _ in slices.get((pid, tid), []))
            later = any(a >= ts for a, _, _ in slices.get((pid, tid), []))
            if not enclosing and not (ph == "f" and bp != "e" and later):
                self.fault(f"event {index}", f"flow {ph} has no slice to bind to")


def check_file(path):
    state = {"top": None, "repeated": False}

    def keep(pairs):
        # Objects close inside out: the last one is the top level.
        state["top"] = pairs
        result = dict(pairs)
        state["repeated"] |= len(result) != len(pairs)
        return result

    with open(path, encoding="utf-8") as file:
        try:
            document = json.load(file, object_pairs_hook=keep)
        except ValueError as error:
            return [f"{path}: not JSON: {error}"]
    if not isinstance(document, dict):
        return [f"{path}: top level: not an object"]
    c = checker(path)
    if state["repeated"]:
        c.fault("document", "an object repeats a key")
    c.check(state["top"])
    return c.faults


def main(paths):
    faults = []
    for path in paths:
        faults += check_file(path)
    for line in faults[:50]:
        print(line)
    if len(faults) > 50:
        print(f"... and {len(faults) - 50} more")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
