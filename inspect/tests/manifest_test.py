#!/usr/bin/env python3
"""DIR/manifest.json of kelvra-inspect tables: over tables_test's small fleet
(whole, twice, gzip-compressed, cut and unreadable captures), plain and --gzip, and
over nothing. The manifest agrees with the files (check_manifest.py); its
input counts with each input's own status from `report` (0 whole, 1
damaged, 2 unreadable); its version with --version and the records'
schema version with records.schema.json. A run that cannot write its tables
leaves no manifest, not even one of an earlier run.

    manifest_test.py KELVRA KELVRA_INSPECT SCHEMA_DIR PHONE...
"""
import json
import os
import sys
import tempfile

from check_manifest import manifest_problems
from tables_test import make_fleet, run


def main():
    kelvra, inspect, schemas = sys.argv[1:4]
    phones = sys.argv[4:]
    failures = []

    def fail(what):
        failures.append(what)
        print("FAIL:", what)

    version = run([inspect, "--version"])[1].decode()
    with open(os.path.join(schemas, "records.schema.json"), encoding="utf-8") as f:
        records_version = json.load(f)["properties"]["schema_version"]["const"]

    with tempfile.TemporaryDirectory() as work:
        fleet = os.path.join(work, "fleet")
        make_fleet(kelvra, phones, fleet)
        files = run([inspect, "tables", "--list", fleet])[1].decode().splitlines()
        want = {"listed": len(files), "read_whole": 0, "damaged": 0, "unreadable": 0,
                "members_passed_over": 0, "not_read": 0}
        for path in files:
            status, _, _ = run([inspect, "report", path])
            want[("read_whole", "damaged", "unreadable")[status]] += 1

        for flags in ([], ["--gzip"]):
            out = os.path.join(work, "out" + "".join(flags))
            status, _, said = run([inspect, "tables", "--jobs", "2", "--out", out, fleet] + flags)
            manifest, problems = manifest_problems(out, schemas)
            for problem in problems:
                fail(f"{flags}: {problem}")
            if manifest is None or problems:
                continue
            if status != 1:
                fail(f"{flags}: status {status}: {said}")
            if manifest["inputs"] != want:
                fail(f"{flags}: inputs {manifest['inputs']}, the reports say {want}")
            expected = {"tool": "kelvra-inspect", "version": version.split()[-1], "complete": True,
                        "partition_by": None}
            got = {key: manifest[key] for key in expected}
            if got != expected:
                fail(f"{flags}: {got}, not {expected}")
            if manifest["tables"]["records"]["schema_version"] != records_version:
                fail(f"{flags}: records' schema version differs from records.schema.json's")
            suffix = ".jsonl.gz" if flags else ".jsonl"
            paths = [f["path"] for t in manifest["tables"].values() for f in t["files"]]
            if paths != [t + suffix for t in ("harvests", "records", "failures", "unreadable")]:
                fail(f"{flags}: files {paths}")
            # Only the inputs read: unreadable rows as many as unreadable inputs.
            if manifest["tables"]["unreadable"]["rows"] != want["unreadable"]:
                fail(f"{flags}: {manifest['tables']['unreadable']['rows']} unreadable rows")

        # Over nothing: four empty tables, each empty file's hash.
        out = os.path.join(work, "none")
        status, _, said = run([inspect, "tables", "--out", out, "--files-from", os.devnull, "--gzip"])
        manifest, problems = manifest_problems(out, schemas)
        for problem in problems:
            fail(f"no input: {problem}")
        if status != 0 or (manifest and any(t["rows"] for t in manifest["tables"].values())):
            fail(f"no input: status {status}: {said}")

        # A run that fails to write takes the earlier run's manifest away.
        out = os.path.join(work, "out")
        os.unlink(os.path.join(out, "records.jsonl"))
        os.mkdir(os.path.join(out, "records.jsonl"))
        status, _, said = run([inspect, "tables", "--out", out, files[0]])
        if status != 2 or os.path.exists(os.path.join(out, "manifest.json")):
            fail(f"an unwritable table: status {status}, manifest left: {said}")
    print(f"{len(phones)} phones; {len(failures)} failures")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
