#!/usr/bin/env python3
"""Validates JSON documents (or JSON Lines with --lines) against a schema of
inspect/schema, the schemas beside it resolving its references.

    validate_json.py SCHEMA FILE... [--lines]
"""
import json
import os
import sys

import jsonschema


def no_repeats(pairs):
    """An object_pairs_hook that refuses a key repeated in one object."""
    keys = [k for k, _ in pairs]
    if len(keys) != len(set(keys)):
        raise ValueError(f"repeated key among {keys}")
    return dict(pairs)


def strict(text):
    """JSON text, refused when an object repeats a key."""
    return json.loads(text, object_pairs_hook=no_repeats)


def validator(schema_path):
    folder = os.path.dirname(os.path.abspath(schema_path))
    store = {}
    for name in os.listdir(folder):
        if name.endswith(".schema.json"):
            with open(os.path.join(folder, name), encoding="utf-8") as f:
                doc = json.load(f)
            store[doc["$id"]] = doc
    with open(schema_path, encoding="utf-8") as f:
        schema = json.load(f)
    resolver = jsonschema.RefResolver.from_schema(schema, store=store)
    cls = jsonschema.validators.validator_for(schema)
    return cls(schema, resolver=resolver)


def main():
    args = [a for a in sys.argv[1:] if a != "--lines"]
    lines = "--lines" in sys.argv
    check = validator(args[0])
    failed = 0
    for path in args[1:]:
        with open(path, encoding="utf-8") as f:
            docs = [json.loads(l) for l in f if l.strip()] if lines else [json.load(f)]
        for number, doc in enumerate(docs, 1):
            errors = sorted(check.iter_errors(doc), key=lambda e: list(e.path))
            for error in errors[:3]:
                where = "/".join(str(p) for p in error.path)
                print(f"{path}:{number}: {where}: {error.message[:300]}")
            failed += bool(errors)
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    import warnings
    warnings.simplefilter("ignore", DeprecationWarning)
    main()
