#!/usr/bin/env python3
"""Damaged captures as the field sends them, through every subcommand.

    damaged_captures.py KELVRA KELVRA_INSPECT DEFAULT_PHONE FAULTY_PHONE

From whole captures of the default phone (standard output alone, and with
standard error) and of the faulty one: cut inside each kind of line, a
header in front, CR LF line ends, a spoiled value, a spoiled binary-data,
a spoiled banner, two harvests with the second cut. Each must give every
intact record (decode is the whole capture's lines up to the damage), every
view with status 1 (0 for what loses nothing), the damage named in the JSON
outputs at its line, and a phone only with --partial.
"""
import json
import os
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
CHECK_TRACE = os.path.join(HERE, "..", "outputs", "tests", "check_trace.py")
PROFILE = "{  'category':"
ENV = dict(os.environ, TZ="UTC")
VIEWS = [["summary"], ["summary", "--json"], ["trace"], ["timeline"], ["report"]]


def run(args, stdin=None, env=ENV):
    done = subprocess.run(args, input=stdin, capture_output=True, env=env)
    return done.returncode, done.stdout, done.stderr.decode("utf-8", "replace")


def harvest(kelvra, phone, merged, twice=False):
    env = dict(ENV, TMXSIM_DEVICE=phone)
    args = [kelvra, "--harvest"] + (["--harvest"] if twice else [])
    done = subprocess.run(args, capture_output=True, env=env)
    if merged:
        done = subprocess.run(args, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, env=env)
    return done.stdout


def first_line(lines, test):
    return next(i for i, line in enumerate(lines) if test(line))


class damage_case:
    """A capture, what decode must give, the status and the damaged line."""

    def __init__(self, name, text, profile, status, line, partial_prints=None, stream_status=None,
                 harvest=1):
        self.name, self.text, self.profile = name, text, profile
        self.status, self.line, self.partial_prints = status, line, partial_prints
        # decode reads the profile lines alone: damage elsewhere is the
        # whole-capture subcommands' to name (records reads a harvest whole).
        self.stream_status = status if stream_status is None else stream_status
        # The harvest whose lines hold the damage: the views of it say so.
        self.harvest = harvest


def profile_lines(lines):
    return [l for l in lines if l.startswith(PROFILE.encode())]


def cut_cases(name, whole):
    """Cut in the middle of the first line of each kind: the lines before it stand."""
    lines = whole.split(b"\n")
    kinds = {
        "a banner": lambda l: l.startswith(b"==========kelvra zol-button 0xd0"),
        "a statistics line": lambda l: l.startswith(b"Click Count"),
        "a state line": lambda l: l.startswith(b"lyn State"),
        "a profile line": lambda l: l.startswith(PROFILE.encode()),
        "an asset line": lambda l: l.startswith(b"Length: "),
        "a hex dump line": lambda l: l.startswith(b"00000000: "),
        "a failure line": lambda l: l.startswith(b"Assertion failed: "),
    }
    for kind, test in kinds.items():
        try:
            at = first_line(lines, test)
        except StopIteration:
            continue
        text = b"\n".join(lines[:at]) + b"\n" + lines[at][: len(lines[at]) // 2]
        yield damage_case(f"{name}, cut inside {kind}", text, profile_lines(lines[:at]), 1, at + 1)


def edit_cases(name, whole):
    lines = whole.split(b"\n")
    body = whole.rstrip(b"\n")
    yield damage_case(f"{name}, whole", whole, profile_lines(lines), 0, None, whole)
    header = b"collected by the facility\n2026-11-25 10:00:00\n"
    yield damage_case(f"{name}, a header in front", header + whole, profile_lines(lines), 0, None,
                      whole)
    yield damage_case(f"{name}, CR LF", body.replace(b"\n", b"\r\n") + b"\r\n",
                      profile_lines(lines), 0, None, whole)
    at = first_line(lines, lambda l: l.startswith(b"Click Count"))
    spoiled = list(lines)
    spoiled[at] = spoiled[at].replace(b":", b": x", 1)
    yield damage_case(f"{name}, a spoiled statistics value", b"\n".join(spoiled),
                      profile_lines(lines), 1, at + 1, stream_status=0)
    profile = [i for i, l in enumerate(lines) if l.startswith(PROFILE.encode())]
    at = profile[len(profile) // 2]
    spoiled = list(lines)
    spoiled[at] = spoiled[at].replace(b"'binary-data':[", b"'binary-data':[300,", 1)
    yield damage_case(f"{name}, a spoiled binary-data", b"\n".join(spoiled),
                      profile_lines(lines[:at] + lines[at + 1:]), 1, at + 1)
    at = first_line(lines, lambda l: l.endswith(b"get-assets==============") or
                    l == b"==========kelvra lyn 0xd0==============")
    spoiled = list(lines)
    spoiled[at] = spoiled[at].replace(b"get-assets", b"get-asets").replace(b"lyn 0x", b"lyn 0X")
    # The banner is taken for what it was: the partial phone prints it whole.
    yield damage_case(f"{name}, a spoiled banner", b"\n".join(spoiled), profile_lines(lines), 1,
                      at + 1, whole, stream_status=0)


def two_harvests(kelvra, phone):
    twice = harvest(kelvra, phone, True, True)
    lines = twice.split(b"\n")
    banners = [i for i, l in enumerate(lines) if l.endswith(b"kelvra zol-button profile==============")]
    at = banners[1] + 3
    text = b"\n".join(lines[:at]) + b"\n" + lines[at][:40]
    return damage_case("default, two harvests, the second cut", text, profile_lines(lines[:at]),
                       1, at + 1, harvest=2)


class checks:
    def __init__(self, kelvra, inspect, work):
        self.kelvra, self.inspect, self.work = kelvra, inspect, work
        self.failures = 0

    def fail(self, case, what):
        print(f"FAIL: {case.name}: {what}")
        self.failures += 1

    def check(self, case):
        path = os.path.join(self.work, "capture")
        with open(path, "wb") as f:
            f.write(case.text)
        status, out, err = run([self.inspect, "decode", path])
        want = b"".join(l + b"\n" for l in case.profile)
        if status != case.stream_status:
            self.fail(case, f"decode: status {status}, not {case.stream_status}: {err[:300]}")
        if out != want:
            self.fail(case, f"decode: {len(out.splitlines())} lines, not the {len(case.profile)} intact ones")
        if case.stream_status == 1 and f"line {case.line}" not in err and f"lines {case.line}" not in err:
            self.fail(case, f"decode does not name line {case.line}: {err[:300]}")
        status, out, _ = run([self.inspect, "records", path])
        if status != case.status or len(out.splitlines()) != len(case.profile):
            self.fail(case, f"records: status {status}, {len(out.splitlines())} records")
        for view in VIEWS:
            which = [] if view == ["report"] else ["--harvest", str(case.harvest)]
            status, out, err = run([self.inspect] + view + which + [path])
            if status != case.status:
                self.fail(case, f"{' '.join(view)}: status {status}: {err[:300]}")
                continue
            self.view(case, view, out)
        self.phone(case, path)

    def view(self, case, view, out):
        if view == ["report"]:
            report = json.loads(out)
            lines = [d["line"] for d in report["damage"] if d["severity"] == "lost"]
            if case.line is not None and case.line not in lines and \
                    not any(d["line"] and d["line"] <= case.line <= d["last_line"]
                            for d in report["damage"]):
                self.fail(case, f"report's damage does not name line {case.line}: {report['damage']}")
            if report["damaged"] != (case.status == 1):
                self.fail(case, "report says damaged wrongly")
        elif view == ["trace"]:
            path = os.path.join(self.work, "trace.json")
            with open(path, "wb") as f:
                f.write(out)
            status, said, _ = run([sys.executable, CHECK_TRACE, path])
            if status != 0:
                self.fail(case, f"trace breaks a rule: {said.decode()[:300]}")
            other = json.loads(out)["otherData"]
            if other["damaged"] != (case.status == 1):
                self.fail(case, "trace's otherData says damaged wrongly")
        elif view == ["summary"] and case.status == 1 and b"\ndamage: " not in out:
            self.fail(case, "summary does not show the damage")
        elif view == ["timeline"] and case.status == 1 and b"damaged in" not in out:
            self.fail(case, "timeline does not show the damage")

    def phone(self, case, path):
        phone = os.path.join(self.work, "phone.json")
        status, out, err = run([self.inspect, "phone", path])
        if case.status == 1 and (status != 2 or "no phone prints this capture" not in err):
            self.fail(case, f"phone of a damaged capture: status {status}: {err[-300:]}")
            return
        status, out, err = run([self.inspect, "phone", "--partial", path])
        if status != case.status:
            self.fail(case, f"phone --partial: status {status}: {err[-300:]}")
            return
        with open(phone, "wb") as f:
            f.write(out)
        status, again, _ = run([self.kelvra, "--harvest"], env=dict(ENV, TMXSIM_DEVICE=phone))
        merged = subprocess.run([self.kelvra, "--harvest"], stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, env=dict(ENV, TMXSIM_DEVICE=phone)).stdout
        if status != 0:
            self.fail(case, "the partial phone does not harvest")
        elif case.partial_prints is not None and case.partial_prints not in (again, merged):
            self.fail(case, "the phone does not print the capture again")


def main():
    kelvra, inspect, default, faulty = sys.argv[1:5]
    cases = []
    for name, phone, merged in (("default", default, False), ("default merged", default, True),
                                ("faulty merged", faulty, True)):
        whole = harvest(kelvra, phone, merged)
        cases += list(edit_cases(name, whole)) + list(cut_cases(name, whole))
    cases.append(two_harvests(kelvra, default))
    with tempfile.TemporaryDirectory() as work:
        c = checks(kelvra, inspect, work)
        for case in cases:
            before = c.failures
            c.check(case)
            if c.failures == before:
                print(f"ok: {case.name}")
    print(f"{len(cases)} captures, {c.failures} failures")
    sys.exit(1 if c.failures else 0)


if __name__ == "__main__":
    main()
