#!/usr/bin/env bash
# records output for every phone, and for hex lines with a clock pair, passes
# validate_records.py and has one line per profile line of the capture.
#
#   records_schema.sh KELVRA KELVRA_INSPECT PYTHON SCHEMA PHONE...
set -euo pipefail
kelvra=$1 inspect=$2 python=$3 schema=$4
shift 4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

# check NAME [--calendar-time]: judges $work/records against $work/capture.
check() {
  local expected got
  expected=$(grep -c "^{  'category':" "$work/capture" || true)
  got=$(wc -l <"$work/records")
  echo "== $1"
  if ! "$python" "$(dirname "$0")/validate_records.py" "$schema" "$work/records" "${@:2}"; then
    echo "FAIL: $1: records do not validate"; failed=1
  elif [ "$got" -ne "$expected" ]; then
    echo "FAIL: $1: $got records for $expected profile lines"; failed=1
  fi
}

for phone in "$@"; do
  if TMXSIM_DEVICE=$phone "$kelvra" --harvest 2>&1 | tee "$work/capture" \
      | "$inspect" records - >"$work/records"; then
    check "$(basename "$phone")"
  else
    echo "FAIL: $phone: harvest or records failed"; failed=1
  fi
done

# Hex lines carry no calendar time; the clock pair gives every record one.
"$kelvra" --harvest >"$work/capture" 2>&1
if "$inspect" decode --hex "$work/capture" \
    | "$inspect" records --timesync 5000000,1700000000000000000 - >"$work/records"; then
  check "default phone as hex lines, --timesync" --calendar-time
else
  echo "FAIL: hex lines with --timesync: decode or records failed"; failed=1
fi
exit $failed
