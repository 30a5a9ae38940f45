#!/usr/bin/env python3
"""image_tone_kit_oracle.py <vsmkit>: checks the tone, filter and drawing OPs of `vsmkit image`
against numpy and Python's integers.

Random BMP pictures at 1, 4, 8 and 24 bits are thresholded, greyed (with the displaced window
above 8 bits), negated, mapped through random, gamma and light tables, convolved on grey and
colour pictures, filled and blended; the colour spread and the content bounds are printed.
Exits non-zero at the first mismatch.
"""
import sys
import tempfile

import image_kit_oracle as kit_oracle
import image_operations_reference as ops
from image_kit_oracle import Kit, random_pic

rng = kit_oracle.rng


def size():
    return int(rng.randint(1, 20)), int(rng.randint(1, 11))


def rect(w, h):
    r = [int(rng.randint(-2, w + 3)), int(rng.randint(-2, h + 3)), int(rng.randint(-2, w + 3)),
         int(rng.randint(-2, h + 3))]
    if rng.randint(4) == 0:
        r[2] = -1
    if rng.randint(4) == 0:
        r[3] = -1
    return tuple(r)


def usable_rect(pic):
    while True:
        r = rect(pic.width, pic.height)
        if ops.region(r, pic.width, pic.height) is not None:
            return r


def tone_cases(kit):
    for bits in (1, 4, 8, 24):
        for _ in range(3):
            pic = random_pic(bits, *size())
            r, level = usable_rect(pic), int(rng.randint(-1, 256))
            kit.image("threshold %r %d at %d bits" % (r, level, bits), pic, "threshold",
                      r + (level,), ops.threshold(pic, r, level).dib(), 2 if bits != 1 else 2)
            r = usable_rect(pic)
            kit.image("grey %r at %d bits" % (r, bits), pic, "grey", r, ops.to_grey(pic, r), 256)
        for grey in (False, True):
            pic = random_pic(bits, *size(), grey=grey and bits != 24)
            kit.image("negate at %d bits" % bits, pic, "negate", [], ops.negate(pic), pic.colors())
        table = [int(v) for v in rng.randint(0, 256, 256)]
        pic = random_pic(bits, *size())
        kit.image("lut at %d bits" % bits, pic, "lut", ["".join("%02x" % v for v in table)],
                  ops.apply_lut(pic, table), pic.colors())
    for gamma in (1.0, 2.2, 0.45, 0.0, -1.5):
        pic = random_pic(int(rng.choice([8, 24])), *size())
        kit.image("gamma %r" % gamma, pic, "gamma", [repr(gamma)],
                  ops.apply_lut(pic, ops.gamma_table(gamma)), pic.colors())
    for brightness, contrast in ((0, 0), (0, -100), (20, 0), (0, 50), (-30.5, 33.3), (300, 10)):
        pic = random_pic(int(rng.choice([4, 24])), *size())
        kit.image("light %r %r" % (brightness, contrast), pic, "light",
                  [repr(brightness), repr(contrast)],
                  ops.apply_lut(pic, ops.light_table(brightness, contrast)), pic.colors())


def convolve_cases(kit):
    cases = ((8, True, 3, 16, 0, "blur"), (8, True, 3, 1, 10, "random"), (8, True, 5, -3, 40, "random"),
             (8, True, 3, 0, 0, "random"), (24, False, 3, 16, 0, "blur"), (24, False, 3, 0, 0, "random"),
             (24, False, 5, 7, -5, "random"), (24, False, 1, -1, 255, "random"),
             (8, False, 3, 9, 0, "random"), (4, False, 3, 2, 0, "random"), (1, False, 3, 4, 0, "random"))
    for bits, grey, n, factor, offset, kind in cases:
        pic = random_pic(bits, int(rng.randint(1, 14)), int(rng.randint(1, 10)), grey=grey)
        kernel = ([1, 2, 1, 2, 4, 2, 1, 2, 1] if kind == "blur" else
                  [int(v) for v in rng.randint(-4, 6, n * n)])
        kit.image("convolve %d at %d bits%s by %d, %d" % (n, bits, " grey" if grey else "", factor, offset),
                  pic, "convolve", [n, factor, offset] + kernel,
                  ops.convolve(pic, kernel, n, factor, offset), pic.colors())


def draw_cases(kit):
    for bits in (1, 4, 8, 24):
        for _ in range(3):
            pic = random_pic(bits, *size())
            r, color = rect(pic.width, pic.height), int(rng.randint(0, 2**24))
            if bits != 24 and rng.randint(2):
                e = pic.palette[int(rng.randint(len(pic.palette)))]
                color = ops.ref.pack(*(int(v) for v in e[:3]))  # an exact entry
            out = ops.fill(pic, r, color)
            if out is None:
                kit.refused("fill %r" % (r,), pic, "fill", r + ("%08x" % color,), 1,
                            "vsmkit image: Invalid value.\n")
            else:
                kit.image("fill %r at %d bits" % (r, bits), pic, "fill", r + ("%08x" % color,),
                          out.dib(), pic.colors())
        for opacity in (0.3, 1.0, 0.0, 0.999, 2.5):
            pic = random_pic(bits, *size())
            r = usable_rect(pic)
            right = pic.width if r[2] == -1 else r[2]
            bottom = pic.height if r[3] == -1 else r[3]
            if right <= r[0] or bottom <= r[1]:
                continue  # a rect given the wrong way round leaves no block
            color = int(rng.randint(0, 2**32))
            kit.image("blend %r %r at %d bits" % (r, opacity, bits), pic, "blend",
                      r + ("%08x" % color, repr(opacity)), ops.blend(pic, r, color, opacity), 0)


def measure_cases(kit):
    for bits in (1, 4, 8, 24):
        pic = random_pic(bits, *size(), levels=2 if bits == 24 else 0)
        r = usable_rect(pic)
        kit.text("deviation %r at %d bits" % (r, bits), pic, "deviation", r,
                 "%.17g\n" % ops.deviation(pic, r))
        color = pic.color(0, 0) if rng.randint(2) else 0x00808080
        kit.text("content bounds at %d bits" % bits, pic, "contentbounds", ["%08x" % color],
                 "%d %d %d %d\n" % ops.content_bounds(pic, color))


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with tempfile.TemporaryDirectory() as folder:
        kit = Kit(sys.argv[1], folder)
        for cases in (tone_cases, convolve_cases, draw_cases, measure_cases):
            cases(kit)
    print("image tone oracle: %d cases agree" % kit_oracle.agreed[0])


if __name__ == "__main__":
    main()
