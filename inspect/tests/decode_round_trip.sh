#!/usr/bin/env bash
# decode gives back a capture's profile lines byte for byte, for every phone
# in the tree, under time zones with and without daylight saving, read
# plain, gzip-compressed and from standard input.
#
#   decode_round_trip.sh KELVRA KELVRA_INSPECT PHONE...
set -euo pipefail
kelvra=$1 inspect=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
zones=(UTC "EST5EDT,M3.2.0,M11.1.0" "NZST-12NZDT,M9.5.0,M4.1.0/3")
failed=0
for phone in "$@"; do
  for zone in "${zones[@]}"; do
    TMXSIM_DEVICE=$phone TZ=$zone "$kelvra" --harvest >"$work/capture" 2>&1 || true
    grep "^{  'category':" "$work/capture" >"$work/expected" || true
    gzip -c "$work/capture" >"$work/capture.gz"
    for input in "$work/capture" "$work/capture.gz" -; do
      if ! TZ=$zone "$inspect" decode "$input" <"$work/capture" >"$work/decoded"; then
        echo "FAIL: $phone (TZ=$zone, $input): kelvra-inspect decode failed"; failed=1
      elif ! cmp -s "$work/expected" "$work/decoded"; then
        echo "FAIL: $phone (TZ=$zone, $input): decoded lines differ"
        diff "$work/expected" "$work/decoded" | head -4; failed=1
      fi
    done
    echo "ok: $(basename "$phone") TZ=$zone, $(wc -l <"$work/expected") lines"
  done
done
exit $failed
