#!/usr/bin/env python3
"""kelvra-inspect tables over a small fleet: the phones of the tree (one
twice, one gzip-compressed, one in a folder below), a damaged capture, and
inputs that are no capture. The tables hold what each capture's report
says, every row validates against its schema and carries its capture and
the SHA-256 of its content; the rows are the same whatever --jobs is, with
--gzip, through --files-from -; the statuses hold.

    tables_test.py KELVRA KELVRA_INSPECT SCHEMA_DIR PHONE...
"""
import gzip
import hashlib
import json
import os
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
TABLES = ["harvests", "records", "failures", "unreadable"]
SCHEMAS = {"harvests": "harvests", "records": "records_table", "failures": "failures",
           "unreadable": "unreadable"}
ENV = dict(os.environ, TZ="UTC")


def run(args, **kw):
    done = subprocess.run(args, capture_output=True, env=ENV, **kw)
    return done.returncode, done.stdout, done.stderr.decode()


def read_table(folder, name, packed=False):
    path = os.path.join(folder, name + (".jsonl.gz" if packed else ".jsonl"))
    opener = gzip.open if packed else open
    with opener(path, "rb") as f:
        return f.read()


def make_fleet(kelvra, phones, root):
    files = []
    os.makedirs(os.path.join(root, "below"))
    for i, phone in enumerate(phones):
        capture = subprocess.run([kelvra, "--harvest"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                 env=dict(ENV, TMXSIM_DEVICE=phone)).stdout
        name = os.path.join(root, "below" if i % 3 == 2 else "", f"{i:02d}-{os.path.basename(phone)}.txt")
        with open(name, "wb") as f:
            f.write(capture)
        if i == 0:
            with gzip.open(name + ".gz", "wb") as f:
                f.write(capture)
            with open(os.path.join(root, "cut.txt"), "wb") as f:
                f.write(capture[: len(capture) // 2])
            with open(os.path.join(root, "twice.txt"), "wb") as f:
                f.write(capture + capture)
    with open(os.path.join(root, "notes.md"), "w") as f:
        f.write("# not a capture\n")
    open(os.path.join(root, "empty.txt"), "w").close()
    return files


def main():
    kelvra, inspect, schemas = sys.argv[1:4]
    phones = sys.argv[4:]
    failures = []

    def fail(what):
        failures.append(what)
        print("FAIL:", what)

    with tempfile.TemporaryDirectory() as work:
        fleet = os.path.join(work, "fleet")
        make_fleet(kelvra, phones, fleet)
        status, listed, _ = run([inspect, "tables", "--list", fleet])
        files = listed.decode().splitlines()
        if status != 0 or len(files) != len(phones) + 5 or files != sorted(files):
            fail(f"--list: status {status}, {len(files)} files")

        outs = {}
        for jobs in (1, 2, 3):
            out = os.path.join(work, f"jobs{jobs}")
            status, _, said = run([inspect, "tables", "--jobs", str(jobs), "--out", out, fleet])
            if status != 1:
                fail(f"--jobs {jobs}: status {status}, not 1 (a damaged and unreadable inputs): {said}")
            outs[jobs] = {t: read_table(out, t) for t in TABLES}
        if not (outs[1] == outs[2] == outs[3]):
            fail("the tables differ with the number of jobs")
        tables = outs[1]

        listing = "\n".join(files) + "\n"
        out = os.path.join(work, "from-list")
        status, _, _ = run([inspect, "tables", "--gzip", "--files-from", "-", "--out", out],
                           input=listing.encode())
        if status != 1 or {t: read_table(out, t, True) for t in TABLES} != tables:
            fail(f"--gzip --files-from -: status {status}, or other rows")

        for table in TABLES:
            path = os.path.join(work, "jobs1", table + ".jsonl")
            status, said, _ = run([sys.executable, os.path.join(HERE, "validate_json.py"),
                                   os.path.join(schemas, SCHEMAS[table] + ".schema.json"), path, "--lines"])
            if status != 0:
                fail(f"{table} breaks its schema: {said.decode()[:400]}")

        rows = {t: [json.loads(l) for l in tables[t].splitlines()] for t in TABLES}
        for path in files:
            with open(path, "rb") as f:
                content = f.read()
            if path.endswith(".gz"):
                content = gzip.decompress(content)
            sha = hashlib.sha256(content).hexdigest()
            mine = {t: [r for r in rows[t] if r["capture"] == path] for t in TABLES}
            if any(r["capture_sha256"] != sha for t in TABLES for r in mine[t]):
                fail(f"{path}: a row with another SHA-256")
            status, report, _ = run([inspect, "report", path])
            if status == 2:
                if len(mine["unreadable"]) != 1 or any(mine[t] for t in TABLES[:3]):
                    fail(f"{path}: unreadable, but not one unreadable row alone")
                continue
            report = json.loads(report)
            want = {"harvests": len(report["harvests"]),
                    "records": sum(h["profile"]["records"] for h in report["harvests"]),
                    "failures": sum(len(h["failures"]) for h in report["harvests"]),
                    "unreadable": 0}
            got = {t: len(mine[t]) for t in TABLES}
            if got != want:
                fail(f"{path}: rows {got}, its report says {want}")
            for h, row in zip(report["harvests"], mine["harvests"]):
                if row["records"] != h["profile"]["records"] or row["failures"] != len(h["failures"]):
                    fail(f"{path}: harvest {row['harvest']} counts differ from the report")
            if any(r["damaged"] for r in mine["harvests"]) != report["damaged"]:
                fail(f"{path}: damaged {report['damaged']} in the report")
        # Rows in input order: the captures appear as the list has them.
        order = [r["capture"] for r in rows["harvests"]]
        if order != sorted(order, key=files.index):
            fail("harvest rows are not in input order")

        whole = [f for f in files if "cut" not in f and "notes" not in f and "empty" not in f]
        status, _, _ = run([inspect, "tables", "--out", os.path.join(work, "whole")] + whole)
        if status != 0:
            fail(f"whole captures only: status {status}, not 0")
        blocked = os.path.join(work, "blocked")
        open(blocked, "w").close()
        status, _, said = run([inspect, "tables", "--out", blocked, whole[0]])
        if status != 2 or "cannot be written" not in said:
            fail(f"an --out that is a file: status {status}: {said}")
    print(f"{len(phones)} phones; {len(failures)} failures")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
