#!/usr/bin/env bash
# The default phone's trace, made again, is the golden file byte for byte.
# UPDATE_GOLDEN=1 writes it instead: after a deliberate change, run
#
#   UPDATE_GOLDEN=1 ctest --test-dir build/default -R views_trace_golden
#
# and look at the difference before keeping it.
#
#   trace_golden.sh KELVRA KELVRA_INSPECT GOLDEN
set -euo pipefail
kelvra=$1 inspect=$2 golden=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The calendar times: the zone and the year fixed.
export TZ=UTC
env -u TMXSIM_DEVICE "$kelvra" --harvest >"$work/capture" 2>&1
"$inspect" trace --year 2026 - <"$work/capture" >"$work/trace.json"
if [ -n "${UPDATE_GOLDEN:-}" ]; then
  cp "$work/trace.json" "$golden"
  echo "wrote $golden"
  exit 0
fi
if ! cmp -s "$work/trace.json" "$golden"; then
  diff "$golden" "$work/trace.json" | head -40
  echo "FAIL: the trace differs from $golden (UPDATE_GOLDEN=1 rewrites it)"
  exit 1
fi
