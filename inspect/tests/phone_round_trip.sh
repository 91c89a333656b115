#!/usr/bin/env bash
# A capture turns back into a phone that reproduces it: for every phone and
# for both captures (standard output alone; both streams merged), harvest,
# `kelvra-inspect phone` the capture, harvest the phone it wrote, and the two
# captures are the same byte for byte, every harvest exits 0 and leaves a
# clean audit line. A broken banner is refused with one line and status 2.
#
#   phone_round_trip.sh KELVRA KELVRA_INSPECT WORKDIR PHONE...
#
# PHONE.env (beside a PHONE.json, or PHONE.env beside a PHONE without one)
# may hold TZ=... (default UTC) and YEAR=... (given as --year).
# SKIP_UNUSABLE=1 passes over a phone the simulated platform refuses or on
# which kelvra exits non-zero (corpora hold such descriptions on purpose).
# Without a `phone` subcommand only the phones' own harvests are checked,
# and the status is 77 (skipped) unless one of them failed.
set -uo pipefail
if [ $# -lt 3 ]; then
  echo "usage: $0 KELVRA KELVRA_INSPECT WORKDIR PHONE..." >&2
  exit 2
fi
kelvra=$1 inspect=$2 work=$3
shift 3
mkdir -p "$work" || exit 2
clean_audit="audit io_objects=0 connections=0 cf_objects=0 misuse=0"

have_phone=1
# Help for an unknown subcommand is the top-level help, status 0 all the same.
if ! "$inspect" --help 2>/dev/null | grep -Eq '^ +phone( |$)'; then
  have_phone=0
  echo "note: $inspect has no phone subcommand: checking the phones' own harvests only"
fi

failures=0 passed=0 skipped=0
fail() {  # phone, mode, what
  echo "FAIL: $1 ($2): $3"
  failures=$((failures + 1))
}

# The value of KEY= in an env file, empty when absent.
env_value() {
  [ -f "$1" ] || return 0
  sed -n "s/^$2=//p" "$1" | tail -n 1
}

# harvest PHONE MODE CAPTURE LOG ZONE: kelvra's status.
harvest() {
  local status=0
  rm -f "$4"
  if [ "$2" = merged ]; then
    TZ=$5 TMXSIM_DEVICE=$1 TMXSIM_LOG=$4 "$kelvra" --harvest >"$3" 2>&1 || status=$?
  else
    TZ=$5 TMXSIM_DEVICE=$1 TMXSIM_LOG=$4 "$kelvra" --harvest >"$3" 2>/dev/null || status=$?
  fi
  return $status
}

audit_of() {
  [ -f "$1" ] && tail -n 1 "$1"
}

number=0
for phone in "$@"; do
  number=$((number + 1))
  name=$(basename "$phone")
  dir=$work/$(printf '%04d' "$number")-${name%.json}
  rm -rf "$dir" && mkdir -p "$dir"
  envfile=${phone%.json}.env
  zone=$(env_value "$envfile" TZ)
  zone=${zone:-UTC}
  year=$(env_value "$envfile" YEAR)
  year_option=()
  [ -n "$year" ] && year_option=(--year "$year")
  before=$failures
  for mode in stdout merged; do
    status=0
    harvest "$phone" "$mode" "$dir/$mode.cap" "$dir/$mode.log" "$zone" || status=$?
    if [ "$status" != 0 ]; then
      if [ "${SKIP_UNUSABLE:-0}" = 1 ]; then
        echo "skip: $phone: kelvra exits $status on it"
        skipped=$((skipped + 1))
        rm -rf "$dir"
        continue 2
      fi
      fail "$phone" "$mode" "kelvra exits $status on the phone itself"
      continue
    fi
    if [ "$(audit_of "$dir/$mode.log")" != "$clean_audit" ]; then
      fail "$phone" "$mode" "the phone's own harvest: $(audit_of "$dir/$mode.log")"
    fi
    [ "$have_phone" = 1 ] || continue

    status=0
    TZ=$zone "$inspect" phone "${year_option[@]}" "$dir/$mode.cap" \
      >"$dir/$mode.phone.json" 2>"$dir/$mode.phone.err" || status=$?
    if [ "$status" != 0 ]; then
      fail "$phone" "$mode" \
        "kelvra-inspect phone exits $status: $(head -n 3 "$dir/$mode.phone.err")"
      continue
    fi
    status=0
    harvest "$dir/$mode.phone.json" "$mode" "$dir/$mode.again" "$dir/$mode.again.log" \
      "$zone" || status=$?
    if [ "$status" != 0 ]; then
      fail "$phone" "$mode" "kelvra exits $status on the phone made from the capture"
      head -n 3 "$dir/$mode.again"
      continue
    fi
    if ! cmp -s "$dir/$mode.cap" "$dir/$mode.again"; then
      fail "$phone" "$mode" "the captures differ (TZ=$zone${year:+, --year $year}; kept in $dir)"
      diff "$dir/$mode.cap" "$dir/$mode.again" | head -n 8
    fi
    if [ "$(audit_of "$dir/$mode.again.log")" != "$clean_audit" ]; then
      fail "$phone" "$mode" "the remade phone's harvest: $(audit_of "$dir/$mode.again.log")"
    fi
  done
  if [ "$failures" = "$before" ]; then
    passed=$((passed + 1))
    rm -rf "$dir"  # kept only when it failed
  fi
done

# A damaged capture: no phone prints it, status 2 after the damage told
# and the refusal naming its line; with --partial, the phone of what could
# be read, status 1. `whole`: what that phone harvests, if it is known.
refused() {  # what, capture, whole
  local status=0 last
  TZ=UTC "$inspect" phone "$2" >/dev/null 2>"$2.err" </dev/null || status=$?
  last=$(tail -n 1 "$2.err")
  if [ "$status" != 2 ] || ! [[ $last =~ ^kelvra-inspect:\ .*:\ line\ [0-9]+:\ no\ phone\ prints ]]; then
    fail "$1" merged "kelvra-inspect phone: status $status, said: $(cat "$2.err")"
  fi
  status=0
  TZ=UTC "$inspect" phone --partial "$2" >"$2.phone.json" 2>/dev/null </dev/null || status=$?
  [ "$status" = 1 ] || fail "$1" merged "kelvra-inspect phone --partial: status $status"
  TZ=UTC TMXSIM_DEVICE=$2.phone.json "$kelvra" --harvest >"$2.again" 2>&1 ||
    fail "$1" merged "the partial phone does not harvest"
  if [ -n "${3:-}" ] && ! cmp -s "$2.again" "$3"; then
    fail "$1" merged "the partial phone does not print the capture it was cut from"
  fi
}
if [ "$have_phone" = 1 ]; then
  bad=$work/damaged
  rm -rf "$bad" && mkdir -p "$bad"
  unset TMXSIM_DEVICE
  TZ=UTC "$kelvra" --harvest >"$bad/whole" 2>&1
  profile_banner='==========kelvra zol-button profile=============='
  assets_banner='==========kelvra zol-button get-assets=============='
  cut=$(grep -n -x -F -- "$profile_banner" "$bad/whole" | head -n 1 | cut -d: -f1)
  if [ -z "$cut" ]; then
    fail "default phone" merged "no profile banner in its capture"
  else
    # Cut off in the middle of the profile banner.
    { head -n $((cut - 1)) "$bad/whole"; printf '%s' "${profile_banner:0:30}"; } >"$bad/cut"
    refused "capture cut inside a banner" "$bad/cut"
  fi
  sed "s/^$assets_banner\$/==========kelvra zol-button get-asets==============/" \
    "$bad/whole" >"$bad/mangled"
  if cmp -s "$bad/whole" "$bad/mangled"; then
    fail "default phone" merged "no get-assets banner in its capture"
  else
    refused "capture with a misspelt banner" "$bad/mangled" "$bad/whole"
  fi
fi

if [ "$have_phone" = 1 ]; then
  echo "phones: $# given, $passed passed, $skipped skipped; $failures failures"
else
  echo "phones: $# given, $passed harvested cleanly, $skipped skipped; $failures failures"
fi
[ "$failures" = 0 ] || exit 1
[ "$have_phone" = 1 ] || exit 77
exit 0
