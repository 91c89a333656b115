#!/usr/bin/env python3
"""kelvra-inspect gate against an independent computation.

    gate_test.py KELVRA_INSPECT SCHEMA_DIR [KELVRA DEFAULT_PHONE MAKE_FLEET]

Synthetic fleets are written as the tables' rows (latencies in whole
microseconds, so ties abound; labels, damage kinds, failure lines, captures
of two harvests): each metric's figures are computed again here with SciPy
and numpy and must agree to 1e-9 relative; the outcomes follow the rules of
the gate from the recomputed figures. Planted effects: +5% down-to-asset
over 400 harvests a side regresses; halves of one build do not regress in at
least 95 of 100 splits; 8 a side with +3% is unknown; the 95% intervals
cover a planted shift in at least 90 of 100 repetitions. The same fleet read
as two datasets, one split by a label or a Hive folder, gzip tables,
kelvra-fleet's partitions and (with KELVRA) captures read on the fly gives
the same metrics.
"""
import gzip
import json
import math
import os
import random
import shutil
import subprocess
import sys
import tempfile

import jsonschema
import numpy as np
from scipy import stats

INSPECT, SCHEMA_DIR = sys.argv[1], sys.argv[2]
LATENCIES = ["finger_to_down_us", "down_to_asset_us", "held_us", "up_to_asset_us"]
FAULTS = []


def fail(message):
    FAULTS.append(message)
    print("FAIL:", message)


def no_duplicates(pairs):
    keys = [k for k, _ in pairs]
    if len(keys) != len(set(keys)):
        raise ValueError(f"duplicate key in {keys}")
    return dict(pairs)


def log_normal(rng, median, spread):
    return max(1, int(rng.lognormvariate(math.log(median), spread)))


def fleet(rng, harvests, asset_median=600.0, shift_us=0, build=None):
    """Rows of the harvests and failures tables, as `tables` writes them."""
    rows, failures = [], []
    capture = 0
    while len(rows) < harvests:
        capture += 1
        name = f"phones/{build or 'x'}-{rng.getrandbits(40):010x}.txt"
        sha = "%064x" % rng.getrandbits(256)
        for h in range(1, 1 + (2 if rng.random() < 0.1 else 1)):
            clicks = []
            for k in range(1, rng.choice([1, 1, 2, 2, 2, 3]) + 1):
                clicks.append({"click": k,
                               "finger_to_down_us": log_normal(rng, 40000 * k, 0.35),
                               "down_to_asset_us": log_normal(rng, asset_median, 0.08) + shift_us,
                               "held_us": log_normal(rng, 90000, 0.25),
                               "up_to_asset_us": None if rng.random() < 0.05 else log_normal(rng, 585, 0.08)})
            span = rng.randint(1_000_000, 3_000_000)
            damage = []
            if rng.random() < 0.05:
                entry = {"where": name, "line": 3, "last_line": 3, "byte": None, "fault": "x",
                         "outcome": "y", "lost": True}
                if rng.random() < 0.8:
                    entry["kind"] = rng.choice(["cut_short", "bad_line"])
                damage.append(entry)
            row = {"capture": name, "capture_sha256": sha, "harvest": h, "harvests": 1, "line": 1,
                   "clicks": clicks,
                   "records_by_category": [
                       {"category_id": 1, "category": "control", "records": rng.randint(2, 9),
                        "first_us": 5, "last_us": 5 + span, "span_us": span},
                       {"category_id": 7, "category": "pkey", "records": rng.randint(50, 300),
                        "first_us": 5, "last_us": 5 + span, "span_us": span}],
                   "sequence_lost": rng.randint(1, 25) if rng.random() < 0.12 else 0,
                   "damaged": bool(damage), "damage": damage}
            if build is not None:
                row["labels"] = {"build": build, "site": "lab"}
            rows.append(row)
            for request, share in (("HID report 0xe2", 0.04), ("btmspk 0xd0", 0.03)):
                if rng.random() < share:
                    for _ in range(rng.choice([1, 1, 2])):  # a request may fail twice
                        failures.append({"capture": name, "capture_sha256": sha, "harvest": h,
                                         "service": "x", "request": request})
    return rows, failures


def write_table(folder, name, rows, gz=False):
    os.makedirs(folder, exist_ok=True)
    text = "".join(json.dumps(r) + "\n" for r in rows).encode()
    path = os.path.join(folder, name + (".jsonl.gz" if gz else ".jsonl"))
    with (gzip.open if gz else open)(path, "wb") as f:
        f.write(text)


def gate(*args, expect=None):
    run = subprocess.run([INSPECT, "gate", *args], capture_output=True, text=True)
    if expect is not None and run.returncode != expect:
        fail(f"gate {args}: status {run.returncode}, not {expect}: {run.stderr.strip()}")
    return run


def gate_json(*args):
    run = gate("--json", *args)
    if run.returncode not in (0, 1, 3):
        fail(f"gate {args}: status {run.returncode}: {run.stderr.strip()}")
        return None
    doc = json.loads(run.stdout, object_pairs_hook=no_duplicates)
    if doc["exit_status"] != run.returncode:
        fail(f"gate {args}: exit_status {doc['exit_status']} but status {run.returncode}")
    return doc


# --- the figures again, from the rows --------------------------------------

def samples(rows, failures):
    values, harvest_hits, capture_hits = {}, {}, {}
    captures = {}
    failed = {}
    for f in failures:
        failed.setdefault((f["capture"], f["capture_sha256"], f["harvest"]), set()).add(f["request"])
    for r in rows:
        for c in r["clicks"]:
            for name in LATENCIES:
                if c[name] is not None:
                    values.setdefault(f"{name}.click{c['click']}", []).append(float(c[name]))
        for cat in r["records_by_category"]:
            if cat["span_us"] > 0:
                values.setdefault("records_per_second." + cat["category"], []).append(
                    cat["records"] * 1e6 / cat["span_us"])
        values.setdefault("sequence_lost", []).append(float(r["sequence_lost"]))
        harvest_hits["losing_records"] = harvest_hits.get("losing_records", 0) + (r["sequence_lost"] > 0)
        for request in failed.get((r["capture"], r["capture_sha256"], r["harvest"]), ()):
            harvest_hits["failed." + request] = harvest_hits.get("failed." + request, 0) + 1
        kinds = captures.setdefault((r["capture"], r["capture_sha256"]), set())
        kinds.update(d.get("kind", "unknown") for d in r["damage"])
    for kinds in captures.values():
        capture_hits["damaged.any"] = capture_hits.get("damaged.any", 0) + bool(kinds)
        for k in kinds:
            capture_hits["damaged." + k] = capture_hits.get("damaged." + k, 0) + 1
    return values, harvest_hits, capture_hits, len(rows), len(captures)


BUDGETS = {"finger_to_down_us": (0.02, True, "higher"), "down_to_asset_us": (0.02, True, "higher"),
           "held_us": (0.05, True, "either"), "up_to_asset_us": (0.02, True, "higher"),
           "sequence_lost": (1.0, False, "higher"), "losing_records": (0.01, False, "higher"),
           "records_per_second": (0.05, True, "either"), "failed": (0.01, False, "higher"),
           "damaged": (0.01, False, "higher")}
Z = stats.norm.ppf(0.975)


def hodges_lehmann(x, y):
    d = np.sort(np.subtract.outer(np.asarray(y), np.asarray(x)).ravel())
    n, m = len(x), len(y)
    c = math.floor(n * m / 2 - Z * math.sqrt(n * m * (n + m + 1) / 12))
    bounds = (d[c - 1], d[n * m - c]) if c >= 1 else (None, None)
    return float(np.median(d)), bounds


def wilson(x, n):
    p = x / n
    centre = (p + Z * Z / (2 * n)) / (1 + Z * Z / n)
    half = Z / (1 + Z * Z / n) * math.sqrt(p * (1 - p) / n + Z * Z / (4 * n * n))
    return centre - half, centre + half


def expected_metrics(base, cand):
    """Per metric: the figures the gate must print, computed here."""
    vb, hb, cb, nhb, ncb = base
    vc, hc, cc, nhc, ncc = cand
    out = {}
    for name in sorted(set(vb) | set(vc)):
        x, y = vb.get(name, []), vc.get(name, [])
        m = {"n_baseline": len(x), "n_candidate": len(y),
             "baseline": float(np.median(x)) if x else None, "candidate": float(np.median(y)) if y else None}
        if x and y:
            shift, (low, high) = hodges_lehmann(x, y)
            m.update(change=shift, ci_low=low, ci_high=high,
                     p_value=float(stats.mannwhitneyu(x, y, method="asymptotic", use_continuity=True).pvalue))
        out[name] = m
    for hits_b, hits_c, nb, nc in ((hb, hc, nhb, nhc), (cb, cc, ncb, ncc)):
        for name in sorted(set(hits_b) | set(hits_c)):
            a, b = hits_b.get(name, 0), hits_c.get(name, 0)
            p1, p2 = a / nb, b / nc
            l1, u1 = wilson(a, nb)
            l2, u2 = wilson(b, nc)
            d = p2 - p1
            out[name] = {"n_baseline": nb, "n_candidate": nc, "baseline": p1, "candidate": p2, "change": d,
                         "ci_low": d - math.sqrt((p2 - l2) ** 2 + (u1 - p1) ** 2),
                         "ci_high": d + math.sqrt((u2 - p2) ** 2 + (p1 - l1) ** 2),
                         "p_value": float(stats.fisher_exact([[b, nc - b], [a, nb - a]])[1])}
    # Benjamini-Hochberg, written out.
    named = sorted((m["p_value"], n) for n, m in out.items() if m.get("p_value") is not None)
    q, running = {}, 1.0
    for rank in range(len(named), 0, -1):
        p, n = named[rank - 1]
        running = min(running, p * len(named) / rank)
        q[n] = running
    for n, m in out.items():
        m["q_value"] = q.get(n)
        amount, percent, bad = BUDGETS[n.split(".")[0]]
        m["budget"] = amount * abs(m["baseline"] or 0) if percent else amount
        m["outcome"] = outcome(m, bad)
    return out


def outcome(m, bad):
    """The issue's rules, from the figures computed here."""
    low, high, q, b = m.get("ci_low"), m.get("ci_high"), m.get("q_value"), m["budget"]
    if low is None or high is None or q is None:
        return "unknown"
    significant = q < 0.05
    if bad == "higher":
        if significant and low > b:
            return "regressed"
        if significant and high < -b:
            return "improved"
        return "same" if high <= b else "unknown"
    if significant and (low > b or high < -b):
        return "regressed"
    return "same" if -b <= low and high <= b else "unknown"


def close(a, b):
    if a is None or b is None:
        return a is None and b is None
    return math.isclose(a, b, rel_tol=1e-9, abs_tol=0.0) or a == b


def check_against(doc, expected, label):
    got = {m["name"]: m for m in doc["metrics"]}
    if set(got) != set(expected):
        fail(f"{label}: metrics {sorted(set(got) ^ set(expected))} on one side only")
    for name in sorted(set(got) & set(expected)):
        for key, want in expected[name].items():
            have = got[name][key]
            same = have == want if isinstance(want, (str, int)) and not isinstance(want, float) else close(have, want)
            if not same:
                fail(f"{label}: {name} {key} is {have}, SciPy and numpy say {want}")
    order = ["regressed", "unknown", "same", "improved"]
    ranks = [order.index(m["outcome"]) for m in doc["metrics"]]
    if ranks != sorted(ranks):
        fail(f"{label}: metrics not worst first")
    if doc["metrics"] and doc["verdict"] != order[min(ranks)]:
        fail(f"{label}: verdict {doc['verdict']} is not the worst outcome")


def comparable(doc):
    return [{k: v for k, v in m.items()} for m in doc["metrics"]]


def main():
    with open(os.path.join(SCHEMA_DIR, "gate.schema.json"), encoding="utf-8") as f:
        validator = jsonschema.Draft202012Validator(json.load(f))
    work = tempfile.mkdtemp(prefix="gate-test-")
    try:
        run(work, validator)
        if len(sys.argv) > 5:
            captures(work, validator, *sys.argv[3:6])
    finally:
        shutil.rmtree(work)
    if FAULTS:
        print(f"{len(FAULTS)} fault(s)")
        return 1
    print("ok")
    return 0


def run(work, validator):
    rng = random.Random(20261125)
    a_rows, a_fail = fleet(rng, 150, build="A")
    b_rows, b_fail = fleet(rng, 170, asset_median=630, build="B")
    for name, rows, fails in (("a", a_rows, a_fail), ("b", b_rows, b_fail)):
        write_table(f"{work}/{name}", "harvests", rows)
        write_table(f"{work}/{name}", "failures", fails)
    expected = expected_metrics(samples(a_rows, a_fail), samples(b_rows, b_fail))
    doc = gate_json(f"{work}/a", f"{work}/b")
    validator.validate(doc)
    check_against(doc, expected, "two datasets")
    if not any(m["outcome"] == "regressed" for m in doc["metrics"]):
        fail("a 5% later asset over 150 harvests regressed nothing")

    # The same rows as one dataset split by the label, as Hive folders with
    # gzip tables, and as kelvra-fleet's partitions: the same metrics.
    write_table(f"{work}/one", "harvests", a_rows + b_rows)
    write_table(f"{work}/one", "failures", a_fail + b_fail)
    for name, rows, fails in (("A", a_rows, a_fail), ("B", b_rows, b_fail)):
        for r in rows:
            r.pop("labels")
        write_table(f"{work}/hive/build={name}", "harvests", rows, gz=True)
        write_table(f"{work}/hive/build={name}", "failures", fails, gz=True)
    for part, rows in enumerate((a_rows[:70], a_rows[70:])):
        keys = {(r["capture"], r["harvest"]) for r in rows}
        write_table(f"{work}/fleet-a/part-{part:05d}", "harvests", rows)
        write_table(f"{work}/fleet-a/part-{part:05d}", "failures",
                    [f for f in a_fail if (f["capture"], f["harvest"]) in keys])
    for label, args in (("--by label", [f"{work}/one", "--by", "build=A,B"]),
                        ("--by folder", [f"{work}/hive", "--by", "build=A,B"]),
                        ("partitions", [f"{work}/fleet-a", f"{work}/b"])):
        other = gate_json(*args)
        validator.validate(other)
        if comparable(other) != comparable(doc):
            fail(f"{label}: not the metrics of the two datasets")
    gate(f"{work}/one", "--by", "site=lab,none", expect=2)  # no candidate harvest
    itself = gate_json(f"{work}/a", f"{work}/a")
    if any(m["outcome"] in ("regressed", "improved") or m["change"] != 0 for m in itself["metrics"]):
        fail("a dataset against itself changed")

    # Text and page say the same verdict; bad options and inputs are status 2.
    text = gate(f"{work}/a", f"{work}/b").stdout
    if not text.startswith(f"gate: {doc['verdict']} "):
        fail(f"text starts {text[:40]!r}")
    page = gate("--html", f"{work}/a", f"{work}/b").stdout
    if "<script" in page or "http" in page.replace("https://", "") or f"Gate: {doc['verdict']}" not in page:
        fail("the page does not stand alone or lacks the verdict")
    for args in (["--budget", "nothing=+2%", f"{work}/a", f"{work}/b"],
                 ["--budget", "held_us=+50records", f"{work}/a", f"{work}/b"],
                 ["--budget", "sequence_lost=+5us", f"{work}/a", f"{work}/b"],
                 [f"{work}/a", f"{work}/missing"], [f"{work}/one"],
                 [f"{work}/one", "--by", "build=A"], [f"{work}/a", f"{work}/b", "--by", "build=A,B"]):
        gate(*args, expect=2)
    # A looser budget for the family lets the asset pass; the metric's own wins.
    loose = gate_json("--budget", "down_to_asset_us=+100us", "--budget", "up_to_asset_us=+50%",
                      f"{work}/a", f"{work}/b")
    for m in loose["metrics"]:
        if m["family"] in ("down_to_asset_us", "up_to_asset_us") and m["outcome"] == "regressed":
            fail(f"{m['name']} regressed within a loose budget")
    # Rows that are not rows are named and passed over.
    with open(f"{work}/a/harvests.jsonl", "a", encoding="utf-8") as f:
        f.write('{"capture": 5}\nnot json\n{"capture":"x","harvest":1,"clicks":[{"click":1,"down_to_asset_us":"612"}]}\n')
    run_bad = gate("--json", f"{work}/a", f"{work}/b")
    if run_bad.stderr.count("harvests table") != 2:
        fail(f"bad rows not named: {run_bad.stderr!r}")

    planted(work)


def planted(work):
    def pair(seed, n_base, n_cand, median_b=600.0, shift=0):
        rng = random.Random(seed)
        a, af = fleet(rng, n_base)
        b, bf = fleet(rng, n_cand, asset_median=median_b, shift_us=shift)
        for name, rows, fails in (("pa", a, af), ("pb", b, bf)):
            shutil.rmtree(f"{work}/{name}", ignore_errors=True)
            write_table(f"{work}/{name}", "harvests", rows)
            write_table(f"{work}/{name}", "failures", fails)
        return gate_json(f"{work}/pa", f"{work}/pb")

    def metric(doc, name):
        return next(m for m in doc["metrics"] if m["name"] == name)

    doc = pair(1, 400, 400, median_b=630)
    if metric(doc, "down_to_asset_us.click1")["outcome"] != "regressed":
        fail(f"+5% down to asset over 400 a side: {metric(doc, 'down_to_asset_us.click1')}")
    regressed = sum(pair(100 + s, 200, 200)["verdict"] == "regressed" for s in range(100))
    if regressed > 5:
        fail(f"halves of one build regressed in {regressed} of 100 splits")
    for s in range(20):
        m = metric(pair(300 + s, 8, 8, median_b=618), "down_to_asset_us.click1")
        if m["outcome"] == "same":
            fail(f"8 a side with +3%: same, seed {300 + s}")
    covered = 0
    for s in range(100):
        m = metric(pair(500 + s, 100, 100, shift=18), "down_to_asset_us.click1")
        covered += m["ci_low"] is not None and m["ci_low"] <= 18 <= m["ci_high"]
    if covered < 90:
        fail(f"95% intervals covered a shift of 18 us in {covered} of 100")
    print(f"planted: halves regressed {regressed}/100, intervals covered {covered}/100")


def captures(work, validator, kelvra, phone, make_fleet):
    """Captures read on the fly give what their tables give."""
    subprocess.run([sys.executable, make_fleet, kelvra, phone, f"{work}/caps", "--count", "60",
                    "--seed", "7", "--jobs", "2"], check=True, capture_output=True,
                   env=dict(os.environ, TZ="UTC"))
    for build in ("fw-a", "fw-b"):
        subprocess.run([INSPECT, "tables", "--year", "2026", "--no-progress", "--out",
                        f"{work}/tables-{build}", f"{work}/caps/{build}"], capture_output=True)
    direct = gate_json("--year", "2026", f"{work}/caps/fw-a", f"{work}/caps/fw-b")
    tables = gate_json(f"{work}/tables-fw-a", f"{work}/tables-fw-b")
    validator.validate(direct)
    if direct is None or tables is None or comparable(direct) != comparable(tables):
        fail("captures read on the fly and their tables disagree")


if __name__ == "__main__":
    sys.exit(main())
