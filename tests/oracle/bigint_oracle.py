#!/usr/bin/env python3
"""bigint_oracle.py <vsmkit>: checks `vsmkit bigint` (batch mode) and `vsmkit rsa` against
Python's integers.

Numbers go up to 4096 bits, half of them built from the words that trip carries and quotient
estimates (0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF). Division truncates toward zero and the
remainder takes the dividend's sign; ModPow reduces the base by its magnitude and negates the
result for a negative base and an odd exponent. A negative value whose magnitude has an all-ones
top word loses that word to the length rule of negation, so no operand or result here has one;
the unit tests hold that case. Exits non-zero at the first mismatch.
"""
import math
import random
import subprocess
import sys

from oracle_runner import run_oracle

WIDTH = 32768
EDGES = [0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF]
MERSENNE = [61, 89, 107, 127, 521, 607, 1279, 2203, 2281, 3217]
SMALL_PRIMES = [p for p in range(2, 2000) if all(p % q for q in range(2, int(p ** 0.5) + 1))]


def number(rng, max_bits=4096, signed=True):
    words = rng.randint(1, max_bits // 32)
    if rng.random() < 0.5:
        value = sum(rng.choice(EDGES) << (32 * i) for i in range(words))
    else:
        value = rng.getrandbits(32 * words) >> rng.randint(0, 31)
    value = value or 1
    return -value if signed and rng.random() < 0.4 else value


def honest(value):
    """False for a negative value whose magnitude's top word is all ones."""
    m = -value
    return value >= 0 or (m >> (32 * ((m.bit_length() - 1) // 32))) != 0xFFFFFFFF


def text(value):
    return "-%X" % -value if value < 0 else "%X" % value


def word_count(value):
    return max(1, (value.bit_length() + 31) // 32)


def wrap(value):
    """The two's complement value of the low 32768 bits."""
    value &= (1 << WIDTH) - 1
    return value - (1 << WIDTH) if value >> (WIDTH - 1) else value


def words_in_use(value):
    """The words that `length` covers as the raw unsigned number, and that length: a negative
    value made by negation keeps the length of its magnitude."""
    length = word_count(abs(value))
    return (value % (1 << WIDTH)) & ((1 << (32 * length)) - 1), length


def truncated(a, b):
    q = abs(a) // abs(b)
    return q if (a < 0) == (b < 0) else -q


def modpow(base, exponent, modulus):
    if exponent < 0:
        return 0
    n = abs(modulus)
    if word_count(n) >= 512:
        return 0
    if exponent == 0:
        return 1
    if n == 0:
        return 0
    result = pow(abs(base) % n, exponent, n)
    return -result if base < 0 and exponent % 2 else result


def arithmetic_cases(rng):
    for _ in range(2500):
        op = rng.choice(["add", "sub", "mul", "div", "mod", "cmp"])
        a, b = number(rng), number(rng, rng.choice([64, 512, 4096]))
        if op in ("div", "mod") and rng.random() < 0.5:  # quotients of many words
            b = number(rng, max(64, abs(a).bit_length() // 2))
        result = {"add": lambda: a + b, "sub": lambda: a - b, "mul": lambda: wrap(a * b),
                  "div": lambda: truncated(a, b), "mod": lambda: a - truncated(a, b) * b,
                  "cmp": lambda: (a > b) - (a < b)}[op]()
        if not (honest(a) and honest(b) and honest(result)):
            continue
        yield "%s %s %s" % (op, text(a), text(b)), "%d" % result if op == "cmp" else text(result)


def modpow_cases(rng):
    sizes = [64] * 30 + [256] * 60 + [1024] * 40 + [2048] * 6 + [4096] * 3
    for bits in sizes:
        modulus = number(rng, bits, signed=False) | (1 if rng.random() < 0.7 else 0)
        if rng.random() < 0.1:
            modulus = -modulus
        base = number(rng, rng.choice([bits // 2, bits, bits + 64]))
        exponent = number(rng, bits if bits <= 1024 else 128, signed=False)
        result = modpow(base, exponent, modulus)
        if honest(base) and honest(modulus) and honest(result):
            yield "modpow %s %s %s" % (text(base), text(exponent), text(modulus)), text(result)
    for base, exponent, modulus in [(5, 3, 7), (5, -3, 7), (5, 0, 1), (-2, 3, 7), (-2, 2, 7),
                                    (5, 3, 0), (3, 5, (1 << 16352) + 1), (3, 5, (1 << 16320) + 1)]:
        yield ("modpow %s %s %s" % (text(base), text(exponent), text(modulus)),
               text(modpow(base, exponent, modulus)))


def euclid_cases(rng):
    for _ in range(200):
        a = rng.getrandbits(rng.randint(1, 1024)) or 1
        b = rng.getrandbits(rng.randint(1, 1024)) or 1
        yield "gcd %X %X" % (a, b), "%X" % math.gcd(a, b)
        g = math.gcd(a, b)
        if b > 1 and g == 1:
            yield "modinv %X %X" % (a, b), "%X" % pow(a, -1, b)
    yield "gcd 7 0", "0"


def bit_cases(rng):
    for _ in range(400):
        a = number(rng)
        if not honest(a):
            continue
        shift = rng.choice([rng.randint(0, 64), rng.randint(0, 5000), rng.randint(32700, 32800)])
        yield "shl %s %d" % (text(a), shift), text(wrap(a << shift))
        raw, length = words_in_use(a)
        top = raw >> (32 * (length - 1))
        bits = 32 * (length - 1) + top.bit_length()
        yield "bits %s" % text(a), "%d" % bits
        yield "bytes %s" % text(a), raw.to_bytes(4 * length, "big").hex()
        count = (bits + 7) // 8
        yield "minimal %s" % text(a), (raw & ((1 << (8 * count)) - 1)).to_bytes(count, "big").hex()
    for size in [1, 3, 4, 5, 17, 600, 4095, 4096, 4100]:
        data = bytes(rng.getrandbits(8) for _ in range(size))
        if size >= 4096:
            data = b"\x80" + data[1:]
        yield "frombytes %s" % data.hex(), text(wrap(int.from_bytes(data[-4096:], "big")))


def prime_cases(rng):
    primes = [(1 << p) - 1 for p in MERSENNE] + [(1 << 255) - 19, 2 ** 64 + 13]
    for p in primes:
        yield "isprime %X" % p, "1"
    for _ in range(20):
        p, q = rng.sample(primes, 2)
        yield "isprime %X" % (p * q), "0"
        yield "isprime %X" % (rng.getrandbits(rng.randint(8, 3000)) * rng.choice(SMALL_PRIMES)), "0"
    for p in SMALL_PRIMES[:5] + SMALL_PRIMES[-5:] + [0]:
        yield "isprime %X" % p, "0"
    yield "isprime 1", "1"  # n - 1 is 0: the round's test of b == 1 passes


def rsa_expected(form, e, n, d):
    block = min(len(e) if form == "fixed" else len(n), len(d))
    m = int.from_bytes(d[:block], "big")
    r = modpow(m, int.from_bytes(e, "big"), int.from_bytes(n, "big"))
    size = 4 * word_count(r)
    if form == "fixed":
        out = r.to_bytes(size, "big") + d[block:]
    else:
        value = r.to_bytes((r.bit_length() + 7) // 8, "big")
        out = value + d[block:] + bytes(size - len(value))
    return "%d %s" % (size, out.hex())


def check_rsa(vsmkit, rng):
    runs = 0
    for _ in range(20):
        e = bytes(rng.getrandbits(8) for _ in range(rng.randint(1, 64)))
        n = bytes(rng.getrandbits(8) for _ in range(rng.randint(1, 256)))
        d = bytes(rng.getrandbits(8) for _ in range(rng.randint(0, 300)))
        for form in ("fixed", "minimal"):
            got = subprocess.run([vsmkit, "rsa", form, e.hex(), n.hex(), d.hex()],
                                 capture_output=True, text=True, check=True).stdout.strip()
            expected = rsa_expected(form, e, n, d)
            if got != expected:
                sys.exit("rsa %s %s %s %s\n  expected: %s\n  got:      %s"
                         % (form, e.hex(), n.hex(), d.hex(), expected, got))
            runs += 1
    print("rsa oracle: %d runs agree" % runs)


def check_usage(vsmkit):
    """Usage errors exit 2; in batch mode a bad line answers "error: ..." and the rest go on."""
    for arguments, status in [(["bigint", "add", "1"], 2), (["bigint", "shl", "1", "x"], 2),
                              (["rsa", "odd", "01", "03", "02"], 2), (["rsa", "fixed", "0"], 2),
                              (["base64"], 2), (["nokit"], 2), (["--help"], 0)]:
        got = subprocess.run([vsmkit, *arguments], capture_output=True).returncode
        if got != status:
            sys.exit("vsmkit %s: exit %d, expected %d" % (" ".join(arguments), got, status))
    run = subprocess.run([vsmkit, "bigint"], input="pow 1 2\n\nadd 1 2\n", capture_output=True,
                         text=True)
    answers = ["error: unknown operation: pow", "error: missing operation", "3", ""]
    if run.returncode != 2 or run.stdout.split("\n") != answers:
        sys.exit("vsmkit bigint batch with bad lines: %d %r" % (run.returncode, run.stdout))


def main():
    rng = random.Random(1107)
    check_usage(sys.argv[1])
    checks = []
    for cases in (arithmetic_cases, modpow_cases, euclid_cases, bit_cases, prime_cases):
        checks.extend(cases(rng))
    run_oracle("bigint", checks, ["bigint"])
    check_rsa(sys.argv[1], rng)


if __name__ == "__main__":
    main()
