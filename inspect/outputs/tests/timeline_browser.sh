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

browser=$(command -v chromium || command -v chromium-browser || true)
if [ -z "$browser" ]; then
  if [ -n "${KELVRA_REQUIRE_BROWSER:-}" ]; then
    echo "FAIL: chromium is not installed; tools/install-deps installs it"
    exit 1
  fi
  echo "SKIP: chromium is not installed (tools/install-deps installs it)"
  exit 77
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TZ=UTC
env -u TMXSIM_DEVICE "$kelvra" --harvest >"$work/capture" 2>&1
"$inspect" timeline --year 2026 "$work/capture" >"$work/press.html"

# Root may not use the browser's sandbox.
sandbox=()
[ "$(id -u)" -ne 0 ] || sandbox=(--no-sandbox)
timeout 120 "$browser" --headless "${sandbox[@]}" --disable-gpu --hide-scrollbars \
  --no-first-run --user-data-dir="$work/profile" --window-size="$width,$height" \
  --screenshot="$work/press.png" "file://$work/press.html" >"$work/browser.log" 2>&1 ||
  { cat "$work/browser.log"; echo "FAIL: chromium did not render the page"; exit 1; }

# The asset bars, the finger bars and the button controller's ticks.
"$python" "$here/check_png.py" "$work/press.png" "$width" "$height" e07b00 4c93c8 c0282d
if [ -n "$keep" ]; then
  cp "$work/press.png" "$keep"
fi
