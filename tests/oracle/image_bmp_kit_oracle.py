#!/usr/bin/env python3
"""image_bmp_kit_oracle.py <vsmkit>: BMP files from Pillow and bit-field files through
`vsmkit image normalise`.

Pillow (Debian's python3-pil) writes 1-, 8-, 24- and 32-bit files; this script writes 4-bit and
bit-field files (5-6-5 and 32-bit masks, plain 16-bit 5-5-5) with numpy, and Pillow reads each
one back, which checks the files themselves. The normalised block must be the file's own for 1,
4, 8 and 24 bits, the alpha composed onto white for 32 bits, and the bit-field pixels decoded by
their masks (top bits only) for the rest, byte for byte, resolutions and padding included.
"""
import io
import os
import subprocess
import sys
import tempfile

import numpy as np
from PIL import Image

import image_reference as ref
from image_reference import F

rng = np.random.RandomState(81)
agreed = [0]


def fail(what, expected, got):
    sys.exit("mismatch: %s\n  expected: %r\n  got:      %r" % (what, expected, got))


def normalise(program, folder, name, data):
    source, target = os.path.join(folder, name + ".bmp"), os.path.join(folder, name + ".out.bmp")
    with open(source, "wb") as f:
        f.write(data)
    done = subprocess.run([program, "image", "normalise", source, target], capture_output=True)
    if done.returncode != 0:
        fail(name, "exit 0", (done.returncode, done.stderr))
    with open(target, "rb") as f:
        return f.read()


def check(what, expected, got):
    if expected != got:
        fail(what, expected, got)
    agreed[0] += 1


def words(*values):
    return np.array(values, dtype="<u4").tobytes()


def header(width, height, bits, compression, image_size, ppm, colors=0):
    return (words(40, width, height) + np.array([1, bits], dtype="<u2").tobytes() +
            words(compression, image_size, ppm[0] & 0xFFFFFFFF, ppm[1] & 0xFFFFFFFF, colors, 0))


def bmp_file(dib, pixel_offset):
    return b"BM" + words(14 + len(dib), 0, 14 + pixel_offset) + dib


def dpi_of(field):
    return 96 if field < 1 else int(F(field * 254.0 / 10000.0 + 0.5))


def field_of(dpi):
    return 3780 if dpi < 1 else int(F(dpi * 10000.0 / 254.0 + 0.5))


def pillow_cases(program, folder):
    for mode in ("1", "L", "P", "RGB", "RGBA"):
        for _ in range(3):
            w, h = int(rng.randint(1, 40)), int(rng.randint(1, 12))
            array = rng.randint(0, 256, (h, w, 4)).astype(np.uint8)
            if mode == "RGBA":
                array[0, 0, 3], array[-1, -1, 3] = 0, 255  # fully transparent and opaque
                picture = Image.fromarray(array, "RGBA")
            elif mode == "P":
                colours = int(rng.randint(2, 200))
                picture = Image.fromarray(array[:, :, :3], "RGB").quantize(colours)
            else:
                picture = Image.fromarray(array[:, :, :3], "RGB").convert(mode)
            data = io.BytesIO()
            picture.save(data, "BMP", dpi=(int(rng.randint(1, 600)), int(rng.randint(1, 600))))
            data = data.getvalue()
            got = normalise(program, folder, "pillow_%s_%d" % (mode, w), data)
            if mode != "RGBA":
                check("Pillow %s %dx%d kept as it stands" % (mode, w, h), data, got)
                continue
            # Rows bottom-up in the file; each channel ((255 - a) * 255 + c * a) / 255.
            rows = np.asarray(picture)[::-1].astype(np.int64)
            alpha = rows[:, :, 3:4]
            flat = ((255 - alpha) * 255 + rows[:, :, 2::-1] * alpha) // 255
            dib = bytearray(data[14:54])
            dib[0:4], dib[14:16], dib[32:36] = words(40), b"\x18\x00", words(0)
            check("Pillow RGBA %dx%d composed onto white" % (w, h),
                  bmp_file(bytes(dib) + ref.Pic(24, flat).rows(), 40), got)


def four_bit_cases(program, folder):
    for _ in range(3):
        w, h = int(rng.randint(1, 30)), int(rng.randint(1, 9))
        pic = ref.Pic(4, rng.randint(0, 16, (h, w)), rng.randint(0, 256, (16, 4)), (2835, 2835))
        pic.palette[:, 3] = 0
        data = ref.bmp(pic.dib(), 16)
        decoded = Image.open(io.BytesIO(data))
        if decoded.mode != "P" or not np.array_equal(np.asarray(decoded)[::-1], pic.pixels):
            fail("Pillow reads the 4-bit file", pic.pixels, np.asarray(decoded))
        check("4 bits %dx%d kept as it stands" % (w, h), data,
              normalise(program, folder, "four_%d" % w, data))


def bit_field_cases(program, folder):
    layouts = (("5-6-5", 16, 3, (0xF800, 0x07E0, 0x001F)), ("5-5-5 plain", 16, 0, (0x7C00, 0x03E0, 0x001F)),
               ("32-bit masks", 32, 3, (0xFF0000, 0x00FF00, 0x0000FF)))
    for name, bits, compression, masks in layouts:
        for _ in range(3):
            w, h = int(rng.randint(1, 25)), int(rng.randint(1, 9))
            ppm = (int(rng.choice([0, 1000, 2835, 11811])), int(rng.choice([0, 1000, 3780])))
            row_bytes = ((w + 1) // 2) * 4 if bits == 16 else w * 4
            raw = rng.randint(0, 256, (h, row_bytes)).astype(np.uint8)
            table = words(*masks) if compression == 3 else b""
            data = bmp_file(header(w, h, bits, compression, raw.size, ppm) + table + raw.tobytes(),
                            40 + len(table))
            decoded = np.asarray(Image.open(io.BytesIO(data)).convert("RGB"))[::-1].astype(np.int64)
            # The kit keeps each channel's top bits and zeroes the rest.
            pixels = np.zeros((h, w, 3), dtype=np.int64)
            for x in range(w):
                if bits == 32:
                    pixels[:, x] = raw[:, 4 * x:4 * x + 3]
                    continue
                p = raw[:, 2 * x].astype(np.int64) | raw[:, 2 * x + 1].astype(np.int64) << 8
                red, green, blue = (bin(m).count("1") for m in masks)
                pixels[:, x, 0] = ((p & masks[2]) << (8 - blue)) & 255
                pixels[:, x, 1] = ((p & masks[1]) >> (green + blue - 8)) & 255
                pixels[:, x, 2] = ((p & masks[0]) >> (red + green + blue - 8)) & 255
            kept = [8 - bin(m).count("1") for m in masks[::-1]] if bits == 16 else [0, 0, 0]
            for k in range(3):
                if not np.array_equal(decoded[:, :, 2 - k] >> kept[k], pixels[:, :, k] >> kept[k]):
                    fail("Pillow agrees on the top bits of %s" % name, pixels[:, :, k], decoded[:, :, 2 - k])
            # 24-bit rows; at 16 bits the padding keeps what the in-place pass copied there.
            size = ref.stride(w, 24)
            rows = bytearray(size * h)
            if bits == 16:
                copied = raw.tobytes()[:size * h]
                rows[:len(copied)] = copied
            for y in range(h):
                rows[y * size:y * size + 3 * w] = pixels[y].astype(np.uint8).tobytes()
            x_field = 3780 if ppm[0] == 0 else field_of(dpi_of(ppm[0]))
            y_field = 3780 if ppm[1] == 0 else field_of(dpi_of(ppm[0]))
            expected = bmp_file(header(w, h, 24, 0, len(rows), (x_field, y_field)) + bytes(rows), 40)
            check("%s %dx%d at %r" % (name, w, h, ppm), expected,
                  normalise(program, folder, "fields_%d_%d" % (bits, w), data))


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with tempfile.TemporaryDirectory() as folder:
        for cases in (pillow_cases, four_bit_cases, bit_field_cases):
            cases(sys.argv[1], folder)
    print("image BMP oracle: %d cases agree" % agreed[0])


if __name__ == "__main__":
    main()
