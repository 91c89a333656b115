#!/usr/bin/env python3
"""Seeded random phones for the capture round trip.

    random_phones.py --seed S --count N --out DIR

writes DIR/phone-NNNN.json (a device description) and DIR/phone-NNNN.env
(TZ=... and, when the phone has a clock pair, YEAR=...: the local year of the
pair's calendar value, since calendar texts carry no year; left out when it
is not one `kelvra-inspect --year` takes, 1969 to 2555).

Replies are random bytes of random length: nothing here knows a record layout
beyond the 48-byte profile record's type word and timestamp, which steer the
calendar texts. Every kind of fault the collector meets is drawn now and then,
and the clocks of misbehaving phones: a wall clock never set (calendar 0), a
negative calendar, a calendar before its tmx, sentinel and wild timestamps,
records years away from the pair, sums that wrap the unsigned arithmetic.
The same seed always gives the same phones.
"""

import argparse
import datetime
import json
import os
import random
import zoneinfo

ZONES = ["UTC", "Europe/Berlin", "America/New_York", "Asia/Kolkata", "Australia/Lord_Howe"]
DST_ZONES = ["Europe/Berlin", "America/New_York", "Australia/Lord_Howe"]
FAILURES = [0xE00002C2, 0xE00002BC, 0xE00002C7, 0x10000003, 5, 0xE00002D8, 0xFFFFFFFF,
            0xE00002F0, 0xE00002CD, 1]
RECORD = 48
STATS_CAPACITY = 2000
STATE_CAPACITY = 4096
ASSETS_CAPACITY = 4096
EVENT_CAPACITY = 65536
PROFILER_CAPACITY = 48000
PASSES = 10
REPORT_CAPACITY = 256
REPORT_IDS = [0xE0, 0xB4, 0xE1, 0xE2, 0xE3, 0xE4]

# Ids the decoders have names for, so most records take their named paths.
COMPONENTS = {0: range(5), 1: range(2), 2: range(7), 3: [0], 4: [0], 5: [0], 6: range(3),
              7: range(5), 8: [0]}
EVENTS = {0: [0, 1], 2: list(range(11)) + [16, 17], 3: [0, 1, 17], 4: [0, 1], 5: [0],
          6: [0, 1, 2], 7: [0, 1, 2, 3, 0x10, 0x11, 0x12, 0x13]}
TYPES = [0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12]


def pick(rng, weighted):
    """One value of a [(weight, value), ...] list."""
    total = sum(w for w, _ in weighted)
    x = rng.uniform(0, total)
    for w, v in weighted:
        x -= w
        if x <= 0:
            return v
    return weighted[-1][1]


def result_value(rng, value):
    # Both spellings the schema accepts.
    return f"0x{value:08x}" if rng.random() < 0.5 else value


def failure(rng):
    return {"result": result_value(rng, rng.choice(FAILURES))}


def hex_text(rng, data):
    text = data.hex()
    if data and rng.random() < 0.15:
        text = " ".join(text[i:i + 2] for i in range(0, len(text), 2))
    return text


def answer(rng, data):
    a = {"reply": hex_text(rng, data)}
    roll = rng.random()
    if roll < 0.1:
        a = {"fields": [{"hex": data.hex()}]}
    elif roll < 0.2:
        a["result"] = result_value(rng, 0)
    return a


def size_around(rng, capacity, small=600):
    """A reply length: empty, short, medium, the capacity, or beyond it."""
    kind = pick(rng, [(8, "empty"), (25, "short"), (35, "medium"), (10, "large"),
                      (10, "capacity"), (12, "beyond")])
    if kind == "empty":
        return 0
    if kind == "short":
        return rng.randint(1, 32)
    if kind == "medium":
        return rng.randint(33, min(small, capacity))
    if kind == "large":
        return rng.randint(min(small, capacity - 1), capacity - 1)
    if kind == "capacity":
        return capacity
    return capacity + rng.randint(1, 1000)


def payload(rng, n):
    kind = pick(rng, [(35, "random"), (30, "small"), (15, "text"), (12, "zeros"), (8, "utf8")])
    if kind == "random":
        return rng.randbytes(n)
    if kind == "zeros":
        return bytes(n)
    if kind == "small":
        out = bytearray()
        while len(out) < n:
            top = pick(rng, [(5, 16), (3, 4096), (1, 2**32 - 1)])
            out += rng.randint(0, top).to_bytes(4, "little")
        return bytes(out[:n])
    words = ["nimbrel_feed", "gyro", "pkey", "amp", "lyn", "x", "sensor-0", "~!@#", "tab\there",
             "quote'", 'dq"', "back\\slash", "ctl\x01", "\x1b[1m", "del\x7f", "\x0b\x0c", "cr\r"]
    if kind == "utf8":
        words += ["caf\u00e9", "\u20ac5", "\u00ff", "\U0001F600", "na\u00efve"]
    text = bytearray()
    while len(text) < n:
        text += rng.choice(words).encode() + bytes(rng.randint(0, 4))
    return bytes(text[:n])


def record(rng, seq, timestamp, wild):
    roll = rng.random()
    if wild and roll < 0.05:
        return rng.randbytes(RECORD)  # header and all at random
    category = rng.randrange(9) if roll > 0.10 else rng.randrange(9, 256)
    known = rng.random() < 0.9
    component = rng.choice(list(COMPONENTS.get(category, [0]))) if known else rng.randrange(256)
    known = rng.random() < 0.9
    event = rng.choice(EVENTS.get(category, [0, 1, 2])) if known else rng.randrange(256)
    kind = rng.choice(TYPES) if rng.random() < 0.9 else rng.randrange(256)
    word = category << 24 | component << 16 | event << 8 | kind
    head = word.to_bytes(4, "little") + (seq & 0xFFFFFFFF).to_bytes(4, "little")
    head += (timestamp % 2**64).to_bytes(8, "little")
    return head + payload(rng, RECORD - len(head))


# --- clock: the timesync pair and the record times it turns into texts -----

def local_year(ns, zone):
    seconds = ns // 10**9
    try:
        return datetime.datetime.fromtimestamp(seconds, zoneinfo.ZoneInfo(zone)).year
    except (OverflowError, ValueError, OSError):
        return None


def local_instant_us(zone, year, month, day, hour=0, minute=0):
    when = datetime.datetime(year, month, day, hour, minute, tzinfo=zoneinfo.ZoneInfo(zone))
    return int(when.timestamp()) * 10**6


def transitions(zone, year):
    """UTC seconds at which the zone's offset changes within the year."""
    tz = zoneinfo.ZoneInfo(zone)
    start = int(datetime.datetime(year, 1, 1, tzinfo=datetime.timezone.utc).timestamp())
    end = int(datetime.datetime(year + 1, 1, 1, tzinfo=datetime.timezone.utc).timestamp())

    def offset(t):
        return datetime.datetime.fromtimestamp(t, tz).utcoffset()

    found = []
    t = start
    while t < end:
        step = t + 3600
        if offset(t) != offset(step):
            lo, hi = t, step
            while hi - lo > 1:
                mid = (lo + hi) // 2
                if offset(mid) == offset(lo):
                    lo = mid
                else:
                    hi = mid
            found.append(hi)
        t = step
    return found


class Clock:
    """Where the records' times fall, and the pair (if any) that shows them."""

    def __init__(self, rng):
        self.rng = rng
        self.plan = pick(rng, [(26, "plain"), (12, "new-year"), (12, "dst"), (8, "leap"),
                               (13, "none"), (8, "odd"), (21, "misbehaving")])
        if self.plan == "dst":
            self.zone = rng.choice(DST_ZONES)
        else:
            self.zone = rng.choice(ZONES)
        self.uptime_us = rng.randint(10**6, 10**12)  # processor time at the pair
        self.tmx = self.uptime_us * 1000 + rng.randrange(1000)
        self.service = None
        self.year = None
        self.centre_us = None  # processor time the records gather around
        self.spread_us = rng.choice([10**3, 10**5, 10**6, 5 * 10**6])
        year = rng.randint(2019, 2030)
        if self.plan == "none":
            self.centre_us = rng.randint(0, 10**12)
        elif self.plan == "plain":
            instant = local_instant_us(self.zone, year, rng.randint(1, 12), rng.randint(1, 28),
                                       rng.randint(0, 23), rng.randint(0, 59))
            self.pair(instant, instant + rng.randint(-10**9, 10**9))
        elif self.plan == "new-year":
            boundary = local_instant_us(self.zone, year + 1, 1, 1)
            # The pair on either side of the turn of the year.
            self.pair(self.near(boundary),
                      boundary + rng.choice([-1, 1]) * rng.randint(60 * 10**6, 10 * 3600 * 10**6))
        elif self.plan == "dst":
            turn = rng.choice(transitions(self.zone, year)) * 10**6
            # Wide enough to see both sides of an hour that repeats or is skipped.
            self.spread_us = rng.choice([2 * 10**6, 40 * 60 * 10**6, 3 * 3600 * 10**6])
            self.pair(self.near(turn),
                      turn + rng.randint(-5 * 3600 * 10**6, 5 * 3600 * 10**6))
        elif self.plan == "leap":
            leap = rng.choice([2020, 2024, 2028])
            day = rng.choice([(2, 29), (3, 1)])
            boundary = local_instant_us(self.zone, leap, day[0], day[1])
            self.pair(self.near(boundary),
                      boundary + rng.randint(-6 * 3600 * 10**6, 6 * 3600 * 10**6))
        elif self.plan == "odd":
            self.odd(year)
        else:
            self.misbehaving()
        # Some phones hold records with times and headers at random.
        self.wild = rng.random() < (0.5 if self.plan == "misbehaving" else 0.2)

    def misbehaving(self):
        """A pair whose sums wrap: the texts may fall in any year from 1969 to 2554."""
        rng = self.rng
        kind = rng.choice(["unset", "negative", "before", "far", "top"])
        if kind == "unset":
            # The wall clock was never set: records before tmx wrap to 2554.
            calendar = 0
            self.spread_us = rng.choice([10**6, 10**8])
        elif kind == "negative":
            calendar = -rng.randint(1, 9 * 10**18)
        elif kind == "before":
            # Three years of uptime, a calendar eleven days after 1970.
            self.uptime_us = rng.randint(10**14, 2 * 10**14)
            self.tmx = self.uptime_us * 1000 + rng.randrange(1000)
            calendar = rng.randint(0, 10**15)
        elif kind == "far":
            calendar = rng.randint(10**18, 2 * 10**18)
            # Records years before the pair.
            self.centre_us = self.uptime_us - rng.randint(10**13, 10**15)
        else:
            # The sum close to 2^64: the latest instants the clock reaches.
            calendar = self.tmx - rng.randint(0, 10**12) * 1000 - 2 * 10**9
        self.centre_us = self.centre_us if self.centre_us is not None else self.uptime_us
        self.service = self.timesync_service({"tmx": self.tmx, "calendar": calendar})
        year = local_year((self.centre_us * 1000 + calendar - self.tmx) % 2**64, self.zone)
        if 1969 <= year <= 2555:
            self.year = year

    def near(self, boundary_us):
        """A window centre close enough for the records to cross the boundary."""
        return boundary_us + self.rng.randint(-self.spread_us // 3, self.spread_us // 3)

    def pair(self, centre_instant_us, pair_instant_us):
        calendar = pair_instant_us * 1000 + self.rng.randrange(1000)
        self.centre_us = self.uptime_us + (centre_instant_us - pair_instant_us)
        self.service = self.timesync_service({"tmx": self.tmx, "calendar": calendar})
        year = local_year(calendar, self.zone)
        if year is not None and 1969 <= year <= 2555:
            self.year = year

    def odd(self, year):
        """A timesync entry the collector cannot fully use."""
        rng = self.rng
        instant = local_instant_us(self.zone, year, rng.randint(1, 12), rng.randint(1, 28))
        kind = rng.choice(["no-property", "not-dictionary", "no-tmx", "no-calendar", "not-number"])
        self.centre_us = self.uptime_us
        if kind == "no-property":
            self.service = self.timesync_service(None)
        elif kind == "not-dictionary":
            self.service = self.timesync_service(rng.choice(["later", 12345, [1, 2]]))
        elif kind == "no-tmx":
            # tmx counts as 0: records a few minutes after the calendar value.
            self.centre_us = rng.randint(10**6, 10**9)
            self.service = self.timesync_service({"calendar": instant * 1000})
            self.year = local_year(instant * 1000, self.zone)
        elif kind == "no-calendar":
            # calendar counts as 0: times early in 1970, no year to give.
            self.service = self.timesync_service({"tmx": rng.randint(0, 10**9)})
        else:
            # A string where a number belongs counts as 0, as a missing one.
            self.service = self.timesync_service({"tmx": "soon", "calendar": instant * 1000})
            self.year = local_year(instant * 1000, self.zone)

    def timesync_service(self, value):
        service = {"name": self.rng.choice(["CorvelTMXTimesync", "timesync", "ZOL_timesync"]),
                   "class": "CorvelTMXTimesync"}
        if value is not None:
            service["properties"] = {"timesync": value}
        return service

    def restart(self, count):
        """Each source covers the whole window with its count of records."""
        self.cursor = self.centre_us - self.spread_us // 2
        self.step = max(1, self.spread_us // max(count, 1))

    def times(self, count):
        """Count processor times from the cursor on, mostly ascending."""
        rng = self.rng
        out = []
        for _ in range(count):
            self.cursor += rng.randint(0, 2 * self.step)
            if self.wild and rng.random() < 0.03:
                out.append(pick(rng, [(3, rng.randrange(2**64)),
                                      (2, rng.choice([2**64 - 1, 0, 2**63, 2**64 - 1000, 1])),
                                      (2, max(0, self.cursor - rng.randint(10**12, 10**15))),
                                      (3, max(0, self.cursor - rng.randint(0, 10**7)))]))
            else:
                out.append(max(0, self.cursor) % 2**64)
        return out


# --- services -----------------------------------------------------------------

def reachable(rng, service, missing_weight=8, null_weight=6):
    """Faults of lookup and open; None when the service is simply not there."""
    fault = pick(rng, [(90 - missing_weight - null_weight, None), (missing_weight, "missing"),
                       (4, "other-class"), (6, "open"), (null_weight, "null")])
    if fault == "missing":
        return None
    if fault == "other-class":
        service["class"] = rng.choice(["OtherClass", "CorvelTMXTimesync", "IOService"])
    elif fault == "open":
        service["open_result"] = result_value(rng, rng.choice(FAILURES))
    elif fault == "null":
        service["null_connection"] = True
    return service


def command_answer(rng, capacity, small=600):
    roll = rng.random()
    if roll < 0.08:
        return None  # unsupported: absent from the commands
    if roll < 0.16:
        a = failure(rng)
    else:
        a = answer(rng, rng.randbytes(size_around(rng, capacity, small)))
    return [a] if rng.random() < 0.2 else a


def set_command(table, number, a):
    if a is not None:
        table[str(number)] = a


def button_services(rng):
    services = []
    button = reachable(rng, {"name": "ZOL_zol-button"})
    if button is None and rng.random() < 0.3:
        # Found by its bare name on the second try.
        button = {"name": "zol-button"}
    if button is not None:
        commands = {}
        set_command(commands, 215, command_answer(rng, STATS_CAPACITY))
        set_command(commands, 208, command_answer(rng, STATE_CAPACITY, 64))
        set_command(commands, 209, command_answer(rng, STATE_CAPACITY, 64))
        set_command(commands, 216, command_answer(rng, ASSETS_CAPACITY))
        button["commands"] = commands
        services.append(button)
    for name in ("lyn", "btmspk"):
        service = reachable(rng, {"name": "ZOL_" + name}, missing_weight=12)
        if service is None:
            continue
        commands = {}
        set_command(commands, 208, command_answer(rng, STATE_CAPACITY, 64))
        service["commands"] = commands
        services.append(service)
    for service in services:
        if rng.random() < 0.5:
            service.setdefault("properties", {})["service_id"] = rng.randrange(64)
    return services


def pass_lengths(rng, capacity, full):
    """Record counts and tails of one source's passes, and where it fails."""
    drained = rng.random() < 0.7
    if full:
        count = rng.randint(2, 6) if drained else PASSES + 1
    else:
        # Fewer answers than passes: the list runs out and the log reads empty.
        count = rng.randint(0, PASSES - 1) if drained else rng.randint(PASSES, PASSES + 3)
    passes = []
    for _ in range(count):
        if full:
            records = rng.randint(100, 600) if drained else rng.randint(20, 150)
        else:
            records = pick(rng, [(10, 0), (60, rng.randint(1, 12)), (25, rng.randint(13, 40)),
                                 (5, rng.randint(41, 120))])
        tail = rng.randint(1, RECORD - 1) if rng.random() < 0.15 else 0
        passes.append([records, tail])
        if not full and rng.random() < 0.04:
            passes.append([0, rng.randint(1, RECORD - 1)])  # less than a record
    if full and rng.random() < 0.6:
        # Beyond the capacity: the delivery is cut.
        passes[rng.randrange(len(passes))] = [capacity // RECORD + rng.randint(1, 40),
                                              rng.randint(0, RECORD - 1)]
    fail_at = rng.randrange(len(passes) + 1) if passes and rng.random() < 0.12 else None
    return passes, fail_at


def source_answers(rng, clock, capacity, full, seq):
    passes, fail_at = pass_lengths(rng, capacity, full)
    clock.restart(sum(records for records, _ in passes))
    answers = []
    for i, (records, tail) in enumerate(passes):
        if i == fail_at:
            answers.append(failure(rng))
            continue
        data = b"".join(record(rng, seq + k, t, clock.wild)
                        for k, t in enumerate(clock.times(records)))
        seq += records
        answers.append(answer(rng, data + rng.randbytes(tail)))
    if fail_at == len(passes):
        answers.append(failure(rng))
    return answers, seq


def profile_services(rng, clock, full):
    services = []
    seq = rng.randrange(2**32)
    events, seq = source_answers(rng, clock, EVENT_CAPACITY, full, seq)
    drain, seq = source_answers(rng, clock, PROFILER_CAPACITY, full, seq)

    # A zero connection there reads ten full passes of zeros: kept rare.
    profile = reachable(rng, {"name": "ZOL_profile"}, null_weight=1.5)
    fallback = None
    if profile is None or profile.get("class", "CorvelTMXInterface") != "CorvelTMXInterface":
        # The command path's second try is the bare name.
        if rng.random() < 0.5:
            fallback = {"name": "profile", "commands": {}}
            if rng.random() < 0.2:
                fallback["class"] = "OtherClass"  # not found either
    target = fallback if fallback is not None else profile
    if target is not None and rng.random() < 0.93:
        target.setdefault("commands", {})["209"] = events
    if profile is not None:
        child = pick(rng, [(80, "ok"), (6, "none"), (5, "open"), (5, "null"), (4, "no-method")])
        if child != "none":
            client = {"name": rng.choice(["ZOL_profiler", "profiler-client"]),
                      "class": rng.choice(["CorvelTMXInterface", "CorvelTMXProfilerClient"])}
            if child == "open":
                client["open_result"] = result_value(rng, rng.choice(FAILURES))
            elif child == "null":
                client["null_connection"] = True
            if child != "no-method":
                client["methods"] = {"9": drain}
            profile["children"] = [client]
            if rng.random() < 0.15:
                # Only the first child is opened.
                profile["children"].append({"name": "second-child",
                                            "methods": {"9": answer(rng, rng.randbytes(RECORD))}})
        services.append(profile)
    if fallback is not None:
        services.append(fallback)
    return services


def hid_devices(rng):
    kind = pick(rng, [(70, "ok"), (7, "none"), (5, "other-usage"), (6, "no-create"), (6, "open"),
                      (6, "decoy")])
    if kind == "none":
        return None
    device = {"usage_page": 0xFF00, "usage": 0x20}
    if kind == "other-usage":
        device[rng.choice(["usage", "usage_page"])] = rng.choice([1, 0x21, 0xFF01])
    elif kind == "no-create":
        device["create"] = False
    elif kind == "open":
        device["open_result"] = result_value(rng, rng.choice(FAILURES))
    reports = {}
    for report in REPORT_IDS:
        roll = rng.random()
        if roll < 0.05:
            continue
        if roll < 0.12:
            reports[str(report)] = failure(rng)
            continue
        n = pick(rng, [(10, 0), (45, rng.randint(1, 64)),
                       (30, rng.randint(65, REPORT_CAPACITY)),
                       (15, rng.randint(REPORT_CAPACITY + 1, REPORT_CAPACITY + 144))])
        reports[str(report)] = answer(rng, rng.randbytes(n))
    if rng.random() < 0.1:
        device["create"] = True
    device["reports"] = reports
    devices = [device]
    if kind == "decoy":
        devices.insert(0, {"usage_page": 0xFF00, "usage": 0x21,
                           "reports": {"224": answer(rng, rng.randbytes(8))}})
    return devices


def phone(rng):
    clock = Clock(rng)
    full = rng.random() < 0.03
    services = button_services(rng) + profile_services(rng, clock, full)
    if clock.service is not None:
        services.append(clock.service)
    if rng.random() < 0.2:
        services.append({"name": "ZOL_unrelated", "properties": {"service_id": 99},
                         "commands": {"208": answer(rng, rng.randbytes(12))}})
    rng.shuffle(services)
    description = {}
    if services or rng.random() < 0.5:
        description["services"] = services
    hid = hid_devices(rng)
    if hid is not None:
        description["hid_devices"] = hid
    env = [f"TZ={clock.zone}"]
    if clock.year is not None:
        env.append(f"YEAR={clock.year}")
    return description, env


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--seed", type=int, required=True)
    parser.add_argument("--count", type=int, required=True)
    parser.add_argument("--out", required=True)
    args = parser.parse_args()
    os.makedirs(args.out, exist_ok=True)
    for i in range(args.count):
        rng = random.Random(f"{args.seed}/{i}")
        description, env = phone(rng)
        base = os.path.join(args.out, f"phone-{i:04d}")
        with open(base + ".json", "w", encoding="utf-8") as out:
            json.dump(description, out, separators=(",", ":"))
            out.write("\n")
        with open(base + ".env", "w", encoding="utf-8") as out:
            out.write("\n".join(env) + "\n")


if __name__ == "__main__":
    main()
