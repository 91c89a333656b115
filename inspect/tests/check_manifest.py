#!/usr/bin/env python3
"""A tables dataset against its manifest.json, read with parsers of its own:
the manifest parses with no key twice and validates against
manifest.schema.json; it names every table file in the folder and no other;
each file's rows are its lines (each one JSON object, no key twice), its
bytes its size and its sha256 what hashlib computes; each table's rows are
its files' sum.

    check_manifest.py DATASET SCHEMA_DIR      (exit 0 agrees, 1 not)

Tests import manifest_problems() to check more of the manifest they get.
"""
import gzip
import hashlib
import json
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from validate_json import validator  # noqa: E402


def unique_keys(pairs):
    keys = [key for key, _ in pairs]
    repeated = {key for key in keys if keys.count(key) > 1}
    if repeated:
        raise ValueError("a key twice: %s" % sorted(repeated))
    return dict(pairs)


def strict_loads(text):
    return json.loads(text, object_pairs_hook=unique_keys)


def table_files(dataset):
    """Every table file below the dataset, as the manifest names them."""
    found = set()
    for top, dirs, files in os.walk(dataset):
        dirs[:] = [d for d in dirs if not d.startswith(".")]
        for name in files:
            if name.endswith((".jsonl", ".jsonl.gz")):
                found.add(os.path.relpath(os.path.join(top, name), dataset).replace(os.sep, "/"))
    return found


def manifest_problems(dataset, schema_dir):
    """(the manifest, or None; what disagrees, one line each)."""
    problems = []
    try:
        with open(os.path.join(dataset, "manifest.json"), "rb") as f:
            manifest = strict_loads(f.read().decode("utf-8"))
    except (OSError, ValueError) as error:
        return None, ["manifest.json: %s" % error]
    check = validator(os.path.join(schema_dir, "manifest.schema.json"))
    problems += ["manifest.json: %s at /%s" % (e.message, "/".join(map(str, e.path)))
                 for e in check.iter_errors(manifest)]
    if problems:
        return manifest, problems
    named = set()
    for table, facts in manifest["tables"].items():
        if not os.path.isfile(os.path.join(schema_dir, facts["schema"])):
            problems.append("%s: no schema %s" % (table, facts["schema"]))
        total = 0
        for entry in facts["files"]:
            path = entry["path"]
            named.add(path)
            if not os.path.basename(path).startswith(table + "."):
                problems.append("%s: %s is another table's file" % (table, path))
            try:
                with open(os.path.join(dataset, path), "rb") as f:
                    data = f.read()
            except OSError as error:
                problems.append("%s: %s" % (path, error.strerror))
                continue
            text = gzip.decompress(data) if path.endswith(".gz") else data
            lines = text.split(b"\n")
            if lines[-1] != b"":
                problems.append("%s: the last row is cut" % path)
            rows = lines[:-1]
            for number, line in enumerate(rows, 1):
                try:
                    if not isinstance(strict_loads(line.decode("utf-8")), dict):
                        raise ValueError("not an object")
                except ValueError as error:
                    problems.append("%s: line %d: %s" % (path, number, error))
                    break
            got = {"rows": len(rows), "bytes": len(data), "sha256": hashlib.sha256(data).hexdigest()}
            for key, value in got.items():
                if entry[key] != value:
                    problems.append("%s: %s %s in the manifest, %s in the file" % (
                        path, key, entry[key], value))
            total += entry["rows"]
        if facts["rows"] != total:
            problems.append("%s: rows %d, its files hold %d" % (table, facts["rows"], total))
    on_disk = table_files(dataset)
    for path in sorted(on_disk - named):
        problems.append("%s: in the folder, not in the manifest" % path)
    return manifest, problems


def main():
    dataset, schema_dir = sys.argv[1:3]
    manifest, problems = manifest_problems(dataset, schema_dir)
    for problem in problems:
        print("FAIL:", problem)
    if not problems:
        print("manifest agrees: %s" % ", ".join(
            "%s %d rows" % (t, f["rows"]) for t, f in manifest["tables"].items()))
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
