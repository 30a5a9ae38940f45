#!/usr/bin/env python3
"""image_pillow_timing.py PICTURE.bmp OPERATION: prints the processor seconds Pillow takes for
one operation on the picture, loading excluded, for the image benchmarks.

half: bilinear resize to half size; reduce: reduce(2), a box average; up: bicubic resize to 1.5
times; dither: conversion to the web palette with Floyd-Steinberg diffusion; cw: a quarter turn;
rotate: 30 degrees, bilinear, grown to the bounding box; blur: the 3 x 3 kernel
1 2 1 / 2 4 2 / 1 2 1 over 16; grey: conversion to one channel of grey.
"""
import sys
import time

from PIL import Image, ImageFilter


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    picture = Image.open(sys.argv[1])
    picture.load()
    width, height = picture.size
    operations = {
        "half": lambda: picture.resize((width // 2, height // 2), Image.Resampling.BILINEAR),
        "reduce": lambda: picture.reduce(2),
        "up": lambda: picture.resize((width * 3 // 2, height * 3 // 2), Image.Resampling.BICUBIC),
        "dither": lambda: picture.convert("P", palette=Image.Palette.WEB,
                                          dither=Image.Dither.FLOYDSTEINBERG),
        "cw": lambda: picture.transpose(Image.Transpose.ROTATE_270),
        "rotate": lambda: picture.rotate(30, Image.Resampling.BILINEAR, expand=True),
        "blur": lambda: picture.filter(ImageFilter.Kernel((3, 3), [1, 2, 1, 2, 4, 2, 1, 2, 1], 16)),
        "grey": lambda: picture.convert("L"),
    }
    start = time.process_time()
    operations[sys.argv[2]]()
    print("%.6f" % (time.process_time() - start))


if __name__ == "__main__":
    main()
