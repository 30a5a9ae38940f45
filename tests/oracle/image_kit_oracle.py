#!/usr/bin/env python3
"""image_kit_oracle.py <vsmkit>: checks `vsmkit image` against image_reference.py's numpy.

Random BMP pictures at 1, 4, 8 and 24 bits go through every OP. Each written picture must equal,
byte for byte, the one computed here, and each printed answer the text computed here: depth
changes (the standard palettes, grey ramps, error diffusion, the colour tree), nearest, bilinear,
area, B-spline and box scaling, sampling inside and outside the picture with every overflow
method, resampling and resolutions, and the refusals. Exits non-zero at the first mismatch.
"""
import os
import subprocess
import sys
import tempfile

import numpy as np

import image_reference as ref
from image_reference import F, Pic

rng = np.random.RandomState(20240611)
agreed = [0]


def fail(what, expected, got):
    sys.exit("mismatch: %s\n  expected: %r\n  got:      %r" % (what, expected, got))


def random_pic(bits, width, height, levels=0, grey=False):
    ppm = (int(rng.randint(1, 20000)), int(rng.randint(-5, 20000)))
    if bits == 24:
        values = rng.randint(0, 256, (height, width, 3))
        if levels:
            values = values % levels * (255 // (levels - 1))
        return Pic(24, values, ppm=ppm)
    count = 1 << bits
    palette = rng.randint(0, 256, (count, 4))
    if grey:  # a grey ramp: 255 / (count - 1) steps, spare bytes 0
        palette = np.array([[i * (255 // (count - 1))] * 3 + [0] for i in range(count)])
    return Pic(bits, rng.randint(0, count, (height, width)), palette, ppm)


class Kit:
    def __init__(self, program, folder):
        self.program, self.folder, self.files = program, folder, 0

    def path(self):
        self.files += 1
        return os.path.join(self.folder, "p%d.bmp" % self.files)

    def write(self, pic):
        path = self.path()
        with open(path, "wb") as f:
            f.write(ref.bmp(pic.dib(), pic.colors()))
        return path

    def run(self, *args):
        return subprocess.run([self.program, "image"] + [str(a) for a in args],
                              capture_output=True, text=False)

    def image(self, what, pic, op, args, expected_dib, colors):
        source, target = self.write(pic), self.path()
        done = self.run(op, source, target, *args)
        if done.returncode != 0:
            fail(what, "exit 0", (done.returncode, done.stderr))
        with open(target, "rb") as f:
            got = f.read()
        expected = ref.bmp(expected_dib, colors)
        if got != expected:
            fail(what + " (first differing byte %d)" % next(
                i for i in range(min(len(got), len(expected)) + 1)
                if i >= min(len(got), len(expected)) or got[i] != expected[i]), expected, got)
        agreed[0] += 1

    def text(self, what, pic, op, args, expected):
        done = self.run(op, self.write(pic), *args)
        if done.returncode != 0 or done.stdout.decode() != expected:
            fail(what, expected, (done.returncode, done.stdout.decode(), done.stderr))
        agreed[0] += 1

    def refused(self, what, pic, op, args, code, message):
        target = self.path()
        done = self.run(op, self.write(pic), target, *args)
        if (done.returncode, done.stderr.decode()) != (code, message) or os.path.exists(target):
            fail(what, (code, message), (done.returncode, done.stderr.decode()))
        agreed[0] += 1


def size():
    return int(rng.randint(1, 21)), int(rng.randint(1, 10))


def depth_cases(kit):
    for src, bits in ((1, 4), (1, 8), (4, 4), (4, 8), (8, 8), (1, 24), (4, 24), (8, 24), (24, 24)):
        pic = random_pic(src, *size())
        kit.image("raise %d->%d" % (src, bits), pic, "raise", [bits],
                  ref.raise_depth(pic, pic.dib(), bits), ref.depth_colors(bits))
    for src, bits, diffuse in ((24, 8, 0), (24, 4, 0), (24, 1, 0), (8, 4, 0), (8, 1, 0), (4, 1, 0),
                               (24, 8, 1), (24, 4, 1), (24, 1, 1), (8, 4, 1), (8, 1, 1), (4, 1, 1),
                               (8, 8, 0), (1, 1, 1)):
        pic = random_pic(src, *size(), levels=3 if src == 24 and diffuse else 0, grey=diffuse == 1)
        kit.image("reduce %d->%d diffuse %d" % (src, bits, diffuse), pic, "reduce",
                  [bits, diffuse, 1 << bits], ref.reduce_depth(pic, pic.dib(), bits, diffuse),
                  ref.depth_colors(bits))
    pic = random_pic(8, 5, 3)
    kit.image("reduce to the same depth with no limit", pic, "reduce", [8, 1, 0], pic.dib(), 256)
    for bits, levels in ((8, 0), (8, 4), (4, 0), (4, 3), (1, 0)):
        pic = random_pic(24, 12, 7, levels=levels)
        palette = None
        if bits != 1:
            q = ref.Quantizer(1 << bits, 8 if bits == 4 else 7)
            q.add([(int(p[2]), int(p[1]), int(p[0]), 0) for row in pic.pixels for p in row])
            palette = q.palette()
        kit.image("depth %d optimised, %d levels" % (bits, levels), pic, "depth", [bits, 1],
                  ref.reduce_depth(pic, pic.dib(), bits, True, palette), 1 << bits)
    pic = random_pic(24, *size())
    kit.image("depth 8 plain", pic, "depth", [8, 0], ref.reduce_depth(pic, pic.dib(), 8, False), 256)


def quantize_cases(kit):
    for src, colors, bits, levels in ((24, 2, 8, 0), (24, 4, 8, 3), (24, 16, 8, 0), (24, 256, 7, 0),
                                      (24, 256, 3, 0), (24, 8, 1, 0), (24, 256, 8, 5), (8, 16, 8, 0),
                                      (8, 256, 7, 0), (4, 16, 8, 0), (1, 3, 8, 0), (24, 0, 8, 0)):
        pic = random_pic(src, 16, 11, levels=levels)
        leaves, palette = ref.quantize(pic, colors, bits)
        words = ["%08x\n" % (e[3] << 24 | e[2] << 16 | e[1] << 8 | e[0]) for e in palette]
        kit.text("quantize %d colours %d bits from %d" % (colors, bits, src), pic, "quantize",
                 [colors, bits], "%d\n" % leaves + "".join(words))


def scale_cases(kit):
    cases = [(24, 1, 13, 7, 29, 5), (24, 1, 20, 9, 6, 4), (8, 1, 9, 6, 14, 3), (4, 1, 7, 5, 3, 9),
             (1, 1, 17, 4, 9, 8), (24, 3, 7, 5, 16, 11), (24, 0, 12, 5, 5, 9), (8, 3, 9, 6, 4, 3),
             (4, 4, 5, 5, 8, 7), (24, 3, 20, 20, 10, 10), (24, 3, 17, 13, 5, 4), (24, 3, 33, 9, 7, 2),
             (24, 6, 30, 21, 29, 20), (24, 2, 9, 6, 14, 9), (24, 2, 20, 14, 7, 5), (8, 2, 7, 5, 11, 8),
             (24, 5, 19, 11, 6, 4), (24, 5, 9, 9, 9, 4), (8, 5, 12, 7, 5, 5), (24, 5, 4, 3, 9, 7),
             (24, 5, 1, 1, 3, 3), (1, 5, 9, 3, 4, 2)]
    for bits, method, w, h, nw, nh in cases:
        pic = random_pic(bits, w, h)
        out = ref.scale(pic, nw, nh, method)
        colors = ref.depth_colors(24 if method == 5 and (nw < w or nh < h) else bits)
        kit.image("scale %dx%d at %d bits to %dx%d by %d" % (w, h, bits, nw, nh, method), pic,
                  "scale", [nw, nh, method], out, colors)


def sample_cases(kit):
    for pic in (random_pic(24, 9, 7), random_pic(8, 6, 5)):
        spots = [(2.25, 3.5), (0, 0), (-0.4, 1), (-0.6, 2), (-3, 2), (12.5, -1.75), (8.875, 6.75),
                 (-2.5, 7), (5, 4), (-1, -1), (30, 2)]
        spots += [(float(F(rng.uniform(-4, 12))), float(F(rng.uniform(-4, 10)))) for _ in range(9)]
        for mode in (1, 2, 3, 4, 0):
            for overflow in range(8):
                for i in rng.choice(len(spots), 3, replace=False):
                    x, y = spots[i]
                    background = int(rng.randint(0, 2**32)) if rng.randint(2) else None
                    expected = ref.sample_at(pic, mode, overflow, background, F(x), F(y))
                    args = [mode, overflow, repr(x), repr(y)]
                    if background is not None:
                        args.append("%08X" % background)
                    kit.text("sample %s at %s, %s by %d, %d" % (pic.bits, x, y, mode, overflow), pic,
                             "sample", args, "%08x\n" % expected)


def resample_cases(kit):
    sizes = ((9, 7, 4, 3), (5, 4, 9, 6), (8, 5, 3, 9), (6, 6, 11, 2))
    for mode in range(1, 6):
        for overflow in (1, 4, 5, 6, 2):
            w, h, nw, nh = sizes[rng.randint(len(sizes))]
            no_averaging = int(rng.randint(2))
            pic = random_pic(24 if rng.randint(3) else 8, w, h)
            kit.image("resample %dx%d to %dx%d mode %d overflow %d plain %d" %
                      (w, h, nw, nh, mode, overflow, no_averaging), pic, "resample",
                      [nw, nh, mode, overflow, no_averaging],
                      ref.resample(pic, nw, nh, mode, overflow, no_averaging), pic.colors())
    pic = random_pic(24, 10, 7)
    pic.ppm = (3780, 0)
    header = Pic(24, pic.pixels, ppm=(11811, 5906))
    kit.image("dpi stored", pic, "dpi", [300, 150, 0, 1], header.dib(), 0)
    moved = Pic(24, pic.pixels, ppm=(7559, 1890))  # 192 and 48 from 96: twice and half as many
    kit.image("dpi resampled", pic, "dpi", [192, 48, 1, 2], ref.resample(moved, 20, 4, 2, 5, 0), 0)


def refusal_cases(kit):
    pic = random_pic(24, 4, 3)
    kit.refused("70000 x 70000", pic, "scale", [70000, 70000, 3], 1, "vsmkit image: Unknow error.\n")
    kit.refused("mode 9", pic, "resample", [3, 3, 9, 1, 0], 1, "vsmkit image: Invalid value.\n")
    kit.text("info", random_pic(4, 11, 3), "info", [], "11 3 4 16 8 128\n")
    bad = kit.path()
    with open(bad, "wb") as f:
        f.write(b"BM not a picture")
    done = kit.run("info", bad)
    if done.returncode != 1 or kit.run("scale", bad).returncode != 2:
        fail("refusals of a bad file and missing arguments", (1, 2), done.returncode)
    agreed[0] += 1


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with tempfile.TemporaryDirectory() as folder:
        kit = Kit(sys.argv[1], folder)
        for cases in (depth_cases, quantize_cases, scale_cases, sample_cases, resample_cases,
                      refusal_cases):
            cases(kit)
    print("image kit oracle: %d cases agree" % agreed[0])


if __name__ == "__main__":
    main()
