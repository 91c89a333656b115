#!/usr/bin/env python3
"""Writes the simulated phones: default.json and faulty.json beside this script.

The default phone has just seen one double click of its solid-state button, at
medium speed. Every reply tells the same story on one clock (microseconds of
coprocessor time): the statistics record of the last press, the clock and
power reference counts, the haptic asset table whose slots the press played,
and two profile logs around the press that carry the same finger-on, edge and
asset-play times as the statistics.

The faulty phone is the same phone with three faults: no "btmspk" service, a
rejected asset request and a failing HID feature report. Its logs are short.

Python is only the generator; the build reads the JSON. Regenerate with
    python3 tmxsim/devices/make_default.py
and commit both outputs. Every record is encoded and decoded back here, so a
wrong size or an inconsistent time fails this script, not a test.

Profile records are written as pieces: the four header bytes in memory order
(type id, event id, component id, category id), the sequence number, the
timestamp, then the 32 payload bytes. One record per line.
"""

import datetime
import json
import pathlib
import random
import struct

HERE = pathlib.Path(__file__).resolve().parent

# ---------------------------------------------------------------------------
# Pieces of the description's "fields" form, and their encoding.


def u8(n):
    return {"u8": n}


def u16(n):
    return {"u16": n}


def u32(n):
    return {"u32": n}


def i32(n):
    return {"i32": n}


def u64(n):
    return {"u64": n}


def text(s, size):
    return {"text": s, "size": size}


def zeros(n):
    return {"zeros": n}


def hexbytes(s):
    return {"hex": s}


def encode(pieces):
    """The bytes a list of pieces stands for, as the platform lays them out."""
    out = bytearray()
    for piece in pieces:
        (kind, value), = [(k, v) for k, v in piece.items() if k != "size"]
        if kind == "u8":
            out += struct.pack("<B", value)
        elif kind == "u16":
            out += struct.pack("<H", value)
        elif kind == "u32":
            out += struct.pack("<I", value)
        elif kind == "i32":
            out += struct.pack("<i", value)
        elif kind == "u64":
            out += struct.pack("<Q", value)
        elif kind == "text":
            raw = value.encode()[: piece["size"]]
            out += raw + bytes(piece["size"] - len(raw))
        elif kind == "zeros":
            out += bytes(value)
        elif kind == "hex":
            out += bytes.fromhex(value)
        else:
            raise ValueError(kind)
    return bytes(out)


def size_of(pieces):
    return len(encode(pieces))


def word(n):
    """A 32-bit piece, signed when the value is negative."""
    return i32(n) if n < 0 else u32(n)


# ---------------------------------------------------------------------------
# The clock. Record timestamps are microseconds of coprocessor time; the
# timesync pair gives that clock in nanoseconds (timestamp x 1000) against
# the calendar at one instant.

LOG_START = 91_237_824_060
FINGER_ON = 91_238_236_250
SECOND_SCAN = FINGER_ON + 2_496
START_HAPTICS = FINGER_ON + 1_850
# Edges of the two clicks: down, up, down, up.
EDGES = [FINGER_ON + 41_320]
EDGES.append(EDGES[-1] + 96_400)
EDGES.append(EDGES[-1] + 118_300)
EDGES.append(EDGES[-1] + 88_900)
# From each edge to playing its haptic asset.
PLAY_LATENCY = [612, 587, 604, 595]
PLAYS = [edge + lat for edge, lat in zip(EDGES, PLAY_LATENCY)]
FINGER_OFF = EDGES[-1] + 152_000
LOG_END = FINGER_OFF + 380_000

SYNC_TMX = 91_238_417_552_371  # ns of coprocessor time
SYNC_CALENDAR = (
    int(datetime.datetime(2026, 3, 14, 9, 26, 53, tzinfo=datetime.timezone.utc).timestamp())
    * 1_000_000_000
    + 589_793_120
)

MEDIUM = 1  # click speed code of a 215 ms double click
GORVIN_SCANS = 62  # active scans, one every 8 ms while the finger is on
LUMET_SCANS = 12

# ---------------------------------------------------------------------------
# zol-button 0xd7: statistics of the last press.


def stats_record():
    button = EDGES + [0, 0]  # the third click did not happen
    plays = PLAYS + [0, 0]
    latency = PLAY_LATENCY + [0, 0]
    click_count = 2
    return [
        [u64(FINGER_ON)],
        [u64(FINGER_OFF)],
        [u64(START_HAPTICS)],
        [u64(EDGES[0] - FINGER_ON)],  # finger detect to button down
        [zeros(56)],
        [u64(t) for t in button],
        [u64(t) for t in plays],
        [u64(t) for t in latency],
        [zeros(1)],
        [u32(click_count << 1 | 1)],
        [zeros(29)],
        [u64(SECOND_SCAN)],
        [u32(GORVIN_SCANS)],
        [u32(LUMET_SCANS)],
        [zeros(6)],  # tail of the firmware's structure, never printed
    ]


def check_stats(data):
    assert len(data) >= 282
    on, off, haptics, fd_to_down = struct.unpack_from("<4Q", data, 0)
    button = struct.unpack_from("<6Q", data, 88)
    plays = struct.unpack_from("<6Q", data, 136)
    latency = struct.unpack_from("<6Q", data, 184)
    (flags,) = struct.unpack_from("<I", data, 233)
    (second,) = struct.unpack_from("<Q", data, 266)
    gorvin, lumet = struct.unpack_from("<2I", data, 274)
    assert flags >> 1 == 2
    assert on < haptics < second < button[0] < off
    assert fd_to_down == button[0] - on
    assert list(button[:4]) == sorted(button[:4]) and button[3] < off
    for k in range(6):
        assert plays[k] == (button[k] + latency[k] if button[k] else 0)
    assert button[4:] == (0, 0)
    assert gorvin > 0 and lumet > 0


# ---------------------------------------------------------------------------
# zol-button 0xd0 / 0xd1 and lyn / btmspk 0xd0.


def counts_record(enable, zol_ref, ap_ref):
    return [u8(enable), u32(zol_ref), u32(ap_ref)]


def power_record(state, ap_requests, zol_requests):
    return [u32(state), u32(ap_requests), u32(zol_requests)]


MCLK_COUNTS = counts_record(1, 2, 1)
PELLAM_COUNTS = counts_record(1, 1, 2)
LYN_POWER = power_record(1, 14, 231)
BTMSPK_POWER = power_record(2, 42, 9)

# ---------------------------------------------------------------------------
# zol-button 0xd8: haptic assets, 3 click speeds x 16 button states.

Q16 = 65536
# Per button state: enabled, slot, gain of the slow group (Q16).
# Taps are not configured on this phone; deep presses and long presses are.
ASSET_STATES = [
    (1, 1, Q16),             # SingleDown
    (1, 2, Q16 * 7 // 8),    # SingleUp
    (1, 3, Q16),             # DoubleDown
    (1, 4, Q16 * 7 // 8),    # DoubleUp
    (1, 5, Q16),             # TripleDown
    (1, 6, Q16 * 7 // 8),    # TripleUp
    (0, -1, 0),              # SingleTapOn
    (0, -1, 0),              # SingleTapOff
    (0, -1, 0),              # DoubleTapOn
    (0, -1, 0),              # DoubleTapOff
    (0, -1, 0),              # TripleTapOn
    (0, -1, 0),              # TripleTapOff
    (1, 9, 58_982),          # DeepDown, tuned to 0.9
    (1, 10, Q16 * 3 // 4),   # DeepUp
    (1, 11, Q16 // 2),       # LongPress
    (1, 12, Q16 // 2),       # LongPressUp
]
# Per click speed: gain step down from the slow group (Q16) and the window
# of the interval between clicks, in microseconds.
ASSET_SPEEDS = [
    (0, 320_000, 600_000),             # Slow
    (Q16 // 8, 180_000, 320_000),      # Medium
    (Q16 // 4, 0, 180_000),            # Fast
]
LONG_PRESS_MIN = 500_000  # a long press is held at least this long
UNBOUNDED = 2**64 - 1  # and has no upper bound


def asset_table():
    rows = []
    for step, low, high in ASSET_SPEEDS:
        for state, (enable, slot, gain) in enumerate(ASSET_STATES):
            if not enable:
                rows.append([u8(0), i32(0), u64(0), u64(0), i32(-1)])
                continue
            gain = max(gain - step, Q16 // 2)
            if state >= 14:  # LongPress, LongPressUp
                low, high = LONG_PRESS_MIN, UNBOUNDED
            rows.append([u8(1), i32(gain), u64(low), u64(high), i32(slot)])
    return rows


def check_assets(data):
    assert len(data) == 1200
    for g in range(3):
        for s in range(16):
            enable, gain, low, high, slot = struct.unpack_from("<BiQQi", data, 400 * g + 25 * s)
            if enable:
                assert 0.5 <= gain / Q16 <= 1.0 and low < high and slot > 0
            else:
                assert slot == -1


# ---------------------------------------------------------------------------
# Profile records.

EXECUTION, TRACE, SENSORS, ORBIX, NIMBREL, INTERRUPT, UART, PKEY, CONTROL = range(9)
UNKNOWN_CATEGORY = 12  # a category this tool has no decoder for

FRAGMENT, PACKET, ARGS, TRIGGER, TIMING = 1, 2, 3, 4, 5
MARK = 7  # carries no payload
CLIENT, TASK, CONTEXT, ENTRY, DISPATCH = 8, 9, 10, 11, 12

# Component and event ids used below.
ACCEL, GYRO, COMPASS, PRESSURE, NEBIUM, ALS, TEMPERATURE = range(7)
S_LATENCY, S_RAWDATA, S_DATA, S_FILTDATA, S_APDATA, S_REGWRITE, S_REGREAD = range(7)
S_UPDATE, S_FILTER_STATE, S_SENSOR_INFO, S_ANNOTATION = 7, 8, 9, 10
S_TRIGGER_MAGNITUDE, S_TRIGGER_LATENCY = 16, 17
SCHEDULER, FUNCTION, WORKLOOP, COMMAND, EXTFUNCTION = range(5)
WL_ACTION, WL_SIGNAL = 0, 1
REMOTEQ, ENDPOINT = 0, 1
O_LATENCY, O_MONITOR, O_TRIGGER_LATENCY = 0, 1, 17
DATA_IN, DATA_OUT = 0, 1
GPIO, I_LATENCY = 0, 0
UART0, UART1, UART2 = range(3)
U_ACTION, U_DATA, U_RAWDATA = range(3)
PK_PKEY, PK_PELLAM, PK_AMP, PK_LATENCY, PK_VEXA = range(5)
PK_TRACE, PK_CONTEXT, PK_INPUT, PK_STATUS = range(4)
PK_FINGERON, PK_FINGEROFF, PK_CLICKON, PK_CLICKOFF = 16, 17, 18, 19

CHECKPOINTS = {
    "ckp_PKEYFingerON": 0, "ckp_PKEYFingerOFF": 1, "ckp_PKEYButtonDown": 2,
    "ckp_PKEYButtonUp": 3, "ckp_LYNTurnOn": 4, "ckp_PellamStartHaptics": 5,
    "ckp_LYNReady": 6, "ckp_PellamPlayAsset": 7,
}
TRACE_POINTS = {
    "Notification": 0x00, "Command": 0x01, "SetProperty": 0x02, "GetProperty": 0x03,
    "SendAmpRequest": 0x04, "AmpWorkerRequestComplete": 0x05, "AmpRequestComplete": 0x06,
    "EnablePkey": 0x07, "OnNimbrelData": 0x08, "AmpTurnOn": 0x0A, "NotifyPellam": 0x0B,
    "AmpTurnOff": 0x0C, "EnableMclk": 0x0D, "EnablePellam": 0x0E, "VexaData": 0x0F,
    "DispatchReport": 0x10, "HandleFingerDownChanged": 0x11,
    "HandleButtonStateChanged": 0x12, "HandleClickStatus": 0x13, "ChangeOpMode": 0x14,
    "ScanESAction": 0x15, "GorvinTESAction": 0x16, "NotifyPellamRunState": 0x17,
    "AmpRequestCompleteStep2": 0x19, "AmpRequestCompleteStep3": 0x1A,
    "AmpPrewarmComplete": 0x1E, "AmpEnableComplete": 0x1F, "AmpDisableComplete": 0x20,
    "StartPellam": 0x21, "StopPellam": 0x22, "AssetTimerComplete": 0x23,
    "Fingerdetect": 0x68, "EnableStuckFDTimer": 0x69,
    "SetState": 0xC8, "DisabledToPreWarm": 0xCA, "PreWarmToEnabled": 0xCC,
    "PreWarmToDisabled": 0xCD, "EnabledToPreWarm": 0xCE, "AmpPowerDown": 0xD4,
    "AmpClearInterrupts": 0xD5, "AmpPowerUpPhase1": 0xD7, "AmpPowerUpPhase2": 0xD8,
    "AmpPowerUpPhase3": 0xD9, "SetVolume": 0xDA, "ConfigureTDMControls": 0xDB,
    "SetChannelEnable": 0xDC,
}
NEWER_TRACE_POINT = 0x6A  # logged by newer firmware; no name here

# Threads of the coprocessor.
T_SENSORS, T_PKEY, T_PELLAM, T_AMP, T_NIMBREL, T_UART, T_IPC = 2, 3, 4, 5, 6, 7, 8

REPORT_ID = 11  # input report of the button sensor


class Record:
    def __init__(self, ts, category, component, event, type_id, payload):
        size = size_of(payload)
        assert size <= 32, (category, component, event, type_id, size)
        self.ts = ts
        self.header = (type_id, event, component, category)
        self.payload = payload + ([zeros(32 - size)] if size < 32 else [])

    def pieces(self, seq):
        return [u8(b) for b in self.header] + [u32(seq), u64(self.ts)] + self.payload


# Payload layouts of the generic kinds, by type id.


def fragment(subtype, packet_size, offset, data):
    return [u16(subtype), u16(packet_size), u16(len(data)), u16(offset), hexbytes(data.hex(" "))]


def small_packet(subtype, data):
    return [u16(subtype), hexbytes(data.hex(" "))]


def args(*values):
    return [word(v) for v in values]


def trigger(value, thread):
    return [u32(value), u32(thread)]


def timing(function_id, extra_id, thread, duration, depth, thread_duration):
    return args(function_id, extra_id, thread, duration, depth, thread_duration)


def client(client_id, report_interval, batch_interval, threshold, time_limit, name):
    return args(client_id, report_interval, batch_interval, threshold, time_limit) + [text(name, 12)]


def task(task_id, thread, duration, arg, function):
    return args(task_id, thread, duration, arg) + [text(function, 16)]


def entry(global_id, name, arg1, arg2):
    return [u64(global_id), text(name, 8), u32(arg1), u32(arg2)]


def dispatcher(next_dispatch, sample_interval, report_interval, batch_interval, name):
    return [u64(next_dispatch), u32(sample_interval), u32(report_interval),
            u32(batch_interval), text(name, 12)]


# Button-controller kinds.


def pk_trace(ts, component, point, thread, *values):
    trace_id = TRACE_POINTS[point] if isinstance(point, str) else point
    return Record(ts, PKEY, component, PK_TRACE, ARGS, args(trace_id, thread, *values))


def pk_checkpoint(ts, name, *values):
    ckp = CHECKPOINTS[name]
    return Record(ts, PKEY, PK_LATENCY, ckp, ARGS, args(ckp, T_PKEY, *values))


PACKETS = iter(range(0x3a10, 0x10000))  # the sensor's packet counter


def pk_input(ts, button, finger, press_count, stage, progress, force,
             long_press=0, terminal=0, speed=0):
    return Record(ts, PKEY, PK_PKEY, PK_INPUT, PACKET, [
        u16(next(PACKETS)), u8(REPORT_ID), u8(button), u8(finger), u8(0),
        u8(press_count), u8(long_press), u8(terminal), u8(speed), u8(stage),
        u32(progress), u32(force)])


def pk_status(ts, finger, button, progress, click_count, terminal=0, long_click=0, speed=0):
    return Record(ts, PKEY, PK_PKEY, PK_STATUS, PACKET, [
        u16(0), u32(ts & 0xFFFFFFFF), zeros(4), u8(finger), u8(button), u32(progress),
        u8(0), u8(click_count), u8(terminal), u8(long_click), u8(speed)])


def pk_trigger(ts, event, finger, button):
    return Record(ts, PKEY, PK_PKEY, event, PACKET, [
        u16(event), u32(ts & 0xFFFFFFFF), u8(finger), u8(button)])


CONTEXT_FIELDS = {
    3: [("currentContext0", u8), ("currentContext1", u8), ("ampsEnabled", u8),
        ("enabled", u8), ("mode", u32), ("scan_time", u32), ("active_scan_interval", u32),
        ("background_scan_interval", u32), ("fingerDetect", u8), ("buttonState", u8),
        ("pressCount", u8), ("longPress", u8), ("terminalEvent", u8), ("speed", u8),
        ("stage", u8)],
    5: [("currentContext0", u8), ("currentContext1", u8), ("ampsEnabled", u8),
        ("enabled", u8), ("scan_period", u32), ("scan_time", u32), ("fingerDetect", u8),
        ("buttonState", u8), ("pressCount", u8), ("longPress", u8), ("terminalEvent", u8),
        ("speed", u8), ("stage", u8)],
    4: [(name, u8) for name in (
        "mclk_zol_enabled", "mclk_ap_enabled", "pellam_zol_enabled", "pellam_ap_enabled",
        "pellamBusy", "enableLYN", "enableSpkr", "mclk_on", "pellam_on", "pellamPending",
        "ampsEnabling", "vexa_ready", "ampsPrewarming", "ampsDisabling", "ampsPending",
        "clickState", "clickSpeed", "test_mode", "cl_enable", "cl_zol_enable",
        "cl_ap_enable", "pellam_ready", "apState0", "apState1", "zolState0", "zolState1",
        "state0", "state1")],
    7: [(name, u8) for name in (
        "mclk_zol_enabled", "mclk_ap_enabled", "pellam_zol_enabled", "pellam_ap_enabled",
        "pellamBusy", "enableLYN", "enableSpkr", "mclk_on", "pellam_on", "pellamPending",
        "vexa_ready", "ampsState", "clickState", "clickSpeed", "test_mode", "cl_enable",
        "cl_zol_enable", "cl_ap_enable", "pellam_ready", "apState0", "apState1",
        "zolState0", "zolState1", "state0", "state1")],
}


def pk_context(ts, component, version, **values):
    fields = CONTEXT_FIELDS[version]
    assert set(values) == {name for name, _ in fields}, version
    return Record(ts, PKEY, component, PK_CONTEXT, CONTEXT,
                  [u16(version)] + [piece(values[name]) for name, piece in fields])


# Pellam/amp context (versions 4 and 7 share these values; 7 folds the four
# amp flags into one state).
POWER_CONTEXT_IDLE = dict(
    mclk_zol_enabled=0, mclk_ap_enabled=0, pellam_zol_enabled=0, pellam_ap_enabled=0,
    pellamBusy=0, enableLYN=0, enableSpkr=0, mclk_on=0, pellam_on=0, pellamPending=0,
    vexa_ready=1, clickState=0, clickSpeed=MEDIUM, test_mode=0, cl_enable=1,
    cl_zol_enable=1, cl_ap_enable=0, pellam_ready=0, apState0=2, apState1=0,
    zolState0=1, zolState1=0, state0=1, state1=0)
POWER_CONTEXT_READY = dict(
    POWER_CONTEXT_IDLE, mclk_zol_enabled=1, pellam_zol_enabled=1, enableLYN=1,
    mclk_on=1, pellam_on=1, clickSpeed=0, pellam_ready=1, zolState0=3, zolState1=1,
    state0=3, state1=1)


def nimbrel(ts, event, x, y, z, frame):
    scale = 1 << 16 if event == DATA_IN else 1 << 12
    return Record(ts, NIMBREL, 0, event, ARGS, [
        i32(round(x * scale)), i32(round(y * scale)), i32(round(z * scale)),
        u32(frame), u32(1), u32(0)])


# ---------------------------------------------------------------------------
# The "profile" log (command 209): sensors, nimbrel, uart, control and the
# button controller around the press.


def press_records():
    """The button controller's view of the double click."""
    f = FINGER_ON
    out = [
        pk_context(f - 31_000, PK_PKEY, 5, currentContext0=1, currentContext1=0,
                   ampsEnabled=0, enabled=1, scan_period=50_000, scan_time=310,
                   fingerDetect=0, buttonState=0, pressCount=0, longPress=0,
                   terminalEvent=0, speed=0, stage=0),
        pk_trace(f - 7_400, PK_PKEY, NEWER_TRACE_POINT, T_PKEY, 0, 0, 0, 0),
        # Finger on: the sensor reports it, the controller wakes the amp.
        pk_checkpoint(f, "ckp_PKEYFingerON"),
        pk_input(f + 35, button=0, finger=1, press_count=0, stage=0, progress=0, force=42),
        pk_trace(f + 60, PK_PKEY, "Fingerdetect", T_PKEY, 1, 0, 0, 0),
        pk_trace(f + 64, PK_PKEY, "HandleFingerDownChanged", T_PKEY, 1, 0, 0, 0),
        pk_trigger(f + 75, PK_FINGERON, finger=1, button=0),
        pk_status(f + 90, finger=1, button=0, progress=0, click_count=0),
        pk_trace(f + 110, PK_PKEY, "ChangeOpMode", T_PKEY, 2, 1, 0, 0),
        pk_trace(f + 118, PK_PKEY, "EnableStuckFDTimer", T_PKEY, 5_000_000, 0, 0, 0),
        pk_trace(f + 140, PK_PKEY, "EnableMclk", T_PKEY, 1, 1, 0, 0),
        pk_checkpoint(f + 180, "ckp_LYNTurnOn"),
        pk_trace(f + 190, PK_AMP, "SendAmpRequest", T_AMP, 1, 0, 0, 0),
        pk_trace(f + 201, PK_AMP, "AmpTurnOn", T_AMP, 0, 0, 0, 0),
        pk_trace(f + 240, PK_AMP, "DisabledToPreWarm", T_AMP, 0, 1, 0, 0),
        pk_trace(f + 260, PK_AMP, "AmpPowerUpPhase1", T_AMP, 0, 0, 0, 0),
        pk_trace(f + 420, PK_AMP, "AmpPowerUpPhase2", T_AMP, 0, 0, 0, 0),
        pk_trace(f + 610, PK_AMP, "AmpPowerUpPhase3", T_AMP, 0, 0, 0, 0),
        pk_trace(f + 905, PK_AMP, "ConfigureTDMControls", T_AMP, 0x2, 48_000, 0, 0),
        pk_trace(f + 940, PK_AMP, "SetVolume", T_AMP, 0xC0, 0, 0, 0),
        pk_trace(f + 966, PK_AMP, "SetChannelEnable", T_AMP, 1, 0, 0, 0),
        pk_trace(f + 1_290, PK_AMP, "AmpWorkerRequestComplete", T_AMP, 1, 0, 0, 0),
        pk_trace(f + 1_301, PK_AMP, "AmpRequestCompleteStep2", T_AMP, 1, 0, 0, 0),
        pk_trace(f + 1_305, PK_AMP, "AmpRequestCompleteStep3", T_AMP, 1, 0, 0, 0),
        pk_trace(f + 1_312, PK_AMP, "AmpRequestComplete", T_AMP, 1, 0, 0, 0),
        pk_trace(f + 1_330, PK_AMP, "AmpPrewarmComplete", T_AMP, 0, 0, 0, 0),
        pk_checkpoint(f + 1_420, "ckp_LYNReady"),
        # Haptics start: the actuator driver is enabled and runs.
        pk_checkpoint(START_HAPTICS, "ckp_PellamStartHaptics"),
        pk_trace(START_HAPTICS + 6, PK_PELLAM, "StartPellam", T_PELLAM, 1, 0, 0, 0),
        pk_trace(START_HAPTICS + 19, PK_PELLAM, "EnablePellam", T_PELLAM, 1, 1, 0, 0),
        pk_trace(START_HAPTICS + 150, PK_PELLAM, "NotifyPellamRunState", T_PELLAM, 1, 0, 0, 0),
        pk_trace(SECOND_SCAN, PK_PKEY, "ScanESAction", T_PKEY, 2, 0, 0, 0),
        pk_trace(SECOND_SCAN + 310, PK_PKEY, "GorvinTESAction", T_PKEY, 1, 310, 0, 0),
        pk_context(SECOND_SCAN + 420, PK_PELLAM, 4, ampsEnabling=0, ampsPrewarming=0,
                   ampsDisabling=0, ampsPending=0, **POWER_CONTEXT_READY),
        pk_context(SECOND_SCAN + 470, PK_PKEY, 5, currentContext0=2, currentContext1=1,
                   ampsEnabled=0, enabled=1, scan_period=8_000, scan_time=305,
                   fingerDetect=1, buttonState=0, pressCount=0, longPress=0,
                   terminalEvent=0, speed=0, stage=1),
    ]
    # The force builds up, one active scan every 8 ms, until the first edge.
    for n, (progress, force) in enumerate([(18, 118), (39, 196), (61, 271), (84, 349)]):
        out.append(pk_input(f + 8_000 * (n + 1) + 35, button=0, finger=1, press_count=0,
                            stage=1, progress=progress, force=force))
    out.append(pk_trace(f + 16_020, PK_VEXA, "VexaData", T_PKEY, 3, 196, 0, 0))
    for k, (edge, play) in enumerate(zip(EDGES, PLAYS)):
        down = k % 2 == 0
        clicks = k // 2 + 1
        last = k == 3
        button = 1 if down else 0
        out += [
            pk_input(edge, button=button, finger=1, press_count=clicks,
                     stage=2 if down else 3, progress=100 if down else 0,
                     force=412 - 11 * k if down else 183 + 4 * k,
                     terminal=1 if last else 0, speed=MEDIUM if clicks == 2 else 0),
            pk_checkpoint(edge + 8, "ckp_PKEYButtonDown" if down else "ckp_PKEYButtonUp"),
            pk_trigger(edge + 20, PK_CLICKON if down else PK_CLICKOFF, finger=1, button=button),
            pk_trace(edge + 40, PK_PKEY, "HandleButtonStateChanged", T_PKEY, button, clicks, 0, 0),
        ]
        if k == 0:
            out += [
                pk_trace(edge + 120, PK_AMP, "PreWarmToEnabled", T_AMP, 1, 2, 0, 0),
                pk_trace(edge + 380, PK_AMP, "AmpEnableComplete", T_AMP, 0, 0, 0, 0),
            ]
        slot = ASSET_STATES[k][1]  # SingleDown, SingleUp, DoubleDown, DoubleUp
        out += [
            pk_checkpoint(play, "ckp_PellamPlayAsset", slot),
            pk_trace(play + 3, PK_PELLAM, "NotifyPellam", T_PELLAM, slot, MEDIUM if clicks == 2 else 0, 0, 0),
            pk_status(play + 90, finger=1, button=button, progress=100 if down else 0,
                      click_count=clicks, terminal=1 if last else 0,
                      speed=MEDIUM if clicks == 2 else 0),
            pk_trace(play + 12_000, PK_PELLAM, "AssetTimerComplete", T_PELLAM, slot, 12_000, 0, 0),
        ]
        if k == 1:
            out.append(pk_trace(edge + 51_000, PK_VEXA, "VexaData", T_PKEY, 3, 151, 0, 0))
    out += [
        pk_trace(EDGES[3] + 1_100, PK_PKEY, "HandleClickStatus", T_PKEY, 2, 1, MEDIUM, 0),
        pk_trace(EDGES[3] + 1_130, PK_PKEY, "DispatchReport", T_PKEY, REPORT_ID, 2, 0, 0),
        pk_trace(EDGES[3] + 1_160, PK_PKEY, "Notification", T_IPC, 0x13, 2, 0, 0),
        # Finger off: the amp goes back to pre-warm, then down.
        pk_checkpoint(FINGER_OFF, "ckp_PKEYFingerOFF"),
        pk_input(FINGER_OFF + 35, button=0, finger=0, press_count=2, stage=0, progress=0,
                 force=6, terminal=1, speed=MEDIUM),
        pk_trace(FINGER_OFF + 64, PK_PKEY, "HandleFingerDownChanged", T_PKEY, 0, 0, 0, 0),
        pk_trigger(FINGER_OFF + 75, PK_FINGEROFF, finger=0, button=0),
        pk_status(FINGER_OFF + 90, finger=0, button=0, progress=0, click_count=2,
                  terminal=1, speed=MEDIUM),
        pk_context(FINGER_OFF + 400, PK_PELLAM, 7, ampsState=2, **dict(
            POWER_CONTEXT_READY, pellamBusy=0, clickState=2, clickSpeed=MEDIUM)),
        pk_trace(FINGER_OFF + 30_000, PK_AMP, "EnabledToPreWarm", T_AMP, 2, 1, 0, 0),
        pk_trace(FINGER_OFF + 30_090, PK_PELLAM, "StopPellam", T_PELLAM, 0, 0, 0, 0),
        pk_trace(FINGER_OFF + 30_100, PK_PELLAM, "EnablePellam", T_PELLAM, 0, 1, 0, 0),
        pk_trace(FINGER_OFF + 30_150, PK_PELLAM, "NotifyPellamRunState", T_PELLAM, 0, 0, 0, 0),
        pk_trace(FINGER_OFF + 250_000, PK_AMP, "PreWarmToDisabled", T_AMP, 1, 0, 0, 0),
        pk_trace(FINGER_OFF + 250_040, PK_AMP, "AmpTurnOff", T_AMP, 0, 0, 0, 0),
        pk_trace(FINGER_OFF + 250_200, PK_AMP, "AmpPowerDown", T_AMP, 0, 0, 0, 0),
        pk_trace(FINGER_OFF + 250_260, PK_AMP, "AmpClearInterrupts", T_AMP, 0x11, 0, 0, 0),
        pk_trace(FINGER_OFF + 250_300, PK_AMP, "AmpDisableComplete", T_AMP, 0, 0, 0, 0),
        pk_trace(FINGER_OFF + 250_330, PK_PKEY, "EnableMclk", T_PKEY, 0, 0, 0, 0),
        pk_trace(FINGER_OFF + 250_400, PK_PKEY, "ChangeOpMode", T_PKEY, 1, 2, 0, 0),
        pk_context(FINGER_OFF + 250_500, PK_PELLAM, 4, ampsEnabling=0, ampsPrewarming=0,
                   ampsDisabling=0, ampsPending=0, **POWER_CONTEXT_IDLE),
        pk_context(FINGER_OFF + 250_520, PK_PKEY, 3, currentContext0=1, currentContext1=0,
                   ampsEnabled=0, enabled=1, mode=1, scan_time=305,
                   active_scan_interval=8_000, background_scan_interval=50_000,
                   fingerDetect=0, buttonState=0, pressCount=2, longPress=0,
                   terminalEvent=1, speed=MEDIUM, stage=0),
    ]
    return out


def event_log_records(rng):
    out = []
    # Sensor set-up when the log starts.
    t = LOG_START
    for n, (sensor, name, interval) in enumerate([
            (ACCEL, "nimbrel_feed", 10_000), (GYRO, "gyro", 20_000),
            (COMPASS, "compass", 100_000), (PRESSURE, "pressure", 250_000),
            (NEBIUM, "nebium", 50_000), (ALS, "als", 200_000),
            (TEMPERATURE, "temperature", 1_000_000)]):
        out.append(Record(t + 40 * n, SENSORS, sensor, S_SENSOR_INFO, CLIENT,
                          client(n + 1, interval, 0, 0, 0, name)))
    out += [
        Record(t + 300, SENSORS, ACCEL, S_UPDATE, DISPATCH,
               dispatcher(t + 10_000, 10_000, 20_000, 0, "accel")),
        Record(t + 320, SENSORS, GYRO, S_UPDATE, DISPATCH,
               dispatcher(t + 20_000, 20_000, 40_000, 0, "gyro")),
        Record(t + 400, SENSORS, NEBIUM, S_REGWRITE, ARGS, args(0x20, 0x57, 1, 0, 0, 0)),
        Record(t + 460, SENSORS, NEBIUM, S_REGREAD, ARGS, args(0x0F, 0x33, 1, 0, 0, 0)),
        Record(t + 520, CONTROL, 0, 0, ENTRY, entry(0x1001, "accelcal", 3, 96)),
        Record(t + 540, CONTROL, 0, 0, ENTRY, entry(0x1002, "gyro", 3, 48)),
        Record(t + 700, UNKNOWN_CATEGORY, 1, 4, MARK, [u32(0x5A17)]),
        Record(t + 900, SENSORS, GYRO, S_FILTER_STATE, ARGS, args(-12, 7, 3, 0, 0, 0)),
    ]
    # Accelerometer at 50 Hz (counts of 1/4096 g), gyro filtered at 25 Hz
    # (millidegrees per second), nimbrel in and out at 25 Hz.
    smooth = [0.02, -0.05, -0.99]
    frame = 4_180
    for n, at in enumerate(range(t + 5_000, LOG_END, 20_000)):
        pressing = EDGES[0] - 15_000 <= at <= EDGES[3] + 15_000
        g = [0.02 + rng.gauss(0, 0.003), -0.05 + rng.gauss(0, 0.003),
             -0.99 + rng.gauss(0, 0.003) - (0.03 if pressing else 0.0)]
        raw = [round(v * 4096) for v in g]
        out.append(Record(at, SENSORS, ACCEL, S_DATA, ARGS, args(*raw, 2_870, 4_096 + n, 0)))
        if n % 2 == 0:
            out.append(Record(at + 2_000, SENSORS, GYRO, S_FILTDATA, ARGS, args(
                round(rng.gauss(-12, 9)), round(rng.gauss(7, 9)), round(rng.gauss(3, 9)),
                2_880, 2_048 + n // 2, 0)))
            smooth = [s + (v - s) / 4 for s, v in zip(smooth, g)]
            out.append(nimbrel(at + 3_000, DATA_IN, *g, frame))
            out.append(nimbrel(at + 3_180, DATA_OUT, *smooth, frame))
            frame += 1
    # The compass's raw block arrives in three fragments.
    block = bytes(rng.randrange(256) for _ in range(60))
    for n, offset in enumerate(range(0, 60, 24)):
        out.append(Record(t + 150_000 + 30 * n, SENSORS, COMPASS, S_RAWDATA, FRAGMENT,
                          fragment(0x0301, 60, offset, block[offset:offset + 24])))
    out += [
        Record(t + 150_200, SENSORS, COMPASS, S_ANNOTATION, MARK, []),
        Record(t + 150_260, SENSORS, COMPASS, S_LATENCY, ARGS, args(150_000, 260, 0, 0, 0, 0)),
        Record(t + 210_000, SENSORS, PRESSURE, S_DATA, ARGS, args(101_325, 2_871, 0, 0, 0, 0)),
        Record(t + 215_000, SENSORS, ALS, S_DATA, ARGS, args(212, 198, 64, 0, 0, 0)),
        Record(t + 221_000, SENSORS, TEMPERATURE, S_DATA, ARGS, args(2_870, 0, 0, 0, 0, 0)),
        Record(t + 260_000, SENSORS, NEBIUM, S_DATA, ARGS, args(17, 0, 0, 0, 0, 0)),
        Record(t + 300_000, SENSORS, ACCEL, S_APDATA, PACKET,
               small_packet(0x0002, bytes.fromhex("0b00 3f00 2cff 1cf0 1a00 0000") + bytes(18))),
        Record(EDGES[0] - 1_900, SENSORS, ACCEL, S_TRIGGER_MAGNITUDE, TRIGGER, trigger(123, T_SENSORS)),
        Record(EDGES[0] - 1_850, SENSORS, ACCEL, S_TRIGGER_LATENCY, TRIGGER, trigger(50, T_SENSORS)),
        Record(FINGER_OFF + 200_000, SENSORS, PRESSURE, S_DATA, ARGS, args(101_322, 2_873, 0, 0, 0, 0)),
        Record(FINGER_OFF + 260_000, SENSORS, ACCEL, S_APDATA, PACKET,
               small_packet(0x0002, bytes.fromhex("0b00 4100 2aff 1af0 1a00 0000") + bytes(18))),
    ]
    # The AP's requests arrive over uart0, replies leave over uart1; uart2
    # carries a 40-byte diagnostics frame in two fragments.
    for at, command in [(t + 120_000, 0x02), (t + 180_000, 0x03), (FINGER_OFF + 300_000, 0x03)]:
        out += [
            Record(at, UART, UART0, U_ACTION, ARGS, args(1, 12, command, 0, 0, 0)),
            pk_trace(at + 80, PK_PKEY, "SetProperty" if command == 0x02 else "GetProperty",
                     T_IPC, 0x4B, 1, 0, 0),
            Record(at + 150, UART, UART1, U_DATA, PACKET,
                   small_packet(command, bytes([0x4B, 0, 1, 0]) + bytes(26))),
        ]
    out.append(pk_trace(t + 120_060, PK_PKEY, "Command", T_IPC, 0x4B, 0, 0, 0))
    frame_bytes = bytes(range(0x40, 0x68))
    for n, offset in enumerate((0, 24)):
        out.append(Record(FINGER_OFF + 320_000 + 40 * n, UART, UART2, U_RAWDATA, FRAGMENT,
                          fragment(0x0010, 40, offset, frame_bytes[offset:offset + 24])))
    out.append(Record(FINGER_OFF + 321_000, UNKNOWN_CATEGORY, 1, 5, MARK, [u32(0x5A18)]))
    return out + press_records()


# ---------------------------------------------------------------------------
# The profiler's log (ZOL_profiler, method 9): scheduling, functions,
# work loops, interrupts and the orbix monitor over the same stretch.

TASKS = ["pkey_scan_task", "nimbrel_dispatch", "sensor_poll", "uart_rx", "idle"]


def profiler_records(rng):
    out = [
        Record(LOG_START + 100, CONTROL, 1, 0, DISPATCH,
               dispatcher(LOG_START + 20_000, 20_000, 20_000, 0, "profiler")),
        Record(LOG_START + 180, UNKNOWN_CATEGORY, 0, 0, 0, [u32(1)]),
    ]
    for n, at in enumerate(range(LOG_START + 1_000, LOG_END, 20_000)):
        name = TASKS[n % len(TASKS)]
        duration = 40 + rng.randrange(120)
        out.append(Record(at, EXECUTION, SCHEDULER, 0, TASK,
                          task(n % len(TASKS) + 1, T_SENSORS + n % 5, duration, n, name)))
        out.append(Record(at + 400, EXECUTION, FUNCTION, 3, TIMING,
                          timing(0x31 + n % 4, 0, T_SENSORS + n % 5, 20 + rng.randrange(60),
                                 1 + n % 3, duration)))
    # Interrupts of the button sensor at finger on/off and at every edge,
    # each handed to a work loop.
    for at in [FINGER_ON - 25] + EDGES + [FINGER_OFF - 25]:
        latency = 9 + rng.randrange(8)
        out += [
            Record(at, INTERRUPT, GPIO, I_LATENCY, ARGS, args(37, latency, 1, 0, 0, 0)),
            Record(at + 12, EXECUTION, WORKLOOP, WL_SIGNAL, TRIGGER, trigger(37, T_PKEY)),
            Record(at + 18, EXECUTION, WORKLOOP, WL_ACTION, ARGS, args(37, T_PKEY, latency + 6, 0, 0, 0)),
        ]
    out += [
        Record(LOG_START + 120_010, EXECUTION, COMMAND, 0, ARGS, args(0x4B, 1, 12, 0, 0, 0)),
        Record(LOG_START + 180_010, EXECUTION, COMMAND, 0, ARGS, args(0x4C, 0, 12, 0, 0, 0)),
        Record(FINGER_OFF + 300_010, EXECUTION, COMMAND, 0, ARGS, args(0x4C, 0, 12, 0, 0, 0)),
        Record(START_HAPTICS + 10, EXECUTION, EXTFUNCTION, 0, TIMING, timing(0x81, 1, T_PELLAM, 140, 1, 140)),
        Record(FINGER_OFF + 250_210, EXECUTION, EXTFUNCTION, 0, TIMING, timing(0x82, 0, T_AMP, 95, 1, 95)),
        Record(EDGES[0] - 1_800, ORBIX, 0, O_TRIGGER_LATENCY, TRIGGER, trigger(2, T_SENSORS)),
        Record(EDGES[0] - 1_700, ORBIX, 0, O_LATENCY, TIMING, timing(0x51, 0, T_SENSORS, 88, 1, 88)),
        Record(LOG_START + 500_000, ORBIX, 0, O_MONITOR, ARGS, args(4, 0, 1_250, 0, 0, 0)),
        Record(LOG_START + 1_000_000, ORBIX, 0, O_MONITOR, ARGS, args(4, 1, 1_262, 0, 0, 0)),
        # A remote-queue message of 40 bytes in two fragments, and one endpoint packet.
        Record(EDGES[3] + 1_170, TRACE, REMOTEQ, 2, FRAGMENT,
               fragment(0x0013, 40, 0, bytes(range(1, 25)))),
        Record(EDGES[3] + 1_190, TRACE, REMOTEQ, 2, FRAGMENT,
               fragment(0x0013, 40, 24, bytes(range(25, 41)))),
        Record(EDGES[3] + 1_230, TRACE, ENDPOINT, 5, PACKET,
               small_packet(0x0013, bytes([2, 1, MEDIUM, 1]) + bytes(26))),
        Record(FINGER_OFF + 330_000, CONTROL, 0, 1, ENTRY, entry(0x2001, "stats", 215, 282)),
    ]
    return out


def number(records, first_seq):
    """Orders by time and numbers the records; returns (seq, record) pairs."""
    records = sorted(records, key=lambda r: r.ts)
    return [(first_seq + n, r) for n, r in enumerate(records)]


def split(numbered, cuts):
    """Cuts a log into passes at the given times."""
    passes = [[] for _ in range(len(cuts) + 1)]
    for seq, r in numbered:
        passes[sum(r.ts >= c for c in cuts)].append((seq, r))
    return passes


# ---------------------------------------------------------------------------
# Checks of the logs.

NIMBREL_IN, NIMBREL_OUT = 0x04000003, 0x04000103


def check_log(passes, capacity):
    last_seq, last_ts = None, None
    for records in passes:
        data = b"".join(encode(r.pieces(seq)) for seq, r in records)
        assert 0 < len(data) <= capacity and len(data) % 48 == 0
        for seq, r in records:
            raw = encode(r.pieces(seq))
            assert len(raw) == 48
            word_, seq_, ts_ = struct.unpack_from("<IIQ", raw)
            assert word_ >> 24 == r.header[3] and word_ & 0xFF == r.header[0]
            assert last_seq is None or seq_ == last_seq + 1
            assert last_ts is None or ts_ > last_ts, (ts_, last_ts, r.header)
            assert LOG_START <= ts_ <= LOG_END
            last_seq, last_ts = seq_, ts_
            if word_ in (NIMBREL_IN, NIMBREL_OUT):
                x, y, z = struct.unpack_from("<3i", raw, 16)
                scale = 65536 if word_ == NIMBREL_IN else 4096
                assert abs(z / scale + 1.0) < 0.1 and abs(x / scale) < 0.1


def check_coverage(all_records):
    headers = [r.header for r in all_records]
    categories = {h[3] for h in headers}
    assert set(range(9)) | {UNKNOWN_CATEGORY} <= categories
    generic = {h[0] for h in headers if h[3] not in (NIMBREL, PKEY)}
    assert {FRAGMENT, PACKET, ARGS, TRIGGER, TIMING, MARK, CLIENT, TASK, ENTRY, DISPATCH} <= generic
    pkey = [r for r in all_records if r.header[3] == PKEY]
    kinds = set()
    for r in pkey:
        type_id, event, component, _ = r.header
        raw = encode(r.payload)
        if type_id == PACKET:
            kinds.add(("packet", event if event in (PK_INPUT, PK_STATUS) else "other"))
            if event == PK_INPUT:  # report id at 18, flags at 19..20, counts at 22..26
                assert raw[2] == REPORT_ID and raw[3] <= 1 and raw[4] <= 1 and raw[6] <= 2
            if event == PK_STATUS:  # time at 18, click count at 33, speed at 36
                assert struct.unpack_from("<I", raw, 2)[0] == r.ts & 0xFFFFFFFF
                assert raw[17] <= 2 and raw[20] <= 2
        elif type_id == ARGS:
            kinds.add(("trace", component == PK_LATENCY))
            if component == PK_LATENCY:
                assert struct.unpack_from("<I", raw)[0] == event
        elif type_id == CONTEXT:
            version = struct.unpack_from("<H", raw)[0]
            kinds.add(("context", version))
            # Record offset of each layout's last field: stage, state1, stage, state1.
            last = 16 + 2 + sum(size_of([piece(0)]) for _, piece in CONTEXT_FIELDS[version]) - 1
            assert last == {3: 44, 4: 45, 5: 36, 7: 42}[version]
    assert kinds == {("packet", PK_INPUT), ("packet", PK_STATUS), ("packet", "other"),
                     ("trace", False), ("trace", True), ("context", 3), ("context", 4),
                     ("context", 5), ("context", 7)}, kinds
    checkpoints = {r.header[1] for r in pkey if r.header[2] == PK_LATENCY}
    assert checkpoints == set(CHECKPOINTS.values())
    words = {struct.unpack("<I", bytes(r.header))[0] for r in all_records}
    assert {NIMBREL_IN, NIMBREL_OUT} <= words
    sensor_events = {h[1] for h in headers if h[3] == SENSORS}
    assert sensor_events == set(range(11)) | {16, 17}
    assert {h[2] for h in headers if h[3] == SENSORS} == set(range(7))


# ---------------------------------------------------------------------------
# HID feature reports of the button's vendor device (usage page 0xFF00,
# usage 0x20). Their contents are the firmware's own: opaque bytes, except
# 0xe0 (firmware version) and 0xe1 (scan mode and intervals).

HID_REPORTS = {
    224: [u8(0xE0), u8(4), u8(12), u16(7), text("PKEY-FW 4.12.7", 16)],
    180: "b4 01 20 00 9a 01 7e 01 64 01 58 01 4c 01 40 01 "
         "38 01 30 01 28 01 20 01 1c 01 18 01 14 01 10 01 00",
    225: [u8(0xE1), u8(2), u16(8_000), u32(50_000)],
    226: "e2 00 03 01 00 00 00 00 5c 00 00 00 0c 00 00 00 02 00 00 00 00 00 00 00",
    227: "e3 01 00 00 8f 02 00 00 8f 02 00 00 00 00 00 00 00 00 00 00 "
         "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00",
    228: "e4 01 00 01",
}

# ---------------------------------------------------------------------------
# Writing.


class Rows:
    """A JSON array printed one row of items to a line."""

    def __init__(self, rows):
        self.rows = rows


def compact(value):
    return json.dumps(value, separators=(", ", ": "))


def has_rows(value):
    if isinstance(value, Rows):
        return True
    if isinstance(value, dict):
        return any(has_rows(v) for v in value.values())
    if isinstance(value, list):
        return any(has_rows(v) for v in value)
    return False


def to_json(value, depth=0):
    pad, inner = "  " * depth, "  " * (depth + 1)
    if isinstance(value, Rows):
        lines = [inner + ", ".join(compact(p) for p in row) for row in value.rows]
        return "[\n" + ",\n".join(lines) + "\n" + pad + "]"
    if isinstance(value, (dict, list)) and (has_rows(value) or len(compact(value)) > 96):
        if isinstance(value, dict):
            items = [inner + json.dumps(k) + ": " + to_json(v, depth + 1) for k, v in value.items()]
            return "{\n" + ",\n".join(items) + "\n" + pad + "}"
        items = [inner + to_json(v, depth + 1) for v in value]
        return "[\n" + ",\n".join(items) + "\n" + pad + "]"
    return compact(value)


def answer(rows):
    return {"fields": Rows(rows)}


def log_answers(passes):
    return [answer([r.pieces(seq) for seq, r in records]) for records in passes]


def flat(rows):
    return [p for row in rows for p in row]


def phone(*, btmspk=True, assets_result=None, report_results=None, passes, profiler_passes):
    zol_button = {
        "name": "ZOL_zol-button",
        "properties": {"service_id": 7},
        "commands": {
            "208": answer([MCLK_COUNTS]),
            "209": answer([PELLAM_COUNTS]),
            "215": answer(stats_record()),
            "216": {"result": assets_result} if assets_result else answer(asset_table()),
        },
    }
    services = [
        zol_button,
        {"name": "ZOL_lyn", "properties": {"service_id": 3},
         "commands": {"208": answer([LYN_POWER])}},
    ]
    if btmspk:
        services.append({"name": "ZOL_btmspk", "properties": {"service_id": 5},
                         "commands": {"208": answer([BTMSPK_POWER])}})
    services += [
        {
            "name": "ZOL_profile",
            "properties": {"service_id": 12},
            "commands": {"209": log_answers(passes)},
            "children": [{"name": "ZOL_profiler", "methods": {"9": log_answers(profiler_passes)}}],
        },
        {"name": "CorvelTMXTimesync", "class": "CorvelTMXTimesync",
         "properties": {"timesync": {"tmx": SYNC_TMX, "calendar": SYNC_CALENDAR}}},
    ]
    reports = {}
    for report_id, report in HID_REPORTS.items():
        failure = (report_results or {}).get(report_id)
        reports[str(report_id)] = {"result": failure} if failure else report_answer(report)
    return {
        "services": services,
        "hid_devices": [{"usage_page": 0xFF00, "usage": 0x20, "reports": reports}],
    }


def report_bytes(report):
    return bytes.fromhex(report) if isinstance(report, str) else encode(report)


def report_answer(report):
    return {"reply": report} if isinstance(report, str) else answer([report])


def check_replies():
    check_stats(encode(flat(stats_record())))
    check_assets(encode(flat(asset_table())))
    lyn, btmspk = encode(LYN_POWER), encode(BTMSPK_POWER)
    mclk, pellam = encode(MCLK_COUNTS), encode(PELLAM_COUNTS)
    assert len(lyn) == len(btmspk) == 12 and len(mclk) == len(pellam) == 9
    # Each state dump is offered the length the one before delivered: the
    # records must arrive whole along the chain lyn, btmspk, 0xd0, 0xd1.
    capacity = 4096
    for reply in (lyn, btmspk, mclk, pellam):
        assert len(reply) <= capacity
        capacity = len(reply)
    for report_id, report in HID_REPORTS.items():
        data = report_bytes(report)
        assert 0 < len(data) <= 256 and data[0] == report_id
    when = datetime.datetime.fromtimestamp(
        (LOG_START * 1000 + SYNC_CALENDAR - SYNC_TMX) // 1000 / 1e6, datetime.timezone.utc)
    assert when.year == 2026


def main():
    rng = random.Random(20260314)
    events = number(event_log_records(rng), 40_213)
    profiler = number(profiler_records(rng), 9_117)
    event_passes = split(events, [FINGER_ON - 40_000, FINGER_OFF + 1_000])
    profiler_passes = split(profiler, [EDGES[1]])
    check_replies()
    check_log(event_passes, 65_536)
    check_log(profiler_passes, 48_000)
    check_coverage([r for _, r in events + profiler])

    default = phone(passes=event_passes, profiler_passes=profiler_passes)
    # The faulty phone: a short log of the first records only.
    faulty = phone(btmspk=False, assets_result="0xffffffff", report_results={226: "0xe00002d8"},
                   passes=[events[:6]], profiler_passes=[profiler[:4]])
    for name, description in (("default.json", default), ("faulty.json", faulty)):
        body = to_json(description) + "\n"
        assert json.loads(body)  # well formed
        (HERE / name).write_text(body)
    print("default: %d event records in passes of %s, %d profiler records in passes of %s" % (
        len(events), [len(p) for p in event_passes],
        len(profiler), [len(p) for p in profiler_passes]))


if __name__ == "__main__":
    main()
