#!/usr/bin/env bash
# report for every phone validates against its schema, and counts what the
# capture holds: one failure object a failure line, one record a profile line.
#
#   report_schema.sh KELVRA KELVRA_INSPECT PYTHON SCHEMA PHONE...
set -euo pipefail
kelvra=$1 inspect=$2 python=$3 schema=$4
shift 4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

for phone in "$@"; do
  name=$(basename "$phone")
  TMXSIM_DEVICE=$phone "$kelvra" --harvest >"$work/capture" 2>&1 || true
  if ! "$inspect" report "$work/capture" >"$work/report.json"; then
    echo "FAIL: $name: report refused the capture"; failed=1; continue
  fi
  if ! "$python" "$(dirname "$0")/validate_json.py" "$schema" "$work/report.json"; then
    echo "FAIL: $name: report breaks its schema"; failed=1; continue
  fi
  if ! "$python" - "$work/report.json" "$work/capture" <<'PY'
import json, sys
report, capture = (open(p).read() for p in sys.argv[1:3])
doc = json.loads(report)
lines = capture.splitlines()
failures = sum(len(h["failures"]) for h in doc["harvests"])
records = sum(h["profile"]["records"] for h in doc["harvests"])
want_failures = sum(l.startswith("Assertion failed: ") for l in lines)
want_records = sum(l.startswith("{  'category':") for l in lines)
assert failures == want_failures, f"{failures} failures for {want_failures} failure lines"
assert records == want_records, f"{records} records for {want_records} profile lines"
for h in doc["harvests"]:
    for f in h["failures"]:
        assert lines[f["line"] - 1] == f["text"], f"failure at line {f['line']} is not that line"
PY
  then
    echo "FAIL: $name: report does not hold"; failed=1
  else
    echo "ok: $name"
  fi
done
exit $failed
