"""The image kit's formulas computed independently with numpy, for image_kit_oracle.py.

A picture is a Pic: depth, palette (entries as 4-byte rows blue, green, red, spare) and pixels
(indices, or blue, green, red bytes), row 0 first. Floats are numpy float32 unless a formula
says 64 bits; fma32 rounds a fused multiply-add once, exactly.
"""
from fractions import Fraction

import numpy as np

F = np.float32


def hex_palette(text):
    return [int(v, 16) for v in text.split()]


STANDARD16 = hex_palette("000000 800000 008000 808000 000080 800080 008080 C0C0C0 808080 FF0000 "
                         "00FF00 FFFF00 0000FF FF00FF 00FFFF FFFFFF")
STANDARD256 = hex_palette(
    "000000 800000 008000 808000 000080 800080 008080 C0C0C0 C0DCC0 A6CAF0 FFF0D4 FFE2B1 FFD48E"
    " FFC66B FFB848 FFAA25 FFAA00 DC9200 B97A00 966200 734A00 503200 FFE3D4 FFC7B1 FFAB8E FF8F6B"
    " FF7348 FF5725 FF5500 DC4900 B93D00 963100 732500 501900 FFD4D4 FFB1B1 FF8E8E FF6B6B FF4848"
    " FF2525 FE0000 DC0000 B90000 960000 730000 500000 FFD4E3 FFB1C7 FF8EAB FF6B8F FF4873 FF2557"
    " FF0055 DC0049 B9003D 960031 730025 500019 FFD4F0 FFB1E2 FF8ED4 FF6BC6 FF48B8 FF25AA FF00AA"
    " DC0092 B9007A 960062 73004A 500032 FFD4FF FFB1FF FF8EFF FF6BFF FF48FF FF25FF FE00FE DC00DC"
    " B900B9 960096 730073 500050 F0D4FF E2B1FF D48EFF C66BFF B848FF AA25FF AA00FF 9200DC 7A00B9"
    " 620096 4A0073 320050 E3D4FF C7B1FF AB8EFF 8F6BFF 7348FF 5725FF 5500FF 4900DC 3D00B9 310096"
    " 250073 190050 D4D4FF B1B1FF 8E8EFF 6B6BFF 4848FF 2525FF 0000FE 0000DC 0000B9 000096 000073"
    " 000050 D4E3FF B1C7FF 8EABFF 6B8FFF 4873FF 2557FF 0055FF 0049DC 003DB9 003196 002573 001950"
    " D4F0FF B1E2FF 8ED4FF 6BC6FF 48B8FF 25AAFF 00AAFF 0092DC 007AB9 006296 004A73 003250 D4FFFF"
    " B1FFFF 8EFFFF 6BFFFF 48FFFF 25FFFF 00FEFE 00DCDC 00B9B9 009696 007373 005050 D4FFF0 B1FFE2"
    " 8EFFD4 6BFFC6 48FFB8 25FFAA 00FFAA 00DC92 00B97A 009662 00734A 005032 D4FFE3 B1FFC7 8EFFAB"
    " 6BFF8F 48FF73 25FF57 00FF55 00DC49 00B93D 009631 007325 005019 D4FFD4 B1FFB1 8EFF8E 6BFF6B"
    " 48FF48 25FF25 00FE00 00DC00 00B900 009600 007300 005000 E3FFD4 C7FFB1 ABFF8E 8FFF6B 73FF48"
    " 57FF25 55FF00 49DC00 3DB900 319600 257300 195000 F0FFD4 E2FFB1 D4FF8E C6FF6B B8FF48 AAFF25"
    " AAFF00 92DC00 7AB900 629600 4A7300 325000 FFFFD4 FFFFB1 FFFF8E FFFF6B FFFF48 FFFF25 FEFE00"
    " DCDC00 B9B900 969600 737300 505000 F2F2F2 E6E6E6 DADADA CECECE C2C2C2 B6B6B6 AAAAAA 9E9E9E"
    " 929292 868686 7A7A7A 6E6E6E 626262 565656 4A4A4A 3E3E3E 323232 262626 1A1A1A 0E0E0E FFFBF0"
    " A0A0A4 808080 FF0000 00FF00 FFFF00 0000FF FF00FF 00FFFF FFFFFF")


def entries(words):
    """0xRRGGBB words as palette rows (blue, green, red, spare 0)."""
    return np.array([[w & 255, w >> 8 & 255, w >> 16 & 255, 0] for w in words], dtype=np.uint8)


def stride(width, bits):
    return (width * bits + 31) // 32 * 4


class Pic:
    def __init__(self, bits, pixels, palette=None, ppm=(3780, 3780)):
        self.bits, self.pixels, self.ppm = bits, np.array(pixels, dtype=np.uint8), ppm
        self.height, self.width = self.pixels.shape[:2]
        self.palette = None if palette is None else np.array(palette, dtype=np.uint8)

    def colors(self):
        return 0 if self.palette is None else len(self.palette)

    def color(self, x, y):
        """PixelColorAt: the entry's four bytes, 0 past the palette; three bytes at 24 bits."""
        if not (0 <= x < self.width and 0 <= y < self.height):
            x = y = 0
        if self.palette is None:
            b, g, r = (int(v) for v in self.pixels[y, x])
            return r << 16 | g << 8 | b
        i = int(self.pixels[y, x])
        if i >= len(self.palette):
            return 0
        b, g, r, a = (int(v) for v in self.palette[i])
        return a << 24 | r << 16 | g << 8 | b

    def rows(self):
        out = bytearray()
        size = stride(self.width, self.bits)
        for row in self.pixels:
            if self.bits == 24:
                data = row.reshape(-1).tobytes()
            elif self.bits == 8:
                data = row.tobytes()
            elif self.bits == 4:
                padded = np.append(row, 0) if len(row) % 2 else row
                data = (padded[0::2] << 4 | padded[1::2]).astype(np.uint8).tobytes()
            else:
                data = np.packbits(row).tobytes()
            out += data + bytes(size - len(data))
        return bytes(out)

    def dib(self, palette_bytes=None):
        colors = self.colors()
        if palette_bytes is None:
            palette_bytes = b"" if self.palette is None else self.palette.tobytes()
        pal = palette_bytes
        rows = self.rows()
        header = np.array([40, self.width, self.height], dtype="<i4").tobytes()
        header += np.array([1, self.bits], dtype="<u2").tobytes()
        header += np.array([0, len(rows), self.ppm[0], self.ppm[1], colors, 0], dtype="<i4").tobytes()
        return header + pal + rows


def bmp(dib, colors):
    return (b"BM" + np.array([14 + len(dib), 0, 14 + 40 + 4 * colors], dtype="<u4").tobytes() + dib)


def copied_palette(source_dib, colors):
    """What Create copies into a new palette: the template block's bytes behind its header."""
    data = source_dib[40:40 + 4 * colors]
    return data + bytes(4 * colors - len(data))


def depth_colors(bits):
    return 0 if bits == 24 else 1 << bits


def trunc_div(a, b):
    return -(-a // b) if a < 0 else a // b


def nearest(palette, rgb):
    """The lowest index among the entries nearest to (blue, green, red) rows."""
    pal = palette[:, :3].astype(np.int64)
    colors = np.asarray(rgb, dtype=np.int64).reshape(-1, 3)
    return np.argmin(((colors[:, None, :] - pal[None, :, :]) ** 2).sum(axis=2), axis=1)


def bgr(color):
    return [color & 255, color >> 8 & 255, color >> 16 & 255]


# --- Depth ---

def raise_depth(src, src_dib, bits):
    colors = depth_colors(bits)
    pal = bytearray(copied_palette(src_dib, colors))
    if bits == 24:
        px = np.array([[bgr(src.color(x, y)) for x in range(src.width)] for y in range(src.height)])
        return Pic(24, px, ppm=src.ppm).dib()
    count = min(src.colors(), colors)
    pal[:4 * count] = src.palette.tobytes()[:4 * count]
    return Pic(bits, src.pixels, np.frombuffer(bytes(pal), np.uint8).reshape(-1, 4), src.ppm).dib()


def target_palette(src_dib, bits, given=None):
    colors = depth_colors(bits)
    if given is not None:
        return np.array(given, dtype=np.uint8).reshape(-1, 4)[:colors]
    if bits == 1:
        return entries([0, 0xFFFFFF])
    return entries(STANDARD16 if bits == 4 else STANDARD256)


def reduce_depth(src, src_dib, bits, diffuse, palette=None):
    pal = target_palette(src_dib, bits, palette)
    out = np.zeros((src.height, src.width), dtype=np.uint8)
    # The walk changes the source: its colours live here, and a palette source snaps every write
    # to its own nearest entry.
    work = src.pixels.copy()

    def get(x, y):
        if not (0 <= x < src.width and 0 <= y < src.height):
            x = y = 0
        if src.palette is None:
            return [int(v) for v in work[y, x]]
        i = int(work[y, x])
        return [int(v) for v in src.palette[i][:3]] if i < len(src.palette) else [0, 0, 0]

    for y in range(src.height):
        for x in range(src.width):
            c = get(x, y)
            i = int(nearest(pal, c)[0])
            out[y, x] = i
            if not diffuse:
                continue
            error = [c[k] - int(pal[i][k]) for k in range(3)]
            for dx, dy, weight in ((1, 0, 7), (-1, 1, 2), (0, 1, 4), (1, 1, 1)):
                nx, ny = x + dx, y + dy
                n = get(nx, ny)
                v = [min(255, max(0, n[k] + trunc_div(error[k] * weight, 16))) for k in range(3)]
                if 0 <= nx < src.width and 0 <= ny < src.height:
                    work[ny, nx] = v if src.palette is None else nearest(src.palette, v)[0]
    if src.bits == 1:
        pal = entries([0, 0xFFFFFF])
    return Pic(bits, out, pal, src.ppm).dib()


class Quantizer:
    """The colour tree: one bit of red, green, blue per level; the newest branch of the deepest
    level folds first."""

    def __init__(self, colors, bits):
        self.bits, self.out, self.limit = min(bits, 8), colors, max(colors, 16)
        self.leaves, self.root, self.chains = 0, None, [[] for _ in range(9)]

    def node(self, level):
        node = {"leaf": level == self.bits, "count": 0, "sums": [0, 0, 0, 0], "kids": [None] * 8}
        if node["leaf"]:
            self.leaves += 1
        else:
            self.chains[level].append(node)
        return node

    def insert(self, r, g, b, a):
        if self.root is None:
            self.root = self.node(0)
        node, level = self.root, 0
        while not node["leaf"]:
            shift = 7 - level
            k = (r >> shift & 1) << 2 | (g >> shift & 1) << 1 | (b >> shift & 1)
            if node["kids"][k] is None:
                node["kids"][k] = self.node(level + 1)
            node, level = node["kids"][k], level + 1
        node["count"] += 1
        node["sums"] = [s + v for s, v in zip(node["sums"], (r, g, b, a))]

    def fold(self):
        level = self.bits - 1
        while not self.chains[level] and level > 0:
            level -= 1
        node = self.chains[level].pop()
        kids = [k for k in node["kids"] if k is not None]
        node["count"] += sum(k["count"] for k in kids)
        node["sums"] = [sum(k["sums"][c] for k in kids) for c in range(4)]
        node["kids"], node["leaf"] = [None] * 8, True
        self.leaves += 1 - len(kids)

    def add(self, colors):
        for r, g, b, a in colors:
            self.insert(r, g, b, a)
            while self.leaves > self.limit:
                self.fold()

    def palette(self):
        """Entries as blue, green, red, fourth byte."""
        leaves = []

        def walk(node):
            if node["leaf"]:
                n = node["count"]
                r, g, b, a = (s // n if n else 0 for s in node["sums"])
                leaves.append(([b, g, r, a], n))
            else:
                for k in node["kids"]:
                    if k is not None:
                        walk(k)

        if self.root is not None:
            walk(self.root)
        out = [[0, 0, 0, 0] for _ in range(self.out)]
        if self.out >= 16 or len(leaves) <= self.out:
            for i, (rgba, _) in enumerate(leaves[:self.out]):
                out[i] = rgba
            return out
        for j in range(self.out):
            group = leaves[j * len(leaves) // self.out:(j + 1) * len(leaves) // self.out]
            total = sum(n for _, n in group)
            out[j] = [sum(c[k] * n for c, n in group) // total if total else 0 for k in range(4)]
        return out


def quantize(src, colors, bits):
    q = Quantizer(colors, bits)
    q.add([((c >> 16) & 255, (c >> 8) & 255, c & 255, c >> 24 & 255)
           for y in range(src.height) for x in range(src.width) for c in [src.color(x, y)]])
    return q.leaves, q.palette()


# --- Floats ---

def round32(exact):
    """The float32 nearest to a Fraction, ties to even."""
    guess = F(float(exact))
    best = None
    for c in (np.nextafter(guess, F(-np.inf)), guess, np.nextafter(guess, F(np.inf))):
        key = (abs(Fraction(float(c)) - exact), int(np.array(c).view(np.uint32)) & 1)
        if best is None or key < best[0]:
            best = (key, c)
    return best[1]


def fma32(a, b, c):
    return round32(Fraction(float(a)) * Fraction(float(b)) + Fraction(float(c)))


def cube(v):
    return v * v * v if v > 0 else F(0)


def bspline(t):
    if t > 2:
        return F(0)
    s = cube(t + F(2))
    s = fma32(F(-4), cube(t + F(1)), s)
    s = fma32(F(6), cube(t), s)
    s = fma32(F(-4), cube(t - F(1)), s)
    return s * F(0.16666667)


def cubic(t):
    u = abs(t)
    if u < 1:
        return fma32(u * u, u, fma32(F(-2) * u, u, F(1)))
    if u < 2:
        s = fma32(F(5) * u, u, fma32(F(-8), u, F(4)))
        return fma32(-(u * u), u, s)
    return F(0)


def keys(t, a=F(-0.5)):
    u = abs(t)
    if u < 1:
        return fma32(-((a + F(3)) * u), u, (a + F(2)) * u * u * u) + F(1)
    if u < 2:
        s = fma32(-(F(5) * a * u), u, a * u * u * u)
        return fma32(F(8) * a, u, s) - F(4) * a
    return F(0)


def trunc(v):
    v = float(v)
    return int(v) if -2147483649.0 < v < 2147483648.0 else -2147483648


def remainder(a, b):
    return a - b * trunc(a / b)


# --- Sampling ---

def channel(color, k):
    return color >> 8 * k & 255


def pack(b, g, r):
    return r << 16 | g << 8 | b


def fold_int(c, size, method):
    if method == 5:
        return min(max(c, 0), size - 1)
    if method == 6:
        return (-c) % size if c < 0 else size - (c % size + 1) if c >= size else c
    return c % size if method == 4 else c


def fold_float(c, size, method):
    whole = float(F(size))
    if method == 5:
        return F(0) if c < 0 else F(size - 1.0) if c > size - 1.0 else c
    if method == 6:
        if c < 0:
            return F(remainder(float(-c), whole))
        return F(whole - (remainder(float(c), whole) + 1)) if c >= size else c
    if method == 4:
        rest = remainder(float(c), whole)
        return F(rest + whole if rest < 0 else rest)
    return c


def color_or_background(pic, x, y, overflow, background):
    """Inside: the pixel. Outside: folded for overflow 4 to 6, else the background (white)."""
    if 0 <= x < pic.width and 0 <= y < pic.height:
        return pic.color(x, y)
    if overflow < 4 or overflow > 6:
        return 0xFFFFFF if background is None else background
    return pic.color(fold_int(x, pic.width, overflow), fold_int(y, pic.height, overflow))


def cell(v):
    return trunc(v) - (1 if v < 0 else 0)


def clamp_byte(v):
    return 255 if v > 255 else 0 if v < 0 else int(v)


def sample_at(pic, mode, overflow, background, x, y):
    if mode == 1:
        return color_or_background(pic, trunc(x + F(0.5)), trunc(y + F(0.5)), overflow, background)
    w, h = pic.width, pic.height
    xi, yi = cell(x), cell(y)
    taps = 4 if mode in (3, 4) else 2
    inside = (-2 <= xi <= w and -2 <= yi <= h) if taps == 4 else (-1 <= xi < w and -1 <= yi < h)
    if not inside:
        if 1 <= overflow <= 3:
            return 0xFFFFFF if background is None else background
        if not (0 <= x < w and 0 <= y < h):
            x, y = fold_float(x, w, overflow), fold_float(y, h, overflow)
        xi, yi = cell(x), cell(y)

    def tap(i, j):
        return color_or_background(pic, i, j, overflow, background)

    sums = [F(0)] * 3
    if taps == 4:
        kernel = cubic if mode == 3 else keys
        wx = [kernel(F(xi - 1 + i) - x) for i in range(4)]
        wy = [kernel(F(yi - 1 + j) - y) for j in range(4)]
        for j in range(4):
            for i in range(4):
                c = tap(xi - 1 + i, yi - 1 + j)
                weight = wy[j] * wx[i]
                sums = [sums[k] + weight * F(channel(c, k)) for k in range(3)]
        return pack(*(clamp_byte(s) for s in sums))
    if 0 <= xi and xi + 1 < w and 0 <= yi and yi + 1 < h and pic.palette is None:
        fx, fy = int((x - F(xi)) * F(256)), int((y - F(yi)) * F(256))
        d = fx * fy >> 8
        weights = (256 - fx - fy + d, fx - d, fy - d, d)
        cs = (tap(xi, yi), tap(xi + 1, yi), tap(xi, yi + 1), tap(xi + 1, yi + 1))
        return pack(*(sum(a * channel(c, k) for a, c in zip(weights, cs)) >> 8 for k in range(3)))
    dx, dy = x - F(xi), y - F(yi)
    d = dx * dy
    c_, b_ = dy - d, dx - d
    weights = (F(1) - dx - c_, b_, c_, d)
    cs = (tap(xi, yi), tap(xi + 1, yi), tap(xi, yi + 1), tap(xi + 1, yi + 1))
    for a, c in zip(weights, cs):
        sums = [sums[k] + a * F(channel(c, k)) for k in range(3)]
    return pack(*(trunc(s) & 255 for s in sums))


def intersect(a, b):
    r = (max(a[0], b[0]), max(a[1], b[1]), min(a[2], b[2]), min(a[3], b[3]))
    return (F(0),) * 4 if r[0] > r[2] or r[1] > r[3] else r


def pixel_cell(x, y):
    return (F(x) - F(0.5), F(y) - F(0.5), F(x) + F(0.5), F(y) + F(0.5))


def sample_area(pic, mode, overflow, background, x, y, aw, ah):
    if aw <= 1 and ah <= 1:
        return sample_at(pic, mode, overflow, background, x, y)
    area = (x - aw / F(2), y - ah / F(2), x + aw / F(2), y + ah / F(2))
    x1, y1, x2, y2 = (trunc(v + F(0.5)) for v in area)
    sums, last = [F(0)] * 3, [0]

    def add(color, weight):
        last[0] = color
        sums[:] = [sums[k] + weight * F(channel(color, k)) for k in range(3)]

    if aw > 1 and ah > 1:
        a, b = intersect(area, pixel_cell(x1, y1)), intersect(area, pixel_cell(x2, y2))
        lw, th, rw, bh = a[2] - a[0], a[3] - a[1], b[2] - b[0], b[3] - b[1]
        at = lambda px, py: color_or_background(pic, px, py, overflow, background)  # noqa: E731
        for px, py, weight in ((x1, y1, lw * th), (x2, y1, rw * th), (x1, y2, lw * bh),
                               (x2, y2, rw * bh)):
            add(at(px, py), weight)
        inner_x, inner_y = range(x1 + 1, x2), range(y1 + 1, y2)
        for row, weight in ((y1, th), (y2, bh)):
            for px in inner_x:
                add(at(px, row), weight)
        for column, weight in ((x1, lw), (x2, rw)):
            for py in inner_y:
                add(at(column, py), weight)
        for py in inner_y:
            for px in inner_x:
                add(at(px, py), F(1))
    else:
        for py in range(y1, y2 + 1):
            for px in range(x1, x2 + 1):
                s = intersect(area, pixel_cell(px, py))
                centre = ((s[0] + s[2]) / F(2), (s[1] + s[3]) / F(2))
                add(sample_at(pic, mode, overflow, background, *centre), (s[2] - s[0]) * (s[3] - s[1]))
    surface = (area[2] - area[0]) * (area[3] - area[1])
    return pack(*(clamp_byte(s / surface) for s in sums)) | (last[0] & 0xFF000000)


# --- Resizing: each gives the new picture's DIB ---

def resized(pic, colors):
    """A picture of `colors` (rows of 0xRRGGBB) at the source's depth, palette and resolution;
    a palette picture takes each colour's nearest entry."""
    if pic.palette is None:
        return Pic(24, [[bgr(c) for c in row] for row in colors], ppm=pic.ppm).dib()
    flat = [bgr(c) for row in colors for c in row]
    index = nearest(pic.palette, flat).reshape(len(colors), -1)
    return Pic(pic.bits, index, pic.palette, pic.ppm).dib()


def resample(pic, nw, nh, mode, overflow, no_averaging):
    xs, ys = F(pic.width) / F(nw), F(pic.height) / F(nh)
    averaging = not no_averaging and (xs > 1 or ys > 1)
    rows = []
    for y in range(nh):
        sy = ys * (F(y) + F(0.5)) - F(0.5)
        row = []
        for x in range(nw):
            sx = xs * (F(x) + F(0.5)) - F(0.5)
            row.append(sample_area(pic, mode, overflow, None, sx, sy, xs, ys) if averaging
                       else sample_at(pic, mode, overflow, None, sx, sy))
        rows.append(row)
    return resized(pic, rows)


def scale_nearest(pic, nw, nh):
    xs, ys = F(pic.width) / F(nw), F(pic.height) / F(nh)
    return resized(pic, [[pic.color(trunc(xs * F(x)), trunc(ys * F(y))) for x in range(nw)]
                         for y in range(nh)])


def scale_bilinear(pic, nw, nh):
    xs, ys = F(pic.width) / F(nw), F(pic.height) / F(nh)
    rows = []
    for y in range(nh):
        fy = F(y) * ys
        iy = trunc(fy)
        iy2, dy = min(iy + 1, pic.height - 1), fy - F(iy)
        row = []
        for x in range(nw):
            fx = F(x) * xs
            ix = trunc(fx)
            ix2, dx = min(ix + 1, pic.width - 1), fx - F(ix)
            c00, c01 = pic.color(ix, iy), pic.color(ix, iy2)
            c10, c11 = pic.color(ix2, iy), pic.color(ix2, iy2)
            row.append(pack(*(trunc((F(1) - dx) * ((F(1) - dy) * F(channel(c00, k)) + dy * F(channel(c01, k)))
                                    + dx * ((F(1) - dy) * F(channel(c10, k)) + dy * F(channel(c11, k)))) & 255
                              for k in range(3))))
        rows.append(row)
    return resized(pic, rows)


def scale_bspline(pic, nw, nh):
    def taps(i, scale, size, column):
        pos = scale * F(i) - F(0.5)
        base = int(np.floor(pos))
        frac = pos - F(base)
        weights = [bspline(frac - F(n)) if column else bspline(F(n) - frac) for n in (-1, 0, 1, 2)]
        return [min(max(base + n, 0), size - 1) for n in (-1, 0, 1, 2)], weights

    xs, ys = F(pic.width) / F(nw), F(pic.height) / F(nh)
    columns = [taps(x, xs, pic.width, True) for x in range(nw)]
    rows = []
    for y in range(nh):
        ry, wy = taps(y, ys, pic.height, False)
        row = []
        for rx, wx in columns:
            sums = [F(0)] * 3
            for m in range(4):
                for n in range(4):
                    c, weight = pic.color(rx[n], ry[m]), wy[m] * wx[n]
                    sums = [sums[k] + weight * F(channel(c, k)) for k in range(3)]
            row.append(pack(*(trunc(s) & 255 for s in sums)))
        rows.append(row)
    return resized(pic, rows)


def scale_box(pic, nw, nh):
    def span(i, size, new):
        low, high = i * size / new, (i + 1) * size / new
        first, last = int(np.floor(low)), int(np.floor(high - 1e-5))
        return low, high, first, last, 1 - (low - np.floor(low)), high - last

    rows = []
    for y in range(nh):
        ylo, yhi, iy1, iy2, wt, wb = span(y, pic.height, nh)
        row = []
        for x in range(nw):
            xlo, xhi, ix1, ix2, wl, wr = span(x, pic.width, nw)
            sums, total = [0.0] * 3, [0.0]
            # edge columns, edge rows, the inside, then the corners
            order = [t for py in range(iy1 + 1, iy2) for t in ((ix1, py, wl), (ix2, py, wr))]
            order += [t for px in range(ix1 + 1, ix2) for t in ((px, iy1, wt), (px, iy2, wb))]
            order += [(px, py, 1.0) for py in range(iy1 + 1, iy2) for px in range(ix1 + 1, ix2)]
            order += [(ix1, iy1, wt * wl), (ix2, iy1, wt * wr), (ix1, iy2, wb * wl), (ix2, iy2, wb * wr)]
            for px, py, weight in order:
                c, aw = pic.color(px, py), weight * 255
                sums = [sums[k] + channel(c, k) * aw for k in range(3)]
                total[0] += aw
            if total[0] / ((xhi - xlo) * (yhi - ylo)) == 0:
                row.append(0)
            else:
                row.append(pack(*(trunc(s / total[0] + 0.5) & 255 for s in sums)))
        rows.append(row)
    return resized(pic, rows)


def shrink_by_area(pic, nw, nh):
    w, h = pic.width, pic.height
    xs, ys = F(w) / F(nw), F(h) / F(nh)
    divisor = max(trunc(xs * F(1000) * ys), 1)
    current = [[0, 0, 0] for _ in range(nw + 2)]
    nxt = [[0, 0, 0] for _ in range(nw + 2)]
    out = np.zeros((nh, nw, 3), dtype=np.int64)
    row_limit, dest = ys - F(1), 0
    for sy in range(h):
        p = [[int(v) for v in pic.pixels[sy, sx]] for sx in range(w)]
        col_limit, col = xs - F(1), 0
        if F(sy) < row_limit:
            for sx in range(w):
                if F(sx) < col_limit:
                    current[col] = [current[col][c] + p[sx][c] * 1000 for c in range(3)]
                else:
                    t = trunc((F(sx) - col_limit) * F(1000))
                    for c in range(3):
                        current[col][c] += p[sx][c] * (1000 - t)
                        current[col + 1][c] += p[sx][c] * t
                    col_limit, col = col_limit + xs, col + 1
            continue
        s = trunc((F(sy) - row_limit) * F(1000))
        r = 1000 - s
        for sx in range(w):
            if F(sx) < col_limit:
                for c in range(3):
                    current[col][c] += p[sx][c] * r
                    nxt[col][c] += p[sx][c] * s
                continue
            t = trunc((F(sx) - col_limit) * F(1000))
            u = 1000 - t
            for c in range(3):
                current[col][c] += p[sx][c] * r * u // 1000
                if dest < nh:
                    out[dest, col, c] = current[col][c] // divisor
                nxt[col][c] += p[sx][c] * s * u // 1000
                current[col + 1][c] += p[sx][c] * r * t // 1000
                nxt[col + 1][c] = p[sx][c] * s * t // 1000
            col_limit, col = col_limit + xs, col + 1
        if col < nw and dest < nh:
            out[dest, col] = [v // divisor for v in current[col]]
        # Blue and the low half of green are cleared; red carries on.
        current[0][0] = 0
        current[0][1] &= ~0xFFFFFFFF
        current, nxt = nxt, current
        row_limit, dest = row_limit + ys, dest + 1
    if dest < nh:
        out[dest] = [[v // divisor for v in current[col]] for col in range(nw)]
    return Pic(24, (out & 255).astype(np.uint8), ppm=pic.ppm).dib()


def to_24(pic):
    if pic.palette is None:
        return pic
    return Pic(24, [[bgr(pic.color(x, y)) for x in range(pic.width)] for y in range(pic.height)],
               ppm=pic.ppm)


def scale(pic, nw, nh, method):
    w, h = pic.width, pic.height
    if method == 5:
        if nw < w or nh < h:
            return scale_box(to_24(pic), nw, nh)
        method = 3 if min(w, h, nw, nh) >= 2 else 1
    if method == 1:
        return scale_nearest(pic, nw, nh)
    if method == 2:
        return scale_bspline(pic, nw, nh)
    if nw < w and nh < h and pic.bits == 24:
        return shrink_by_area(pic, nw, nh)
    return scale_bilinear(pic, nw, nh)
