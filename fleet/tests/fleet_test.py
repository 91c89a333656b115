#!/usr/bin/python3
"""Tests of kelvra-fleet against one `kelvra-inspect tables` run.

    fleet_test.py CASE --fleet PATH --inspect PATH --devices DIR --work DIR

CASE is dataset, worker_killed, loopback_only, tls_scheduler or refusals.
--inspect is the built kelvra-inspect. Exit status 0 passed, 1 failed."""

import argparse
import collections
import errno
import gzip
import json
import os
import pty
import select
import shutil
import signal
import socket
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
SCHEMAS = os.path.join(HERE, "..", "..", "inspect", "schema")
sys.path.insert(0, os.path.join(HERE, "..", "..", "inspect", "tests"))
from check_manifest import manifest_problems  # noqa: E402
TABLES = ("harvests", "records", "failures", "unreadable")
# Addresses of this test's own network namespace, never of a real host.
OTHER_V4 = "198.51.100.7"
OTHER_V6 = "2001:db8::7"


class Failed(Exception):
    pass


def check(condition, what):
    if not condition:
        raise Failed(what)


def make_captures(devices, root):
    """A tree of captures: whole ones, a gzipped one, one cut short inside a
    line and one that is no capture at all."""
    default = open(os.path.join(devices, "default.harvest.txt"), "rb").read()
    faulty = open(os.path.join(devices, "faulty.harvest.txt"), "rb").read()
    files = {
        "site-a/phone-1.txt": default,
        "site-a/phone-2.txt": faulty,
        "site-a/phone-3.txt": default + faulty,
        "site-b/phone-4.txt.gz": gzip.compress(default, mtime=0),
        "site-b/phone-5.txt": faulty,
        "site-b/nested/phone-6.txt": default[:len(default) // 2 + 7],
        "site-b/nested/phone-7.txt": b"\x00\x01 no capture here\n",
        "site-c/phone-8.txt": faulty + default,
    }
    for name, data in files.items():
        path = os.path.join(root, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as stream:
            stream.write(data)
    return len(files)


class Env:
    def __init__(self, options):
        self.fleet = options.fleet
        self.inspect = options.inspect
        self.work = options.work
        shutil.rmtree(self.work, ignore_errors=True)
        os.makedirs(self.work)
        self.captures = os.path.join(self.work, "captures")
        self.count = make_captures(options.devices, self.captures)
        # Same zone for every run, whatever the machine's; Dask reads no
        # configuration of the machine's.
        self.env = dict(os.environ, TZ="UTC", LC_ALL="C.UTF-8",
                        DASK_CONFIG=os.path.join(self.work, "dask-config"))
        for name in list(self.env):
            if name.startswith("DASK_") and name != "DASK_CONFIG":
                del self.env[name]
        os.makedirs(self.env["DASK_CONFIG"])

    def run(self, args, extra_env=None, **kwargs):
        env = dict(self.env, **(extra_env or {}))
        return subprocess.run(args, cwd=self.work, env=env, capture_output=True,
                              text=True, **kwargs)

    def fleet_run(self, out, *args, extra_env=None, inspect=True):
        command = [self.fleet, "--out", out]
        if inspect:
            command += ["--inspect", self.inspect]
        return self.run(command + list(args), extra_env=extra_env, timeout=120)

    def fleet_start(self, out, *args, extra_env=None, inspect=None):
        env = dict(self.env, **(extra_env or {}))
        return subprocess.Popen([self.fleet, "--out", out, "--inspect", inspect or self.inspect]
                                + list(args), cwd=self.work, env=env,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def stalling(self, shard, marker):
        """A kelvra-inspect that holds the shard's first attempt (stalling_reader)."""
        path = os.path.join(self.work, "stalling-inspect-%d" % shard)
        with open(path, "w") as stream:
            stream.write("#!/bin/sh\nexec %s %s %s %d %s \"$@\"\n" % (
                sys.executable, os.path.join(HERE, "stalling_reader"), self.inspect, shard,
                marker))
        os.chmod(path, 0o755)
        return path

    def single(self, out, *args, below=""):
        """One tables run over the captures: what the dataset must hold (in
        the folder `below` of its directory)."""
        done = self.run([self.inspect, "tables", "--out", out, "--no-progress"]
                        + list(args) + ["captures"])
        check(done.returncode in (0, 1), "tables exited %d: %s" % (done.returncode, done.stderr))
        return done.returncode, {table: read_table(os.path.join(self.work, out, below), table)
                                 for table in TABLES}


def read_table(directory, table):
    """The rows of one table file, whole lines of JSON objects only."""
    plain = os.path.join(directory, table + ".jsonl")
    if os.path.exists(plain + ".gz"):
        with gzip.open(plain + ".gz", "rb") as stream:
            data = stream.read()
    else:
        with open(plain, "rb") as stream:
            data = stream.read()
    check(data == b"" or data.endswith(b"\n"), "%s: the last row is cut" % plain)
    rows = []
    for number, line in enumerate(data.decode("utf-8").splitlines(), 1):
        row = json.loads(line)
        check(isinstance(row, dict) and "capture" in row,
              "%s: line %d is not a row of a capture" % (plain, number))
        rows.append(row)
    return rows


def read_dataset(directory, gzipped=False, numbered=True):
    """Every partition's rows, table by table, in partition order; checks
    that nothing else that a reader's part-* glob would take is there."""
    names = sorted(os.listdir(directory))
    hidden = [name for name in names if name.startswith(".")]
    check(not hidden, "%s: left behind %s" % (directory, hidden))
    parts = [name for name in names if name.startswith("part-")]
    check(not numbered or parts == ["part-%05d" % index for index in range(len(parts))],
          "%s: partitions are not numbered from part-00000 on: %s" % (directory, names))
    rows = {table: [] for table in TABLES}
    for part in parts:
        files = sorted(os.listdir(os.path.join(directory, part)))
        wanted = sorted(table + (".jsonl.gz" if gzipped else ".jsonl") for table in TABLES)
        check(files == wanted, "%s/%s holds %s" % (directory, part, files))
        for table in TABLES:
            rows[table] += read_table(os.path.join(directory, part), table)
    return parts, rows


def check_manifest(directory, single, not_read=0):
    """The dataset's one manifest agrees with its files, and counts the
    inputs as the single run's manifest does, less what was not read."""
    manifest, problems = manifest_problems(directory, SCHEMAS)
    check(not problems, "%s: %s" % (directory, "; ".join(problems[:5])))
    with open(os.path.join(single, "manifest.json"), encoding="utf-8") as stream:
        expected = json.load(stream)
    check(manifest["tool"] == "kelvra-fleet" and manifest["version"] == expected["version"],
          "%s: made by %s %s" % (directory, manifest["tool"], manifest["version"]))
    check(manifest["complete"] == (not_read == 0) and manifest["inputs"]["not_read"] == not_read,
          "%s: complete %s, %d inputs not read" % (directory, manifest["complete"],
                                                   manifest["inputs"]["not_read"]))
    check(manifest["inputs"]["listed"] == expected["inputs"]["listed"],
          "%s: %d inputs listed, not %d" % (directory, manifest["inputs"]["listed"],
                                           expected["inputs"]["listed"]))
    if not not_read:
        check(manifest["inputs"] == expected["inputs"], "%s: inputs %s, one run's %s" % (
            directory, manifest["inputs"], expected["inputs"]))
    return manifest


def multiset(rows):
    return collections.Counter(json.dumps(row, sort_keys=True) for row in rows)


def compare(dataset, expected, what):
    """Same rows per table, none twice nor missing; and, partitions taken in
    order, in the same order as one run."""
    for table in TABLES:
        got, want = multiset(dataset[table]), multiset(expected[table])
        missing, extra = want - got, got - want
        if missing or extra:
            raise Failed("%s: %s.jsonl: %d rows missing, %d extra (first: %s)" % (
                what, table, sum(missing.values()), sum(extra.values()),
                next(iter(missing or extra))[:200]))
        check(dataset[table] == expected[table], "%s: %s.jsonl: rows out of order" % (what, table))


def counts_line(rows, shards, run_again=0):
    """The closing counts: rows per table, shards run and run again."""
    return "".join("%s %d\n" % (table, len(rows[table])) for table in TABLES) + \
        "shards %d\nshards_run_again %d\n" % (shards, run_again)


def only_reports(stderr, what):
    """Standard error holds single lines, none of them a traceback."""
    check("Traceback" not in stderr and "distributed." not in stderr,
          "%s: Dask's own output reached standard error:\n%s" % (what, stderr))


# --- the cases ---------------------------------------------------------------

def case_dataset(env):
    status, expected = env.single("single")
    if status == 0:
        print("note: tables read even the cut capture whole; exit 1 is not tried")
    check(expected["harvests"] and expected["records"] and expected["failures"],
          "the captures gave too few rows to compare: %s" % {
              table: len(rows) for table, rows in expected.items()})

    done = env.fleet_run("fleet", "--workers", "2", "--shard-size", "3", "captures")
    check(done.returncode == status, "exit %d, not %d: %s" % (done.returncode, status, done.stderr))
    only_reports(done.stderr, "plain run")
    check(" shards, " not in done.stderr, "progress away from a terminal:\n" + done.stderr)
    parts, rows = read_dataset(os.path.join(env.work, "fleet"))
    check(len(parts) == 3, "8 captures in shards of 3 make %d partitions" % len(parts))
    compare(rows, expected, "plain run")
    check(done.stdout == counts_line(expected, 3), "the counts printed:\n" + done.stdout)
    check_manifest(os.path.join(env.work, "fleet"), os.path.join(env.work, "single"))

    # Compressed, with inputs from a list on standard input and the default
    # shard size.
    status, expected = env.single("single-gz", "--gzip")
    listing = env.run([env.inspect, "tables", "--list", "--out", "unused", "captures"]).stdout
    shutil.rmtree(os.path.join(env.work, "unused"), ignore_errors=True)
    done = subprocess.run([env.fleet, "--out", "fleet-gz", "--inspect", env.inspect, "--gzip",
                           "--workers", "2", "--files-from", "-"], input=listing,
                          cwd=env.work, env=env.env, capture_output=True, text=True, timeout=120)
    check(done.returncode == status, "gzip: exit %d, not %d: %s" % (
        done.returncode, status, done.stderr))
    compare(read_dataset(os.path.join(env.work, "fleet-gz"), gzipped=True)[1], expected, "gzip")
    check_manifest(os.path.join(env.work, "fleet-gz"), os.path.join(env.work, "single-gz"))
    # 8 captures, 2 workers of one thread: shards of one capture.
    check(done.stdout == counts_line(expected, 8), "gzip: the counts printed:\n" + done.stdout)

    # In folders by a label: LABEL=VALUE/part-NNNNN/, the same rows; no
    # capture has the label yet, so all are in Hive's folder for none.
    status, expected = env.single("single-by", "--partition-by", "build",
                                  below="build=__HIVE_DEFAULT_PARTITION__")
    done = env.fleet_run("fleet-by", "--workers", "2", "--shard-size", "3",
                         "--partition-by", "build", "captures")
    check(done.returncode == status, "--partition-by: exit %d, not %d: %s" % (
        done.returncode, status, done.stderr))
    folder = os.path.join(env.work, "fleet-by", "build=__HIVE_DEFAULT_PARTITION__")
    parts, rows = read_dataset(folder)
    check(len(parts) == 3, "--partition-by: %d partitions, not 3" % len(parts))
    compare(rows, expected, "--partition-by")
    manifest = check_manifest(os.path.join(env.work, "fleet-by"), os.path.join(env.work, "single-by"))
    check(manifest["partition_by"] == "build", "--partition-by: the manifest says %s"
          % manifest["partition_by"])
    check(sorted(os.listdir(os.path.join(env.work, "fleet-by"))) ==
          ["build=__HIVE_DEFAULT_PARTITION__", "manifest.json"],
          "--partition-by: %s" % os.listdir(os.path.join(env.work, "fleet-by")))

    # Labelled from a sheet, zones and all: each capture in its build's
    # folder, the harvests carrying the sheet's labels, as one tables run.
    listed = env.run([env.inspect, "tables", "--list", "captures"]).stdout.split()
    with open(os.path.join(env.work, "builds.csv"), "w", encoding="utf-8") as sheet:
        sheet.write("capture,build,zone\n")
        for i, path in enumerate(listed):
            sheet.write("%s,%s,%s\n" % (path, "AB"[i % 2], ("UTC", "Asia/Tokyo")[i % 2]))
    labelled = ("--labels", "builds.csv", "--partition-by", "build")
    done = env.fleet_run("fleet-labels", "--workers", "2", "--shard-size", "3", *labelled, "captures")
    for build in "AB":
        status, expected = env.single("single-labels", *labelled, below="build=" + build)
        check(done.returncode == status, "--labels: exit %d, not %d: %s" % (
            done.returncode, status, done.stderr))
        compare(read_dataset(os.path.join(env.work, "fleet-labels", "build=" + build))[1], expected,
                "--labels, build " + build)
        check(all(row["labels"]["build"] == build for row in expected["harvests"]),
              "--labels: a harvest outside its build's folder")
    done = env.fleet_run("fleet-no-zone", "--zone", "Mars/Olympus", "captures")
    check(done.returncode == 2 and not os.path.exists(os.path.join(env.work, "fleet-no-zone", "manifest.json")),
          "an unknown zone: exit %d: %s" % (done.returncode, done.stderr))

    # At a terminal, progress on standard error.
    os.makedirs(os.path.join(env.work, "one"))
    shutil.copy(os.path.join(env.captures, "site-a", "phone-1.txt"),
                os.path.join(env.work, "one"))
    seen = at_terminal(env, [env.fleet, "--out", "fleet-tty", "--inspect", env.inspect,
                             "--workers", "1", "one"])
    check("1 of 1 shards, 1 of 1 captures" in seen, "no progress at a terminal: %r" % seen)

    # No capture at all: one partition of empty tables, for readers that glob.
    os.makedirs(os.path.join(env.work, "none"))
    done = env.fleet_run("fleet-none", "none")
    check(done.returncode == 0 and done.stdout == counts_line(dict.fromkeys(TABLES, []), 0),
          "no captures: exit %d: %s%s" % (done.returncode, done.stdout, done.stderr))
    parts, rows = read_dataset(os.path.join(env.work, "fleet-none"))
    check(parts == ["part-00000"] and not any(rows.values()), "no captures: %s" % parts)
    manifest, problems = manifest_problems(os.path.join(env.work, "fleet-none"), SCHEMAS)
    check(not problems and manifest["complete"] and manifest["inputs"]["listed"] == 0,
          "no captures: the manifest: %s" % problems)


def at_terminal(env, command):
    leader, follower = pty.openpty()
    process = subprocess.Popen(command, cwd=env.work, env=env.env, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=follower)
    os.close(follower)
    seen = b""
    deadline = time.monotonic() + 120
    while time.monotonic() < deadline:
        ready, _, _ = select.select([leader], [], [], 1)
        if ready:
            try:
                block = os.read(leader, 4096)
            except OSError:
                break
            if not block:
                break
            seen += block
        elif process.poll() is not None:
            break
    os.close(leader)
    check(process.wait(timeout=60) == 0, "at a terminal: exit %d" % process.returncode)
    return seen.decode("utf-8", "replace")


def wait_for_marker(marker, process):
    deadline = time.monotonic() + 90
    while time.monotonic() < deadline:
        try:
            text = open(marker).read()
        except FileNotFoundError:
            text = ""
        if text.endswith("\n"):
            return int(text)
        if process.poll() is not None:
            raise Failed("kelvra-fleet ended before the stalled shard: %s" % process.stderr.read())
        time.sleep(0.05)
    process.kill()
    raise Failed("the stalled shard never started")


def case_worker_killed(env):
    status, expected = env.single("single")
    marker = os.path.join(env.work, "stalled")
    out = os.path.join(env.work, "fleet")
    process = env.fleet_start("fleet", "--workers", "2", "--shard-size", "2", "captures",
                              inspect=env.stalling(1, marker))
    worker = wait_for_marker(marker, process)
    check(worker != process.pid, "the shard ran in kelvra-fleet itself, not in a worker")
    # The shard's rows are written, under a name no reader takes, and not yet
    # in place: the worst moment to die.
    hidden = [name for name in os.listdir(out) if name.startswith(".part-00001.")]
    check(len(hidden) == 1, "no partition being written: %s" % os.listdir(out))
    check(read_table(os.path.join(out, hidden[0]), "harvests"), "the stalled shard wrote no row")
    os.kill(worker, signal.SIGKILL)
    stdout, stderr = process.communicate(timeout=120)
    check(process.returncode == status, "exit %d, not %d: %s" % (
        process.returncode, status, stderr))
    only_reports(stderr, "killed worker")
    check(not os.path.exists("/proc/%d" % worker) or
          open("/proc/%d/stat" % worker).read().split()[2] == "Z", "the worker was not killed")
    parts, rows = read_dataset(out)
    check(len(parts) == 4, "4 partitions expected, not %s" % parts)
    compare(rows, expected, "killed worker")
    check_manifest(out, os.path.join(env.work, "single"))
    check(stdout == counts_line(expected, 4, 1), "the counts printed:\n" + stdout)
    again = [line for line in stderr.splitlines() if "ran again" in line]
    check(len(again) == 1 and again[0].startswith("kelvra-fleet: part-00001 (2 captures from ")
          and "ran again: the worker tcp://127.0.0.1:" in again[0]
          and again[0].endswith(" was lost while it held the shard"),
          "the shard run again is not named:\n" + stderr)

    # With no failure allowed, the shard fails for good: exit 2, the shard
    # named, the other partitions whole and none half-written.
    os.unlink(marker)
    process = env.fleet_start("fleet-0", "--workers", "2", "--shard-size", "2", "captures",
                              inspect=env.stalling(1, marker),
                              extra_env={"DASK_DISTRIBUTED__SCHEDULER__ALLOWED_FAILURES": "0"})
    os.kill(wait_for_marker(marker, process), signal.SIGKILL)
    stdout, stderr = process.communicate(timeout=120)
    check(process.returncode == 2, "no failure allowed: exit %d: %s" % (
        process.returncode, stderr))
    named = [line for line in stderr.splitlines() if line.startswith("kelvra-fleet: part-00001 ")]
    check(len(named) == 1 and "failed for good" in named[0], "the lost shard is not named:\n"
          + stderr)
    check(stdout.endswith("shards 4\nshards_run_again 0\n"),
          "a shard that failed for good counted as run again:\n" + stdout)
    log = [line for line in stderr.splitlines() if line.startswith("kelvra-fleet: Dask's log")]
    for line in log:
        os.unlink(line.rsplit(": ", 1)[1])
    out = os.path.join(env.work, "fleet-0")
    parts, rows = read_dataset(out, numbered=False)
    check(parts == ["part-00000", "part-00002", "part-00003"],
          "no failure allowed: partitions %s" % parts)
    listing = env.run([env.inspect, "tables", "--list", "--out", "unused", "captures"]).stdout
    lost = set(listing.splitlines()[2:4])
    kept = {table: [row for row in expected[table] if row["capture"] not in lost]
            for table in TABLES}
    compare(rows, kept, "no failure allowed")
    check_manifest(out, os.path.join(env.work, "single"), not_read=len(lost))


def listening(tables=("tcp", "tcp6")):
    """(address, port) of every listening TCP socket of this namespace, and
    every bound UDP one."""
    found = []
    for table in tables + ("udp", "udp6"):
        try:
            lines = open("/proc/net/" + table).read().splitlines()[1:]
        except FileNotFoundError:
            continue
        for line in lines:
            fields = line.split()
            local, state = fields[1], fields[3]
            if table.startswith("tcp") and state != "0A":
                continue
            address, port = local.split(":")
            found.append((table, decode_address(address), int(port, 16)))
    return found


def decode_address(text):
    raw = bytes.fromhex(text)
    # /proc prints each 32-bit word in the host's order.
    words = b"".join(raw[i:i + 4][::-1] for i in range(0, len(raw), 4)) \
        if sys.byteorder == "little" else raw
    family = socket.AF_INET if len(raw) == 4 else socket.AF_INET6
    return socket.inet_ntop(family, words)


def is_loopback(address):
    return address.startswith("127.") or address in ("::1", "::ffff:127.0.0.1")


def connects(address, port):
    family = socket.AF_INET6 if ":" in address else socket.AF_INET
    with socket.socket(family, socket.SOCK_STREAM) as probe:
        probe.settimeout(5)
        try:
            probe.connect((address, port))
            return True
        except OSError as error:
            if error.errno not in (errno.ECONNREFUSED, errno.EHOSTUNREACH, errno.ENETUNREACH,
                                   errno.EADDRNOTAVAIL):
                raise Failed("connecting to %s port %d: %s" % (address, port, error))
            return False


def in_own_namespace():
    return os.environ.get("KELVRA_FLEET_TEST_NETNS") == "1"


def enter_namespace(argv):
    """Runs this test again in a network namespace of its own, where the
    machine's other address is one the test gives itself. Returns its exit
    status, or None where no namespace can be made here."""
    if in_own_namespace():
        return None
    search = os.environ.get("PATH", "") + ":/usr/sbin:/sbin"
    unshare = shutil.which("unshare", path=search)
    ip = shutil.which("ip", path=search)
    if not unshare or not ip:
        print("note: no unshare or ip here: no network namespace")
        return None
    command = [unshare, "--net"] + ([] if os.geteuid() == 0 else ["--map-root-user"])
    trial = subprocess.run(command + [ip, "link", "set", "lo", "up"], capture_output=True,
                           text=True)
    if trial.returncode != 0:
        print("note: no network namespace here: %s" % trial.stderr.strip())
        return None
    setup = ("set -e; {ip} link set lo up; {ip} addr add {v4}/32 dev lo; "
             "{ip} -6 addr add {v6}/128 dev lo nodad 2>/dev/null || true; exec \"$@\"").format(
                 ip=ip, v4=OTHER_V4, v6=OTHER_V6)
    return subprocess.call(command + ["sh", "-c", setup, "sh", sys.executable,
                                      os.path.abspath(__file__)] + argv,
                           env=dict(os.environ, KELVRA_FLEET_TEST_NETNS="1"))


def has_other_v6():
    try:
        table = open("/proc/net/if_inet6").read()
    except FileNotFoundError:
        return False
    return socket.inet_pton(socket.AF_INET6, OTHER_V6).hex() in table


def process_tree(root):
    """root and its descendants, from /proc."""
    parents = {}
    for name in os.listdir("/proc"):
        if name.isdigit():
            try:
                stat = open("/proc/%s/stat" % name).read()
            except OSError:
                continue
            parents[int(name)] = int(stat.rsplit(")", 1)[1].split()[1])
    tree = {root}
    grew = True
    while grew:
        grew = False
        for pid, parent in parents.items():
            if parent in tree and pid not in tree:
                tree.add(pid)
                grew = True
    return tree


def sockets_of(pids):
    inodes = set()
    for pid in pids:
        try:
            for fd in os.listdir("/proc/%d/fd" % pid):
                target = os.readlink("/proc/%d/fd/%s" % (pid, fd))
                if target.startswith("socket:["):
                    inodes.add(target[8:-1])
        except OSError:
            continue
    return inodes


def listening_of(pids):
    """Listening sockets of those processes only, where the namespace is shared."""
    inodes = sockets_of(pids)
    found = []
    for table in ("tcp", "tcp6", "udp", "udp6"):
        for line in open("/proc/net/" + table).read().splitlines()[1:]:
            fields = line.split()
            if fields[9] not in inodes or (table.startswith("tcp") and fields[3] != "0A"):
                continue
            address, port = fields[1].split(":")
            found.append((table, decode_address(address), int(port, 16)))
    return found


def case_loopback_only(env, own_namespace):
    status, _ = env.single("single")
    marker = os.path.join(env.work, "stalled")
    process = env.fleet_start("fleet", "--workers", "2", "--shard-size", "2", "captures",
                              inspect=env.stalling(0, marker))
    try:
        wait_for_marker(marker, process)
        # Scheduler, two nannies, two workers, and the diagnostics servers of
        # the scheduler and of each worker.
        found = listening() if own_namespace else listening_of(process_tree(process.pid))
        tcp = [entry for entry in found if entry[0].startswith("tcp")]
        check(len(tcp) >= 7, "only %d listening sockets found: %s" % (len(tcp), found))
        exposed = [entry for entry in found if not is_loopback(entry[1])]
        check(not exposed, "listening beyond loopback: %s" % exposed)
        for _, address, port in tcp:
            check(connects("127.0.0.1", port), "port %d does not answer on loopback" % port)
            if own_namespace:
                check(not connects(OTHER_V4, port), "port %d answers on %s" % (port, OTHER_V4))
                if has_other_v6():
                    check(not connects(OTHER_V6, port), "port %d answers on %s" % (
                        port, OTHER_V6))
        if not own_namespace:
            print("note: checked the bound addresses only; no other address to try here")
        tried = [OTHER_V4] + ([OTHER_V6] if has_other_v6() else []) if own_namespace else []
        print("%d listening sockets, all on loopback%s: %s" % (
            len(tcp), "; none answers on " + " or ".join(tried) if tried else "",
            ", ".join("%s:%d" % (address, port) for _, address, port in tcp)))
    finally:
        try:
            os.unlink(marker)
        except FileNotFoundError:
            pass
    stdout, stderr = process.communicate(timeout=120)
    check(process.returncode == status, "exit %d: %s" % (process.returncode, stderr))


def openssl(*args, cwd):
    subprocess.run(["openssl"] + list(args), cwd=cwd, check=True, capture_output=True)


def make_certificates(directory):
    """A CA of the test's, a certificate for the cluster and one for the
    client, and a client certificate of another CA."""
    os.makedirs(directory)
    key = ["-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes"]
    for ca in ("ca", "other-ca"):
        openssl("req", "-x509", *key, "-keyout", ca + ".key", "-out", ca + ".pem",
                "-days", "30", "-subj", "/CN=kelvra test " + ca, cwd=directory)
    for name, ca in (("cluster", "ca"), ("client", "ca"), ("stranger", "other-ca")):
        openssl("req", *key, "-keyout", name + ".key", "-out", name + ".csr",
                "-subj", "/CN=kelvra test " + name, cwd=directory)
        openssl("x509", "-req", "-in", name + ".csr", "-CA", ca + ".pem", "-CAkey", ca + ".key",
                "-CAcreateserial", "-out", name + ".pem", "-days", "30", cwd=directory)


def case_tls_scheduler(env):
    check(shutil.which("openssl"), "openssl is missing (tools/install-deps --tests brings it)")
    certificates = os.path.join(env.work, "tls")
    make_certificates(certificates)
    tls = lambda name: ["--tls-ca-file", os.path.join(certificates, "ca.pem"),
                        "--tls-cert", os.path.join(certificates, name + ".pem"),
                        "--tls-key", os.path.join(certificates, name + ".key")]
    scheduler_file = os.path.join(env.work, "scheduler.json")
    started = []
    try:
        started.append(subprocess.Popen(
            ["dask-scheduler", "--host", "127.0.0.1", "--protocol", "tls", "--port", "0",
             "--dashboard-address", "127.0.0.1:0", "--scheduler-file", scheduler_file]
            + tls("cluster"), cwd=env.work, env=env.env, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, start_new_session=True))
        deadline = time.monotonic() + 60
        while not os.path.exists(scheduler_file) and time.monotonic() < deadline:
            time.sleep(0.1)
        time.sleep(0.2)
        address = json.load(open(scheduler_file))["address"]
        check(address.startswith("tls://127.0.0.1:"), "the scheduler is at %s" % address)
        started.append(subprocess.Popen(
            ["dask-worker", address, "--host", "127.0.0.1", "--nworkers", "2", "--nthreads", "1",
             "--dashboard-address", "127.0.0.1:0"] + tls("cluster"), cwd=env.work, env=env.env,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True))

        status, expected = env.single("single")
        done = env.fleet_run("fleet", "--scheduler", address, "--shard-size", "2", "captures",
                             *tls("client"))
        check(done.returncode == status, "exit %d, not %d: %s" % (
            done.returncode, status, done.stderr))
        only_reports(done.stderr, "TLS")
        compare(read_dataset(os.path.join(env.work, "fleet"))[1], expected, "TLS")
        check(done.stdout == counts_line(expected, 4), "the counts printed:\n" + done.stdout)

        # Certificates from Dask's configuration instead of options.
        config = os.path.join(env.env["DASK_CONFIG"], "tls.yaml")
        with open(config, "w") as stream:
            stream.write("distributed:\n  comm:\n    tls:\n"
                         "      ca-file: %s\n      client:\n        cert: %s\n"
                         "        key: %s\n" % tuple(tls("client")[1::2]))
        done = env.fleet_run("fleet-config", "--scheduler", address, "captures")
        check(done.returncode == status, "from Dask's configuration: exit %d: %s" % (
            done.returncode, done.stderr))
        compare(read_dataset(os.path.join(env.work, "fleet-config"))[1], expected,
                "from Dask's configuration")
        os.unlink(config)

        # A certificate of another CA is turned away.
        done = env.fleet_run("fleet-stranger", "--scheduler", address, "captures",
                             *(tls("stranger")[:2] + ["--tls-cert",
                                                      os.path.join(certificates, "stranger.pem"),
                                                      "--tls-key",
                                                      os.path.join(certificates, "stranger.key")]),
                             extra_env={"DASK_DISTRIBUTED__COMM__TIMEOUTS__CONNECT": "3s"})
        check(done.returncode == 2 and "cannot reach the scheduler" in done.stderr
              and len(done.stderr.splitlines()) == 1,
              "another CA's certificate: exit %d: %s" % (done.returncode, done.stderr))

        # No certificate at all.
        done = env.fleet_run("fleet-none", "--scheduler", address, "captures")
        check(done.returncode == 2 and "--tls-ca-file" in done.stderr,
              "no certificate: exit %d: %s" % (done.returncode, done.stderr))
    finally:
        for process in started:
            try:
                os.killpg(process.pid, signal.SIGTERM)
            except ProcessLookupError:
                pass
        for process in started:
            try:
                process.wait(timeout=15)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
    return 0


def case_refusals(env):
    def refused(args, words, out="refused", inspect=True, extra_env=None):
        done = env.fleet_run(out, *args, inspect=inspect, extra_env=extra_env)
        lines = done.stderr.splitlines()
        check(done.returncode == 2 and len(lines) == 1 and lines[0].startswith("kelvra-fleet: ")
              and all(word in lines[0] for word in words) and not done.stdout,
              "%s: exit %d, stdout %r, stderr %r" % (args, done.returncode, done.stdout,
                                                     done.stderr))

    refused(["--shard-size", "0", "captures"], ["--shard-size"])
    refused(["--workers", "x", "captures"], ["--workers"])
    refused(["--scheduler", "tls://127.0.0.1:1", "--workers", "2", "captures"], ["--workers"])
    refused(["--scheduler", "tcp://127.0.0.1:1", "--tls-cert", "c.pem", "captures"],
            ["--tls-cert", "tls://"])
    refused(["--tls-ca-file", "ca.pem", "captures"], ["--tls-ca-file"])
    refused(["--scheduler", "udp://127.0.0.1:1", "captures"], ["udp://127.0.0.1:1"])
    # Refused before anything else happens: were it not, the missing
    # kelvra-inspect would stop the run before any connection.
    refused(["--scheduler", "tcp://%s:8786" % OTHER_V4, "captures"], ["--insecure", OTHER_V4],
            inspect=False, extra_env={"PATH": "/nonexistent"})
    refused(["-"], ["standard input"])
    refused([], ["no input"])
    refused(["--inspect", os.path.join(env.work, "nowhere"), "captures"], ["nowhere"],
            inspect=False)
    refused(["--files-from", "no-such-list"], ["no-such-list"])
    check(not os.path.exists(os.path.join(env.work, "refused", "part-00000")),
          "a refused run wrote a partition")
    # Nothing listens on a port just given back.
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        port = probe.getsockname()[1]
    refused(["--scheduler", "tcp://127.0.0.1:%d" % port, "captures"],
            ["cannot reach the scheduler"], out="unreached", extra_env={
                "DASK_DISTRIBUTED__COMM__TIMEOUTS__CONNECT": "2s"})
    check(not os.path.exists(os.path.join(env.work, "unreached")),
          "a run that reached no scheduler left its directory")

    # A directory that holds a dataset is left as it is.
    done = env.fleet_run("kept", "--workers", "1", "captures")
    check(done.returncode in (0, 1), "first run: %s" % done.stderr)
    before = sorted(os.listdir(os.path.join(env.work, "kept")))
    refused(["captures"], ["kept", "already holds a dataset"], out="kept")
    check(sorted(os.listdir(os.path.join(env.work, "kept"))) == before, "the dataset changed")


def main(argv):
    parser = argparse.ArgumentParser()
    parser.add_argument("case", choices=("dataset", "worker_killed", "loopback_only",
                                         "tls_scheduler", "refusals"))
    parser.add_argument("--fleet", required=True)
    parser.add_argument("--inspect", required=True)
    parser.add_argument("--devices", required=True)
    parser.add_argument("--work", required=True)
    options = parser.parse_args(argv)
    for name in ("fleet", "inspect", "devices", "work"):
        setattr(options, name, os.path.abspath(getattr(options, name)))
    if options.case in ("loopback_only", "tls_scheduler", "refusals"):
        status = enter_namespace(argv)
        if status is not None:
            return status
    start = time.monotonic()
    try:
        env = Env(options)
        if options.case == "loopback_only":
            status = case_loopback_only(env, in_own_namespace())
        else:
            status = globals()["case_" + options.case](env)
    except Failed as failure:
        print("FAILED: %s: %s" % (options.case, failure))
        return 1
    print("%s: passed in %.1f s" % (options.case, time.monotonic() - start))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
