#!/usr/bin/env python3
"""Checks a screenshot: a PNG of the given size that is not blank and shows
each given colour somewhere (the press bars, the controller's ticks).
Standard library only: the PNG is unpacked with zlib and unfiltered here.

    check_png.py shot.png WIDTH HEIGHT [RRGGBB...]
"""
import struct
import sys
import zlib


def read_png(path):
    with open(path, "rb") as file:
        data = file.read()
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        raise ValueError("not a PNG")
    at, header, idat = 8, None, b""
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + size]
        if zlib.crc32(kind + body) != struct.unpack(">I", data[at + 8 + size:at + 12 + size])[0]:
            raise ValueError(f"bad CRC in {kind!r}")
        if kind == b"IHDR":
            header = struct.unpack(">IIBBBBB", body)
        elif kind == b"IDAT":
            idat += body
        at += 12 + size
    width, height, depth, colour, _, _, interlace = header
    if depth != 8 or colour not in (2, 6) or interlace != 0:
        raise ValueError(f"unexpected PNG form: depth {depth}, colour type {colour}")
    channels = 3 if colour == 2 else 4
    return width, height, channels, unfilter(zlib.decompress(idat), width, height, channels)


def unfilter(raw, width, height, channels):
    stride = width * channels
    rows, previous, at = [], bytearray(stride), 0
    for _ in range(height):
        kind, line = raw[at], bytearray(raw[at + 1:at + 1 + stride])
        at += 1 + stride
        for i in range(stride):
            left = line[i - channels] if i >= channels else 0
            up = previous[i]
            corner = previous[i - channels] if i >= channels else 0
            if kind == 1:
                line[i] = (line[i] + left) & 0xff
            elif kind == 2:
                line[i] = (line[i] + up) & 0xff
            elif kind == 3:
                line[i] = (line[i] + (left + up) // 2) & 0xff
            elif kind == 4:
                p = left + up - corner
                pa, pb, pc = abs(p - left), abs(p - up), abs(p - corner)
                best = left if pa <= pb and pa <= pc else up if pb <= pc else corner
                line[i] = (line[i] + best) & 0xff
        rows.append(bytes(line))
        previous = line
    return rows


def main(path, width, height, colours):
    try:
        got_width, got_height, channels, rows = read_png(path)
    except (ValueError, zlib.error, struct.error, TypeError) as error:
        print(f"{path}: {error}")
        return 1
    faults = []
    if (got_width, got_height) != (width, height):
        faults.append(f"{got_width}x{got_height}, not {width}x{height}")
    seen, painted = set(), 0
    for row in rows:
        for i in range(0, len(row), channels):
            pixel = row[i:i + 3]
            seen.add(pixel)
            painted += pixel != b"\xff\xff\xff"
    share = painted / (got_width * got_height)
    if share < 0.02:
        faults.append(f"blank: {share:.1%} of the pixels are not white")
    if len(seen) < 16:
        faults.append(f"only {len(seen)} colours")
    for colour in colours:
        if bytes.fromhex(colour) not in seen:
            faults.append(f"no pixel of #{colour}")
    for fault in faults:
        print(f"{path}: {fault}")
    if not faults:
        print(f"{path}: {got_width}x{got_height}, {share:.1%} painted, {len(seen)} colours")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), sys.argv[4:]))
