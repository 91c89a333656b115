#!/usr/bin/env python3
"""kelvra-inspect compare end to end: pairs of captures of the tree's phones
and edits of them (a latency moved by 1 us, a failing service, a report
byte, records dropped, an asset row added, a damaged capture), each part's
status and the exit status checked, every JSON against the schema, every
page standing alone; a replayed phone agrees with its capture; the random
phones agree with themselves and differ from each other (never status 2).

    compare_captures.py KELVRA KELVRA_INSPECT DEFAULT_PHONE FAULTY_PHONE [PHONE...]
"""
import os
import re
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
sys.path.insert(0, os.path.join(HERE, "..", "outputs", "tests"))
import check_page  # noqa: E402
import validate_json  # noqa: E402

PARTS = ["press", "statistics", "state_dumps", "records", "events", "sequence_numbers", "assets",
         "hid_reports", "failures"]
RANDOM_SEED, RANDOM_COUNT = 20261207, 80

kelvra, inspect = sys.argv[1], sys.argv[2]
work = tempfile.mkdtemp(prefix="compare-")
schema = validate_json.validator(os.path.join(HERE, "..", "schema", "compare.schema.json"))
faults = []


def harvest(phone, name, zone="UTC"):
    path = os.path.join(work, name)
    env = dict(os.environ, TZ=zone, TMXSIM_DEVICE=phone)
    with open(path, "wb") as out:
        subprocess.run([kelvra, "--harvest"], stdout=out, stderr=subprocess.STDOUT, env=env, check=False)
    return path


def edited(source, name, edit):
    path = os.path.join(work, name)
    with open(source, encoding="utf-8") as f:
        text = f.read()
    changed = edit(text)
    assert changed != text, f"{name}: the edit changed nothing"
    with open(path, "w", encoding="utf-8") as f:
        f.write(changed)
    return path


def compare(a, b, *options, zone="UTC", year="2026"):
    """The exit status, the JSON (None when there is none) and the text."""
    env = dict(os.environ, TZ=zone)
    base = [inspect, "compare"] + (["--year", year] if year else []) + list(options)
    done = subprocess.run(base + ["--json", a, b], capture_output=True, env=env, check=False)
    doc = None
    if done.stdout:
        import json
        doc = json.loads(done.stdout)
        errors = list(schema.iter_errors(doc))
        if errors:
            faults.append(f"{a} {b}: JSON breaks its schema: {errors[0].message[:200]}")
    text = subprocess.run(base + [a, b], capture_output=True, env=env, check=False)
    page = os.path.join(work, "page.html")
    with open(page, "wb") as out:
        html = subprocess.run(base + ["--html", a, b], stdout=out, env=env, check=False)
    for form, status in (("text", text.returncode), ("html", html.returncode)):
        if status != done.returncode:
            faults.append(f"{a} {b}: {form} status {status}, JSON's {done.returncode}")
    if done.returncode != 2:
        faults.extend(check_page.check(page))
    return done.returncode, doc, text.stdout.decode("utf-8")


def expect(name, a, b, status, differing=(), agreeing=(), ignored=(), options=(), check=None):
    got, doc, text = compare(a, b, *options)
    if got != status:
        faults.append(f"{name}: status {got}, not {status}")
        return
    if doc is None:
        return
    for part in PARTS:
        want = ("differs" if part in differing else "agrees" if part in agreeing
                else "ignored" if part in ignored else "no_difference")
        if doc["parts"][part]["status"] != want:
            faults.append(f"{name}: {part} is {doc['parts'][part]['status']}, not {want}")
    if doc["agree"] != (status == 0):
        faults.append(f"{name}: agree is {doc['agree']} with status {status}")
    for part in PARTS:
        if doc["parts"][part]["status"] == "no_difference" and f"\n{title(part)}: no difference\n" not in text:
            faults.append(f"{name}: the text does not say {part} has no difference")
    if check:
        for fault in check(doc, text):
            faults.append(f"{name}: {fault}")


def title(part):
    return {"press": "press", "statistics": "statistics", "state_dumps": "state dumps",
            "records": "profile records", "events": "event names",
            "sequence_numbers": "sequence numbers lost and repeated", "assets": "haptic asset table",
            "hid_reports": "HID reports", "failures": "failure lines"}[part]


def first_line_plus(text, caption, delta):
    """The first statistics line with `caption`, its value moved by delta."""
    pattern = re.compile(r"^(" + re.escape(caption) + r" +: )(\d+)( us)$", re.M)
    return pattern.sub(lambda m: m.group(1) + str(int(m.group(2)) + delta) + m.group(3), text, count=1)


def moved_latency(text):
    text = first_line_plus(text, "Latency   - Button Down to Play Asset", 1)
    return first_line_plus(text, "Timestamp - Button Down Play Asset", 1)


def latency_checks(doc, text):
    press = doc["parts"]["press"]["latencies"]
    down = [l for l in press if l["click"] == 1 and l["step"] == "down_to_asset"][0]
    if (down["a_us"], down["b_us"], down["difference_us"]) != (612, 613, 1):
        yield f"click 1 down to asset is {down}"
    if abs(down["percent"] - 100 / 612) > 1e-9:
        yield f"percent {down['percent']}"
    names = {(c["name"], c["element"], c["verdict"]) for c in doc["parts"]["statistics"]["changes"]}
    if names != {("play_asset_latency", 0, "differs"), ("play_asset_timestamp", 0, "ignored")}:
        yield f"statistics changes {names}"


def main():
    default = harvest(sys.argv[3], "default")
    faulty = harvest(sys.argv[4], "faulty")
    moved = edited(default, "moved", moved_latency)
    expect("a capture with itself", default, default, 0)
    expect("a latency moved by 1 us", default, moved, 1, differing=["press", "statistics"], check=latency_checks)
    expect("the same within 1 us", default, moved, 0, agreeing=["press", "statistics"],
           options=["--tolerance-us", "1"])

    def faulty_checks(doc, _):
        failures = doc["parts"]["failures"]
        if len(failures["only_b"]) != 5 or failures["only_a"] or failures["both"]:
            yield "the faulty phone's five failure lines are not B's alone"
        blocks = {(o["where"], o["in"]) for o in doc["parts"]["state_dumps"]["one_sided"]}
        if ("btmspk 0xd0", "a") not in blocks:
            yield f"btmspk's dump is not A's alone: {blocks}"
        reports = {r["id"]: r for r in doc["parts"]["hid_reports"]["reports"]}
        if not reports[0xE2]["b"]["failed"] or reports[0xE2]["verdict"] != "differs":
            yield "report 0xe2 is not failed in B"
    expect("a failing service", default, faulty, 1,
           differing=["state_dumps", "records", "events", "assets", "hid_reports", "failures"], check=faulty_checks)
    expect("the faulty phone with itself", faulty, faulty, 0)

    report = edited(default, "report", lambda t: t.replace("00000000: e4 01 00 01 ", "00000000: e4 01 00 02 "))
    expect("a report byte", default, report, 1, differing=["hid_reports"],
           check=lambda doc, _: [] if [r["differing_offsets"] for r in doc["parts"]["hid_reports"]["reports"]
                                       if r["id"] == 0xE4] == [[3]] else ["report 0xe4 does not differ at 3"])

    def drop(text):
        """Five accelerometer samples of the 71: no event name goes."""
        lines = text.split("\n")
        samples = [i for i, l in enumerate(lines) if "'component': 'accel', 'event':      'data'" in l]
        gone = set(samples[10:15])
        return "\n".join(l for i, l in enumerate(lines) if i not in gone)
    dropped = edited(default, "dropped", drop)
    expect("five records dropped", default, dropped, 1, differing=["records", "sequence_numbers"],
           check=lambda doc, _: [] if (doc["parts"]["records"]["records_a"] - doc["parts"]["records"]["records_b"],
                                       doc["parts"]["sequence_numbers"]["b"]["lost"]) == (5, 5)
           else ["not five records fewer and five numbers lost"])
    expect("records dropped, ignored", default, dropped, 0, ignored=["records", "sequence_numbers"],
           options=["--ignore", "records", "--ignore", "sequence_numbers"])

    def short_table(text):
        text = text.replace("Length: 1200, expected 1200", "Length: 1175, expected 1200")
        return re.sub(r"^(ASSET \[Fast\]\[LongPressUp\]: ).*$", r"\1enable 0, slot 0, gain 0, min 0, max 0",
                      text, flags=re.M)
    short = edited(default, "short", short_table)

    def row_added(doc, _):
        changes = doc["parts"]["assets"]["changes"]
        if {c["entry"] for c in changes} != {None, 47} or {c["name"] for c in changes} != \
                {"length", "enable", "slot", "gain", "gain_raw", "min", "max"}:
            yield f"the asset changes are not the length and entry 47: {changes}"
    expect("an asset row added", short, default, 1, differing=["assets"], check=row_added)

    # A damaged capture is compared as read, and says so.
    with open(default, "rb") as f:
        data = f.read()
    cut = os.path.join(work, "cut")
    with open(cut, "wb") as f:
        f.write(data[:30000])
    expect("a damaged capture with itself", cut, cut, 0,
           check=lambda doc, text: [] if doc["b"]["damaged"] and "DAMAGED" in text else ["not said damaged"])
    status = compare(default, cut)[0]
    if status != 1:
        faults.append(f"a whole capture against a damaged one: status {status}")

    # Unreadable: status 2 whichever side it is.
    bad = os.path.join(work, "bad")
    with open(bad, "w", encoding="utf-8") as f:
        f.write("not a capture\n")
    for a, b in ((bad, default), (default, bad), (default, os.path.join(work, "missing")), ("-", "-")):
        status = compare(a, b)[0]
        if status != 2:
            faults.append(f"{a} against {b}: status {status}, not 2")

    # Harvests chosen on each side.
    both = os.path.join(work, "both")
    with open(both, "wb") as f:
        f.write(open(default, "rb").read() + open(faulty, "rb").read())
    expect("harvest 1 against harvest 2", both, both, 1, options=["--harvest-a", "1", "--harvest-b", "2"],
           differing=["state_dumps", "records", "events", "assets", "hid_reports", "failures"])
    expect("harvest 2 of each", both, faulty, 0, options=["--harvest", "2", "--harvest-b", "1"])

    # A phone made from a capture harvests a capture that agrees with it.
    for name, capture in (("default", default), ("faulty", faulty), ("moved", moved)):
        phone = os.path.join(work, name + ".phone.json")
        with open(phone, "wb") as out:
            subprocess.run([inspect, "phone", "--year", "2026", capture], stdout=out, check=True,
                           env=dict(os.environ, TZ="UTC"))
        expect(f"{name} replayed", capture, harvest(phone, name + ".again"), 0)

    for phone in sys.argv[5:]:
        capture = harvest(phone, os.path.basename(phone) + ".capture")
        expect(f"{os.path.basename(phone)} with itself", capture, capture, 0)
        status = compare(default, capture)[0]
        if status != 1:
            faults.append(f"{os.path.basename(phone)} against the default phone: status {status}")

    random_phones()


def random_phones():
    folder = os.path.join(work, "random")
    subprocess.run([sys.executable, os.path.join(HERE, "random_phones.py"), "--seed", str(RANDOM_SEED),
                    "--count", str(RANDOM_COUNT), "--out", folder], check=True)
    captures = []
    for name in sorted(n for n in os.listdir(folder) if n.endswith(".json")):
        settings = dict(line.strip().split("=", 1) for line in open(os.path.join(folder, name[:-5] + ".env"))
                        if "=" in line)
        zone = settings.get("TZ", "UTC")
        captures.append((harvest(os.path.join(folder, name), name + ".capture", zone), zone, settings.get("YEAR")))
    for i, (capture, zone, year) in enumerate(captures):
        status = compare(capture, capture, zone=zone, year=year)[0]
        if status != 0:
            faults.append(f"{capture} with itself: status {status}")
        other = captures[(i + 1) % len(captures)][0]
        status = compare(capture, other, zone=zone, year=year)[0]
        if status != 1:
            faults.append(f"{capture} against {other}: status {status}, not 1")


if __name__ == "__main__":
    main()
    for fault in faults:
        print("FAIL:", fault)
    if not faults:
        subprocess.run(["rm", "-rf", work], check=False)
        print("compare: every pair as expected")
    sys.exit(1 if faults else 0)
