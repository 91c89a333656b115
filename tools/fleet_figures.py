#!/usr/bin/env python3
"""The fleet queries' answers against figures taken here, capture by
capture, from kelvra-inspect summary --json: the latency percentiles, the
failures per service and check, the phones that lost most records, the two
builds side by side.

    fleet_figures.py KELVRA_INSPECT DATASET_LIST ANSWERS_JSON

DATASET_LIST names the captures, one a line, as the tables were made of.
"""
import json
import math
import os
import subprocess
import sys

LATENCIES = ["finger_to_down", "down_to_asset", "held", "up_to_asset"]


def quantile_cont(values, q):
    """Linear between the closest ranks, as DuckDB's quantile_cont."""
    values = sorted(values)
    at = (len(values) - 1) * q
    low = math.floor(at)
    high = min(low + 1, len(values) - 1)
    return values[low] + (at - low) * (values[high] - values[low])


def service_of(request):
    return "HID device" if request.startswith("HID") else request.split(" ")[0]


def summaries(inspect, path):
    """Each harvest's summary of a capture; none when it is unreadable."""
    env = dict(os.environ, TZ="UTC")
    first = subprocess.run([inspect, "summary", "--json", path], capture_output=True, env=env)
    if first.returncode == 2:
        return []
    found = [json.loads(first.stdout)]
    for harvest in range(2, found[0]["harvests"] + 1):
        more = subprocess.run([inspect, "summary", "--json", "--harvest", str(harvest), path],
                              capture_output=True, env=env)
        found.append(json.loads(more.stdout))
    return found


def expected(inspect, captures):
    clicks, by_build, failing, lost = [], {}, {}, {}
    phones = 0
    for path in captures:
        found = summaries(inspect, path)
        if not found:
            continue
        phones += 1
        build = os.path.basename(os.path.dirname(path))
        for summary in found:
            for click in (summary["press"] or {}).get("clicks", []):
                clicks.append(click)
                by_build.setdefault(build, []).append(click)
            for f in summary["failures"]:
                failing.setdefault((service_of(f["request"]), f["check"]), set()).add(path)
            lost[path] = lost.get(path, 0) + sum(r["lost"] for r in summary["sequence_runs"])

    def percentiles(rows, key):
        values = [r[key + "_us"] for r in rows if r[key + "_us"] is not None]
        return [quantile_cont(values, q) for q in (0.5, 0.95, 0.99)]

    answers = {
        "latency percentiles": sorted(
            ({"latency": k, **dict(zip(("p50", "p95", "p99"), percentiles(clicks, k)))} for k in LATENCIES),
            key=lambda r: r["latency"]),
        "failures per service and check": sorted(
            ({"service": s, "check": c, "phones": len(p), "percent": round(100.0 * len(p) / phones, 2)}
             for (s, c), p in failing.items()),
            key=lambda r: (-r["phones"], r["service"], r["check"])),
        "phones that lost the most records": sorted(
            ({"capture": c, "lost": n} for c, n in lost.items() if n > 0),
            key=lambda r: (-r["lost"], r["capture"]))[:10],
        "two builds side by side": [],
    }
    for build in sorted(by_build):
        rows = by_build[build]
        asset = percentiles(rows, "down_to_asset")
        finger = percentiles(rows, "finger_to_down")
        answers["two builds side by side"].append({
            "build": build, "clicks": len(rows), "asset_p50": asset[0], "asset_p95": asset[1],
            "asset_p99": asset[2], "finger_to_down_p50": finger[0], "finger_to_down_p99": finger[2]})
    return answers


def same(a, b):
    if isinstance(a, float) or isinstance(b, float):
        return isinstance(a, (int, float)) and isinstance(b, (int, float)) and abs(a - b) <= 1e-6 * max(1, abs(b))
    if isinstance(a, dict) and isinstance(b, dict):
        return a.keys() == b.keys() and all(same(a[k], b[k]) for k in a)
    if isinstance(a, list) and isinstance(b, list):
        return len(a) == len(b) and all(same(x, y) for x, y in zip(a, b))
    return a == b


def main():
    inspect, listing, answers_path = sys.argv[1:4]
    with open(listing, encoding="utf-8") as f:
        captures = [line.strip() for line in f if line.strip()]
    with open(answers_path, encoding="utf-8") as f:
        got = json.load(f)
    want = expected(inspect, captures)
    failed = 0
    for name, rows in want.items():
        if name not in got:
            print(f"FAIL: the README has no query '{name}'")
            failed += 1
        elif not same(got[name], rows):
            print(f"FAIL: {name}: DuckDB says {json.dumps(got[name])[:600]}")
            print(f"      the summaries say {json.dumps(rows)[:600]}")
            failed += 1
        else:
            print(f"ok: {name}: {len(rows)} rows as the summaries give them")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
