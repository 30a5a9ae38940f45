#!/usr/bin/env python3
"""base64_oracle.py <vsmkit>: checks `vsmkit base64 encode|decode` against Python's base64 and
binascii modules, one run per stream.

Encoding must give exactly base64.b64encode. Decoding takes any text: the decoder drops white
space (codes 7 to 13 and the blank), reads a character with bit 7 set as the one without it, an
invalid character as '+' (62), `=` as '/' (63) in the first two places of a whole group of four
and as 'A' (0) elsewhere; a trailing group of 1 to 3 characters counts as that many bytes, and
each `=` of the text takes one byte off the end. The text rewritten by those rules is decoded by
binascii after padding it with 'A' to whole groups. Exits non-zero at the first mismatch.
"""
import base64
import binascii
import random
import subprocess
import sys

ALPHABET = b"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"
WHITE = b"\a\b\t\n\v\f\r "


def expected_decode(text):
    kept = bytes(c & 0x7F for c in text if c not in WHITE)
    whole = len(kept) - len(kept) % 4
    rewritten = bytearray()
    for i, c in enumerate(kept):
        if c == ord("="):
            rewritten.append(ord("/") if i < whole and i % 4 < 2 else ord("A"))
        else:
            rewritten.append(c if c in ALPHABET else ord("+"))
    rewritten += b"A" * (-len(rewritten) % 4)
    plain = binascii.a2b_base64(bytes(rewritten))
    length = 3 * (whole // 4) + len(kept) % 4 - text.count(b"=")
    return plain[:max(length, 0)]


def mangle(rng, text):
    """Inserts white space, invalid characters and `=`, and sets bit 7 here and there."""
    out = bytearray()
    for c in text:
        if rng.random() < 0.1:
            out.append(rng.choice(WHITE + b"!-_.*~\x00\x7f\xff=="))
        out.append(c | 0x80 if rng.random() < 0.1 else c)
    return bytes(out)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    rng = random.Random(6405)
    runs = 0
    for size in list(range(0, 13)) + [rng.randint(13, 4096) for _ in range(24)] + [1 << 20]:
        data = bytes(rng.getrandbits(8) for _ in range(size))
        text = base64.b64encode(data)
        for direction, given, expected in [
                ("encode", data, text), ("decode", base64.encodebytes(data), data),
                ("decode", mangle(rng, text) if size < 4096 else text, None),
                ("decode", text[:rng.randint(0, len(text))], None)]:
            expected = expected_decode(given) if expected is None else expected
            got = subprocess.run([sys.argv[1], "base64", direction], input=given,
                                 capture_output=True, check=True).stdout
            if got != expected:
                sys.exit("mismatch: base64 %s of %r\n  expected: %r\n  got:      %r"
                         % (direction, given[:200], expected[:200], got[:200]))
            runs += 1
    print("base64 oracle: %d runs agree" % runs)


if __name__ == "__main__":
    main()
