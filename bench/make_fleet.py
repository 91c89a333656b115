#!/usr/bin/env python3
"""A fleet of captures from seeded phones with a realistic spread.

    make_fleet.py KELVRA DEFAULT_PHONE OUT --count N [--seed S] [--jobs J]

Each phone is the default phone (tmxsim/devices/default.json) with
its press drawn anew (one to three clicks; finger-to-down, held and asset
latencies from log-normal spreads, the second firmware's assets a little
slower), now and then a service missing or refusing, a HID report not
ready, records lost from its logs; each harvested under TZ=UTC into
OUT/fw-a/ or OUT/fw-b/ (two firmware builds). A few captures are cut short
(the facility's size cap) and a few are no capture at all. The same seed
always gives the same fleet; OUT/fleet.json lists each capture's phone
plan, for tests that want to know what they should find.
"""
import argparse
import concurrent.futures
import copy
import json
import math
import os
import random
import struct
import subprocess

STATS = {"finger_on": 0, "finger_off": 8, "start_haptics": 16, "latency_fd_to_down": 24,
         "button": 88, "asset": 136, "asset_latency": 184, "click_flags": 233,
         "second_scan_delta": 266, "gorvin": 274, "lumet": 278}
RECORD = 48


def find_service(phone, name):
    return next(s for s in phone["services"] if s["name"] == name)


def reply_bytes(answer):
    return bytearray.fromhex(answer["reply"].replace(" ", ""))


def log_normal(rng, median, spread):
    return max(1, int(rng.lognormvariate(math.log(median), spread)))


def press(rng, stats, firmware):
    """The statistics record of a new press, every time consistent."""
    clicks = rng.choice([1, 1, 2, 2, 2, 3])
    finger_on = struct.unpack_from("<Q", stats, STATS["finger_on"])[0]
    t = finger_on + log_normal(rng, 40_000, 0.35)
    struct.pack_into("<Q", stats, STATS["latency_fd_to_down"], t - finger_on)
    asset_median = 600 if firmware == "fw-a" else 630
    for k in range(3):
        for edge in (0, 1):
            i = 2 * k + edge
            if k < clicks:
                latency = log_normal(rng, asset_median - 15 * edge, 0.08)
                struct.pack_into("<Q", stats, STATS["button"] + 8 * i, t)
                struct.pack_into("<Q", stats, STATS["asset"] + 8 * i, t + latency)
                struct.pack_into("<Q", stats, STATS["asset_latency"] + 8 * i, latency)
                t += log_normal(rng, 90_000, 0.25) if edge == 0 else log_normal(rng, 120_000, 0.4)
            else:
                for field in ("button", "asset", "asset_latency"):
                    struct.pack_into("<Q", stats, STATS[field] + 8 * i, 0)
    struct.pack_into("<Q", stats, STATS["finger_off"], t + log_normal(rng, 50_000, 0.3))
    flags = struct.unpack_from("<I", stats, STATS["click_flags"])[0]
    struct.pack_into("<I", stats, STATS["click_flags"], (flags & 1) | clicks << 1)
    struct.pack_into("<I", stats, STATS["gorvin"], rng.randint(20, 120))
    struct.pack_into("<I", stats, STATS["lumet"], rng.randint(4, 30))
    return clicks


def lose_records(rng, answers, count):
    """Drops `count` records from a log's passes: gaps in its numbering."""
    passes = answers if isinstance(answers, list) else [answers]
    for _ in range(count):
        answer = rng.choice(passes)
        data = reply_bytes(answer)
        if len(data) < 2 * RECORD:
            continue
        at = rng.randrange(1, len(data) // RECORD - 1) * RECORD
        del data[at:at + RECORD]
        answer["reply"] = data.hex()


def plan(rng, base, index):
    phone = copy.deepcopy(base)
    firmware = "fw-a" if index % 2 == 0 else "fw-b"
    button = find_service(phone, "ZOL_zol-button")
    stats = reply_bytes(button["commands"]["215"])
    clicks = press(rng, stats, firmware)
    button["commands"]["215"]["reply"] = stats.hex()
    faults = []
    roll = rng.random()
    if roll < 0.03:
        phone["services"] = [s for s in phone["services"] if s["name"] != "ZOL_btmspk"]
        faults.append("btmspk missing")
    elif roll < 0.05:
        find_service(phone, "ZOL_lyn")["commands"]["208"] = {"result": "0xe00002c2"}
        faults.append("lyn refuses")
    if rng.random() < 0.04:
        phone["hid_devices"][0]["reports"]["226"] = {"result": "0xe00002d8"}
        faults.append("report 0xe2 not ready")
    lost = 0
    if rng.random() < 0.12:
        lost = rng.randint(1, 25)
        profile = find_service(phone, "ZOL_profile")
        lose_records(rng, profile["commands"]["209"], lost)
        faults.append(f"{lost} records lost")
    kind = "capture"
    roll = rng.random()
    if roll < 0.01:
        kind = "cut"
    elif roll < 0.015:
        kind = "unreadable"
    return phone, {"firmware": firmware, "clicks": clicks, "faults": faults, "lost": lost,
                   "kind": kind}


def make_one(args):
    kelvra, base_path, out, seed, index = args
    rng = random.Random(f"{seed}/{index}")
    with open(base_path, encoding="utf-8") as f:
        base = json.load(f)
    phone, facts = plan(rng, base, index)
    folder = os.path.join(out, facts["firmware"])
    name = os.path.join(folder, f"phone-{index:05d}.txt")
    if facts["kind"] == "unreadable":
        with open(name, "wb") as f:
            f.write(rng.choice([b"", b"upload failed\n", bytes(rng.randrange(256) for _ in range(500))]))
        return name, facts
    description = os.path.join(folder, f".phone-{index:05d}.json")
    with open(description, "w", encoding="utf-8") as f:
        json.dump(phone, f)
    env = dict(os.environ, TZ="UTC", TMXSIM_DEVICE=description)
    capture = subprocess.run([kelvra, "--harvest"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                             env=env, check=True).stdout
    os.remove(description)
    if facts["kind"] == "cut":
        capture = capture[: rng.randrange(len(capture) // 4, len(capture))]
    with open(name, "wb") as f:
        f.write(capture)
    return name, facts


def fleet_parser(description):
    """The options every fleet maker takes."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("kelvra")
    parser.add_argument("default_phone")
    parser.add_argument("out")
    parser.add_argument("--count", type=int, required=True)
    parser.add_argument("--seed", type=int, default=20261125)
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 1)
    return parser


def main():
    args = fleet_parser(__doc__.splitlines()[0]).parse_args()
    for firmware in ("fw-a", "fw-b"):
        os.makedirs(os.path.join(args.out, firmware), exist_ok=True)
    work = [(args.kelvra, args.default_phone, args.out, args.seed, i) for i in range(args.count)]
    with concurrent.futures.ProcessPoolExecutor(args.jobs) as pool:
        made = dict(pool.map(make_one, work, chunksize=16))
    with open(os.path.join(args.out, "fleet.json"), "w", encoding="utf-8") as f:
        json.dump(made, f, indent=1, sort_keys=True)


if __name__ == "__main__":
    main()
