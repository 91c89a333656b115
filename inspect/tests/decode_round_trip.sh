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
# Damage: a warning naming the file, the line and the fault, the rest read,
# status 1; nothing to read: one line and status 2.
printf 'banner\n%s\n' "{  'category':'x', 'binary-data':[1,2,3]}" >"$work/short"
printf '%048d' 0 >"$work/raw"; printf 'abc' >>"$work/raw"
printf '# notes\nnothing to see\n' >"$work/text"
check() {  # expected status, expected standard error, command...
  local status=0 want=$1 message=$2
  shift 2
  "$@" >/dev/null 2>"$work/err" </dev/null || status=$?
  if [ "$status" != "$want" ] || [ "$(cat "$work/err")" != "$message" ]; then
    echo "FAIL: $*: status $status, said: $(cat "$work/err")"; failed=1
  fi
}
check 1 "kelvra-inspect: $work/short: line 1: note: text before the first line of a harvest; passed over
kelvra-inspect: $work/short: line 2: warning: binary-data holds 3 values, not 48; line skipped" \
  "$inspect" decode "$work/short"
check 2 "kelvra-inspect: $work/none: cannot open: No such file or directory" \
  "$inspect" records "$work/none"
check 1 "kelvra-inspect: $work/raw: byte 48: warning: 3 trailing bytes, not a whole 48-byte record; left out" \
  "$inspect" decode --from raw "$work/raw"
check 2 "kelvra-inspect: $work/text: not a capture: no harvest banner, profile line or failure line, no \"prof-event \" line, and text rather than raw records in its first 64 KiB (--from names the form)" \
  "$inspect" decode "$work/text"
check 2 "kelvra-inspect: --timesync wants two integers TMX,CALENDAR, not '1'" \
  "$inspect" decode --timesync 1 "$work/raw"
exit $failed
