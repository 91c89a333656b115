#!/usr/bin/env python3
"""The outputs of one capture agree: report, summary --json, trace, records,
phone, compare and the tables give the same counts, spans, source split,
latencies, failures, damage and problems, for every phone given; a table's
record row is the row `records` writes with the capture's keys in front. Every
JSON document and line is read with repeated keys refused.

    outputs_agree.py KELVRA KELVRA_INSPECT PHONE...

PHONE.env beside a PHONE.json may hold TZ=... (default UTC).
"""
import json
import os
import subprocess
import sys
import tempfile
from collections import Counter

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from validate_json import strict  # noqa: E402

IDENTITY = ["capture", "member", "capture_sha256", "harvest"]


def run(args, env, stdin=None):
    done = subprocess.run(args, capture_output=True, env=env, input=stdin)
    return done.returncode, done.stdout


def zone_of(phone):
    env_file = phone[:-5] + ".env" if phone.endswith(".json") else phone + ".env"
    if os.path.exists(env_file):
        for line in open(env_file, encoding="utf-8"):
            if line.startswith("TZ="):
                return line[3:].strip()
    return "UTC"


def exact(value):
    """A trace writes integers from 2^53 on as strings: read them back."""
    if isinstance(value, dict):
        return {k: exact(v) for k, v in value.items()}
    if isinstance(value, list):
        return [exact(v) for v in value]
    if isinstance(value, str) and value.lstrip("-").isdigit():
        return int(value)
    return value


def failures_key(failures):
    return [(f["line"], f["request"], f["kind"], f["value"]) for f in failures]


def phone_records(description):
    """Records the phone's profile entry and its child answer, all passes."""
    count = 0

    def replies(answers):
        nonlocal count
        for answer in answers if isinstance(answers, list) else [answers]:
            count += len(bytes.fromhex(answer.get("reply", "").replace(" ", ""))) // 48

    for service in description.get("services", []):
        if service.get("name") != "ZOL_profile":
            continue
        if service.get("null_connection"):
            return None  # the zeroed buffer each pass prints, not replies
        if "209" in service.get("commands", {}):
            replies(service["commands"]["209"])
        for child in service.get("children", []):
            if "9" in child.get("methods", {}):
                replies(child["methods"]["9"])
    return count


def check(kelvra, inspect, phone):
    env = dict(os.environ, TZ=zone_of(phone), TMXSIM_DEVICE=phone)
    capture = subprocess.run([kelvra, "--harvest"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                             env=env).stdout
    env = dict(os.environ, TZ=zone_of(phone))
    outputs = {}
    for name, args in (("report", ["report"]), ("summary", ["summary", "--json"]),
                       ("trace", ["trace"]), ("phone", ["phone"]), ("records", ["records"])):
        status, out = run([inspect] + args + ["-"], env, capture)
        if status != 0:
            return [f"{name}: status {status}"]
        outputs[name] = out
    with tempfile.TemporaryDirectory() as work:
        path = os.path.join(work, "capture.txt")
        with open(path, "wb") as f:
            f.write(capture)
        status, out = run([inspect, "compare", "--json", path, path], env)
        if status != 0:
            return [f"compare with itself: status {status}"]
        outputs["compare"] = out
        status, _ = run([inspect, "tables", "--no-progress", "--jobs", "1", "--out", os.path.join(work, "t"), path], env)
        if status != 0:
            return [f"tables: status {status}"]
        tables = {}
        for table in ("harvests", "records", "failures"):
            with open(os.path.join(work, "t", table + ".jsonl"), "rb") as f:
                tables[table] = f.read().splitlines()
    try:
        report = strict(outputs["report"])
        summary = strict(outputs["summary"])
        trace = exact(strict(outputs["trace"]))
        phone_doc = strict(outputs["phone"])
        records = [strict(l) for l in outputs["records"].splitlines()]
        compared = strict(outputs["compare"])
        rows = {t: [strict(l) for l in lines] for t, lines in tables.items()}
    except ValueError as error:
        return [f"JSON with a repeated key: {error}"]
    other = trace["otherData"]
    faults = []

    def agree(what, values):
        if len(set(json.dumps(v, sort_keys=True) for v in values.values())) > 1:
            faults.append(f"{what} differ: {values}")

    harvest = report["harvests"][0]
    events = [e for e in trace["traceEvents"] if e.get("ph") in ("X", "i") and "sequence_num" in e.get("args", {})]
    all_records = sum(h["profile"]["records"] for h in report["harvests"])
    agree("record counts", {"report": harvest["profile"]["records"],
                            "summary": summary["records"]["records"],
                            "trace": other["records"], "trace events": len(events)})
    in_phone = phone_records(phone_doc)
    agree("records of all harvests", {"report": all_records, "records": len(records),
                                      "phone": all_records if in_phone is None else in_phone})
    by_source = harvest["profile"]["by_source"]
    agree("source split", {
        "report": None if by_source is None else {s["source"]: s["records"] for s in by_source},
        "summary": None if summary["records"]["sources"] is None else
        {s["name"]: s["records"] for s in summary["records"]["sources"]},
        "trace": None if not any("source" in e["args"] for e in events) else
        dict(Counter(e["args"]["source"] for e in events))})
    agree("categories", {
        "report": {c["category"]: c["records"] for c in harvest["profile"]["by_category"]},
        "summary": {c["name"]: c["records"] for c in summary["records"]["categories"]}})
    agree("failures", {"report": failures_key(harvest["failures"]),
                       "summary": failures_key(summary["failures"]),
                       "trace": failures_key(other["failures"])})
    agree("damage", {"report": report["damage"], "summary": summary["damage"],
                     "trace": other["damage"]})
    agree("clock pair", {"report": report["timesync"], "trace": other["timesync"]})
    if summary["press"] is not None:
        slices = {e["name"]: e["dur"] for e in trace["traceEvents"]
                  if e.get("ph") == "X" and e.get("cat") == "press"}
        columns = {"finger_to_down_us": "finger on → click {} down", "down_to_asset_us": "click {} down → asset",
                   "held_us": "click {} held", "up_to_asset_us": "click {} up → asset"}
        for click in summary["press"]["clicks"]:
            for key, name in columns.items():
                name = name.format(click["click"])
                if click[key] is not None and name in slices:
                    agree(f"{name}", {"summary": click[key], "trace": slices[name]})
        stats = harvest["statistics"]
        agree("click count", {"summary": summary["press"]["click_count"], "report": stats["click_count"],
                              "tables": rows["harvests"][0]["click_count"]})
        agree("press notes", {"summary": summary["checks"]["notes"], "tables": rows["harvests"][0]["press_notes"],
                              "trace": other.get("press_notes")})
        agree("press disagreements", {"summary": summary["checks"]["disagreements"],
                                      "tables": rows["harvests"][0]["press_disagreements"],
                                      "trace": other.get("press_disagreements")})
        for click in summary["press"]["clicks"]:
            row = rows["harvests"][0]["clicks"][click["click"] - 1]
            agree(f"click {click['click']} latencies", {"summary": click, "tables": row})

    # The tables: a record row is `records`' row with the keys in front.
    table_records = []
    for line, row in zip(tables["records"], rows["records"]):
        if list(row)[:len(IDENTITY)] != IDENTITY:
            faults.append(f"a record row's keys are not in front: {list(row)[:len(IDENTITY) + 1]}")
            break
        table_records.append({k: v for k, v in row.items() if k not in IDENTITY})
    agree("record rows", {"records": records, "tables": table_records})
    first = rows["harvests"][0]
    agree("harvest rows", {"report": len(report["harvests"]), "tables": len(rows["harvests"])})
    agree("record count", {"report": harvest["profile"]["records"], "tables": first["records"]})
    agree("record span", {"summary": summary["records"]["span_us"], "tables": first["span_us"],
                          "compare": compared["parts"]["records"]["span_a_us"] if first["records"] else None})
    agree("first record", {"summary": summary["records"]["first_us"], "tables": first["first_us"]})
    lost = sum(r["lost"] for r in summary["sequence_runs"])
    agree("sequence numbers lost", {"summary": lost, "tables": first["sequence_lost"],
                                    "compare": compared["parts"]["sequence_numbers"]["a"]["lost"]})
    agree("harvest damage", {"summary": summary["damage"], "trace": other["damage"], "tables": first["damage"]})
    agree("missing", {"summary": summary["missing"], "trace": other["missing"], "tables": first["missing"]})
    agree("failure rows", {"report": [(f["line"], f["request"]) for f in harvest["failures"]],
                           "tables": [(f["line"], f["request"]) for f in rows["failures"] if f["harvest"] == 1]})
    agree("damaged", {"summary": summary["damaged"], "trace": other["damaged"], "tables": first["damaged"]})
    return faults


def main():
    kelvra, inspect = sys.argv[1:3]
    failed = 0
    for phone in sys.argv[3:]:
        faults = check(kelvra, inspect, phone)
        for fault in faults[:5]:
            print(f"FAIL: {os.path.basename(phone)}: {fault}")
        failed += bool(faults)
    print(f"{len(sys.argv) - 3} phones, {failed} whose outputs disagree")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
