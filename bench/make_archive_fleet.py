#!/usr/bin/env python3
"""A fleet of collection archives, as captures reach the team.

    make_archive_fleet.py KELVRA DEFAULT_PHONE OUT --count N [--seed S] [--jobs J]
                          [--filler-mb LOW HIGH] [--only-tar]

Each archive holds one capture among LOW-HIGH MB (default 5-20) of other
members: text logs, binary files (random bytes, as crash dumps and images do
not compress), a nested .gz of a log, in the facility's folders, the capture
at a random place among them under a name that does not say what it is. Most
captures are the default phone with its press drawn anew (bench/make_fleet.py),
a quarter are random phones (inspect/tests/random_phones.py, harvested in
their own zone), a few are cut short or no capture at all. Most archives are
.tar.gz; a few are .zip (a support portal's), a few are corrupt (cut short,
or a byte flipped in the compressed data) and a few are bombs (a member of
300 MiB of zeros, past the 256 MiB cap, in a few hundred KB).

OUT/archives/ holds the archives; OUT/bare/ the same captures as bare files,
in the same order (archive-NNNNN.txt), for the tables of one to be compared
with the other's; OUT/fleet.json says what each archive is. --only-tar
leaves out the .zip and bad archives (for figures over like archives alone).
The same seed always gives the same fleet.
"""
import concurrent.futures
import gzip
import io
import json
import os
import random
import subprocess
import sys
import tarfile
import zipfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
sys.path.insert(0, os.path.join(HERE, "..", "inspect", "tests"))
import make_fleet  # noqa: E402
import random_phones  # noqa: E402

MTIME = 1764000000  # fixed, so that an archive's bytes depend on the seed alone
BOMB = 300 << 20
SERVICES = ["kernel", "springboard", "locationd", "wifid", "bluetoothd", "powerd", "mediaserverd",
            "backboardd", "thermalmonitord", "symptomsd"]
WORDS = ["request", "reply", "state", "changed", "timeout", "retry", "battery", "level", "client",
         "connected", "idle", "wake", "sleep", "assertion", "released", "scan", "result", "queue"]


def log_text(rng, size):
    """Log lines about `size` bytes long: a few hundred kinds of line, with
    times and numbers that change, as a phone's logs compress. Blocks of
    256 KB recur, further apart than deflate's 32 KB window looks, so that
    they cost what new text would to decompress and far less to make."""
    kinds = [" ".join(rng.choices(WORDS, k=rng.randint(3, 9))) for _ in range(300)]
    blocks = []
    for _ in range(min(4, size // (256 << 10) + 1)):
        parts, total, t = [], 0, rng.randrange(10**6)
        while total < 256 << 10:
            t += rng.randrange(1, 5000)
            line = "2026-11-%02d %02d:%02d:%02d.%03d %s[%d]: %s %d\n" % (
                1 + t // 86400000 % 28, t // 3600000 % 24, t // 60000 % 60, t // 1000 % 60,
                t % 1000, rng.choice(SERVICES), rng.randrange(40, 900), rng.choice(kinds),
                rng.randrange(10**6))
            parts.append(line)
            total += len(line)
        blocks.append("".join(parts).encode())
    text = b"".join(rng.choice(blocks) for _ in range(size // (256 << 10) + 1))
    return text[: text.rfind(b"\n", 0, size) + 1] or text


def filler(rng, size):
    """The archive's other members: (name, bytes), about `size` bytes in all."""
    members = []
    left = size
    while left > 0:
        roll = rng.random()
        part = min(left, rng.randint(200_000, 3_000_000))
        if roll < 0.45:
            members.append((f"logs/{rng.choice(SERVICES)}-{len(members)}.log", log_text(rng, part)))
        elif roll < 0.8:
            members.append((f"crashes/dump-{len(members)}.bin", rng.randbytes(part)))
        else:
            members.append((f"logs/archived-{len(members)}.log.gz",
                            gzip.compress(log_text(rng, part), compresslevel=6, mtime=0)))
        left -= len(members[-1][1])
    members.append(("summary.json", json.dumps({"members": len(members)}).encode()))
    return members


def capture(rng, kelvra, base, index, work):
    """A capture's bytes and what it is."""
    env = dict(os.environ)
    if rng.random() < 0.75:
        phone, facts = make_fleet.plan(rng, base, index)
        env["TZ"] = "UTC"
    else:
        phone, lines = random_phones.phone(rng)
        facts = {"random": True, "kind": rng.choice(["capture"] * 48 + ["cut", "unreadable"])}
        env.update(line.split("=", 1) for line in lines if line.startswith("TZ="))
    if facts["kind"] == "unreadable":
        return rng.choice([b"", b"upload failed\n", rng.randbytes(500)]), facts
    description = os.path.join(work, f".phone-{index:05d}.json")
    with open(description, "w", encoding="utf-8") as f:
        json.dump(phone, f)
    env["TMXSIM_DEVICE"] = description
    data = subprocess.run([kelvra, "--harvest"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          env=env, check=False).stdout
    os.remove(description)
    if facts["kind"] == "cut":
        data = data[: rng.randrange(len(data) // 4, len(data))]
    return data, facts


def tar_gz(members):
    out = io.BytesIO()
    with gzip.GzipFile(fileobj=out, mode="wb", compresslevel=6, mtime=0) as packed:
        with tarfile.open(fileobj=packed, mode="w", format=tarfile.PAX_FORMAT) as tar:
            for name, data in members:
                info = tarfile.TarInfo(name)
                info.size, info.mtime, info.mode = len(data), MTIME, 0o644
                tar.addfile(info, io.BytesIO(data))
    return out.getvalue()


def zip_file(members):
    out = io.BytesIO()
    with zipfile.ZipFile(out, "w", zipfile.ZIP_DEFLATED, compresslevel=6) as archive:
        for name, data in members:
            archive.writestr(zipfile.ZipInfo(name, (2025, 11, 24, 12, 0, 0)), data,
                             compress_type=zipfile.ZIP_DEFLATED)
    return out.getvalue()


def make_one(args):
    kelvra, base_path, out, seed, index, low, high, only_tar = args
    rng = random.Random(f"{seed}/archive/{index}")
    with open(base_path, encoding="utf-8") as f:
        base = json.load(f)
    data, facts = capture(rng, kelvra, base, index, out)
    members = filler(rng, rng.randint(low << 20, high << 20))
    name = rng.choice(["diagnostics", "logs", "Library/Logs"]) + "/coprocessor/%s" % rng.choice(
        ["harvest.txt", "output-1.log", "zol.out", "button.txt.gz"])
    if name.endswith(".gz"):
        member = gzip.compress(data, compresslevel=6, mtime=0)
    else:
        member = data
    members.insert(rng.randrange(len(members) + 1), (name, member))
    # Every kind in any fleet of a dozen or more, in the same places.
    kind = "tar.gz"
    if only_tar:
        pass
    elif index % 33 == 7:
        kind = "bomb"
        members.insert(0, ("crashes/core.bin", bytes(BOMB)))
    elif index % 25 == 11:
        kind = "corrupt"
    elif index % 12 == 5:
        kind = "zip"
    packed = zip_file(members) if kind == "zip" else tar_gz(members)
    if kind == "corrupt":
        if rng.random() < 0.5:
            packed = packed[: rng.randrange(len(packed) // 3, len(packed) * 2 // 3)]
            facts["fault"] = "cut short"
        else:
            at = rng.randrange(len(packed) // 3, len(packed) * 2 // 3)
            packed = packed[:at] + bytes([packed[at] ^ 0x55]) + packed[at + 1:]
            facts["fault"] = "a byte flipped"
    file_name = f"archive-{index:05d}." + ("zip" if kind == "zip" else "tar.gz")
    with open(os.path.join(out, "archives", file_name), "wb") as f:
        f.write(packed)
    with open(os.path.join(out, "bare", f"archive-{index:05d}.txt"), "wb") as f:
        f.write(data)
    facts.update({"archive": kind, "member": name, "bytes": len(packed),
                  "members": len(members), "uncompressed": sum(len(d) for _, d in members)})
    return file_name, facts


def main():
    parser = make_fleet.fleet_parser(__doc__.splitlines()[0])
    parser.add_argument("--filler-mb", type=int, nargs=2, default=[5, 20], metavar=("LOW", "HIGH"))
    parser.add_argument("--only-tar", action="store_true")
    args = parser.parse_args()
    for folder in ("archives", "bare"):
        os.makedirs(os.path.join(args.out, folder), exist_ok=True)
    low, high = args.filler_mb
    work = [(args.kelvra, args.default_phone, args.out, args.seed, i, low, high, args.only_tar)
            for i in range(args.count)]
    with concurrent.futures.ProcessPoolExecutor(args.jobs) as pool:
        made = dict(pool.map(make_one, work))
    with open(os.path.join(args.out, "fleet.json"), "w", encoding="utf-8") as f:
        json.dump(made, f, indent=1, sort_keys=True)


if __name__ == "__main__":
    main()
