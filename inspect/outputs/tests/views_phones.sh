#!/usr/bin/env bash
# trace, summary (text and JSON) and timeline for the capture of every phone
# given, and for captures cut short: each trace passes check_trace.py, each
# page check_page.py; a malformed capture gives one line and status 2.
#
#   views_phones.sh KELVRA KELVRA_INSPECT PYTHON PHONE...
set -euo pipefail
kelvra=$1 inspect=$2 python=$3
shift 3
here=$(dirname "$0")
schemas=$here/../../schema
validate() { "$python" "$here/../../tests/validate_json.py" "$schemas/$1" "$2"; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TZ=UTC
failed=0
fail() { echo "FAIL: $*"; failed=1; }

# views NAME CAPTURE: every view of one capture.
views() {
  local name=$1 capture=$2
  echo "== $name"
  "$inspect" trace "$capture" >"$work/trace.json" || fail "$name: trace"
  "$python" "$here/check_trace.py" "$work/trace.json" || fail "$name: the trace breaks a rule"
  validate trace.schema.json "$work/trace.json" || fail "$name: the trace breaks its schema"
  "$inspect" summary "$capture" >"$work/summary.txt" || fail "$name: summary"
  grep -q '^press (statistics record)$' "$work/summary.txt" || fail "$name: summary has no press"
  "$inspect" summary --json "$capture" >"$work/summary.json" || fail "$name: summary --json"
  validate summary.schema.json "$work/summary.json" || fail "$name: summary --json breaks its schema"
  "$inspect" timeline "$capture" >"$work/press.html" || fail "$name: timeline"
  "$python" "$here/check_page.py" "$work/press.html" || fail "$name: the page does not stand alone"
}

for phone in "$@"; do
  TMXSIM_DEVICE=$phone "$kelvra" --harvest >"$work/capture" 2>&1 || true
  views "$(basename "$phone")" "$work/capture"
done

# The default phone without its profile lines, and without its statistics.
"$kelvra" --harvest >"$work/full" 2>&1
grep -v "^{  'category'" "$work/full" >"$work/no-profile"
views "default phone, no profile lines" "$work/no-profile"
grep -q "no profile records" "$work/summary.txt" || fail "no profile lines: not said"
awk '/kelvra get-stats/ {skip = 1; next} /kelvra lyn 0xd0/ {skip = 0} !skip' "$work/full" \
  >"$work/no-stats"
views "default phone, no statistics" "$work/no-stats"
grep -q "no statistics record" "$work/summary.txt" || fail "no statistics: not said"

# Text that is no capture: one line naming the file, status 2.
for view in trace summary timeline; do
  printf 'not a capture\n' >"$work/bad"
  status=0
  "$inspect" "$view" "$work/bad" >/dev/null 2>"$work/err" || status=$?
  if [ "$status" -ne 2 ] || [ "$(wc -l <"$work/err")" -ne 1 ] ||
      ! grep -q "^kelvra-inspect: $work/bad: not a capture" "$work/err"; then
    fail "$view of a malformed capture: status $status, $(cat "$work/err")"
  fi
done
status=0
"$inspect" summary --harvest 2 "$work/full" >/dev/null 2>"$work/err" || status=$?
[ "$status" -eq 2 ] || fail "a harvest the capture does not hold: status $status"
exit $failed
