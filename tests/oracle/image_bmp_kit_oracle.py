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
import sys
import tempfile

import numpy as np
from PIL import Image

import image_kit_oracle as kit_oracle
import image_reference as ref
from image_reference import F

rng = np.random.RandomState(81)


def normalised(kit, what, data, expected):
    source, target = kit.path(), kit.path()
    with open(source, "wb") as f:
        f.write(data)
    done = kit.run("normalise", source, target)
    got = open(target, "rb").read() if done.returncode == 0 else done.stderr
    if got != expected:
        kit_oracle.fail(what, expected, got)
    kit_oracle.agreed[0] += 1


def words(*values):
    return np.array(values, dtype="<u4").tobytes()


def bmp_file(width, height, bits, compression, ppm, tables, rows):
    header = (words(40, width, height) + np.array([1, bits], dtype="<u2").tobytes() +
              words(compression, len(rows), ppm[0], ppm[1], 0, 0))
    return b"BM" + words(54 + len(tables) + len(rows), 0, 54 + len(tables)) + header + tables + rows


def resolution(field, horizontal):
    """The horizontal field to dots per inch and back, as the kit stores it; 0 gives 96."""
    if field == 0:
        return 3780
    dpi = 96 if horizontal < 1 else int(F(horizontal * 254.0 / 10000.0 + 0.5))
    return 3780 if dpi < 1 else int(F(dpi * 10000.0 / 254.0 + 0.5))


def pillow_cases(kit):
    for mode in ("1", "L", "P", "RGB", "RGBA") * 3:
        w, h = int(rng.randint(1, 40)), int(rng.randint(1, 12))
        array = rng.randint(0, 256, (h, w, 4)).astype(np.uint8)
        array[0, 0, 3], array[-1, -1, 3] = 0, 255  # fully transparent and fully opaque
        picture = Image.fromarray(array[:, :, :3], "RGB")
        picture = {"RGBA": Image.fromarray(array, "RGBA"), "P": picture.quantize(int(rng.randint(2, 200))),
                   "RGB": picture}.get(mode) or picture.convert(mode)
        data = io.BytesIO()
        picture.save(data, "BMP", dpi=(int(rng.randint(1, 600)), int(rng.randint(1, 600))))
        data = data.getvalue()
        if mode != "RGBA":
            normalised(kit, "Pillow %s %dx%d as it stands" % (mode, w, h), data, data)
            continue
        # Bottom-up rows; each channel ((255 - a) * 255 + c * a) / 255 in blue, green, red order.
        rows = np.asarray(picture)[::-1].astype(np.int64)
        flat = ((255 - rows[:, :, 3:4]) * 255 + rows[:, :, 2::-1] * rows[:, :, 3:4]) // 255
        dib = bytearray(data[14:54])
        dib[0:4], dib[14:16], dib[32:36] = words(40), b"\x18\x00", words(0)
        expected = b"BM" + words(54 + len(ref.Pic(24, flat).rows()), 0, 54) + dib + ref.Pic(24, flat).rows()
        normalised(kit, "Pillow RGBA %dx%d composed onto white" % (w, h), data, expected)
    for _ in range(3):
        pic = ref.Pic(4, rng.randint(0, 16, (int(rng.randint(1, 9)), int(rng.randint(1, 30)))),
                      np.append(rng.randint(0, 256, (16, 3)), np.zeros((16, 1)), axis=1), (2835, 2835))
        data = ref.bmp(pic.dib(), 16)
        if not np.array_equal(np.asarray(Image.open(io.BytesIO(data)))[::-1], pic.pixels):
            kit_oracle.fail("Pillow reads the 4-bit file", pic.pixels, None)
        normalised(kit, "4 bits as it stands", data, data)


def bit_field_cases(kit):
    for name, bits, compression, masks in (("5-6-5", 16, 3, (0xF800, 0x07E0, 0x001F)),
                                           ("5-5-5 plain", 16, 0, (0x7C00, 0x03E0, 0x001F)),
                                           ("32-bit masks", 32, 3, (0xFF0000, 0x00FF00, 0x0000FF))) * 3:
        w, h = int(rng.randint(1, 25)), int(rng.randint(1, 9))
        ppm = (int(rng.choice([0, 1000, 2835, 11811])), int(rng.choice([0, 1000, 3780])))
        raw = rng.randint(0, 256, (h, ((w + 1) // 2) * 4 if bits == 16 else w * 4)).astype(np.uint8)
        tables = words(*masks) if compression == 3 else b""
        data = bmp_file(w, h, bits, compression, ppm, tables, raw.tobytes())
        pixels = np.zeros((h, w, 3), dtype=np.int64)
        counts = [bin(m).count("1") for m in masks]  # red, green, blue
        for x in range(w):
            p = raw[:, 2 * x].astype(np.int64) | raw[:, 2 * x + 1].astype(np.int64) << 8
            pixels[:, x] = raw[:, 4 * x:4 * x + 3] if bits == 32 else np.stack(
                [(p & masks[2]) << (8 - counts[2]), (p & masks[1]) >> (counts[1] + counts[2] - 8),
                 (p & masks[0]) >> (sum(counts) - 8)], axis=1) & 255
        # Pillow scales each channel to 255; the kit keeps the top bits and zeroes the rest.
        decoded = np.asarray(Image.open(io.BytesIO(data)).convert("RGB"))[::-1, :, ::-1].astype(np.int64)
        kept = [8 - c for c in counts[::-1]] if bits == 16 else [0, 0, 0]
        if any((decoded[:, :, k] >> kept[k] != pixels[:, :, k] >> kept[k]).any() for k in range(3)):
            kit_oracle.fail("Pillow agrees on the top bits of %s" % name, pixels, decoded)
        # 24-bit rows; at 16 bits the padding keeps what the in-place first pass copied there.
        size = ref.stride(w, 24)
        rows = bytearray(raw.tobytes()[:size * h] if bits == 16 else b"").ljust(size * h, b"\0")
        for y in range(h):
            rows[y * size:y * size + 3 * w] = pixels[y].astype(np.uint8).tobytes()
        expected = bmp_file(w, h, 24, 0, (resolution(ppm[0], ppm[0]), resolution(ppm[1], ppm[0])),
                            b"", bytes(rows))
        normalised(kit, "%s %dx%d at %r" % (name, w, h, ppm), data, expected)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with tempfile.TemporaryDirectory() as folder:
        kit = kit_oracle.Kit(sys.argv[1], folder)
        pillow_cases(kit)
        bit_field_cases(kit)
    print("image BMP oracle: %d cases agree" % kit_oracle.agreed[0])


if __name__ == "__main__":
    main()
