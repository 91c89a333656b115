#!/usr/bin/env python3
"""kelvra-inspect over collection archives: the tree's phones harvested,
packed with filler (text logs, binary files, a nested .gz) into .tar
(plain, gzip, xz, bzip2, zstd when the zstd command is there) and .zip.
The archives' tables are the bare captures' tables but for `member`; every
bad archive (cut short, corrupt, bombs, over the cap, links, devices,
absolute and ".." names, a name that is not UTF-8, an encrypted member)
gives its row and loses no other capture; a single-capture subcommand takes
an archive's one capture, refuses several unless --member picks one; the
--labels sheet reaches the harvests table, and a sheet naming a capture or a
column twice is refused with its line. Every JSON is parsed refusing
duplicate keys.

    archives_test.py KELVRA KELVRA_INSPECT SCHEMA_DIR PHONE...
"""
import bz2
import gzip
import hashlib
import io
import json
import lzma
import os
import random
import shutil
import subprocess
import sys
import tarfile
import tempfile
import zipfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
from outputs_agree import strict as parse  # noqa: E402  (repeated keys refused)
TABLES = ["harvests", "records", "failures", "unreadable"]
SCHEMAS = {"harvests": "harvests", "records": "records_table", "failures": "failures",
           "unreadable": "unreadable"}
ENV = dict(os.environ, TZ="UTC")
failures = []


def fail(what):
    failures.append(what)
    print("FAIL:", what)


def run(args, **kw):
    done = subprocess.run(args, capture_output=True, env=ENV, **kw)
    return done.returncode, done.stdout, done.stderr.decode(errors="replace")


def tables(inspect, out, inputs, *options):
    status, _, said = run([inspect, "tables", "--jobs", "2", "--out", out, *options, *inputs])
    rows = {}
    for t in TABLES:
        with open(os.path.join(out, t + ".jsonl"), encoding="utf-8") as f:
            rows[t] = [parse(line) for line in f]
    return status, rows, said


def validate(schemas, out):
    for t in TABLES:
        status, said, _ = run([sys.executable, os.path.join(HERE, "validate_json.py"),
                               os.path.join(schemas, SCHEMAS[t] + ".schema.json"),
                               os.path.join(out, t + ".jsonl"), "--lines"])
        if status != 0:
            fail(f"{out}/{t} breaks its schema: {said.decode()[:400]}")


# Filler as a collection archive holds it, the same for every run.
rng = random.Random(20261125)
LOG = "".join(f"2026-03-14 09:{i % 60:02d}:00 service[{i}]: ok, {rng.random():.6f}\n"
              for i in range(4000)).encode()
BLOB = bytes(rng.getrandbits(8) for _ in range(1 << 20))
FILLER = [("logs/system.log", LOG), ("logs/panic.bin", BLOB[:65536]),
          ("logs/older.log.gz", gzip.compress(LOG, mtime=0)), ("empty", b"")]


def tar_bytes(members, mode="w"):
    buf = io.BytesIO()
    with tarfile.open(fileobj=buf, mode=mode, format=tarfile.GNU_FORMAT) as t:
        for name, data in members:
            if isinstance(data, tarfile.TarInfo):
                t.addfile(data)
                continue
            info = tarfile.TarInfo(name)
            info.size = len(data)
            t.addfile(info, io.BytesIO(data))
    return buf.getvalue()


def zip_bytes(members, method=zipfile.ZIP_DEFLATED):
    buf = io.BytesIO()
    with zipfile.ZipFile(buf, "w", method) as z:
        for name, data in members:
            z.writestr(name, data)
    return buf.getvalue()


def special(name, kind, target=""):
    info = tarfile.TarInfo(name)
    info.type = kind
    info.linkname = target
    return info


def packings():
    zstd = shutil.which("zstd")
    out = {"tar": lambda m: tar_bytes(m),
           "tar.gz": lambda m: gzip.compress(tar_bytes(m), mtime=0),
           "tar.xz": lambda m: lzma.compress(tar_bytes(m)),
           "tar.bz2": lambda m: bz2.compress(tar_bytes(m)),
           "zip": lambda m: zip_bytes(m),
           "stored.zip": lambda m: zip_bytes(m, zipfile.ZIP_STORED)}
    if zstd:
        out["tar.zst"] = lambda m: subprocess.run([zstd, "-q", "-c"], input=tar_bytes(m),
                                                  stdout=subprocess.PIPE, check=True).stdout
    else:
        print("note: no zstd command; .tar.zst not tried")
    return out


def write(path, data):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as f:
        f.write(data)
    return path


def strip(row):
    return {k: v for k, v in row.items() if k not in ("capture", "member")}


def by_capture(rows):
    """Rows of each (capture, member), without those keys, in order."""
    groups = {}
    for t in TABLES[:3]:
        for row in rows[t]:
            groups.setdefault((row["capture"], row["member"]), {u: [] for u in TABLES[:3]})[t].append(strip(row))
    return groups


def check_fleet(inspect, schemas, work, captures):
    """The archive fleet's tables are the bare captures' tables."""
    bare = [write(os.path.join(work, "bare", f"{i:02d}.txt"), c) for i, c in enumerate(captures)]
    status, bare_rows, said = tables(inspect, os.path.join(work, "bare-out"), bare)
    if status != 0:
        fail(f"bare captures: status {status}: {said}")
    want = {}
    for path, capture in zip(bare, captures):
        group = by_capture(bare_rows)[(path, None)]
        want[hashlib.sha256(capture).hexdigest()] = group
    archives, expected, filler = [], {}, 0
    for k, (suffix, pack) in enumerate(packings().items()):
        capture = captures[k % len(captures)]
        # The capture amid the filler; in one a nested .gz of it, found inside.
        inner = "phone/harvest.txt.gz" if suffix == "tar.gz" else "phone/harvest.txt"
        data = gzip.compress(capture, mtime=0) if inner.endswith(".gz") else capture
        members = FILLER[:2] + [(inner, data)] + FILLER[2:]
        archives.append(write(os.path.join(work, "fleet", f"{k:02d}.{suffix}"), pack(members)))
        expected[(archives[-1], inner)] = hashlib.sha256(capture).hexdigest()
        filler += len(FILLER) - (0 if suffix.endswith("zip") else 0)
    status, rows, said = tables(inspect, os.path.join(work, "fleet-out"), archives)
    validate(schemas, os.path.join(work, "fleet-out"))
    if status != 0 or rows["unreadable"]:
        fail(f"archive fleet: status {status}, unreadable {rows['unreadable']}: {said}")
    if f"{filler} archive members held no capture" not in said:
        fail(f"archive fleet: {filler} filler members not counted: {said}")
    groups = by_capture(rows)
    if set(groups) != set(expected):
        fail(f"archive fleet: captures {sorted(groups)}, not {sorted(expected)}")
    for key, sha in expected.items():
        group = groups.get(key)
        if group is None:
            continue
        if any(r["capture_sha256"] != sha for t in TABLES[:3] for r in group[t]):
            fail(f"{key}: a row with another SHA-256")
        if group != want[sha]:
            fail(f"{key}: its rows are not the bare capture's")
    return archives


def check_bad(inspect, schemas, work, captures):
    """Each bad archive gives its rows and loses no other capture."""
    c0, c1 = captures[0], captures[-1]
    big = BLOB + BLOB[::-1]
    zeros = bytes(80 << 20)
    cut_gz = gzip.compress(tar_bytes([("first.txt", c0), ("blob.bin", big), ("last.txt", c1)]), mtime=0)
    # Two gzip members, the second spoiled in its first block's type: the
    # stream cannot be inflated past the middle of the filler after the
    # first capture (libarchive inflates ahead, so the filler is long).
    whole = tar_bytes([("first.txt", c0), ("blob.bin", big), ("last.txt", c1)])
    split = 512 + (len(c0) + 511) // 512 * 512 + 512 + len(big) // 2
    spoiled = bytearray(gzip.compress(whole[split:], mtime=0))
    spoiled[10] |= 0x06  # block type 3, which deflate does not have
    corrupt = gzip.compress(whole[:split], mtime=0) + bytes(spoiled)
    plain = tar_bytes([("first.txt", c0), ("blob.bin", big), ("last.txt", c1)])
    zipped = bytearray(zip_bytes([("first.txt", c0), ("last.txt", c1)], zipfile.ZIP_STORED))
    last_at = zipped.rfind(c1[:200])
    zipped[last_at + 2000:last_at + 2064] = b"#" * 64  # a CRC that no longer holds
    encrypted = bytearray(zip_bytes([("secret.txt", c1), ("open.txt", c0)]))
    encrypted[6] |= 1  # the first member's local header and central entry: encrypted
    central = encrypted.find(b"PK\x01\x02")
    encrypted[central + 8] |= 1
    odd = b"caf\xe9/harvest.txt"
    cases = [
        # name, bytes, the captures read whole (member: capture), the rows (member, words)
        ("cut.tar.gz", cut_gz[: len(cut_gz) * 7 // 10], {"first.txt": c0},
         [("blob.bin", "the archive is damaged")]),
        ("corrupt.tar.gz", corrupt, {"first.txt": c0}, [("blob.bin", "the archive is damaged")]),
        ("cut.tar", plain[: len(plain) // 2], {"first.txt": c0}, [("blob.bin", "the archive is damaged")]),
        ("crc.zip", bytes(zipped), {"first.txt": c0}, [("last.txt", "cannot be read")]),
        ("bomb.tar.gz", gzip.compress(tar_bytes([("first.txt", c0), ("zeros.bin", zeros), ("last.txt", c1)]), 9),
         {"first.txt": c0}, [("zeros.bin", "decompression bomb")]),
        # A capture that runs on into line ends: a bomb shaped like a capture.
        ("bomb.zip", zip_bytes([("bomb.txt", c0 + b"\n" * (80 << 20)), ("last.txt", c1)]),
         {"last.txt": c1}, [("bomb.txt", "decompression bomb")]),
        ("links.tar", tar_bytes([("sym", special("sym", tarfile.SYMTYPE, "/etc/passwd")),
                                 ("hard", special("hard", tarfile.LNKTYPE, "x.txt")),
                                 ("dev", special("dev", tarfile.CHRTYPE)),
                                 ("fifo", special("fifo", tarfile.FIFOTYPE)),
                                 ("/abs.txt", c0), ("../up.txt", c0), ("a/../../b.txt", c0),
                                 ("x.txt", c1)]),
         {"x.txt": c1},
         [("sym", "a link"), ("hard", "a link"), ("dev", "a device"), ("fifo", "a device"),
          ("/abs.txt", "absolute"), ("../up.txt", "absolute"), ("a/../../b.txt", "absolute")]),
        ("odd-name.tar", tar_bytes([(odd.decode("utf-8", "surrogateescape"), c0)]),
         {odd.decode("latin-1"): c0}, []),
        ("encrypted.zip", bytes(encrypted), {"open.txt": c0}, [("secret.txt", "encrypted")]),
    ]
    paths = [write(os.path.join(work, "bad", name), data) for name, data, _, _ in cases]
    good = write(os.path.join(work, "bad", "zz-good.tar.gz"), gzip.compress(tar_bytes([("ok.txt", c1)])))
    out = os.path.join(work, "bad-out")
    status, rows, said = tables(inspect, out, paths + [good])
    validate(schemas, out)
    if status != 1:
        fail(f"bad archives: status {status}, not 1")
    groups = by_capture(rows)
    for path, (name, _, read, problems) in zip(paths + [good], cases + [("zz-good", b"", {"ok.txt": c1}, [])]):
        # A capture the damage hit is read as far as it goes, besides its row.
        found = {m: g for (c, m), g in groups.items() if c == path and m not in dict(problems)}
        if set(found) != set(read):
            fail(f"{name}: captures {sorted(found)}, not {sorted(read)}")
        for member, capture in read.items():
            harvests = found.get(member, {}).get("harvests", [])
            if not harvests or any(h["capture_sha256"] != hashlib.sha256(capture).hexdigest() or h["damaged"]
                                   for h in harvests):
                fail(f"{name}: {member} not read whole")
        got = [(r["member"], r["fault"]) for r in rows["unreadable"] if r["capture"] == path]
        if len(got) != len(problems) or any(m != w or words not in f for (m, f), (w, words) in zip(got, problems)):
            fail(f"{name}: unreadable rows {got}, not {problems}")
        for member, words in problems:
            if f"{name}: {member}: " not in said:
                fail(f"{name}: {member} not named on standard error")

    # The cap: a capture over it, bare in the archive or inflated from a .gz member.
    capped = write(os.path.join(work, "capped.tar.gz"), gzip.compress(tar_bytes(
        [("big.txt", c0), ("big.txt.gz", gzip.compress(c0)), ("small.txt", c1[:4000])])))
    limit = len(c0) - 1
    status, rows, said = tables(inspect, os.path.join(work, "capped-out"), [capped],
                                "--max-capture-size", str(limit))
    got = sorted((r["member"], "over --max-capture-size" in r["fault"]) for r in rows["unreadable"])
    if status != 1 or got != [("big.txt", True), ("big.txt.gz", True)]:
        fail(f"--max-capture-size {limit}: status {status}, rows {got}")
    if [r["member"] for r in rows["harvests"]] != ["small.txt"] * len(
            [r for r in rows["harvests"] if r["member"] == "small.txt"]) or not rows["harvests"]:
        fail("--max-capture-size: the small capture is lost")


def check_single(inspect, work, captures):
    """One capture taken, several refused unless --member picks one."""
    c0, c1 = captures[0], captures[-1]
    bare = write(os.path.join(work, "single", "bare.txt"), c0)
    one = write(os.path.join(work, "single", "one.tar.xz"), lzma.compress(tar_bytes(FILLER + [("h/c.txt", c0)])))
    two = write(os.path.join(work, "single", "two.zip"), zip_bytes([("a.txt", c0), ("b/c.txt", c1)] + FILLER))
    for command in (["decode"], ["records"]):
        want = run([inspect, *command, bare])
        for args in ([one], ["--member", "a.txt", two]):
            got = run([inspect, *command, *args])
            if got[:2] != want[:2]:
                fail(f"{command} {args}: not the bare capture's output (status {got[0]}: {got[2]})")
        status, _, _ = run([inspect, *command, "--member", "h/c.txt", "-"], input=open(one, "rb").read())
        if status != want[0]:
            fail(f"{command} --member from a pipe: status {status}")
    status, report, _ = run([inspect, "report", bare])
    want = {k: v for k, v in parse(report).items() if k != "input"}
    for args in ([one], ["--member", "a.txt", two]):
        status, report, said = run([inspect, "report", *args])
        got = {k: v for k, v in parse(report).items() if k != "input"} if status == 0 else {}
        if status != 0 or got != want:
            fail(f"report {args}: status {status}, or not the bare capture's report: {said}")
    for command in (["summary"], ["trace"], ["timeline"], ["phone"], ["report"], ["decode"], ["records"]):
        status, out, said = run([inspect, *command, two])
        if status != 2 or out or "a.txt" not in said or "b/c.txt" not in said:
            fail(f"{command} of two captures: status {status}, said {said!r}")
    status, _, said = run([inspect, "report", "--member", "nowhere.txt", two])
    if status != 2 or "nowhere.txt" not in said:
        fail(f"--member of no member: status {status}: {said}")
    with open(one, "rb") as f:
        status, _, said = run([inspect, "report", "-"], stdin=f)
    if status != 0:
        fail(f"report of an archive on standard input (a file): status {status}: {said}")
    status, _, said = run(["bash", "-c", f'cat "{one}" | "{inspect}" report -'])
    if status != 2 or "--member" not in said:
        fail(f"report of an archive on a pipe: status {status}: {said}")
    status, _, said = run([inspect, "compare", "--member-b", "a.txt", bare, two])
    if status != 0:
        fail(f"compare with --member-b: status {status}: {said}")


def check_labels(inspect, schemas, work, captures):
    c0, c1 = captures[0], captures[-1]
    a = write(os.path.join(work, "labels", "a.txt"), c0)
    b = write(os.path.join(work, "labels", "b.tar.gz"), gzip.compress(tar_bytes([("in/b.txt", c1)])))
    c = write(os.path.join(work, "labels", "c.txt"), c1 + c1)
    sheet = write(os.path.join(work, "labels.csv"), (
        'capture,build,model,zone\r\n'
        f'{a},B2,"Model ""X"", rev\n2",Asia/Tokyo\r\n'
        f'{b},B1,plain,\r\n').encode())
    out = os.path.join(work, "labels-out")
    status, rows, said = tables(inspect, out, [a, b, c], "--labels", sheet)
    validate(schemas, out)
    want = {a: {"build": "B2", "model": 'Model "X", rev\n2', "zone": "Asia/Tokyo"},
            b: {"build": "B1", "model": "plain", "zone": ""}, c: {}}
    got = {r["capture"]: r["labels"] for r in rows["harvests"]}
    if status != 0 or got != want:
        fail(f"--labels by path: status {status}, labels {got}: {said}")
    sha = hashlib.sha256(c1).hexdigest().upper()
    sheet = write(os.path.join(work, "by-sha.csv"), f"capture_sha256,fleet\n{sha},beta\n".encode())
    status, rows, said = tables(inspect, os.path.join(work, "sha-out"), [a, b], "--labels", sheet)
    got = {r["capture"]: r["labels"] for r in rows["harvests"]}
    if status != 0 or got != {a: {}, b: {"fleet": "beta"}}:
        fail(f"--labels by SHA-256: status {status}, labels {got}: {said}")
    # Refused with the line: a quoted field runs over a line before the second naming.
    for name, text, line in [
            ("twice", f'capture,note\n{a},"one\nline more"\n{b},x\n{a},again\n', 5),
            ("column twice", "capture,build,build\n", 1),
            ("sha twice", f"capture_sha256,x\n{sha.lower()},1\n\n{sha},2\n", 4),
            ("short row", f"capture,x,y\n{a},1\n", 2),
            ("first column", "path,x\n", 1)]:
        path = write(os.path.join(work, name + ".csv"), text.encode())
        status, _, said = run([inspect, "tables", "--out", os.path.join(work, "refused"), a, "--labels", path])
        if status != 2 or f"line {line}:" not in said:
            fail(f"--labels {name}: status {status}, not refused on line {line}: {said}")


def main():
    kelvra, inspect, schemas = sys.argv[1:4]
    captures = []
    for phone in sys.argv[4:]:
        capture = subprocess.run([kelvra, "--harvest"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                 env=dict(ENV, TMXSIM_DEVICE=phone)).stdout
        if b"{  'category':" in capture:
            captures.append(capture)
    if len(captures) < 2:
        print("FAIL: fewer than two phones print profile records")
        sys.exit(1)
    with tempfile.TemporaryDirectory() as work:
        check_fleet(inspect, schemas, work, captures)
        check_bad(inspect, schemas, work, captures)
        check_single(inspect, work, captures)
        check_labels(inspect, schemas, work, captures)
    print(f"{len(captures)} captures; {len(failures)} failures")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
