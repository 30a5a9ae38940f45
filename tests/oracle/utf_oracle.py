#!/usr/bin/env python3
"""utf_oracle.py <utf_probe>: checks Utf8ToWide and WideToUtf8 against Python's codecs.

Valid text must give exactly Python's UTF-16 and UTF-8. Malformed UTF-8 (surrogates, values
above 0x10FFFF, truncated sequences, stray continuation bytes) must give nothing; overlong
forms, which Python refuses, must give the value they spell; bad UTF-16 must stop the encoding
where Python's decoder stops. Exits non-zero at the first mismatch.
"""
import random
import sys

from oracle_runner import run_oracle

RANGES = [(0x20, 0x7E), (0xA0, 0x24F), (0x370, 0x3FF), (0x4E00, 0x9FFF), (0xAC00, 0xD7A3),
          (0xE000, 0xFFFD), (0x10000, 0x1FFFF), (0x1F300, 0x1FAFF), (0x100000, 0x10FFFF)]


def text(rng, low=0, high=12):
    return "".join(chr(rng.randint(*rng.choice(RANGES))) for _ in range(rng.randint(low, high)))


def units(value):
    return value.encode("utf-16-be", "surrogatepass").hex().upper()


def long_form(cp, size):  # `cp` in `size` bytes, whether it needs them or not
    lead = {2: 0xC0, 3: 0xE0, 4: 0xF0}[size]
    return bytes([lead | cp >> 6 * (size - 1)] +
                 [0x80 | cp >> 6 * k & 0x3F for k in range(size - 2, -1, -1)])


def refused(data, codec):
    try:
        data.decode(codec)
    except UnicodeDecodeError as error:
        return error.start
    sys.exit("Python accepts %s as %s: bad test case" % (data.hex(), codec))


def cases(rng):
    for _ in range(3000):
        valid = text(rng, 1)
        yield "D " + valid.encode().hex(), units(valid)
        yield "E " + units(valid), valid.encode().hex().upper()
    for _ in range(1500):
        full = chr(rng.randint(0x80, 0x10FFFF)).encode("utf-8", "surrogatepass")
        bad = rng.choice([chr(rng.randint(0xD800, 0xDFFF)).encode("utf-8", "surrogatepass"),
                          long_form(rng.randint(0x110000, 0x1FFFFF), 4),
                          full[:rng.randint(1, len(full) - 1)],
                          bytes([rng.randint(0x80, 0xBF)]), bytes([rng.randint(0xF8, 0xFF)])])
        data = text(rng, 0, 4).encode() + bad + text(rng, 0, 4).encode()
        refused(data, "utf-8")
        yield "D " + data.hex(), ""
    for _ in range(500):
        cp = rng.choice([rng.randint(0, 0x7F), rng.randint(0x80, 0x7FF), rng.randint(0x800, 0xD7FF)])
        before, after = text(rng, 0, 3), text(rng, 0, 3)
        size = rng.randint(2 if cp < 0x80 else 3 if cp < 0x800 else 4, 4)
        data = before.encode() + long_form(cp, size) + after.encode()
        refused(data, "utf-8")
        yield "D " + data.hex(), units(before + chr(cp) + after)
    for _ in range(500):
        high, low = rng.randint(0xD800, 0xDBFF), rng.randint(0xDC00, 0xDFFF)
        bad = rng.choice([[high], [low], [high, rng.randint(0x41, 0x7A)], [low, high]])
        raw = bytes.fromhex(units(text(rng, 0, 4)) + "".join("%04X" % u for u in bad) +
                            units(text(rng, 0, 4)))
        good = raw[:refused(raw, "utf-16-be")].decode("utf-16-be")
        yield "E " + raw.hex().upper(), good.encode().hex().upper()


def main():
    run_oracle("utf", list(cases(random.Random(20240611))))


if __name__ == "__main__":
    main()
