#!/usr/bin/env python3
"""image_geometry_pillow_timing.py PICTURE.bmp OPERATION: prints the processor seconds Pillow
takes for one operation on the picture, loading excluded, for image_geometry_bench.

cw: a quarter turn; rotate: 30 degrees, bilinear, grown to the bounding box; blur: the 3 x 3
kernel 1 2 1 / 2 4 2 / 1 2 1 over 16; grey: conversion to one channel of grey.
"""
import sys
import time

from PIL import Image, ImageFilter


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    picture = Image.open(sys.argv[1])
    picture.load()
    operations = {
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
