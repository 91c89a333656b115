#!/usr/bin/env python3
"""Writes the fuzz targets' seed corpora into corpus/<target>/ beside this script.

The seeds are the default phone's own records, laid out as each target reads
its input, plus the project's other phones and their registry additions.
The phones are the descriptions kept in tmxsim/devices/. Regenerate with
    python3 fuzz/make_corpus.py
and commit the result.
"""

import copy
import json
import pathlib
import shutil
import struct
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent

SERVICES = ["varsium", "zol-button", "lyn", "btmspk", "mux"]  # then free-form
RECORD = 48


def reply_bytes(answer):
    return bytes.fromhex(answer.get("reply", "").replace(" ", ""))


def answers(entry):
    return entry if isinstance(entry, list) else [entry]


def services(phone):
    def walk(entries):
        for entry in entries:
            yield entry
            yield from walk(entry.get("children", []))
    return {s["name"]: s for s in walk(phone.get("services", []))}


def printer_input(command, service, reply, length=None, name=b""):
    length = len(reply) if length is None else length
    head = struct.pack("<IBH", command, service, length)
    if service == len(SERVICES):
        head += bytes([len(name)]) + name
    return head + reply


def printers_seeds(phone):
    found = services(phone)
    button = found["ZOL_zol-button"]["commands"]
    seeds = {
        "stats": printer_input(215, 1, reply_bytes(button["215"])),
        "assets": printer_input(216, 1, reply_bytes(button["216"])),
        "button_d0": printer_input(208, 1, reply_bytes(button["208"])),
        "button_d1": printer_input(209, 1, reply_bytes(button["209"])),
        "lyn_d0": printer_input(208, 2, reply_bytes(found["ZOL_lyn"]["commands"]["208"])),
        "btmspk_d0": printer_input(208, 3,
                                   reply_bytes(found["ZOL_btmspk"]["commands"]["208"])),
        "input_report_errors": printer_input(0xe3, 4, bytes(range(64))),
        "transfer_errors": printer_input(0x45, 0, b"i2c-touch\0".ljust(32, b"\x01") * 3),
        "unknown_service": printer_input(0xd2, len(SERVICES), bytes(range(40)), name=b"gpio"),
    }
    return seeds


def timesync(phone):
    pair = services(phone)["CorvelTMXTimesync"]["properties"]["timesync"]
    return pair["tmx"], pair["calendar"]


def profile_records(phone):
    found = services(phone)
    logs = [found["ZOL_profile"]["commands"]["209"], found["ZOL_profiler"]["methods"]["9"]]
    seen = {}
    for log in logs:
        for answer in answers(log):
            data = reply_bytes(answer)
            for at in range(0, len(data) - RECORD + 1, RECORD):
                record = data[at:at + RECORD]
                seen.setdefault(record[:4], record)  # one record per type word
    return list(seen.values())


def profile_seeds(phone):
    tmx, calendar = timesync(phone)
    seeds = {}
    for index, record in enumerate(profile_records(phone)):
        kind = 1 if index % 4 else index // 4 % 4  # mostly with the clock
        seeds["record_%03d" % index] = struct.pack("<Bqq", kind, tmx, calendar) + record
    return seeds


def trimmed(phone, records):
    """The phone with each profile log cut to its first `records` records."""
    small = copy.deepcopy(phone)
    found = services(small)
    for holder, key in ((found["ZOL_profile"]["commands"], "209"),
                        (found["ZOL_profiler"]["methods"], "9")):
        first = reply_bytes(answers(holder[key])[0])[:records * RECORD]
        holder[key] = [{"reply": first.hex()}]
    return small


def description_seeds(phone, phones):
    seeds = {"default": json.dumps(trimmed(phone, 4), separators=(",", ":")).encode()}
    for path in sorted(phones.glob("*.json")):
        if path.name != "default.json" and not path.name.endswith(".registry.json"):
            seeds[path.stem] = path.read_bytes()
    for path in sorted((ROOT / "kelvra" / "tests" / "devices").glob("*.json")):
        seeds["test_" + path.stem] = json.dumps(json.loads(path.read_text()),
                                                separators=(",", ":")).encode()
    return seeds


def write(target, seeds):
    folder = HERE / "corpus" / target
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for name, data in seeds.items():
        (folder / name).write_bytes(data)


# Additions that the default phone takes: a new service and HID device, a
# sibling of the profiler's client.
EXTRA_ADDITIONS = {
    "new-service-and-device": {
        "services": [{"name": "ZOL_mux", "properties": {"service_id": 9},
                      "commands": {"208": {"reply": "01 02"}}}],
        "hid_devices": [{"reports": {"7": {"reply": "00"}}}, {"usage_page": 1, "usage": 2}]},
    "profiler-sibling": {
        "services": [{"name": "ZOL_profile", "children": [
            {"name": "spare", "methods": {"3": {"result": "0xe00002c7"}}}]}]},
}


# Inputs that once found a fault.
ADDITION_FINDINGS = {"number-overflow": b'{"a": 1e99999}'}


def addition_seeds():
    seeds = {path.name.replace(".registry.json", "-registry"): path.read_bytes()
             for path in sorted((ROOT / "tmxsim" / "devices").glob("*.registry.json"))}
    for name, additions in EXTRA_ADDITIONS.items():
        seeds[name] = (json.dumps(additions) + "\n").encode()
    return {**seeds, **ADDITION_FINDINGS}


def main():
    if len(sys.argv) != 1:
        sys.exit("usage: make_corpus.py")
    phones = ROOT / "tmxsim" / "devices"
    phone = json.loads((phones / "default.json").read_text())
    write("fuzz_printers", printers_seeds(phone))
    write("fuzz_profile_record", profile_seeds(phone))
    descriptions = description_seeds(phone, phones)
    write("fuzz_description", descriptions)
    write("fuzz_harvest", descriptions)
    write("fuzz_phone_additions", addition_seeds())


if __name__ == "__main__":
    main()
