#!/usr/bin/env bash
# The default phone's timeline in a real browser: headless chromium renders
# the page to a PNG, and check_png.py finds it the right size, not blank,
# with the press bars and the controller's ticks painted. Skips (status 77)
# where chromium is not installed, unless KELVRA_REQUIRE_BROWSER is set, as
# CI sets it. With a fourth argument, keeps the picture there (docs/press.png).
#
#   timeline_browser.sh KELVRA KELVRA_INSPECT PYTHON [PNG]
set -euo pipefail
kelvra=$1 inspect=$2 python=$3 keep=${4:-}
here=$(dirname "$0")
width=1280 height=1000

. "$here/browser_shot.sh"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TZ=UTC
env -u TMXSIM_DEVICE "$kelvra" --harvest >"$work/capture" 2>&1
"$inspect" timeline --year 2026 "$work/capture" >"$work/press.html"

browser_shot "$work/press.html" "$work/press.png" "$width" "$height" "$work"

# The asset bars, the finger bars and the button controller's ticks.
"$python" "$here/check_png.py" "$work/press.png" "$width" "$height" e07b00 4c93c8 c0282d
if [ -n "$keep" ]; then
  cp "$work/press.png" "$keep"
fi
