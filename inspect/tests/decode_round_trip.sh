#!/usr/bin/env bash
# decode gives back a capture's profile lines byte for byte, for every phone
# in the tree, under time zones with and without daylight saving, read
# plain, gzip-compressed and from standard input; and bad input gets its one
# line and status 2.
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
# Faults: one line naming the file, the line and the fault, and status 2; a
# raw tail is a warning.
printf 'banner\n%s\n' "{  'category':'x', 'binary-data':[1,2,3]}" >"$work/short"
printf '%048d' 0 >"$work/raw"; printf 'abc' >>"$work/raw"
check() {  # expected status, expected standard error, command...
  local status=0 want=$1 message=$2
  shift 2
  "$@" >/dev/null 2>"$work/err" </dev/null || status=$?
  if [ "$status" != "$want" ] || [ "$(cat "$work/err")" != "$message" ]; then
    echo "FAIL: $*: status $status, said: $(cat "$work/err")"; failed=1
  fi
}
check 2 "kelvra-inspect: $work/short: line 2: binary-data holds 3 values, not 48" \
  "$inspect" decode "$work/short"
check 2 "kelvra-inspect: $work/none: cannot open: No such file or directory" \
  "$inspect" records "$work/none"
check 0 "kelvra-inspect: $work/raw: warning: 3 trailing bytes at byte 48 ignored (not a whole 48-byte record)" \
  "$inspect" decode --from raw "$work/raw"
check 2 "kelvra-inspect: --timesync wants two integers TMX,CALENDAR, not '1'" \
  "$inspect" decode --timesync 1 "$work/raw"
exit $failed
