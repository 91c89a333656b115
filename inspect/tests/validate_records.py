#!/usr/bin/env python3
"""kelvra-inspect records output against the records schema, and as one table:
every line has the same keys, every record of one kind the same payload keys.

  validate_records.py SCHEMA [FILE|-] [--calendar-time]   (that: none null)
"""
import json
import sys

try:
    from jsonschema import Draft202012Validator
    from jsonschema.exceptions import best_match
except ImportError:
    sys.exit(f"validate_records.py: {sys.executable} lacks jsonschema "
             "(Debian: python3-jsonschema, see tools/install-deps --tests)")


def no_repeats(pairs):
    # json.loads would keep the last of repeated keys; other readers differ.
    if len({k for k, _ in pairs}) != len(pairs):
        raise ValueError("a key comes twice")
    return dict(pairs)


def not_json(constant):
    raise ValueError(f"{constant} is not JSON")


def kind(record):
    # Payload items follow the event as well as the type, and context
    # records their version.
    key = (record["category_id"], record["event_id"], record["type_id"])
    if key[0] == 7 and key[2] == 10:
        key += (record["payload"].get("context_version"),)
    return key


def main(schema_path, path="-", *options):
    with open(schema_path, encoding="utf-8") as f:
        schema = json.load(f)
    Draft202012Validator.check_schema(schema)
    validator = Draft202012Validator(schema)
    name = "<stdin>" if path == "-" else path
    failures, count, first = 0, 0, {}  # first: kind -> (keys, line)

    def fail(message):
        nonlocal failures
        failures += 1
        print(f"{name}:{count}: {message}", file=sys.stderr)

    for count, raw in enumerate(sys.stdin.buffer if path == "-" else open(path, "rb"), 1):
        try:
            record = json.loads(raw.decode("utf-8"), object_pairs_hook=no_repeats,
                                parse_constant=not_json)
        except ValueError as error:
            fail(f"not a JSON line: {error}")
            continue
        error = best_match(validator.iter_errors(record))
        if error is not None:
            where = "/".join(map(str, error.absolute_path)) or "(top)"
            fail(f"at {where}: {error.message}")
            continue
        if "--calendar-time" in options and record["calendar_time"] is None:
            fail("calendar_time is null")
        for what, keys in (("top", record), (kind(record), record["payload"])):
            keys = frozenset(keys)
            seen = first.setdefault(what, (keys, count))
            if keys != seen[0]:
                fail(f"keys of {what} differ from line {seen[1]}: {sorted(keys ^ seen[0])}")
    if failures:
        sys.exit(f"{name}: {failures} failures in {count} lines")
    print(f"{name}: {count} lines, {len(first) - bool(first)} kinds of record: ok")


if __name__ == "__main__":
    main(*sys.argv[1:])
