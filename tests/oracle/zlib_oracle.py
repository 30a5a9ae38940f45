#!/usr/bin/env python3
"""zlib_oracle.py <vsmkit>: checks `vsmkit zlib` against Python's zlib.

Compressed blocks must be Python's bytes at every level; Python's streams must inflate into
exactly their length and fail with one byte less; damaged, cut and empty streams, refused levels
and capacities past 32 bits must fail with exit 1, bad arguments with exit 2. Exits non-zero at
the first mismatch.
"""
import random
import subprocess
import sys
import zlib


def run(kit, arguments, data):
    return subprocess.run([kit, "zlib"] + arguments, input=data, capture_output=True)


def payloads(rng):
    yield b""
    yield b"a"
    yield bytes(100000)
    for _ in range(12):
        size = rng.choice([rng.randint(1, 64), rng.randint(65, 5000), rng.randint(5001, 300000)])
        if rng.random() < 0.5:
            yield bytes(rng.getrandbits(8) for _ in range(size))
        else:
            words = [b"scanner", b"webcam", b"port", b"18625", b"\x00\xff", b"update"]
            yield b" ".join(rng.choice(words) for _ in range(size // 6 + 1))[:size]


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    kit = sys.argv[1]
    rng = random.Random(1950)
    checks = 0

    def expect(ok, what):
        nonlocal checks
        checks += 1
        if not ok:
            sys.exit("mismatch: " + what)

    for data in payloads(rng):
        for level in [-1, 0, 1, 5, 9]:
            got = run(kit, ["compress", str(level)], data)
            # Stored blocks end where the output buffer ends, and Python offers its output in
            # pieces of 16 KiB: at level 0 only short payloads come out in one block there.
            if level != 0 or len(data) < 16000:
                expect(got.returncode == 0 and got.stdout == zlib.compress(data, level),
                       "compress %d bytes at level %d" % (len(data), level))
            else:
                expect(got.returncode == 0 and zlib.decompress(got.stdout) == data,
                       "stored %d bytes" % len(data))
        stream = zlib.compress(data, rng.randint(0, 9))
        for capacity, ok in [(len(data), True), (len(data) + 7, True), (len(data) - 1, False)]:
            if capacity < 0:
                continue
            got = run(kit, ["expand", str(capacity)], stream)
            expect((got.returncode, got.stdout) == ((0, data) if ok else (1, b"")),
                   "expand %d bytes with capacity %d" % (len(data), capacity))
        if len(stream) > 8:
            cut = run(kit, ["expand", str(len(data))], stream[:rng.randint(0, len(stream) - 1)])
            expect(cut.returncode == 1 and cut.stdout == b"", "cut stream of %d bytes" % len(data))
            damaged = bytearray(stream)
            damaged[-1] ^= 0x40  # the checksum no longer matches
            got = run(kit, ["expand", str(len(data))], bytes(damaged))
            expect(got.returncode == 1, "damaged checksum of %d bytes" % len(data))

    raw = zlib.compressobj(6, zlib.DEFLATED, -15)
    for arguments, data, code in [
            (["expand", "100"], b"", 1),
            (["expand", "100"], b"no zlib stream", 1),
            (["expand", "100"], raw.compress(b"raw deflate") + raw.flush(), 1),
            (["expand", str(1 << 32)], zlib.compress(b"x"), 1),
            (["compress", "10"], b"x", 1),
            (["compress", "-2"], b"x", 1),
            (["expand"], b"x", 2),
            (["expand", "many"], b"x", 2),
            (["squeeze"], b"x", 2),
            (["compress", "1", "2"], b"x", 2)]:
        got = run(kit, arguments, data)
        expect(got.returncode == code and (code == 0 or got.stdout == b""),
               "vsmkit zlib %s: exit %d, expected %d" % (" ".join(arguments), got.returncode, code))
    print("zlib oracle: %d checks agree" % checks)


if __name__ == "__main__":
    main()
