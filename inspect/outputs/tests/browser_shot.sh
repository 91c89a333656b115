# Sourced by the browser tests: finds chromium, or ends the test (skip, or a
# failure where KELVRA_REQUIRE_BROWSER is set), and renders a page headless.
#
#   . browser_shot.sh; browser_shot PAGE PNG WIDTH HEIGHT WORK

browser=$(command -v chromium || command -v chromium-browser || true)
if [ -z "$browser" ]; then
  if [ -n "${KELVRA_REQUIRE_BROWSER:-}" ]; then
    echo "FAIL: chromium is not installed; tools/install-deps --tests installs it"
    exit 1
  fi
  echo "SKIP: chromium is not installed (tools/install-deps --tests installs it)"
  exit 77
fi

browser_shot() {
  local page=$1 png=$2 width=$3 height=$4 work=$5
  # Root may not use the browser's sandbox.
  local sandbox=()
  [ "$(id -u)" -ne 0 ] || sandbox=(--no-sandbox)
  timeout 120 "$browser" --headless "${sandbox[@]}" --disable-gpu --hide-scrollbars \
    --no-first-run --user-data-dir="$work/profile" --window-size="$width,$height" \
    --screenshot="$png" "file://$page" >"$work/browser.log" 2>&1 ||
    { cat "$work/browser.log"; echo "FAIL: chromium did not render the page"; exit 1; }
}
