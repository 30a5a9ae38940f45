#!/usr/bin/env python3
"""zlib_oracle.py <vsmkit>: checks `vsmkit zlib` against Python's zlib.

Blocks must be Python's bytes at every level; Python's streams must inflate into exactly their
length and fail one byte short; cut, damaged and foreign streams, refused levels and capacities
past 32 bits fail with exit 1 and no output, bad arguments with exit 2.
"""
import random
import subprocess
import sys
import zlib


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    kit, rng, checks = sys.argv[1], random.Random(1950), 0

    def expect(arguments, data, code, output=b""):
        nonlocal checks
        checks += 1
        got = subprocess.run([kit, "zlib"] + arguments, input=data, capture_output=True)
        if (got.returncode, got.stdout) != (code, output):
            sys.exit("mismatch: zlib %s on %d bytes: exit %d" % (arguments, len(data), got.returncode))

    words = [b"scanner", b"webcam", b" ", b"18625", b"\x00\xff", b"update"]
    samples = [b"", b"a", bytes(100000)] + [
        rng.randbytes(rng.choice([40, 3000, 200000])) if i % 2 else
        b"".join(rng.choice(words) for _ in range(rng.choice([10, 1000, 50000]))) for i in range(12)]
    for data in samples:
        for level in [-1, 0, 1, 5, 9]:
            # Stored blocks end where the output buffer ends, and Python offers its output in
            # pieces of 16 KiB: at level 0 only short inputs come out in one block there.
            if level or len(data) < 16000:
                expect(["compress", str(level)], data, 0, zlib.compress(data, level))
        stream = zlib.compress(data, rng.randint(0, 9))
        expect(["expand", str(len(data))], stream, 0, data)
        expect(["expand", str(len(data) + 7)], stream, 0, data)
        if data:
            expect(["expand", str(len(data) - 1)], stream, 1)
            expect(["expand", str(len(data))], stream[:rng.randrange(len(stream))], 1)
            expect(["expand", str(len(data))], stream[:-1] + bytes([stream[-1] ^ 0x40]), 1)
    raw = zlib.compressobj(6, zlib.DEFLATED, -15)
    for arguments, data, code in [
            (["expand", "100"], b"no zlib stream", 1),
            (["expand", "100"], raw.compress(b"raw deflate") + raw.flush(), 1),
            (["expand", str(1 << 32)], zlib.compress(b"x"), 1),
            (["compress", "10"], b"x", 1), (["compress", "-2"], b"x", 1),
            (["expand"], b"x", 2), (["expand", "many"], b"x", 2), (["squeeze"], b"x", 2),
            (["compress", "1", "2"], b"x", 2)]:
        expect(arguments, data, code)
    print("zlib oracle: %d checks agree" % checks)


if __name__ == "__main__":
    main()
