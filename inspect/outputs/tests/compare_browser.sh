#!/usr/bin/env bash
# The compare page of the default phone against the faulty one whose click 1
# asset came 1 µs later, in a real browser: headless chromium renders it to
# a PNG, and check_png.py finds it the right size, not blank, with both
# presses' bars and A's and B's latency bars painted. Skips (status 77)
# where chromium is not installed, unless KELVRA_REQUIRE_BROWSER is set.
# With a fifth argument, keeps the picture there (docs/compare.png).
#
#   compare_browser.sh KELVRA KELVRA_INSPECT PYTHON FAULTY_PHONE [PNG]
set -euo pipefail
kelvra=$(realpath "$1") inspect=$(realpath "$2") python=$3 faulty=$(realpath "$4") keep=${5:-}
here=$(realpath "$(dirname "$0")")
width=1280 height=1000

. "$here/browser_shot.sh"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TZ=UTC
env -u TMXSIM_DEVICE "$kelvra" --harvest >"$work/default.txt" 2>&1
TMXSIM_DEVICE=$faulty "$kelvra" --harvest >"$work/faulty-harvest" 2>&1
# Click 1's button-down asset 1 µs later, its latency with it.
sed -e '0,/\(Latency   - Button Down to Play Asset  *: \)612 us/s//\1613 us/' \
  -e '0,/\(Timestamp - Button Down Play Asset  *: \)91238278182 us/s//\191238278183 us/' \
  "$work/faulty-harvest" >"$work/faulty.txt"
[ "$(diff "$work/faulty-harvest" "$work/faulty.txt" | grep -c '^>')" -eq 2 ] ||
  { echo "FAIL: the faulty phone's click 1 is not where it was"; exit 1; }
status=0
(cd "$work" && "$inspect" compare --html --year 2026 default.txt faulty.txt >compare.html) || status=$?
if [ "$status" -ne 1 ]; then
  echo "FAIL: compare gave status $status, not 1"
  exit 1
fi
grep -q "+1 µs" "$work/compare.html" || { echo "FAIL: the page does not label the 1 µs"; exit 1; }
"$python" "$here/check_page.py" "$work/compare.html"

browser_shot "$work/compare.html" "$work/compare.png" "$width" "$height" "$work"

# The asset and finger bars, A's and B's latency bars.
"$python" "$here/check_png.py" "$work/compare.png" "$width" "$height" e07b00 4c93c8 7b5ea7 2c9f6b
if [ -n "$keep" ]; then
  cp "$work/compare.png" "$keep"
fi
