#!/usr/bin/env bash
# The gate's page in a real browser: two small fleets of rows (the second's
# assets 5% later), the page rendered headless to a PNG, and check_png.py
# finds it the right size, not blank, with both fleets' curves painted.
# Skips (status 77) where chromium is not installed, unless
# KELVRA_REQUIRE_BROWSER is set. With a fourth argument, keeps the picture.
#
#   gate_browser.sh KELVRA_INSPECT PYTHON OUTPUTS_TESTS [PNG]
set -euo pipefail
inspect=$(realpath "$1") python=$2 shared=$(realpath "$3") keep=${4:-}
width=760 height=520

. "$shared/browser_shot.sh"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$python" - "$work" <<'PY'
import json, math, os, random, sys
rng = random.Random(5)
for side, median in (("a", 600), ("b", 630)):
    os.makedirs(f"{sys.argv[1]}/{side}")
    with open(f"{sys.argv[1]}/{side}/harvests.jsonl", "w") as f:
        for i in range(300):
            down = int(rng.lognormvariate(math.log(median), 0.08))
            f.write(json.dumps({"capture": f"{side}{i}", "capture_sha256": None, "harvest": 1,
                                "clicks": [{"click": 1, "down_to_asset_us": down}],
                                "sequence_lost": 0, "damage": []}) + "\n")
PY
status=0
"$inspect" gate --html "$work/a" "$work/b" >"$work/gate.html" || status=$?
[ "$status" -eq 1 ] || { echo "FAIL: gate gave status $status, not 1"; exit 1; }
grep -q "Gate: regressed" "$work/gate.html" || { echo "FAIL: the page lacks its verdict"; exit 1; }
if grep -qiE "<script|src=|href=|url\(" "$work/gate.html"; then
  echo "FAIL: the page does not stand alone"; exit 1
fi

browser_shot "$work/gate.html" "$work/gate.png" "$width" "$height" "$work"

# The baseline's and the candidate's curves.
"$python" "$shared/check_png.py" "$work/gate.png" "$width" "$height" 4c93c8 e07b00
if [ -n "$keep" ]; then
  cp "$work/gate.png" "$keep"
fi
