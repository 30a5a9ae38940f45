#!/usr/bin/env python3
"""image_operations_kit_oracle.py <vsmkit>: checks the geometry, tone, filter and drawing OPs of
`vsmkit image` against image_operations_reference.py's numpy and Python integers.

Random BMP pictures at 1, 4, 8 and 24 bits are flipped, mirrored and turned (against numpy's
array operations), cropped (against slices), extended, pasted onto, rotated by any angle,
thresholded, greyed, negated, mapped through random, gamma and light tables, convolved on grey
and colour pictures, filled and blended; the colour spread and the content bounds are printed.
Exits non-zero at the first mismatch.
"""
import sys
import tempfile

import image_kit_oracle as kit_oracle
import image_operations_reference as ops
from image_kit_oracle import Kit, random_pic

rng = kit_oracle.rng
INVALID = "vsmkit image: Invalid value.\n"


def size():
    return int(rng.randint(1, 23)), int(rng.randint(1, 12))


def rect(pic, usable=False):
    while True:
        r = [int(v) for v in rng.randint(-2, max(pic.width, pic.height) + 3, 4)]
        r[2], r[3] = (-1 if rng.randint(4) == 0 else r[2]), (-1 if rng.randint(4) == 0 else r[3])
        if not usable or ops.region(r, pic.width, pic.height) is not None:
            return tuple(r)


def geometry_cases(kit):
    moves = (("flip", lambda p: ops.Pic(p.bits, p.pixels[::-1], p.palette, p.ppm)),
             ("mirror", lambda p: ops.Pic(p.bits, p.pixels[:, ::-1], p.palette, p.ppm)),
             ("cw", lambda p: ops.turned(p, 1)), ("ccw", lambda p: ops.turned(p, -1)),
             ("half", lambda p: ops.turned(p, 2)))
    for bits in (1, 4, 8, 24):
        for name, move in moves:
            pic = random_pic(bits, *(size() if name != "cw" else (70, 66)))  # tiles and remainders
            kit.image("%s at %d bits" % (name, bits), pic, name, [], move(pic).dib(), pic.colors())
        for _ in range(4):
            pic, r = random_pic(bits, *size()), rect(random_pic(bits, 20, 10))
            out = ops.crop(pic, r)
            if out is None:
                kit.refused("crop %r" % (r,), pic, "crop", r, 1, INVALID)
            else:
                kit.image("crop %r at %d bits" % (r, bits), pic, "crop", r, out.dib(), pic.colors())
        pic, width, color = random_pic(bits, *size()), int(rng.randint(1, 30)), int(rng.randint(2**24))
        kit.image("extend to %d at %d bits" % (width, bits), pic, "extend", [width, "%08x" % color],
                  ops.extend(pic, width, color).dib(), pic.colors())
        pic, other = random_pic(bits, *size()), random_pic(int(rng.choice([1, 8, 24])), *size(), levels=2)
        x, y = int(rng.randint(-3, 10)), int(rng.randint(-3, 6))
        kit.image("paste at %d, %d onto %d bits" % (x, y, bits), pic, "paste",
                  [x, y, kit.write(other)], ops.paste(pic, x, y, other).dib(), pic.colors())
    for angle, turns in (("-90", -1), ("450.7", 1), ("180", 2), ("0", 0)):
        pic = random_pic(int(rng.choice([1, 4, 8, 24])), *size())
        kit.image("turn %s" % angle, pic, "turn", [angle], ops.turned(pic, turns).dib(), pic.colors())
    for bits, mode, overflow in ((24, 2, 1), (24, 2, 5), (24, 1, 2), (24, 3, 4), (8, 2, 6),
                                 (8, 4, 1), (4, 1, 3), (1, 2, 1), (24, 0, 7)):
        for keep in (0, 1):
            pic = random_pic(bits, *size())
            angle = float(rng.choice([30, -17.25, 135.5, 1e-5, 300, 89.99]))
            background = None if rng.randint(2) else int(rng.randint(0, 2**32))
            expected = ops.rotate(pic, mode, overflow, background, keep, angle)
            if isinstance(expected, str):  # a turn that ends where a right angle would
                expected = {"none": pic, "cw": ops.turned(pic, 1), "ccw": ops.turned(pic, -1),
                            "half": ops.turned(pic, 2)}[expected].dib()
            kit.image("rotate %s by %d, %d, keep %d at %d bits" % (angle, mode, overflow, keep, bits),
                      pic, "rotate", [repr(angle), mode, overflow, keep] +
                      ([] if background is None else ["%08x" % background]), expected, pic.colors())


def tone_cases(kit):
    for bits in (1, 4, 8, 24):
        for _ in range(3):
            pic = random_pic(bits, *size())
            r, level = rect(pic, True), int(rng.randint(-1, 256))
            kit.image("threshold %r %d at %d bits" % (r, level, bits), pic, "threshold", r + (level,),
                      ops.threshold(pic, r, level).dib(), 2)
            r = rect(pic, True)
            kit.image("grey %r at %d bits" % (r, bits), pic, "grey", r, ops.to_grey(pic, r), 256)
        for grey in (False, True):
            pic = random_pic(bits, *size(), grey=grey and bits != 24)
            kit.image("negate at %d bits" % bits, pic, "negate", [], ops.negate(pic), pic.colors())
        pic, table = random_pic(bits, *size()), [int(v) for v in rng.randint(0, 256, 256)]
        kit.image("lut at %d bits" % bits, pic, "lut", ["".join("%02x" % v for v in table)],
                  ops.apply_lut(pic, table), pic.colors())
    for gamma in (1.0, 2.2, 0.45, 0.0, -1.5):
        pic = random_pic(int(rng.choice([8, 24])), *size())
        kit.image("gamma %r" % gamma, pic, "gamma", [repr(gamma)],
                  ops.apply_lut(pic, ops.gamma_table(gamma)), pic.colors())
    for light in ((0, 0), (0, -100), (20, 0), (0, 50), (-30.5, 33.3), (300, 10)):
        pic = random_pic(int(rng.choice([4, 24])), *size())
        kit.image("light %r" % (light,), pic, "light", [repr(v) for v in light],
                  ops.apply_lut(pic, ops.light_table(*light)), pic.colors())
    for bits, grey, n, factor, offset in ((8, True, 3, 16, 0), (8, True, 3, 1, 10), (8, True, 5, -3, 40),
                                          (8, True, 3, 0, 0), (24, False, 3, 16, 0), (24, False, 3, 0, 0),
                                          (24, False, 5, 7, -5), (24, False, 1, -1, 255),
                                          (8, False, 3, 9, 0), (4, False, 3, 2, 0), (1, False, 3, 4, 0)):
        pic = random_pic(bits, int(rng.randint(1, 14)), int(rng.randint(1, 10)), grey=grey)
        kernel = [int(v) for v in rng.randint(-4, 6, n * n)]
        kit.image("convolve %d at %d bits, grey %d, by %d, %d" % (n, bits, grey, factor, offset), pic,
                  "convolve", [n, factor, offset] + kernel, ops.convolve(pic, kernel, n, factor, offset),
                  pic.colors())


def draw_cases(kit):
    for bits in (1, 4, 8, 24):
        for _ in range(3):
            pic = random_pic(bits, *size())
            r, color = rect(pic), int(rng.randint(0, 2**24))
            if bits != 24 and rng.randint(2):  # an exact entry
                color = ops.ref.pack(*(int(v) for v in pic.palette[int(rng.randint(len(pic.palette)))][:3]))
            out = ops.fill(pic, r, color)
            if out is None:
                kit.refused("fill %r" % (r,), pic, "fill", r + ("%08x" % color,), 1, INVALID)
            else:
                kit.image("fill %r at %d bits" % (r, bits), pic, "fill", r + ("%08x" % color,),
                          out.dib(), pic.colors())
        for opacity in (0.3, 1.0, 0.0, 0.999, 2.5):
            pic = random_pic(bits, *size())
            r = rect(pic, True)
            if (pic.width if r[2] == -1 else r[2]) <= r[0] or (pic.height if r[3] == -1 else r[3]) <= r[1]:
                continue  # a rect given the wrong way round leaves no block
            color = int(rng.randint(0, 2**32))
            kit.image("blend %r %r at %d bits" % (r, opacity, bits), pic, "blend",
                      r + ("%08x" % color, repr(opacity)), ops.blend(pic, r, color, opacity), 0)
        pic = random_pic(bits, *size(), levels=2 if bits == 24 else 0)
        r = rect(pic, True)
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
        for cases in (geometry_cases, tone_cases, draw_cases):
            cases(kit)
    print("image operations oracle: %d cases agree" % kit_oracle.agreed[0])


if __name__ == "__main__":
    main()
