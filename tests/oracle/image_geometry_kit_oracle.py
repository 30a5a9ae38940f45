#!/usr/bin/env python3
"""image_geometry_kit_oracle.py <vsmkit>: checks the geometry OPs of `vsmkit image` against numpy.

Random BMP pictures at 1, 4, 8 and 24 bits are flipped, mirrored and turned (against numpy's
array operations), cropped (against slices), extended, pasted onto and rotated by any angle
(against image_reference's samplers). Exits non-zero at the first mismatch.
"""
import sys
import tempfile

import image_kit_oracle as kit_oracle
import image_operations_reference as ops
from image_kit_oracle import Kit, random_pic

rng = kit_oracle.rng


def size():
    return int(rng.randint(1, 23)), int(rng.randint(1, 12))


def move_cases(kit):
    moves = (("flip", lambda p: ops.Pic(p.bits, p.pixels[::-1], p.palette, p.ppm)),
             ("mirror", lambda p: ops.Pic(p.bits, p.pixels[:, ::-1], p.palette, p.ppm)),
             ("cw", lambda p: ops.turned(p, 1)), ("ccw", lambda p: ops.turned(p, -1)),
             ("half", lambda p: ops.turned(p, 2)))
    for bits in (1, 4, 8, 24):
        for name, move in moves:
            pic = random_pic(bits, *size())
            kit.image("%s at %d bits" % (name, bits), pic, name, [], move(pic).dib(), pic.colors())
        pic = random_pic(bits, 70, 66)  # more than one tile each way
        kit.image("cw by tiles at %d bits" % bits, pic, "cw", [], ops.turned(pic, 1).dib(),
                  pic.colors())
    for angle, turns in (("90", 1), ("-90", -1), ("450.7", 1), ("180", 2), ("-270", 1), ("0", 0)):
        pic = random_pic(int(rng.choice([1, 4, 8, 24])), *size())
        kit.image("turn %s" % angle, pic, "turn", [angle], ops.turned(pic, turns).dib(), pic.colors())
    kit.refused("turn 45", random_pic(8, 3, 3), "turn", ["45"], 1, "vsmkit image: Successful.\n")


def crop_cases(kit):
    for bits in (1, 4, 8, 24):
        for _ in range(6):
            w, h = size()
            pic = random_pic(bits, w, h)
            rect = tuple(int(v) for v in rng.randint(-3, 25, 4))
            if rng.randint(3) == 0:
                rect = rect[:2] + (-1,) + rect[3:] if rng.randint(2) else rect[:3] + (-1,)
            out = ops.crop(pic, rect)
            if out is None:
                kit.refused("crop %r" % (rect,), pic, "crop", rect, 1, "vsmkit image: Invalid value.\n")
            else:
                kit.image("crop %r at %d bits" % (rect, bits), pic, "crop", rect, out.dib(), pic.colors())


def extend_cases(kit):
    for bits in (1, 4, 8, 24):
        for _ in range(3):
            w, h = size()
            pic = random_pic(bits, w, h)
            width, color = int(rng.randint(1, 30)), int(rng.randint(0, 2**24))
            kit.image("extend %d to %d at %d bits" % (w, width, bits), pic, "extend",
                      [width, "%08x" % color], ops.extend(pic, width, color).dib(), pic.colors())


def paste_cases(kit):
    for bits, other_bits in ((24, 24), (8, 24), (1, 8), (4, 1), (24, 4), (1, 24)):
        pic, other = random_pic(bits, *size()), random_pic(other_bits, *size(), levels=2)
        x, y = int(rng.randint(-3, 10)), int(rng.randint(-3, 6))
        kit.image("paste %d onto %d at %d, %d" % (other_bits, bits, x, y), pic, "paste",
                  [x, y, kit.write(other)], ops.paste(pic, x, y, other).dib(), pic.colors())


def rotate_cases(kit):
    for bits, mode, overflow in ((24, 2, 1), (24, 2, 5), (24, 1, 2), (24, 3, 4), (8, 2, 6),
                                 (8, 4, 1), (4, 1, 3), (1, 2, 1), (24, 0, 7)):
        for keep in (0, 1):
            pic = random_pic(bits, *size())
            angle = float(rng.choice([30, -17.25, 135.5, 1e-5, 300, 89.99]))
            background = None if rng.randint(2) else int(rng.randint(0, 2**32))
            args = [repr(angle), mode, overflow, keep] + ([] if background is None else
                                                           ["%08x" % background])
            expected = ops.rotate(pic, mode, overflow, background, keep, angle)
            if isinstance(expected, str):
                expected = {"none": pic, "cw": ops.turned(pic, 1), "ccw": ops.turned(pic, -1),
                            "half": ops.turned(pic, 2)}[expected].dib()
            kit.image("rotate %s by %d, %d, keep %d at %d bits" % (angle, mode, overflow, keep, bits),
                      pic, "rotate", args, expected, pic.colors())


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with tempfile.TemporaryDirectory() as folder:
        kit = Kit(sys.argv[1], folder)
        for cases in (move_cases, crop_cases, extend_cases, paste_cases, rotate_cases):
            cases(kit)
    print("image geometry oracle: %d cases agree" % kit_oracle.agreed[0])


if __name__ == "__main__":
    main()
