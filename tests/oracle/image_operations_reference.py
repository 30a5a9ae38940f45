"""The geometry, tone, filter and drawing formulas computed independently with numpy and Python's
integers, for image_operations_kit_oracle.py. Pictures are image_reference.Pic; results are
packed DIB bytes unless a function says otherwise.
"""
import math

import numpy as np

import image_reference as ref
from image_reference import F, Pic


def region(rect, width, height):
    """The columns and rows a rect names, or None for an empty one."""
    left, top, right, bottom = rect
    if right == -1:
        left, right = 0, width
    if bottom == -1:
        top, bottom = 0, height
    left, right = min(max(left, 0), width), min(max(right, 0), width)
    top, bottom = min(max(top, 0), height), min(max(bottom, 0), height)
    if left == right or top == bottom:
        return None
    return min(left, right), min(top, bottom), max(left, right), max(top, bottom)


def grey(b, g, r):
    return (int(g) * 601 + int(b) * 117 + int(r) * 306) >> 10


def grey_of(color):
    return grey(color & 255, color >> 8 & 255, color >> 16 & 255)


def raw_rows(pic):
    """The pixel array as a mutable array of bytes, padding included."""
    return np.frombuffer(pic.rows(), dtype=np.uint8).copy()


def with_rows(pic, rows, palette=None):
    """The dib of `pic` with its pixel array replaced by raw bytes."""
    dib = pic.dib(None if palette is None else bytes(palette))
    return dib[:len(dib) - len(rows)] + bytes(rows)


def palette_of(pic, colors):
    """What Create copies into a new palette of `colors` entries from this picture's block."""
    return bytearray(ref.copied_palette(pic.dib(), colors))


# --- Geometry ---

def turned(pic, quarter_turns):
    """Counter-clockwise in the array means clockwise on a picture stored bottom-up."""
    return Pic(pic.bits, np.rot90(pic.pixels, quarter_turns), pic.palette, pic.ppm)


def crop(pic, rect):
    left, top, right, bottom = rect
    if (right - left >= pic.width and bottom - top >= pic.height) or rect == (0, 0, -1, -1):
        return pic
    box = region(rect, pic.width, pic.height)
    if box is None:
        return None
    l, t, r, b = box
    return Pic(pic.bits, pic.pixels[t:b, l:r], pic.palette, pic.ppm)


def nearest_index(pic, color):
    return int(ref.nearest(pic.palette, ref.bgr(color))[0])


def extend(pic, width, colorref):
    if width <= pic.width:
        return crop(pic, (0, 0, width, pic.height))
    color = (colorref & 255) << 16 | (colorref & 0xFF00) | (colorref >> 16 & 255)
    shape = (pic.height, width) + pic.pixels.shape[2:]
    pixels = np.zeros(shape, dtype=np.uint8)
    pixels[:, :pic.width] = pic.pixels
    pixels[:, pic.width:] = ref.bgr(color) if pic.palette is None else nearest_index(pic, color)
    return Pic(pic.bits, pixels, pic.palette, pic.ppm)


def paste(pic, x, y, other):
    x, y = max(x, 0), max(y, 0)
    out = pic.pixels.copy()
    for i in range(min(other.width, pic.width - x)):
        for j in range(min(pic.height - y, other.height)):
            color = other.color(i, j) & 0xFFFFFF
            if pic.bits == 1 and color != 0xFFFFFF:
                color = 0
            out[y + j, x + i] = ref.bgr(color) if pic.palette is None else nearest_index(pic, color)
    return Pic(pic.bits, out, pic.palette, pic.ppm)


def rotate(pic, mode, overflow, background, keep, angle):
    """The turned picture's dib, or the name of the exact routine the turn falls to."""
    radians = -float(F(angle)) * 1.5707963267948966 / 90.0
    c, s = F(math.cos(radians)), F(math.sin(radians))
    w, h, half = F(pic.width), F(pic.height), F(0.5)
    corners = [(-half, -half), (w - half, -half), (-half, h - half), (w - half, h - half)]
    if not keep:
        last = corners[3]
        corners = [(c * x - s * y, s * x + c * y) for x, y in corners]
        ends = (((h - half, half - w), "cw"), ((half - h, w - half), "ccw"),
                ((half - w, half - h), "half"), (last, "none"))
        for point, name in ends:
            dx, dy = corners[3][0] - point[0], corners[3][1] - point[1]
            if np.sqrt(dx * dx + dy * dy) < F(0.25):
                return name
    xs, ys = [p[0] for p in corners], [p[1] for p in corners]
    nw, nh = int(np.floor(max(xs) - min(xs) + half)), int(np.floor(max(ys) - min(ys) + half))
    x0 = (min(xs) + max(xs) - F(nw - 1)) / F(2)
    y0 = (min(ys) + max(ys) - F(nh - 1)) / F(2)
    add_x = add_y = F(0)
    if keep:
        x0, y0 = x0 - F(pic.width // 2), y0 - F(pic.height // 2)
        add_x, add_y = F(nw // 2), F(nh // 2)
    rows, yy = [], y0
    for _ in range(nh):
        row, xx = [], x0
        for _ in range(nw):
            sx, sy = c * xx + s * yy + add_x, -s * xx + c * yy + add_y
            row.append(ref.sample_at(pic, mode, overflow, background, sx, sy))
            xx = xx + F(1)
        rows.append(row)
        yy = yy + F(1)
    return ref.resized(pic, rows)


# --- Tone ---

def threshold(pic, rect, level):
    if pic.bits == 1:
        return crop(pic, rect)
    l, t, r, b = region(rect, pic.width, pic.height)
    out = [[1 if level < grey_of(pic.color(x, y)) else 0 for x in range(l, r)] for y in range(t, b)]
    return Pic(1, out, ref.entries([0, 0xFFFFFF]), pic.ppm)


def grey_ramp(palette):
    count = len(palette) // 4
    for i in range(count):
        palette[4 * i:4 * i + 3] = bytes([255 // (count - 1) * i] * 3)
    return palette


def to_grey(pic, rect):
    """The dib ToGrey makes, 8 bits with a grey ramp."""
    pal = bytearray(pic.palette.tobytes()) if pic.palette is not None else None
    if pic.bits == 24:
        l, t, r, b = region(rect, pic.width, pic.height)
        raw, size = raw_rows(pic), ref.stride(pic.width, 24)
        # Row j and byte `left` of each row, whatever the region's top.
        out = [[grey(*raw[j * size + l + 3 * i:j * size + l + 3 * i + 3]) for i in range(r - l)]
               for j in range(b - t)]
        return Pic(8, out, np.zeros((256, 4)), pic.ppm).dib(grey_ramp(palette_of(pic, 256)))
    for i in range(len(pal) // 4):
        pal[4 * i] = grey(*pal[4 * i:4 * i + 3])
    greys = [pal[4 * i] for i in range(len(pal) // 4)] + [0] * 256
    if pic.bits == 8:
        rows = bytes(greys[v] for v in raw_rows(pic))
        return with_rows(pic, rows, grey_ramp(pal))
    changed = Pic(pic.bits, pic.pixels, np.frombuffer(bytes(pal), np.uint8).reshape(-1, 4), pic.ppm)
    l, t, r, b = region(rect, pic.width, pic.height)
    out = [[greys[pic.pixels[y, x]] for x in range(l, r)] for y in range(t, b)]
    return Pic(8, out, np.zeros((256, 4)), pic.ppm).dib(grey_ramp(palette_of(changed, 256)))


def negate(pic):
    if pic.bits == 24:
        return with_rows(pic, bytes(255 - v for v in raw_rows(pic)))
    pal = pic.palette.astype(np.int64)
    if all(e[0] == e[1] == e[2] for e in pal):
        return Pic(pic.bits, (1 << pic.bits) - 1 - pic.pixels.astype(np.int64), pic.palette,
                   pic.ppm).dib()
    pal[:, :3] = 255 - pal[:, :3]
    return Pic(pic.bits, pic.pixels, pal, pic.ppm).dib()


def apply_lut(pic, table):
    if pic.palette is not None:
        pal = pic.palette.copy()
        pal[:, :3] = np.array(table, dtype=np.uint8)[pal[:, :3]]
        return Pic(pic.bits, pic.pixels, pal, pic.ppm).dib()
    # Each byte takes the entry of the byte after it; behind the last lies the block's end, 0.
    raw = list(raw_rows(pic)) + [0]
    return with_rows(pic, bytes(table[raw[i + 1]] for i in range(len(raw) - 1)))


def table_value(v):
    return 255 if v >= 255 else 0 if not v >= 1 else int(v)


def c_pow(base, e):
    """C's pow (Python's own, which numpy's vector routines don't match), with 0 to a negative
    power infinite."""
    return math.inf if base == 0 and e < 0 else math.pow(base, e)


def c_div(a, b):
    if b == 0:
        return math.nan if a == 0 or math.isnan(a) else math.copysign(math.inf, a)
    return a / b


def gamma_table(gamma):
    e = float(F(1) / F(gamma)) if gamma != 0 else math.inf
    k = c_div(c_pow(255.0, e), 255.0)
    return [table_value(c_div(c_pow(float(i), e), k)) for i in range(256)]


def light_table(brightness, contrast):
    scale = (F(contrast) + F(100)) / F(100)
    base = F(brightness) + F(128)
    return [table_value(float(ref.fma32(F(i), scale, base))) for i in range(-128, 128)]


# --- Filter ---

def wrap32(v):
    v &= 0xFFFFFFFF
    return v - (1 << 32) if v >= 1 << 31 else v


def finish(total, factor, offset):
    v = wrap32(total)
    if factor == -1:
        v = wrap32(-v)
    elif factor not in (0, 1):
        v = wrap32(ref.trunc_div(v, factor))
    v = wrap32(v + offset)
    return 0 if v <= 0 else v if v <= 254 else 255


def convolve(pic, kernel, size, factor, offset):
    low, high = size // 2, size - size // 2
    w, h = pic.width, pic.height
    grey_path = pic.bits == 8 and all(e[0] == e[1] == e[2] for e in pic.palette)
    if grey_path:
        factor = factor or 1
        out = pic.pixels.astype(np.int64).copy()
        src = pic.pixels.astype(np.int64)
        for y in range(h):
            for x in range(w):
                if y - low <= 0 or y + high > h or x - low <= 0 or x + high > w:
                    continue
                window = src[y - low:y - low + size, x - low:x - low + size]
                out[y, x] = finish(int((window * np.array(kernel).reshape(size, size)).sum()),
                                   factor, offset)
        return Pic(8, out, pic.palette, pic.ppm).dib()
    rows = []
    for y in range(h):
        row = []
        for x in range(w):
            sums = [0, 0, 0]
            for m in range(size):
                for n in range(size):
                    c = pic.color(x - low + n, y - low + m)  # outside: pixel (0, 0)
                    sums = [sums[k] + kernel[m * size + n] * ref.channel(c, k) for k in range(3)]
            row.append(ref.pack(*(finish(v, factor, offset) for v in sums)))
        rows.append(row)
    return ref.resized(pic, rows)


# --- Drawing and measures ---

def fill(pic, rect, color):
    box = region(rect, pic.width, pic.height)
    if box is None:
        return None
    l, t, r, b = box
    out = pic.pixels.copy()
    if pic.palette is None:
        out[t:b, l:r] = ref.bgr(color)
    else:
        same = [i for i, e in enumerate(pic.palette) if ref.pack(*e[:3]) == color & 0xFFFFFF]
        out[t:b, l:r] = same[0] if same else nearest_index(pic, color)
    return Pic(pic.bits, out, pic.palette, pic.ppm)


def blend(pic, rect, color, opacity):
    l, t, r, b = region(rect, pic.width, pic.height)
    right = pic.width if rect[2] == -1 else rect[2]
    bottom = pic.height if rect[3] == -1 else rect[3]
    out = np.zeros((bottom - rect[1], right - rect[0], 3), dtype=np.uint8)
    op = F(opacity)
    for y in range(t, b):
        for x in range(l, r):
            c = pic.color(x, y)
            if F(0) < op < F(1):
                c = ref.pack(*(int((F(1) - op) * F(ref.channel(c, k)) + op * F(ref.channel(color, k)))
                               for k in range(3)))
            elif op >= F(1):
                c = color
            if y - t < out.shape[0] and x - l < out.shape[1]:
                out[y - t, x - l] = ref.bgr(c)
    return Pic(24, out, ppm=pic.ppm).dib()


def deviation(pic, rect):
    l, t, r, b = region(rect, pic.width, pic.height)
    total = squares = count = 0.0
    for y in range(t, b):
        for x in range(l, r):
            c = pic.color(x, y)
            v = (c & 255) * 65536.0 + (c >> 8 & 255) * 256.0 + float(c >> 16 & 255)
            count += 1
            total += v
            d = v - total / count
            squares += d * d
    return math.sqrt(squares / count)


def content_bounds(pic, color):
    hits = [(x, y) for y in range(pic.height) for x in range(pic.width) if pic.color(x, y) != color]
    if not hits:
        return 0x7FFFFFFF, 0x7FFFFFFF, 0, 0
    xs, ys = [p[0] for p in hits], [p[1] for p in hits]
    return min(xs), min(ys), max(xs), max(ys)
