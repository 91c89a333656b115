#!/usr/bin/env python3
"""Captures read in their phones' zones, handed in as --zone.

    zones_test.py KELVRA KELVRA_INSPECT DEFAULT_PHONE

The default phone, its clock pair moved: harvested under TZ=Asia/Tokyo, and
across the hour America/New_York repeats and the half hour
Australia/Lord_Howe repeats, and centuries on where only the zone files'
closing rules say the offset. Each capture, read with --zone under TZ=UTC,
gives the instants that Python's zoneinfo gives for the phone's pair,
decode prints the capture's lines again, and records and the report's
timesync pair are those of kelvra-inspect run under the phone's TZ. An
unknown zone is refused with one line and status 2 by every subcommand.
"""
import datetime
import json
import os
import subprocess
import sys
import tempfile
import zoneinfo

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from validate_json import strict  # noqa: E402

kelvra, inspect, default_phone = sys.argv[1:4]
work = tempfile.mkdtemp(prefix="zones-")
faults = []
UTC = datetime.timezone.utc


def ns(moment):
    return (moment - datetime.datetime(1970, 1, 1, tzinfo=UTC)) // datetime.timedelta(microseconds=1) * 1000


def phone_with_pair(name, calendar_ns):
    with open(default_phone, encoding="utf-8") as f:
        phone = json.load(f)
    for service in phone["services"]:
        if "timesync" in service.get("properties", {}):
            service["properties"]["timesync"]["calendar"] = calendar_ns
            pair = service["properties"]["timesync"]
    path = os.path.join(work, name + ".json")
    with open(path, "w", encoding="utf-8") as f:
        json.dump(phone, f)
    return path, pair


def harvest(phone, zone):
    env = dict(os.environ, TZ=zone, TMXSIM_DEVICE=phone)
    return subprocess.run([kelvra, "--harvest"], capture_output=True, env=env, check=True).stdout


def run(args, zone="UTC"):
    return subprocess.run([inspect] + args, capture_output=True, env=dict(os.environ, TZ=zone))


def expected_time(timestamp, pair, zone):
    """The collector's rule, then zoneinfo's local time of the instant."""
    us = (timestamp * 1000 + pair["calendar"] - pair["tmx"]) % 2**64 // 1000
    moment = datetime.datetime(1970, 1, 1, tzinfo=UTC) + datetime.timedelta(microseconds=us)
    return moment.astimezone(zoneinfo.ZoneInfo(zone)).isoformat(timespec="microseconds")


def check(name, zone, calendar, year):
    phone, pair = phone_with_pair(name, calendar)
    capture = os.path.join(work, name + ".txt")
    with open(capture, "wb") as f:
        f.write(harvest(phone, zone))
    common = ["--year", str(year), "--no-progress"]
    given = [capture, "--zone", zone] + common
    records = run(["records"] + given)
    if records.returncode != 0:
        faults.append(f"{name}: records exits {records.returncode}: {records.stderr!r}")
        return
    rows = [strict(line) for line in records.stdout.decode().splitlines()]
    times = [r["calendar_time"] for r in rows]
    wanted = [expected_time(r["timestamp"], pair, zone) for r in rows]
    if times != wanted:
        first = next(i for i, (a, b) in enumerate(zip(times, wanted)) if a != b)
        faults.append(f"{name}: record {first}: {times[first]}, zoneinfo says {wanted[first]}")
    offsets = sorted({t[-6:] for t in times})
    print(f"{name}: {len(times)} records, {times[0]} .. {times[-1]}, offsets {offsets}")

    with open(capture, "rb") as f:
        lines = [l for l in f.read().split(b"\n") if l.startswith(b"{  'category'")]
    decoded = run(["decode"] + given).stdout.split(b"\n")[:-1]
    if decoded != lines:
        faults.append(f"{name}: decode does not print the capture's lines again")

    # The same as the process run under the phone's TZ, without --zone; and
    # under TZ set to the zone's rule, which the C library reads itself.
    for command in (["records"], ["report"]):
        with_zone = run(command + given)
        for tz in (zone, POSIX[zone]):
            under_tz = run(command + [capture] + common, zone=tz)
            if with_zone.stdout != under_tz.stdout or with_zone.returncode != under_tz.returncode:
                faults.append(f"{name}: {command[0]} --zone differs from TZ={tz}")
    report = strict(run(["report"] + given).stdout)
    clock = report["timesync"]
    offset = (clock["calendar_ns"] - clock["tmx_ns"]) % 2**64
    true_offset = (pair["calendar"] - pair["tmx"]) % 2**64
    if not (0 <= (true_offset - offset) % 2**64 < 1000 and clock["one_pair"]):
        faults.append(f"{name}: the report's pair {clock} is not the phone's {pair}")


# The zones' rules since 2008, as POSIX TZ values.
POSIX = {
    "Asia/Tokyo": "JST-9",
    "America/New_York": "EST5EDT,M3.2.0,M11.1.0",
    "Australia/Lord_Howe": "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0",
}

# The first record lies this long before the change, the last 1.3 s after it.
half = datetime.timedelta(milliseconds=500)
cases = [
    ("tokyo", "Asia/Tokyo", ns(datetime.datetime(2026, 3, 14, 0, 26, 52, tzinfo=UTC)), 2026),
    # 02:00 EDT back to 01:00 EST, 06:00 UTC.
    ("new-york-back", "America/New_York", ns(datetime.datetime(2024, 11, 3, 6, tzinfo=UTC) - half), 2024),
    # 02:00 EST on to 03:00 EDT, 07:00 UTC.
    ("new-york-on", "America/New_York", ns(datetime.datetime(2024, 3, 10, 7, tzinfo=UTC) - half), 2024),
    # 02:00 at +11 back to 01:30 at +10:30, 15:00 UTC.
    ("lord-howe-back", "Australia/Lord_Howe", ns(datetime.datetime(2024, 4, 6, 15, tzinfo=UTC) - half), 2024),
    # Past the changes the files list: 2 a.m. EDT back to 1 a.m. on 7 November 2100, a
    # calendar beyond 2^63 ns.
    ("new-york-2100", "America/New_York",
     ns(datetime.datetime(2100, 11, 7, 6, tzinfo=UTC) - half), 2100),
    ("lord-howe-2300", "Australia/Lord_Howe",
     ns(datetime.datetime(2300, 1, 15, 3, tzinfo=UTC)) - 2**64, 2300),
]
for name, zone, calendar, year in cases:
    check(name, zone, calendar, year)

# An unknown zone: one line, status 2, nothing written.
capture = os.path.join(work, "tokyo.txt")
out = os.path.join(work, "tables")
for command in (["decode", capture], ["records", capture], ["report", capture],
                ["phone", capture], ["trace", capture], ["summary", capture],
                ["timeline", capture], ["compare", capture, capture],
                ["tables", "--out", out, capture], ["gate", capture, capture]):
    result = run(command + ["--zone", "Mars/Olympus"])
    said = result.stderr.decode().splitlines()
    if result.returncode != 2 or result.stdout or len(said) != 1 or "Mars/Olympus" not in said[0]:
        faults.append(f"{command[0]}: unknown zone gives {result.returncode}, {said}")
if os.path.exists(out):
    faults.append("tables: an unknown zone made the tables' directory")

for fault in faults:
    print("FAIL:", fault)
print(f"{len(cases)} captures, {len(faults)} faults")
sys.exit(1 if faults else 0)
