"""Screen shots: the instrument's PCX images, decoded with bounds, and PNG files."""

from __future__ import annotations

import os
import struct
import zlib
from pathlib import Path

from . import _core
from ._errors import AutomationError

_MOST_PIXELS = 4096 * 4096
_CAPTURE_AND_TRANSFER = 3


def save(driver: _core.clsKEL4x, path: str | os.PathLike[str]) -> Path:
    """See Session.screenshot."""
    target = Path(path)
    if target.suffix.lower() not in (".png", ".pcx"):
        raise ValueError(f"a screen shot is saved as .png or .pcx, not as {target.name!r}")
    done, image = driver.ScreenShot(_CAPTURE_AND_TRANSFER)
    if not done or image is None:
        raise AutomationError(0x80040000 + 2004, "qkel4x.screenshot", "the instrument refused to capture its screen")
    target.write_bytes(image if target.suffix.lower() == ".pcx" else pcx_to_png(image))
    return target


def pcx_to_png(pcx: bytes) -> bytes:
    """A PCX image as PNG; a ValueError says what is wrong with it."""
    width, height, rows = _decode(pcx)
    raw = b"".join(b"\0" + row for row in rows)
    head = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)

    def chunk(kind: bytes, body: bytes) -> bytes:
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

    return (
        b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(raw, 6)) + chunk(b"IEND", b"")
    )


def _decode(pcx: bytes) -> tuple[int, int, list[bytes]]:
    """Width, height and rows of RGB bytes."""
    if len(pcx) < 128 or pcx[0] != 0x0A:
        raise ValueError("this is no PCX image: it does not begin with a PCX header")
    encoding, bits = pcx[2], pcx[3]
    left, top, right, bottom = struct.unpack_from("<4H", pcx, 4)
    planes, stride = pcx[65], int(struct.unpack_from("<H", pcx, 66)[0])
    width, height = right - left + 1, bottom - top + 1
    if width < 1 or height < 1 or width * height > _MOST_PIXELS:
        raise ValueError(f"this PCX image claims to be {width} by {height} pixels")
    if (bits, planes) not in ((8, 1), (8, 3), (1, 1), (1, 2), (1, 3), (1, 4), (2, 1), (4, 1)):
        raise ValueError(f"a PCX image of {planes} planes of {bits} bits is not supported")
    if stride * 8 < width * bits:
        raise ValueError(f"a row of {stride} bytes is too short for {width} pixels")
    scan = _unpacked(pcx, stride * planes * height, encoding == 1)
    palette = _palette(pcx, bits, planes)
    rows = []
    for y in range(height):
        line = scan[y * stride * planes : (y + 1) * stride * planes]
        parts = [line[plane * stride : (plane + 1) * stride] for plane in range(planes)]
        if bits == 8 and planes == 3:
            row = bytearray(3 * width)
            for plane in range(3):
                row[plane::3] = parts[plane][:width]
            rows.append(bytes(row))
            continue
        indices: list[int] | bytes
        if bits == 8:
            indices = parts[0][:width]
        else:
            mask = (1 << bits) - 1
            indices = [
                sum(
                    (part[x * bits // 8] >> (8 - bits - x * bits % 8) & mask) << plane * bits
                    for plane, part in enumerate(parts)
                )
                for x in range(width)
            ]
        rows.append(b"".join([palette[index] for index in indices]))
    return width, height, rows


def _unpacked(pcx: bytes, size: int, run_lengths: bool) -> bytes:
    """The scan lines, `size` bytes of them."""
    if not run_lengths:
        scan = pcx[128 : 128 + size]
    else:
        out = bytearray()
        at = 128
        while len(out) < size and at < len(pcx):
            byte = pcx[at]
            at += 1
            if byte < 0xC0:
                out.append(byte)
            elif at < len(pcx):
                out += pcx[at : at + 1] * (byte & 0x3F)
                at += 1
        scan = bytes(out[:size])
    if len(scan) < size:
        raise ValueError(f"this PCX image is cut short: {len(scan)} of {size} bytes")
    return scan


def _palette(pcx: bytes, bits: int, planes: int) -> list[bytes]:
    colours = 1 << bits * planes if bits * planes <= 8 else 0
    if bits == 8 and planes == 1:
        if len(pcx) >= 128 + 769 and pcx[-769] == 0x0C:
            return [pcx[at : at + 3] for at in range(len(pcx) - 768, len(pcx), 3)]
        return [bytes((grey,)) * 3 for grey in range(256)]
    if bits == 1 and planes == 1:
        return [b"\0\0\0", b"\xff\xff\xff"]
    return [pcx[16 + 3 * i : 19 + 3 * i] for i in range(min(colours, 16))]
