#!/usr/bin/env python3
"""The outputs of one capture agree: report, summary --json, trace, records
and phone give the same counts, the same source split, the same latencies,
the same failures and the same damage, for every phone given.

    outputs_agree.py KELVRA KELVRA_INSPECT PHONE...

PHONE.env beside a PHONE.json may hold TZ=... (default UTC).
"""
import json
import os
import subprocess
import sys
from collections import Counter


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
    report = json.loads(outputs["report"])
    summary = json.loads(outputs["summary"])
    trace = exact(json.loads(outputs["trace"]))
    other = trace["otherData"]
    phone_doc = json.loads(outputs["phone"])
    records = [json.loads(l) for l in outputs["records"].splitlines()]
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
        agree("click count", {"summary": summary["press"]["click_count"], "report": stats["click_count"]})
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
